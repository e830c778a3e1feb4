// How long one call of a module may take, name look-up and goodbye included.
#ifndef SESSION_DEADLINE_H
#define SESSION_DEADLINE_H

#include <algorithm>
#include <chrono>

namespace session {

using std::chrono::milliseconds;

// 60 seconds, or the number of seconds (1 to 600) in an environment variable. A program with raised
// rights ignores the variable; any other text in it counts for nothing.
milliseconds Allowance(const char *variable = "KES_MAIL_DEADLINE") noexcept;

// A span of time that starts with the object.
class Deadline {
  public:
    explicit Deadline(milliseconds allowance) noexcept
        : start_(Clock::now()), allowance_(allowance) {}

    milliseconds Elapsed() const noexcept {
        return std::chrono::duration_cast<milliseconds>(Clock::now() - start_);
    }
    // 0 once the deadline has passed.
    milliseconds Remaining() const noexcept {
        return std::max(allowance_ - Elapsed(), milliseconds::zero());
    }

  private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point start_;
    milliseconds allowance_;
};

}  // namespace session

#endif  // SESSION_DEADLINE_H
