// Hands a mail to its server.
#ifndef AMRSMTP_DELIVERY_H
#define AMRSMTP_DELIVERY_H

#include <string>

#include <ntwin32/types.h>
#include <session/deadline.h>

#include "mail.h"

namespace amrsmtp {

struct Outcome {
    DWORD status;
    std::string reason;  // empty when the mail was sent
};

Outcome Deliver(const Mail &mail, const session::Deadline &deadline);

}  // namespace amrsmtp

#endif  // AMRSMTP_DELIVERY_H
