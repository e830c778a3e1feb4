#include "verification.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/descriptor.h"

namespace ntserver {

namespace {

using Clock = std::chrono::steady_clock;

// What the child sends before the text.
struct Report {
    regstore::Totals totals;
    bool sound = false;
};

constexpr std::size_t kLongestText = 1024;

// Closes every descriptor above stderr but two: what the child holds open would keep the parent's
// sockets, connections and locks alive after the parent's death.
void CloseAllBut(int first, int second) noexcept {
    const auto [low, high] = std::minmax(first, second);
    unsigned from = STDERR_FILENO + 1;
    for (const int keep : {low, high}) {
        if (static_cast<unsigned>(keep) > from)
            ::close_range(from, static_cast<unsigned>(keep) - 1, 0);
        from = static_cast<unsigned>(keep) + 1;
    }
    ::close_range(from, ~0U, 0);
}

// Pipes take so few bytes in one piece.
bool WriteAll(int descriptor, const void *bytes, std::size_t size) noexcept {
    return TEMP_FAILURE_RETRY(::write(descriptor, bytes, size)) == static_cast<ssize_t>(size);
}

[[noreturn]] void RunChild(int descriptor, const regstore::Heads &heads, int pipe,
                           pid_t parent) noexcept {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent)
        ::_exit(1);
    CloseAllBut(descriptor, pipe);
    try {
        const regstore::Verdict verdict = regstore::Verify(descriptor, heads);
        const Report report = {verdict.totals, verdict.sound};
        const std::string text = verdict.damage.substr(0, kLongestText);
        if (WriteAll(pipe, &report, sizeof report) && WriteAll(pipe, text.data(), text.size()))
            ::_exit(0);
    } catch (...) {
        // The parent learns of it by the exit status.
    }
    ::_exit(1);
}

// Collects what the child sends until it ends; false when it takes too long.
bool Collect(int pipe, Clock::time_point deadline, const std::function<bool()> &go_on,
             std::string *bytes) {
    char buffer[512];
    while (Clock::now() < deadline && go_on()) {
        struct pollfd wait = {pipe, POLLIN, 0};
        if (::poll(&wait, 1, 1000) <= 0)
            continue;
        const ssize_t got = ::read(pipe, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return true;
        bytes->append(buffer, static_cast<std::size_t>(got));
    }
    return false;
}

Verification Unknown(const char *reason) {
    return {Soundness::kUnknown, reason, {}};
}

Verification Conclude(const std::string &bytes, int wait_status) {
    if (WIFSIGNALED(wait_status))
        return {Soundness::kDamaged,
                "the verification died of signal " + std::to_string(WTERMSIG(wait_status)),
                {}};
    Report report;
    if (!WIFEXITED(wait_status) || WEXITSTATUS(wait_status) != 0 || bytes.size() < sizeof report)
        return Unknown("the verification could not finish");
    std::memcpy(&report, bytes.data(), sizeof report);
    return {report.sound ? Soundness::kSound : Soundness::kDamaged, bytes.substr(sizeof report),
            report.totals};
}

}  // namespace

Verification VerifyInChild(int descriptor, const regstore::Heads &heads,
                           std::chrono::milliseconds limit, const std::function<bool()> &go_on) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return Unknown("no pipe to the verification");
    base::UniqueDescriptor receiver(ends[0]);
    base::UniqueDescriptor sender(ends[1]);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0)
        RunChild(descriptor, heads, sender.Get(), parent);
    sender.Reset();
    if (child < 0)
        return Unknown("no process for the verification");
    std::string bytes;
    const bool in_time = Collect(receiver.Get(), Clock::now() + limit, go_on, &bytes);
    if (!in_time)
        ::kill(child, SIGKILL);
    int status = 0;
    if (TEMP_FAILURE_RETRY(::waitpid(child, &status, 0)) != child)
        return Unknown("the verification was lost");
    return in_time ? Conclude(bytes, status)
                   : Unknown("the verification took too long or was given up");
}

}  // namespace ntserver
