// Adding and deleting items of the system log's table.
#ifndef VELOXCTL_SYSLOG_ITEMS_H
#define VELOXCTL_SYSLOG_ITEMS_H

#include "arguments.h"

namespace veloxctl::syslog {

int RunAdd(const Arguments &arguments);
int RunDelete(const Arguments &arguments);

}  // namespace veloxctl::syslog

#endif  // VELOXCTL_SYSLOG_ITEMS_H
