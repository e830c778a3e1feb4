// One mail to be sent: the arguments of SendMailWithSMTP, checked and in the module's own types.
#ifndef AMRSMTP_MAIL_H
#define AMRSMTP_MAIL_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <ntwin32/types.h>
#include <session/connection.h>
#include <session/host.h>

namespace amrsmtp {

// The arguments as they came.
struct Arguments {
    const char *server;
    const char *sender;
    DWORD port;
    const char *error_reply;
    DWORD option;
    DWORD form;
    const char *const *to;
    DWORD to_count;
    const char *subject;
    const void *body;
    DWORD size;
    const char *message_id;
};

struct Mail {
    session::Host server;
    unsigned port = 0;
    session::Protection protection = session::Protection::kNone;
    bool verify = true;
    std::string sender;
    std::string envelope_sender;
    std::vector<std::string> recipients;
    std::string subject;     // UTF-8
    std::string_view body;   // the caller's bytes
    std::string message_id;  // without angle brackets; empty: a new one is made
};

// An argument that no mail can be made of; the text says which and why.
class BadArgument : public std::runtime_error {
  public:
    explicit BadArgument(const std::string &what) : std::runtime_error("bad argument: " + what) {}
};

// Throws BadArgument.
Mail ReadArguments(const Arguments &arguments);

}  // namespace amrsmtp

#endif  // AMRSMTP_MAIL_H
