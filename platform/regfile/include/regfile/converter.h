// One direction of iconv.
#ifndef REGFILE_CONVERTER_H
#define REGFILE_CONVERTER_H

#include <iconv.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace regfile {

// Opened at its first use. A conversion that the system lacks converts nothing. The two names must
// outlive the converter. One thread at a time.
class Converter {
  public:
    Converter(const char *to, const char *from) : to_(to), from_(from) {}
    ~Converter();
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;

    // Appends the converted text to *out and gives the number of bytes of text that were converted:
    // less than its size where a character is ill-formed or has no counterpart. Each text begins
    // and ends in the encoding's first shift state.
    std::size_t Append(std::string_view text, std::string *out);

  private:
    bool Open();
    bool Step(char **from, std::size_t *from_left, std::string *out);

    const char *to_;
    const char *from_;
    bool opened_ = false;
    iconv_t handle_{};
};

}  // namespace regfile

#endif  // REGFILE_CONVERTER_H
