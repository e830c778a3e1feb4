// The process's open descriptors and threads, to see that a call leaves none behind.
#ifndef MAIL_SUPPORT_CENSUS_H
#define MAIL_SUPPORT_CENSUS_H

#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

namespace mail_support {

struct Census {
    std::ptrdiff_t descriptors = Count("/proc/self/fd");
    std::ptrdiff_t threads = Count("/proc/self/task");

    bool operator==(const Census &) const = default;

    static std::ptrdiff_t Count(const char *folder) {
        return std::distance(std::filesystem::directory_iterator(folder),
                             std::filesystem::directory_iterator());
    }
};

// The census once it equals the expected one, or after ten seconds: threads take a moment to go.
inline Census Settle(const Census &expected) {
    Census now;
    for (int tries = 0; tries < 1000 && !(now == expected); ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        now = Census();
    }
    return now;
}

}  // namespace mail_support

#endif  // MAIL_SUPPORT_CENSUS_H
