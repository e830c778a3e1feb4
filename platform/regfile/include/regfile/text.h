// Texts between the registry, which stores EUC-JP, and Unicode in UTF-8.
//
// Conventions
//  1. "Stored" texts are the registry's bytes without a terminator. EUC-JP is meant with its vendor
//     extensions (EUC-JP-MS).
//  2. Nothing is replaced or dropped: a text that cannot be converted and back is refused, and a
//  name,
//     which must have some form, shows a byte without character as U+F700 + byte (regfile.h).
//  3. Every thread keeps two conversions open from its first call on.
//  4. No function throws anything but std::bad_alloc.
#ifndef REGFILE_TEXT_H
#define REGFILE_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace regfile {

// The private character of the byte 0 (convention 2).
inline constexpr char32_t kRawByte = 0xF700;

// Stores the text in UTF-8. False, *utf8 then unspecified, when its bytes would not come back.
bool StoredToUtf8(std::string_view stored, std::string *utf8);

// A name in UTF-8, whatever its bytes. Control characters other than the tab are shown as bytes.
std::string NameToUtf8(std::string_view stored);

// Appends a text as it is stored. False when utf8 is ill-formed or EUC-JP lacks a character; *bad
// (may be null) then receives the offset of that character, up to which the text was appended.
bool Utf8ToStored(std::string_view utf8, std::string *stored, std::size_t *bad = nullptr);

// The same for a name: the private characters of bytes become these bytes.
bool Utf8ToName(std::string_view utf8, std::string *stored, std::size_t *bad = nullptr);

// The length in bytes of the well-formed UTF-8 character that text begins with, 0 for none. The
// character itself is stored in *character.
std::size_t DecodeUtf8(std::string_view text, char32_t *character);

void AppendUtf8(char32_t character, std::string *out);

}  // namespace regfile

#endif  // REGFILE_TEXT_H
