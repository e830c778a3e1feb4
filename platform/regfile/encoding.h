// The characters of a .reg file: Unicode outside, EUC-JP in the registry.
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

inline constexpr char kStoredEncoding[] = "EUC-JP-MS";
inline constexpr char kFileEncoding[] = "UTF-8";

// The private characters U+F700 to U+F7FF stand for bytes without a character (convention 4).
inline constexpr char32_t kRawByte = 0xF700;
inline constexpr std::size_t kRawByteLength = 3;

// Where the first character that stands for a byte begins (utf8's size: there is none); *byte
// receives the byte. Printable ASCII has no such character, so that no name can smuggle a
// separator.
std::size_t FindRawByte(std::string_view utf8, unsigned char *byte);

bool IsAscii(std::string_view text);

// True for the bytes that a stored text may not hold if it is to be written as text: control
// characters other than the tab, which would break the file's lines or vanish in an editor.
bool IsControl(unsigned char byte);

void AppendUtf8(char32_t character, std::string *out);

// The length in bytes of the well-formed UTF-8 character that text begins with, 0 for none. The
// character itself is stored in *character.
std::size_t DecodeUtf8(std::string_view text, char32_t *character);

// How many bytes from the beginning of text are well-formed UTF-8 without zero bytes.
std::size_t ValidUtf8Length(std::string_view text);

// The number of characters of a well-formed UTF-8 text.
std::size_t CountCharacters(std::string_view utf8);

}  // namespace regfile

#endif  // REGFILE_ENCODING_H
