// One log-in at a POP server.
//
// States: idle -> logged in (Connect) -> idle (Disconnect). A failed Connect has closed its
// connection and leaves the state idle. The time limit is one span for Connect and Disconnect
// together; what lies between the two calls does not count.
#ifndef AMRPOP_LOGIN_H
#define AMRPOP_LOGIN_H

#include <memory>
#include <optional>
#include <string>

#include <records/mail_modules.h>
#include <session/connection.h>
#include <session/conversation.h>
#include <session/deadline.h>
#include <session/host.h>

#include "secret.h"

namespace amrpop {

class LogIn {
  public:
    // Throws std::invalid_argument, which names the field, for a record that no log-in can be made
    // with.
    explicit LogIn(const TRANSPORTINFO &info);
    LogIn(const LogIn &) = delete;
    LogIn &operator=(const LogIn &) = delete;

    bool Connect();
    bool Disconnect();

  private:
    session::Endpoint MakeEndpoint() const;
    bool SayGoodbye();
    bool SendAll(std::string_view text);
    std::optional<std::string> ReadLine();
    bool Wait(short events);

    session::Host server_;
    unsigned port_;
    std::string account_;
    Password password_;
    Discretion discretion_;
    session::Deadline deadline_;
    session::milliseconds allowance_;
    session::Conversation conversation_;
    std::unique_ptr<session::Connection> connection_;  // while logged in
};

}  // namespace amrpop

#endif  // AMRPOP_LOGIN_H
