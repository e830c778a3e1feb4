#include "queue/retry.h"

#include <algorithm>

namespace veloxctl::queue {

std::int64_t FirstInterval(std::uint32_t minutes) {
    const std::int64_t seconds = std::int64_t{minutes} * 60;
    return seconds == 0 || seconds > kLongestInterval ? kDefaultInterval : seconds;
}

std::int64_t IntervalAfter(std::uint32_t tries, std::int64_t first) {
    std::int64_t interval = first;
    for (std::uint32_t i = 1; i < tries && interval < kLongestInterval; ++i) {
        interval *= 2;
    }
    return std::min(interval, kLongestInterval);
}

bool IsDue(std::int64_t next_try, std::int64_t now) {
    return next_try <= now || next_try > now + kLongestInterval;
}

}  // namespace veloxctl::queue
