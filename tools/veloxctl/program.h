// The way of one call: words to group, command and arguments, and a failure to message and status.
#ifndef VELOXCTL_PROGRAM_H
#define VELOXCTL_PROGRAM_H

#include <string>
#include <vector>

#include "table.h"

namespace veloxctl {

// Carries out what groups offer. What they do not offer, and every help but a command's own, goes
// to otherwise, which does not return without a reason to fail.
int RunProgram(Groups groups, int argc, char **argv, int (*otherwise)(char **argv));

}  // namespace veloxctl

#endif  // VELOXCTL_PROGRAM_H
