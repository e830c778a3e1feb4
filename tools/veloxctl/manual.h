// The man page and the shell completion, made from the command table at build time.
#ifndef VELOXCTL_MANUAL_H
#define VELOXCTL_MANUAL_H

#include <string>

#include "table.h"

namespace veloxctl {

// veloxctl(8) for man.
std::string ManualPage(Groups groups);

// The completion for bash.
std::string BashCompletion(Groups groups);

}  // namespace veloxctl

#endif  // VELOXCTL_MANUAL_H
