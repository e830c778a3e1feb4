// The events that a manager receives: CloudEvents 1.0 in JSON. docs/manager-protocol.md describes
// them.
#ifndef AMRVXMN_EVENT_H
#define AMRVXMN_EVENT_H

#include <records/manager.h>

#include <string>

namespace amrvxmn {

inline constexpr char kContentType[] = "application/cloudevents+json; charset=utf-8";

struct Event {
    std::string id;
    std::string json;
};

// The opening report of the product that the registry names, with this server's service
// information. Its id follows from what it tells, so that a repeated report carries the same one.
// Throws a Failure when any of it cannot be had.
Event MakeOpeningEvent();

// A queued alert, with the same service information. Throws a Failure as well when the alert lacks
// a text or its id is not printable ASCII without blanks.
Event MakeAlertEvent(const VLX_MANAGER_ALERT &alert);

}  // namespace amrvxmn

#endif  // AMRVXMN_EVENT_H
