// Texts of tests: written in UTF-8, wanted in the system's encodings.
#ifndef SUPPORT_ENCODING_H
#define SUPPORT_ENCODING_H

#include <iconv.h>

#include <stdexcept>
#include <string>

namespace test_support {

inline std::string Convert(std::string text, const char *from, const char *to) {
    const iconv_t conversion = iconv_open(to, from);
    if (conversion == reinterpret_cast<iconv_t>(-1))
        throw std::runtime_error(std::string("no conversion to ") + to);
    std::string converted(text.size() * 4 + 4, '\0');
    char *in = text.data();
    char *out = converted.data();
    std::size_t in_left = text.size();
    std::size_t out_left = converted.size();
    const bool done = iconv(conversion, &in, &in_left, &out, &out_left) != static_cast<size_t>(-1);
    iconv_close(conversion);
    if (!done)
        throw std::runtime_error("cannot convert " + text + " to " + to);
    converted.resize(converted.size() - out_left);
    return converted;
}

// Texts in UTF-8 as the registry stores them, and as a key disk holds them.
inline std::string ToEuc(const std::string &utf8) {
    return Convert(utf8, "UTF-8", "EUC-JP-MS");
}
inline std::string ToSjis(const std::string &utf8) {
    return Convert(utf8, "UTF-8", "CP932");
}

}  // namespace test_support

#endif  // SUPPORT_ENCODING_H
