// When an alert that could not be sent is tried again: after the interval of its destination, then
// after twice that time, and so on up to a limit.
#ifndef VELOXCTL_QUEUE_RETRY_H
#define VELOXCTL_QUEUE_RETRY_H

#include <cstdint>

namespace veloxctl::queue {

inline constexpr std::int64_t kDefaultInterval = 5 * 60L;  // seconds
inline constexpr std::int64_t kLongestInterval = 8 * 3600L;

// The interval of a destination in seconds, from its RETRYINTERVAL in minutes; 0 and more than the
// longest interval give the default.
std::int64_t FirstInterval(std::uint32_t minutes);

// The seconds between a try, the tries-th (from 1), and the next one.
std::int64_t IntervalAfter(std::uint32_t tries, std::int64_t first);

// True when a try is due. A next try that is further away than any interval was set before the
// clock was put back, and is due.
bool IsDue(std::int64_t next_try, std::int64_t now);

}  // namespace veloxctl::queue

#endif  // VELOXCTL_QUEUE_RETRY_H
