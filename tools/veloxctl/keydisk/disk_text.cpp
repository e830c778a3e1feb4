#include "keydisk/disk_text.h"

#include <ntwin32/system.h>
#include <regfile/converter.h>
#include <regfile/text.h>

#include <charconv>
#include <cstdio>

namespace veloxctl::keydisk {

namespace {

constexpr char kDiskEncoding[] = "CP932";
constexpr char kFormEncoding[] = "UTF-8";

bool IsLead(char byte) {
    return IsDBCSLeadByte(static_cast<BYTE>(byte)) != FALSE;
}

std::size_t CharacterLength(std::string_view text) {
    return IsLead(text[0]) && text.size() > 1 ? 2 : 1;
}

// The first character of a text in UTF-8; false when its bytes would not come back from there.
bool CharacterToUtf8(std::string_view bytes, std::string *utf8) {
    static regfile::Converter to_form(kFormEncoding, kDiskEncoding);
    static regfile::Converter to_disk(kDiskEncoding, kFormEncoding);
    const auto byte = static_cast<unsigned char>(bytes[0]);
    if (byte < 0x80) {
        utf8->assign(1, bytes[0]);
        return byte >= 0x20 && byte != 0x7F;
    }
    utf8->clear();
    std::string back;
    return to_form.Append(bytes, utf8) == bytes.size() &&
           to_disk.Append(*utf8, &back) == utf8->size() && back == bytes;
}

// Reads digits hexadecimal digits behind the escape's letter.
bool EscapedNumber(std::string_view escape, std::size_t digits, unsigned *number) {
    const char *const start = escape.data() + 2;
    return escape.size() >= digits + 2 &&
           std::from_chars(start, start + digits, *number, 16).ptr == start + digits;
}

bool AppendCharacter(std::string_view utf8, std::string *bytes) {
    static regfile::Converter to_disk(kDiskEncoding, kFormEncoding);
    return to_disk.Append(utf8, bytes) == utf8.size();
}

// Takes the escape that text begins with; gives its length, 0 with a cause when it is none.
std::size_t AppendEscape(std::string_view text, std::string *bytes, std::string *cause) {
    unsigned number = 0;
    if (text.size() == 1) {
        return 1;
    }
    if (text[1] == '\\' || text[1] == '#' || text[1] == '%') {
        bytes->push_back(text[1]);
        return 2;
    }
    if (text[1] == 'x' && EscapedNumber(text, 2, &number)) {
        bytes->push_back(static_cast<char>(number));
        return 4;
    }
    if (text[1] == 'u' && EscapedNumber(text, 4, &number)) {
        std::string utf8;
        regfile::AppendUtf8(number, &utf8);
        if (AppendCharacter(utf8, bytes)) {
            return 6;
        }
        *cause = "Shift-JIS lacks the character \\u" + std::string(text.substr(2, 4));
        return 0;
    }
    *cause = "unknown escape; a backslash itself is written twice";
    return 0;
}

}  // namespace

std::string DiskToUtf8(std::string_view bytes) {
    std::string utf8;
    std::string character;
    while (!bytes.empty()) {
        std::size_t length = CharacterLength(bytes);
        if (CharacterToUtf8(bytes.substr(0, length), &character)) {
            utf8 += character;
        } else {
            length = 1;
            regfile::AppendUtf8(regfile::kRawByte + static_cast<unsigned char>(bytes[0]), &utf8);
        }
        bytes.remove_prefix(length);
    }
    return utf8;
}

std::string LineToForm(std::string_view bytes) {
    if (bytes.empty()) {
        return "\\";
    }
    std::string line = bytes[0] == '#' || bytes[0] == '%' ? "\\" : "";
    const std::string utf8 = DiskToUtf8(bytes);
    for (std::size_t at = 0; at < utf8.size();) {
        char32_t character = 0;
        const std::size_t length =
            regfile::DecodeUtf8(std::string_view(utf8).substr(at), &character);
        if (character >= regfile::kRawByte && character <= regfile::kRawByte + 0xFF) {
            char escape[8];
            std::snprintf(escape, sizeof(escape), "\\x%02x",
                          static_cast<unsigned>(character - regfile::kRawByte));
            line += escape;
        } else {
            line += utf8[at] == '\\' ? "\\\\" : utf8.substr(at, length);
        }
        at += length;
    }
    return line;
}

bool LineFromForm(std::string_view line, std::string *bytes, std::size_t *bad, std::string *cause) {
    for (std::size_t at = 0; at < line.size();) {
        char32_t character = 0;
        std::size_t length = regfile::DecodeUtf8(line.substr(at), &character);
        if (length == 0) {
            *cause = "the bytes are not UTF-8";
        } else if (character == '\\') {
            length = AppendEscape(line.substr(at), bytes, cause);
        } else if (!AppendCharacter(line.substr(at, length), bytes)) {
            char text[48];
            std::snprintf(text, sizeof(text), "Shift-JIS lacks the character U+%04X",
                          static_cast<unsigned>(character));
            *cause = text;
            length = 0;
        }
        if (length == 0) {
            *bad = at;
            return false;
        }
        at += length;
    }
    return true;
}

std::size_t FirstBadByte(std::string_view bytes) {
    static regfile::Converter to_stored("EUC-JP-MS", kDiskEncoding);
    std::string stored;
    return to_stored.Append(bytes, &stored);
}

std::vector<std::string> SplitLines(std::string_view text, std::vector<std::size_t> *offsets) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t at = 0; at < text.size();) {
        const bool ends = text[at] == '\n' || text[at] == '\r';
        if (!ends) {
            at += CharacterLength(text.substr(at));
            continue;
        }
        lines.emplace_back(text.substr(start, at - start));
        if (offsets != nullptr) {
            offsets->push_back(start);
        }
        at += text.substr(at).starts_with("\r\n") ? 2 : 1;
        start = at;
    }
    if (start < text.size()) {
        lines.emplace_back(text.substr(start));
        if (offsets != nullptr) {
            offsets->push_back(start);
        }
    }
    return lines;
}

}  // namespace veloxctl::keydisk
