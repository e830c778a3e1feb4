#include "record.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>

namespace tracelog {
namespace {

// 8E and 8F begin EUC-JP characters, the other bytes of 80 to 9F are control characters of a
// terminal.
constexpr bool IsEscaped(unsigned byte) {
    return byte < 0x20 || byte == '\\' || byte == 0x7F ||
           (byte >= 0x80 && byte <= 0x9F && byte != 0x8E && byte != 0x8F);
}

constexpr std::array<bool, 256> kEscaped = [] {
    std::array<bool, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        table[byte] = IsEscaped(byte);
    }
    return table;
}();

char *Escape(unsigned char byte, char *out) noexcept {
    constexpr char kDigits[] = "0123456789ABCDEF";
    *out++ = '\\';
    *out++ = 'x';
    *out++ = kDigits[byte >> 4];
    *out++ = kDigits[byte & 0xF];
    return out;
}

char *AppendEscaped(const char *text, std::size_t length, char *out) noexcept {
    for (std::size_t i = 0; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (kEscaped[byte]) {
            out = Escape(byte, out);
        } else {
            *out++ = text[i];
        }
    }
    return out;
}

// A blank is escaped too: it separates the fields before the text.
char *AppendName(const char *name, char *out) noexcept {
    if (name == nullptr) {
        name = "(null)";
    }
    for (std::size_t i = 0; i < kMaxName && name[i] != '\0'; ++i) {
        out = name[i] == ' ' ? Escape(' ', out) : AppendEscaped(name + i, 1, out);
    }
    *out++ = ' ';
    return out;
}

template <typename Number>
char *AppendNumber(Number number, char *out) noexcept {
    out = std::to_chars(out, out + 20, number).ptr;
    *out++ = ' ';
    return out;
}

char *AppendDigits(unsigned number, int digits, char after, char *out) noexcept {
    for (int i = digits; i-- > 0; number /= 10) {
        out[i] = static_cast<char>('0' + number % 10);
    }
    out[digits] = after;
    return out + digits + 1;
}

// UTC, worked out here: the C library's conversions take a lock that a forked child may find held.
char *AppendTime(const timespec &time, char *out) noexcept {
    using namespace std::chrono;
    const sys_seconds second{seconds{time.tv_sec}};
    const sys_days day = floor<days>(second);
    const year_month_day date{day};
    const hh_mm_ss clock{second - day};
    out = AppendDigits(static_cast<unsigned>(static_cast<int>(date.year())), 4, '-', out);
    out = AppendDigits(static_cast<unsigned>(date.month()), 2, '-', out);
    out = AppendDigits(static_cast<unsigned>(date.day()), 2, 'T', out);
    out = AppendDigits(static_cast<unsigned>(clock.hours().count()), 2, ':', out);
    out = AppendDigits(static_cast<unsigned>(clock.minutes().count()), 2, ':', out);
    out = AppendDigits(static_cast<unsigned>(clock.seconds().count()), 2, '.', out);
    out = AppendDigits(static_cast<unsigned>(time.tv_nsec / 1000), 6, 'Z', out);
    *out++ = ' ';
    return out;
}

std::size_t EucCharacterLength(unsigned char lead) {
    if (lead == 0x8F) {
        return 3;
    }
    return lead == 0x8E || lead >= 0xA1 ? 2 : 1;
}

// The length of the whole EUC-JP characters in the first TRACELOG_MAX_TEXT bytes.
std::size_t WholeCharacters(const char *bytes) {
    std::size_t length = 0;
    for (;;) {
        const std::size_t next =
            length + EucCharacterLength(static_cast<unsigned char>(bytes[length]));
        if (next > TRACELOG_MAX_TEXT) {
            return length;
        }
        length = next;
    }
}

void Cut(Text *text) noexcept {
    text->length = WholeCharacters(text->bytes);
    std::memcpy(text->bytes + text->length, kCutMark, sizeof kCutMark);
    text->length += sizeof kCutMark - 1;
}

void CopyFormat(const char *format, Text *text) noexcept {
    constexpr char kMark[] = "(not formatted) ";
    constexpr std::size_t kMarkLength = sizeof kMark - 1;
    std::memcpy(text->bytes, kMark, kMarkLength);
    const std::size_t length = ::strnlen(format, TRACELOG_MAX_TEXT - kMarkLength);
    std::memcpy(text->bytes + kMarkLength, format, length);
    text->length = kMarkLength + length;
    text->bytes[text->length] = '\0';
}

}  // namespace

void FormatText(const char *format, va_list arguments, Text *text) noexcept {
    if (format == nullptr) {
        format = "(null)";
    }
    const int length = std::vsnprintf(text->bytes, TRACELOG_MAX_TEXT + 1, format, arguments);
    if (length < 0) {
        CopyFormat(format, text);
    } else if (length > TRACELOG_MAX_TEXT) {
        Cut(text);
    } else {
        text->length = static_cast<std::size_t>(length);
    }
}

std::size_t FormatLine(const Origin &origin, const Text &text, char *line) noexcept {
    char *out = AppendTime(origin.time, line);
    out = AppendNumber(origin.process, out);
    out = AppendNumber(origin.level, out);
    out = AppendName(origin.source, out);
    out = AppendName(origin.function, out);
    out = AppendNumber(origin.line, out);
    out = AppendEscaped(text.bytes, text.length, out);
    *out++ = '\n';
    return static_cast<std::size_t>(out - line);
}

}  // namespace tracelog
