// The alert queue: a folder with one file an alert.
//
// State: an alert is in the queue while its file "<id>.json" is in the folder. A file comes and
// changes by being written beside (".<id>.tmp"), synced and renamed, and the folder is synced after
// it, so that an alert is whole or absent whenever the machine stops. What a writer that was killed
// left beside is of no alert and is removed when it is an hour old.
//
// Locks: adding takes none. Whoever delivers or drops holds the folder's lock (".lock").
//
// Conventions
//  1. Functions that give bool give false on failure, with *problem filled: one sentence in UTF-8
//     that names file and cause, without full stop.
//  2. The folder is the queue's own, mode 0700; one that others may write to is refused.
//  3. A Queue belongs to one thread at a time. Several processes may use one folder.
//  4. No function throws anything but std::bad_alloc.
#ifndef QUEUESTORE_QUEUE_H
#define QUEUESTORE_QUEUE_H

#include <base/descriptor.h>
#include <queuestore/entry.h>

#include <string>
#include <vector>

namespace queuestore {

class Queue {
  public:
    // Opens the folder. With `create` it is made when it is missing (the folder above it is not).
    bool Open(const std::string &folder, bool create, std::string *problem);

    // Adds an alert. It is durable when the call gives true; nothing of it is left when it gives
    // false.
    bool Add(const Entry &entry, std::string *problem);

    // The ids of all alerts, oldest first, damaged ones included.
    bool List(std::vector<std::string> *ids, std::string *problem);

    // Reads one alert. *missing (may be null) tells whether it failed for want of such an alert.
    bool Load(const std::string &id, Entry *entry, std::string *problem, bool *missing = nullptr);

    // Replaces an alert durably; on failure the file holds the former state or the new one.
    bool Replace(const Entry &entry, std::string *problem);

    // Removes an alert durably.
    bool Remove(const std::string &id, std::string *problem);

    // Takes the folder's lock until the Queue is destroyed. *busy tells whether it failed because
    // another process holds it.
    bool Lock(bool *busy, std::string *problem);

    // Removes what killed writers left. Failures are of no matter.
    void Clean();

    const std::string &Folder() const { return folder_; }

  private:
    bool Write(const Entry &entry, bool is_new, std::string *problem);
    bool Fail(const std::string &name, std::string *problem) const;

    std::string folder_;
    base::UniqueDescriptor directory_;
    base::UniqueDescriptor lock_;
};

}  // namespace queuestore

#endif  // QUEUESTORE_QUEUE_H
