// The commands of "veloxctl reg".
#ifndef VELOXCTL_REG_COMMANDS_H
#define VELOXCTL_REG_COMMANDS_H

#include <optional>
#include <string>

#include "arguments.h"

namespace veloxctl::reg {

int RunQuery(const Arguments &arguments);
int RunAdd(const Arguments &arguments);
int RunDelete(const Arguments &arguments);
int RunCopy(const Arguments &arguments);
int RunCompare(const Arguments &arguments);
int RunExport(const Arguments &arguments);
int RunImport(const Arguments &arguments);
int RunVerify(const Arguments &arguments);

// The name that --value or --ve gives, as stored; empty for the default value, nothing without
// either. Fails (EX_USAGE) when both are given.
std::optional<std::string> ValueNameAsked(const Arguments &arguments);

}  // namespace veloxctl::reg

#endif  // VELOXCTL_REG_COMMANDS_H
