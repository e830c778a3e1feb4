// What the reader and the writer of .reg files share: scans of UTF-8.
#ifndef REGFILE_ENCODING_H
#define REGFILE_ENCODING_H

#include <cstddef>
#include <string_view>

namespace regfile {

inline constexpr char kFileEncoding[] = "UTF-8";

bool IsAscii(std::string_view text);

// True for control characters other than the tab: they would break a file's lines or vanish in an
// editor. The text is UTF-8.
bool HoldsControl(std::string_view utf8);

// How many bytes from the beginning of text are well-formed UTF-8 without zero bytes.
std::size_t ValidUtf8Length(std::string_view text);

// The number of characters of a well-formed UTF-8 text.
std::size_t CountCharacters(std::string_view utf8);

}  // namespace regfile

#endif  // REGFILE_ENCODING_H
