// The trace records of a command's own process, for --verbose and for messages.
#ifndef VELOXCTL_TRACE_H
#define VELOXCTL_TRACE_H

#include <string>
#include <vector>

namespace veloxctl {

// Prints every record from now on to standard error, with the seconds since this call.
void ShowTrace();

// From now on keeps the last failure that one of these sources traces: the reason that a module
// gave, for a command's own message.
void KeepFailuresOf(std::vector<std::string> sources);
// As stored; empty when there was none.
std::string KeptFailure();

}  // namespace veloxctl

#endif  // VELOXCTL_TRACE_H
