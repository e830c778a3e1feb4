// The commands of "veloxctl queue".
#ifndef VELOXCTL_QUEUE_COMMANDS_H
#define VELOXCTL_QUEUE_COMMANDS_H

#include "arguments.h"

namespace veloxctl::queue {

int RunList(const Arguments &arguments);
int RunShow(const Arguments &arguments);
int RunDeliver(const Arguments &arguments);
int RunDrop(const Arguments &arguments);

}  // namespace veloxctl::queue

#endif  // VELOXCTL_QUEUE_COMMANDS_H
