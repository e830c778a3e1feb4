#include <ntwin32/registry.h>
#include <regfile/regfile.h>
#include <regfile/text.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "encoding.h"
#include "scanner.h"

namespace regfile {

namespace {

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00";
constexpr std::string_view kRoot = "HKEY_LOCAL_MACHINE";
constexpr std::string_view kShortRoot = "HKLM";

int HexDigit(char byte) {
    if (byte >= '0' && byte <= '9') {
        return byte - '0';
    }
    if (byte >= 'a' && byte <= 'f') {
        return byte - 'a' + 10;
    }
    return byte >= 'A' && byte <= 'F' ? byte - 'A' + 10 : -1;
}

std::string Exceeds(const char *what, std::size_t limit) {
    return std::string(what) + " exceeds " + std::to_string(limit) + " bytes";
}

// Reads the lines in their order. Every function that reads gives false after it stored a problem.
class Parser {
  public:
    explicit Parser(Problem *problem) : problem_(problem) {}

    bool Run(std::string_view bytes);
    std::vector<Change> &Changes() { return changes_; }

  private:
    bool Header();
    bool Line();
    bool KeyLine();
    bool KeyPath(std::size_t end, std::string *path);
    bool KeyNames(std::size_t end, std::string *path);
    bool ValueLine();
    bool ValueName(std::string *name);
    bool Data(Change *change);
    bool Text(std::vector<std::uint8_t> *data);
    bool HexNumber(std::uint32_t *number);
    bool Dword(std::vector<std::uint8_t> *data);
    bool HexBytes(std::vector<std::uint8_t> *data);
    bool HexByte(std::vector<std::uint8_t> *data);
    bool ContinuedLines();
    bool Quoted(bool is_name, std::string *stored);
    bool Escaped(std::string *stored);
    bool Characters(std::string_view utf8, bool is_name, std::string *stored);
    bool LineEnd();
    bool Fail(std::string cause) { return FailAt(scanner_.Position(), std::move(cause)); }
    bool FailAt(std::size_t position, std::string cause);

    Scanner scanner_;
    std::shared_ptr<const std::string> path_;  // of the key above; null where none can have values
    std::vector<Change> changes_;
    Problem *problem_;
};

bool Parser::FailAt(std::size_t position, std::string cause) {
    *problem_ = scanner_.At(position, std::move(cause));
    return false;
}

bool Parser::Run(std::string_view bytes) {
    if (!scanner_.Open(bytes, problem_) || !Header()) {
        return false;
    }
    while (scanner_.NextLine()) {
        if (!Line()) {
            return false;
        }
    }
    return true;
}

bool Parser::Header() {
    scanner_.NextLine();
    if (scanner_.TakeWord("REGEDIT4")) {
        return FailAt(0, "Files of version 4 are not read, only those of version 5.00");
    }
    if (!scanner_.Rest().starts_with(kHeader)) {
        return FailAt(0, "The first line is not \"" + std::string(kHeader) + "\"");
    }
    scanner_.Skip(kHeader.size());
    return LineEnd();
}

bool Parser::Line() {
    scanner_.SkipBlanks();
    if (scanner_.OnlyCommentLeft()) {
        return true;
    }
    switch (scanner_.Peek()) {
        case '[':
            return KeyLine();
        case '"':
        case '@':
            return ValueLine();
        default:
            return Fail("The line is neither a key, a value nor a comment");
    }
}

bool Parser::LineEnd() {
    if (scanner_.OnlyCommentLeft()) {
        return true;
    }
    scanner_.SkipBlanks();
    return Fail("Nothing but a comment may follow here");
}

// A key's name may hold any bracket, so that the line's last one closes it.
bool Parser::KeyLine() {
    const std::size_t open = scanner_.Position();
    const std::size_t close = scanner_.Line().rfind(']');
    if (close == std::string_view::npos || close < open) {
        return Fail("The key is not closed by a bracket");
    }
    scanner_.Skip(1);
    const bool deletes = scanner_.Take('-');
    auto path = std::make_shared<std::string>();
    if (!KeyPath(close, path.get())) {
        return false;
    }
    if (deletes && path->empty()) {
        return FailAt(open + 1, "The root cannot be deleted");
    }
    scanner_.Skip(1);
    Change change;
    change.kind = deletes ? Change::Kind::kDeleteTree : Change::Kind::kCreateKey;
    change.path = path;
    change.line = scanner_.LineNumber();
    changes_.push_back(std::move(change));
    path_ = deletes ? nullptr : std::move(path);
    return LineEnd();
}

bool Parser::KeyPath(std::size_t end, std::string *path) {
    const std::size_t start = scanner_.Position();
    if (!scanner_.TakeWord(kRoot) && !scanner_.TakeWord(kShortRoot)) {
        return Fail("The key does not begin with HKEY_LOCAL_MACHINE");
    }
    if (scanner_.Position() == end) {
        return true;
    }
    if (!scanner_.Take('\\')) {
        return FailAt(start, "The key does not begin with HKEY_LOCAL_MACHINE");
    }
    return KeyNames(end, path);
}

bool Parser::KeyNames(std::size_t end, std::string *path) {
    for (std::size_t depth = 1;; ++depth) {
        const std::size_t start = scanner_.Position();
        const std::size_t length = std::min(scanner_.Line().find('\\', start), end) - start;
        const std::size_t length_before = path->size();
        if (length == 0) {
            return Fail("A name in the key's path is empty");
        }
        if (depth > KES_REG_MAX_DEPTH) {
            return Fail("The key lies deeper than " + std::to_string(KES_REG_MAX_DEPTH) + " keys");
        }
        if (!Characters(scanner_.Rest().substr(0, length), true, path)) {
            return false;
        }
        if (path->size() - length_before > KES_REG_MAX_KEY_NAME) {
            return FailAt(start, Exceeds("The key's name", KES_REG_MAX_KEY_NAME));
        }
        if (scanner_.Position() == end) {
            return true;
        }
        scanner_.Skip(1);
        path->push_back('\\');
    }
}

bool Parser::ValueLine() {
    if (!path_) {
        return Fail(changes_.empty() ? "The value stands before the first key"
                                     : "The value stands below a key that is deleted");
    }
    Change change;
    change.path = path_;
    change.line = scanner_.LineNumber();
    if (!ValueName(&change.name)) {
        return false;
    }
    scanner_.SkipBlanks();
    if (!scanner_.Take('=')) {
        return Fail("An equals sign is missing after the value's name");
    }
    scanner_.SkipBlanks();
    if (!Data(&change) || !LineEnd()) {
        return false;
    }
    changes_.push_back(std::move(change));
    return true;
}

bool Parser::ValueName(std::string *name) {
    return scanner_.Take('@') || Quoted(true, name);
}

bool Parser::Data(Change *change) {
    change->kind = Change::Kind::kSetValue;
    if (scanner_.Take('-')) {
        change->kind = Change::Kind::kDeleteValue;
        return true;
    }
    if (scanner_.Peek() == '"') {
        change->type = REG_SZ;
        return Text(&change->data);
    }
    if (scanner_.TakeWord("dword:")) {
        change->type = REG_DWORD;
        return Dword(&change->data);
    }
    if (scanner_.TakeWord("hex:")) {
        change->type = REG_BINARY;
        return HexBytes(&change->data);
    }
    if (scanner_.TakeWord("hex(")) {
        return HexNumber(&change->type) &&
               (scanner_.TakeWord("):") || Fail("The type is not closed by \"):\"")) &&
               HexBytes(&change->data);
    }
    return Fail("The data is neither quoted text, dword:, hex:, hex(n): nor -");
}

bool Parser::Text(std::vector<std::uint8_t> *data) {
    const std::size_t start = scanner_.Position();
    std::string text;
    if (!Quoted(false, &text)) {
        return false;
    }
    if (text.size() >= KES_REG_MAX_DATA) {
        return FailAt(start, Exceeds("The value's data", KES_REG_MAX_DATA));
    }
    data->reserve(text.size() + 1);
    data->assign(text.begin(), text.end());
    data->push_back(0);
    return true;
}

bool Parser::HexNumber(std::uint32_t *number) {
    const std::size_t start = scanner_.Position();
    for (; HexDigit(scanner_.Peek()) >= 0; scanner_.Skip(1)) {
        if (scanner_.Position() - start == 8) {
            return Fail("The number has more than eight hexadecimal digits");
        }
        *number = *number * 16 + static_cast<std::uint32_t>(HexDigit(scanner_.Peek()));
    }
    return scanner_.Position() > start || Fail("A hexadecimal digit is missing");
}

bool Parser::Dword(std::vector<std::uint8_t> *data) {
    std::uint32_t number = 0;
    if (!HexNumber(&number)) {
        return false;
    }
    for (int shift = 0; shift < 32; shift += 8) {
        data->push_back(static_cast<std::uint8_t>(number >> shift));
    }
    return true;
}

bool Parser::HexBytes(std::vector<std::uint8_t> *data) {
    if (!ContinuedLines()) {
        return false;
    }
    if (scanner_.OnlyCommentLeft()) {
        return true;
    }
    for (;;) {
        if (!HexByte(data)) {
            return false;
        }
        scanner_.SkipBlanks();
        if (!scanner_.Take(',')) {
            return true;
        }
        if (!ContinuedLines()) {
            return false;
        }
    }
}

bool Parser::HexByte(std::vector<std::uint8_t> *data) {
    const int first = HexDigit(scanner_.Peek());
    if (first < 0) {
        return Fail("A byte of two hexadecimal digits is missing");
    }
    if (data->size() == KES_REG_MAX_DATA) {
        return Fail(Exceeds("The value's data", KES_REG_MAX_DATA));
    }
    scanner_.Skip(1);
    int byte = first;
    if (const int second = HexDigit(scanner_.Peek()); second >= 0) {
        scanner_.Skip(1);
        byte = first * 16 + second;
    }
    if (HexDigit(scanner_.Peek()) >= 0) {
        return Fail("A byte has more than two hexadecimal digits");
    }
    data->push_back(static_cast<std::uint8_t>(byte));
    return true;
}

// A backslash as a line's last character goes on with the next line.
bool Parser::ContinuedLines() {
    scanner_.SkipBlanks();
    while (scanner_.Take('\\')) {
        if (!scanner_.OnlyCommentLeft()) {
            return Fail("Nothing may follow the backslash that continues a line");
        }
        if (!scanner_.NextLine()) {
            return Fail("The file ends where a continued line was to follow");
        }
        scanner_.SkipBlanks();
    }
    return true;
}

bool Parser::Quoted(bool is_name, std::string *stored) {
    const std::size_t open = scanner_.Position();
    scanner_.Skip(1);
    while (!scanner_.Take('"')) {
        if (scanner_.AtEnd()) {
            return FailAt(open, "The quoted text is not closed on its line");
        }
        const std::string_view rest = scanner_.Rest();
        const std::size_t length = std::min(rest.find_first_of("\"\\"), rest.size());
        if (!(length == 0 ? Escaped(stored)
                          : Characters(rest.substr(0, length), is_name, stored))) {
            return false;
        }
        if (is_name && stored->size() > KES_REG_MAX_VALUE_NAME) {
            return FailAt(open, Exceeds("The value's name", KES_REG_MAX_VALUE_NAME));
        }
    }
    return true;
}

bool Parser::Escaped(std::string *stored) {
    const std::string_view rest = scanner_.Rest();
    if (rest.size() < 2 || (rest[1] != '\\' && rest[1] != '"')) {
        return Fail("A backslash in quoted text must precede a backslash or a quotation mark");
    }
    stored->push_back(rest[1]);
    scanner_.Skip(2);
    return true;
}

// Converts characters of the line at hand and skips them.
bool Parser::Characters(std::string_view utf8, bool is_name, std::string *stored) {
    std::size_t bad = utf8.size();
    const bool converted =
        is_name ? Utf8ToName(utf8, stored, &bad) : Utf8ToStored(utf8, stored, &bad);
    scanner_.Skip(bad);
    if (converted) {
        return true;
    }
    char32_t character = 0;
    DecodeUtf8(utf8.substr(bad), &character);
    char cause[64];
    std::snprintf(cause, sizeof(cause), "EUC-JP lacks the character U+%04X",
                  static_cast<unsigned>(character));
    return Fail(cause);
}

}  // namespace

bool Parse(std::string_view bytes, std::vector<Change> *changes, Problem *problem) {
    Parser parser(problem);
    if (!parser.Run(bytes)) {
        return false;
    }
    *changes = std::move(parser.Changes());
    return true;
}

}  // namespace regfile
