// What an alert says, as lines behind the service information text.
#ifndef VELOXCTL_QUEUE_ALERT_LINES_H
#define VELOXCTL_QUEUE_ALERT_LINES_H

#include <queuestore/entry.h>

#include <string>
#include <vector>

namespace veloxctl::queue {

struct AlertLine {
    std::string heading;  // "[ALERT]", ASCII
    std::string value;    // as stored
};

// Headings and values in their order; texts that are empty are left out.
std::vector<AlertLine> LinesOf(const queuestore::Entry &entry);

// The same as a report carries them: EUC-JP, each line ended by CR LF. A further line of a value
// begins with a blank, so that no value can look like a heading.
std::string ReportLines(const queuestore::Entry &entry);

}  // namespace veloxctl::queue

#endif  // VELOXCTL_QUEUE_ALERT_LINES_H
