// The mail as it goes over the line.
#ifndef AMRSMTP_MESSAGE_H
#define AMRSMTP_MESSAGE_H

#include <string>

#include "mail.h"

namespace amrsmtp {

// Headers, an empty line and the body as 7-bit text, every line ended by CR LF.
std::string ComposeMessage(const Mail &mail);

}  // namespace amrsmtp

#endif  // AMRSMTP_MESSAGE_H
