// The name that a server's certificate must be for.
#ifndef AMRSMTP_SERVER_NAME_H
#define AMRSMTP_SERVER_NAME_H

#include <optional>
#include <string>

#include <session/host.h>

namespace amrsmtp {

// The mail settings keep the server's name ("Server") beside the address it had when they were made
// ("IP"). Gives the name when it is one and the stored address is this one.
std::optional<std::string> StoredNameOf(const session::Host &server);

}  // namespace amrsmtp

#endif  // AMRSMTP_SERVER_NAME_H
