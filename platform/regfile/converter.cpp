#include <regfile/converter.h>

#include <cerrno>

namespace regfile {

namespace {

bool IsOpen(iconv_t conversion) {
    return conversion != reinterpret_cast<iconv_t>(-1);
}

}  // namespace

Converter::~Converter() {
    if (opened_ && IsOpen(handle_)) {
        iconv_close(handle_);
    }
}

bool Converter::Open() {
    if (!opened_) {
        handle_ = iconv_open(to_, from_);
        opened_ = true;
    }
    return IsOpen(handle_);
}

// Converts what fits a block; with from null it ends the text. False when the text goes on with
// what cannot be converted.
bool Converter::Step(char **from, std::size_t *from_left, std::string *out) {
    char block[4096];
    char *to = block;
    std::size_t to_left = sizeof(block);
    const std::size_t result = iconv(handle_, from, from_left, &to, &to_left);
    const bool stuck = result == static_cast<std::size_t>(-1) && errno != E2BIG;
    out->append(block, static_cast<std::size_t>(to - block));
    return !stuck;
}

std::size_t Converter::Append(std::string_view text, std::string *out) {
    if (!Open()) {
        return 0;
    }
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    char *from = const_cast<char *>(text.data());
    std::size_t from_left = text.size();
    while (from_left > 0 && Step(&from, &from_left, out)) {
    }
    Step(nullptr, nullptr, out);
    return text.size() - from_left;
}

}  // namespace regfile
