#include <regfile/converter.h>
#include <regfile/text.h>

#include "encoding.h"

namespace regfile {

namespace {

constexpr char kStoredEncoding[] = "EUC-JP-MS";
constexpr std::size_t kRawByteLength = 3;

// Opening a conversion costs more than converting a text, so a thread keeps its two.
struct Conversions {
    Converter to_utf8{kFileEncoding, kStoredEncoding};
    Converter to_stored{kStoredEncoding, kFileEncoding};
};

Conversions &OfThisThread() {
    static thread_local Conversions conversions;
    return conversions;
}

// Where the first character that stands for a byte begins (utf8's size: there is none). Printable
// ASCII has no such character, so that no name can smuggle a separator.
std::size_t FindRawByte(std::string_view utf8, unsigned char *byte) {
    // U+F700 to U+F7FF begin with EF 9C to EF 9F.
    for (std::size_t at = utf8.find('\xEF'); at != std::string_view::npos;
         at = utf8.find('\xEF', at + 1)) {
        char32_t character = 0;
        if (DecodeUtf8(utf8.substr(at), &character) == 0 || character <= kRawByte ||
            character > kRawByte + 0xFF) {
            continue;
        }
        *byte = static_cast<unsigned char>(character - kRawByte);
        if (*byte < 0x20 || *byte >= 0x7F) {
            return at;
        }
    }
    return utf8.size();
}

// Appends the first character of a name, or its first byte as a private character, and gives the
// number of bytes that it took.
std::size_t AppendNameCharacter(std::string_view stored, std::string *utf8) {
    const auto lead = static_cast<unsigned char>(stored[0]);
    const std::size_t length = lead < 0x80 ? 1 : lead == 0x8F ? 3 : 2;
    std::string character;
    if (length <= stored.size() && StoredToUtf8(stored.substr(0, length), &character) &&
        !HoldsControl(character)) {
        utf8->append(character);
        return length;
    }
    AppendUtf8(kRawByte + lead, utf8);
    return 1;
}

}  // namespace

bool StoredToUtf8(std::string_view stored, std::string *utf8) {
    if (IsAscii(stored)) {
        utf8->assign(stored);
        return true;
    }
    utf8->clear();
    std::string back;
    return OfThisThread().to_utf8.Append(stored, utf8) == stored.size() &&
           OfThisThread().to_stored.Append(*utf8, &back) == utf8->size() && back == stored;
}

std::string NameToUtf8(std::string_view stored) {
    std::string utf8;
    if (StoredToUtf8(stored, &utf8) && !HoldsControl(utf8)) {
        return utf8;
    }
    utf8.clear();
    while (!stored.empty()) {
        stored.remove_prefix(AppendNameCharacter(stored, &utf8));
    }
    return utf8;
}

bool Utf8ToStored(std::string_view utf8, std::string *stored, std::size_t *bad) {
    if (IsAscii(utf8)) {
        stored->append(utf8);
        return true;
    }
    const std::size_t converted = OfThisThread().to_stored.Append(utf8, stored);
    if (converted < utf8.size() && bad != nullptr) {
        *bad = converted;
    }
    return converted == utf8.size();
}

bool Utf8ToName(std::string_view utf8, std::string *stored, std::size_t *bad) {
    std::size_t done = 0;
    while (done < utf8.size()) {
        unsigned char byte = 0;
        const std::string_view rest = utf8.substr(done);
        const std::size_t raw = FindRawByte(rest, &byte);
        if (!Utf8ToStored(rest.substr(0, raw), stored, bad)) {
            if (bad != nullptr) {
                *bad += done;
            }
            return false;
        }
        done += raw;
        if (done < utf8.size()) {
            stored->push_back(static_cast<char>(byte));
            done += kRawByteLength;
        }
    }
    return true;
}

}  // namespace regfile
