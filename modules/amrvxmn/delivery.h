// One event on its way to the manager.
#ifndef AMRVXMN_DELIVERY_H
#define AMRVXMN_DELIVERY_H

#include <session/connection.h>
#include <session/deadline.h>

#include "event.h"

namespace amrvxmn {

// Returns when the manager accepted the event, and throws a Failure otherwise. The function's name
// goes into the trace.
void Deliver(const session::Endpoint &manager, const Event &event,
             const session::Deadline &deadline, const char *function);

}  // namespace amrvxmn

#endif  // AMRVXMN_DELIVERY_H
