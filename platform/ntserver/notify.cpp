#include "notify.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "log.h"

namespace ntserver {

namespace {

constexpr std::chrono::milliseconds kShortestInterval{100};

// A connected datagram socket, or an empty one.
base::UniqueDescriptor Connect(const char *path) {
    struct sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::size_t length = std::strlen(path);
    if (length < 2 || length >= sizeof address.sun_path || (*path != '/' && *path != '@')) {
        Log(Priority::kWarning, "NOTIFY_SOCKET is not usable");
        return {};
    }
    std::memcpy(address.sun_path, path, length);
    if (*path == '@')
        address.sun_path[0] = '\0';
    base::UniqueDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto size = static_cast<socklen_t>(offsetof(struct sockaddr_un, sun_path) + length);
    if (!socket ||
        ::connect(socket.Get(), reinterpret_cast<struct sockaddr *>(&address), size) != 0) {
        Log(Priority::kWarning, "NOTIFY_SOCKET cannot be reached: %s", std::strerror(errno));
        return {};
    }
    return socket;
}

// The watchdog is meant for the process that WATCHDOG_PID names, when it names one.
bool WatchdogIsForUs() noexcept {
    const char *const pid = ::secure_getenv("WATCHDOG_PID");
    return pid == nullptr || std::strtol(pid, nullptr, 10) == ::getpid();
}

}  // namespace

Notifier::Notifier() {
    if (const char *const path = ::secure_getenv("NOTIFY_SOCKET"))
        socket_ = Connect(path);
    const char *const microseconds = ::secure_getenv("WATCHDOG_USEC");
    if (microseconds == nullptr || !WatchdogIsForUs())
        return;
    const long long limit = std::strtoll(microseconds, nullptr, 10);
    if (limit > 0)
        interval_ = std::max(std::chrono::duration_cast<std::chrono::milliseconds>(
                                 std::chrono::microseconds(limit / 2)),
                             kShortestInterval);
}

void Notifier::Send(const std::string &assignments) const noexcept {
    if (socket_)
        ::send(socket_.Get(), assignments.data(), assignments.size(), MSG_NOSIGNAL);
}

}  // namespace ntserver
