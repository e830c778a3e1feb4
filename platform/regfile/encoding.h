// What the reader and the writer of .reg files share: iconv, and scans of UTF-8.
#ifndef REGFILE_ENCODING_H
#define REGFILE_ENCODING_H

#include <iconv.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace regfile {

// One direction of iconv, opened at its first use. A conversion that the system lacks converts
// nothing.
class Converter {
  public:
    Converter(const char *to, const char *from) : to_(to), from_(from) {}
    ~Converter();
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;

    // Appends the converted text to *out and gives the number of bytes of text that were converted:
    // less than its size where a character is ill-formed or has no counterpart.
    std::size_t Append(std::string_view text, std::string *out);

  private:
    const char *to_;
    const char *from_;
    bool opened_ = false;
    iconv_t handle_{};
};

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
