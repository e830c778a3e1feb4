#include "session/deadline.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace session {

milliseconds Allowance(const char *variable) noexcept {
    constexpr int kOrdinary = 60;
    constexpr int kLongest = 600;
    int seconds = kOrdinary;
    if (const char *text = ::secure_getenv(variable)) {
        const char *end = text + std::strlen(text);
        int wanted = 0;
        const auto [rest, error] = std::from_chars(text, end, wanted);
        if (error == std::errc() && rest == end && wanted >= 1 && wanted <= kLongest)
            seconds = wanted;
    }
    return std::chrono::seconds(seconds);
}

}  // namespace session
