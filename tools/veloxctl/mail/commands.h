// The commands of "veloxctl mail".
#ifndef VELOXCTL_MAIL_COMMANDS_H
#define VELOXCTL_MAIL_COMMANDS_H

#include "arguments.h"

namespace veloxctl::mail {

int RunShow(const Arguments &arguments);
int RunSet(const Arguments &arguments);

}  // namespace veloxctl::mail

#endif  // VELOXCTL_MAIL_COMMANDS_H
