// Sending one alert by the report method that is selected.
#ifndef VELOXCTL_QUEUE_SENDER_H
#define VELOXCTL_QUEUE_SENDER_H

#include <queuestore/entry.h>

#include <functional>
#include <string>

namespace veloxctl::queue {

struct Outcome {
    bool sent = false;   // the mail server or the manager has accepted the alert
    std::string reason;  // why it was not sent: one clause, in UTF-8
};

using Sender = std::function<Outcome(const queuestore::Entry &entry)>;

// The sender of the selected method. Fails (EX_UNAVAILABLE) when the registry server is not
// running; whatever else is wrong is the reason why an alert is not sent.
Sender SelectedSender();

}  // namespace veloxctl::queue

#endif  // VELOXCTL_QUEUE_SENDER_H
