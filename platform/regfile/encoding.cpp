#include "encoding.h"

#include <regfile/text.h>

#include <algorithm>

namespace regfile {

namespace {

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

}  // namespace

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

bool HoldsControl(std::string_view utf8) {
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        const auto byte = static_cast<unsigned char>(utf8[at]);
        if ((byte < 0x20 && byte != '\t') || byte == 0x7F) {
            return true;
        }
        // C1 controls, C2 80 to C2 9F: U+0085 ends a line in some editors.
        if (byte == 0xC2 && at + 1 < utf8.size() &&
            static_cast<unsigned char>(utf8[at + 1]) < 0xA0) {
            return true;
        }
    }
    return false;
}

void AppendUtf8(char32_t character, std::string *out) {
    const auto add = [out](char32_t byte) { out->push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        add(character);
    } else if (character < 0x800) {
        add(0xC0u | (character >> 6));
        add(0x80u | (character & 0x3Fu));
    } else if (character < 0x10000) {
        add(0xE0u | (character >> 12));
        add(0x80u | ((character >> 6) & 0x3Fu));
        add(0x80u | (character & 0x3Fu));
    } else {
        add(0xF0u | (character >> 18));
        add(0x80u | ((character >> 12) & 0x3Fu));
        add(0x80u | ((character >> 6) & 0x3Fu));
        add(0x80u | (character & 0x3Fu));
    }
}

std::size_t DecodeUtf8(std::string_view text, char32_t *character) {
    if (text.empty()) {
        return 0;
    }
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80) {
        *character = lead;
        return 1;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) {
        return 0;
    }
    char32_t value = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (!IsContinuation(text[i])) {
            return 0;
        }
        value = (value << 6) | (static_cast<unsigned char>(text[i]) & 0x3Fu);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (value < kSmallest[length] || value > 0x10FFFF || (value >= 0xD800 && value < 0xE000)) {
        return 0;
    }
    *character = value;
    return length;
}

std::size_t ValidUtf8Length(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        char32_t character = 0;
        const std::size_t length = DecodeUtf8(text.substr(at), &character);
        if (length == 0 || character == 0) {
            break;
        }
        at += length;
    }
    return at;
}

std::size_t CountCharacters(std::string_view utf8) {
    return utf8.size() -
           static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), IsContinuation));
}

}  // namespace regfile
