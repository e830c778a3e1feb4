// The C boundary of the agent's libraries.
#ifndef AGENT_BOUNDARY_H
#define AGENT_BOUNDARY_H

#include <ntwin32/types.h>

namespace agent {

// Runs the body of an exported function; what it throws is memory that could not be had, and fails
// the call.
template <typename Body>
BOOL AtBoundary(Body body) noexcept {
    try {
        return body() ? TRUE : FALSE;
    } catch (...) {
        return FALSE;
    }
}

}  // namespace agent

#endif  // AGENT_BOUNDARY_H
