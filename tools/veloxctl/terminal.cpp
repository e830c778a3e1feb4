#include "terminal.h"

#include <langinfo.h>
#include <regfile/converter.h>
#include <regfile/text.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstring>

#include "failure.h"

namespace veloxctl {

namespace {

bool IsPlain(char byte) {
    return static_cast<unsigned char>(byte) >= 0x20 && static_cast<unsigned char>(byte) < 0x7F;
}

bool TerminalIsUtf8() {
    return std::strcmp(TerminalEncoding(), "UTF-8") == 0;
}

std::string Escaped(const char *format, char32_t number) {
    char text[16];
    std::snprintf(text, sizeof(text), format, static_cast<unsigned>(number));
    return text;
}

void AppendCharacter(std::string_view utf8, char32_t character, std::string *out) {
    static regfile::Converter to_terminal(TerminalEncoding(), "UTF-8");
    if (character < 0x20 || (character >= 0x7F && character < 0xA0)) {
        *out += Escaped("\\x%02x", character);
    } else if (character > regfile::kRawByte && character <= regfile::kRawByte + 0xFF) {
        *out += Escaped("\\x%02x", character - regfile::kRawByte);
    } else if (character < 0x7F || TerminalIsUtf8()) {
        out->append(utf8);
    } else if (std::string converted; to_terminal.Append(utf8, &converted) == utf8.size()) {
        out->append(converted);
    } else {
        *out += Escaped("\\u%04x", character);
    }
}

}  // namespace

const char *TerminalEncoding() {
    // A copy: the name itself lives only until the locale changes.
    static const std::string encoding = [] {
        std::setlocale(LC_CTYPE, "");
        return nl_langinfo(CODESET);
    }();
    return encoding.c_str();
}

std::string Utf8ToTerminal(std::string_view utf8) {
    if (std::ranges::all_of(utf8, IsPlain)) {
        return std::string(utf8);
    }
    std::string text;
    while (!utf8.empty()) {
        char32_t character = 0;
        const std::size_t length = regfile::DecodeUtf8(utf8, &character);
        if (length == 0) {
            text += Escaped("\\x%02x", static_cast<unsigned char>(utf8[0]));
            utf8.remove_prefix(1);
            continue;
        }
        AppendCharacter(utf8.substr(0, length), character, &text);
        utf8.remove_prefix(length);
    }
    return text;
}

std::string StoredToTerminal(std::string_view stored) {
    if (std::ranges::all_of(stored, IsPlain)) {
        return std::string(stored);
    }
    return Utf8ToTerminal(regfile::NameToUtf8(stored));
}

std::string TerminalToUtf8(std::string_view text, const char *what) {
    if (std::ranges::all_of(text, IsPlain)) {
        return std::string(text);
    }
    static regfile::Converter from_terminal("UTF-8", TerminalEncoding());
    std::string utf8;
    if (from_terminal.Append(text, &utf8) < text.size()) {
        Fail(EX_DATAERR,
             std::string(what) + " is no text in the terminal's encoding " + TerminalEncoding());
    }
    return utf8;
}

std::string TerminalToStored(std::string_view text, const char *what) {
    const std::string utf8 = TerminalToUtf8(text, what);
    std::string stored;
    std::size_t bad = 0;
    if (!regfile::Utf8ToName(utf8, &stored, &bad)) {
        char32_t character = 0;
        const std::size_t length =
            regfile::DecodeUtf8(std::string_view(utf8).substr(bad), &character);
        Fail(EX_DATAERR, std::string(what) + " holds a character that the registry cannot store: " +
                             Utf8ToTerminal(std::string_view(utf8).substr(bad, length)));
    }
    return stored;
}

void Print(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void FinishOutput() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        const int reason = errno;
        Fail(EX_IOERR, std::string("standard output: ") + std::strerror(reason));
    }
}

}  // namespace veloxctl
