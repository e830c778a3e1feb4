#include "subject.h"

#include <algorithm>
#include <memory>

#include <glib.h>

#include "mail.h"

namespace amrsmtp {

namespace {

constexpr std::size_t kLongestSubject = 255;

struct Free {
    void operator()(char *text) const noexcept { g_free(text); }
};

bool IsControlByte(unsigned char byte) {
    return byte < 0x20 || byte == 0x7F;
}

}  // namespace

std::string ReadSubject(const char *text) {
    const std::string subject = text;
    if (subject.size() > kLongestSubject)
        throw BadArgument("the subject is longer than " + std::to_string(kLongestSubject) +
                          " bytes");
    if (std::ranges::any_of(subject, IsControlByte))
        throw BadArgument("the subject holds a control byte");
    const std::unique_ptr<char, Free> converted(g_convert(text, static_cast<gssize>(subject.size()),
                                                          "UTF-8", "EUC-JP-MS", nullptr, nullptr,
                                                          nullptr));
    if (converted == nullptr)
        throw BadArgument("the subject is no EUC-JP text");
    return converted.get();
}

}  // namespace amrsmtp
