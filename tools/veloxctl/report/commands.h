// The commands of "veloxctl report".
#ifndef VELOXCTL_REPORT_COMMANDS_H
#define VELOXCTL_REPORT_COMMANDS_H

#include "arguments.h"

namespace veloxctl::report {

int RunPreview(const Arguments &arguments);
int RunTest(const Arguments &arguments);
int RunOpening(const Arguments &arguments);
int RunSecurityOpen(const Arguments &arguments);
int RunDecode(const Arguments &arguments);
int RunQueueTest(const Arguments &arguments);

}  // namespace veloxctl::report

#endif  // VELOXCTL_REPORT_COMMANDS_H
