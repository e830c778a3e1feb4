// Telling an init system how the daemon fares, as the sd_notify protocol has it: datagrams to the
// socket that NOTIFY_SOCKET names.
#ifndef NTSERVER_NOTIFY_H
#define NTSERVER_NOTIFY_H

#include <chrono>
#include <string>

#include "base/descriptor.h"

namespace ntserver {

class Notifier {
  public:
    // Reads NOTIFY_SOCKET and WATCHDOG_USEC. Without them nothing is ever sent.
    Notifier();

    void Send(const std::string &assignments) const noexcept;
    // Half the time within which the init system expects a sign of life; zero when it expects none.
    std::chrono::milliseconds WatchdogInterval() const noexcept { return interval_; }

  private:
    base::UniqueDescriptor socket_;
    std::chrono::milliseconds interval_{0};
};

}  // namespace ntserver

#endif  // NTSERVER_NOTIFY_H
