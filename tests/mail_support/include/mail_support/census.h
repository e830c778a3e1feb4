// The process's open descriptors and threads, to see that a call leaves none behind.
#ifndef MAIL_SUPPORT_CENSUS_H
#define MAIL_SUPPORT_CENSUS_H

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

namespace mail_support {

struct Census {
    std::ptrdiff_t descriptors = Count("/proc/self/fd");
    std::ptrdiff_t threads = Count("/proc/self/task");

    static std::ptrdiff_t Count(const char *folder) {
        return std::distance(std::filesystem::directory_iterator(folder),
                             std::filesystem::directory_iterator());
    }
};

// Waits, at most ten seconds, until no more are open than at the first census: they take a moment
// to go. Fewer is well, because something that was about to go may have been counted.
inline testing::AssertionResult NothingLeftSince(const Census &before) {
    Census now;
    for (int tries = 0; tries < 1000; ++tries) {
        if (now.descriptors <= before.descriptors && now.threads <= before.threads)
            return testing::AssertionSuccess();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        now = Census();
    }
    return testing::AssertionFailure()
           << "descriptors: " << now.descriptors << ", before: " << before.descriptors
           << "; threads: " << now.threads << ", before: " << before.threads;
}

}  // namespace mail_support

#endif  // MAIL_SUPPORT_CENSUS_H
