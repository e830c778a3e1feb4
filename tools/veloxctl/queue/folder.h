// The queue as the commands open it, and words for what stands in it.
#ifndef VELOXCTL_QUEUE_FOLDER_H
#define VELOXCTL_QUEUE_FOLDER_H

#include <queuestore/queue.h>

#include <optional>
#include <string>
#include <vector>

namespace veloxctl::queue {

// Nothing when no alert was ever queued. Fails when the folder cannot be used.
std::optional<queuestore::Queue> OpenQueue();

// The same with the folder's lock. Fails (EX_TEMPFAIL) when another process delivers or drops.
std::optional<queuestore::Queue> OpenLockedQueue();

// The ids, oldest first. Fails when the folder cannot be read.
std::vector<std::string> Ids(queuestore::Queue *queue);

// "2024-03-05T00:53:20Z", as standard time stamps are written; "-" for 0.
std::string TimeStamp(std::int64_t time);

}  // namespace veloxctl::queue

#endif  // VELOXCTL_QUEUE_FOLDER_H
