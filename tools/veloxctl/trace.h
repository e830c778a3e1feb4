// The trace records of a command's own process, for --verbose.
#ifndef VELOXCTL_TRACE_H
#define VELOXCTL_TRACE_H

namespace veloxctl {

// Prints every record from now on to standard error, with the seconds since this call.
void ShowTrace();

}  // namespace veloxctl

#endif  // VELOXCTL_TRACE_H
