// The manager as its parameters describe it.
#ifndef AMRVXMN_MANAGER_H
#define AMRVXMN_MANAGER_H

#include <records/manager.h>
#include <session/connection.h>

namespace amrvxmn {

// The manager that the parameters name: the host when it is not empty, else the address; with
// "https://" before the host TLS from the first byte. Throws a Failure when they name none.
session::Endpoint ReadManager(const VLX_MANAGER_PARAM &parameters);

}  // namespace amrvxmn

#endif  // AMRVXMN_MANAGER_H
