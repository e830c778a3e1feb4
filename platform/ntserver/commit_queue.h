// Sharing commits between clients that wait.
//
// State: requests stand in `waiting_` in the order of their arrival. At most one thread leads: it
// takes what waits, has the store apply and commit it in one transaction, and wakes the owners. A
// thread whose request arrives while nobody leads becomes the leader at once, so that a single
// client waits for no other thread. A leader whose own request is done hands the lead to the owner
// of the first request that waits.
//
// Locks: `lock_`, which is not held while the store is changed.
#ifndef NTSERVER_COMMIT_QUEUE_H
#define NTSERVER_COMMIT_QUEUE_H

#include <condition_variable>
#include <deque>
#include <mutex>
#include <vector>

#include "store.h"

namespace ntserver {

class CommitQueue {
  public:
    explicit CommitQueue(Store *store) noexcept : store_(*store) {}

    // A change that leaves nothing behind when it is refused may share its transaction; one that
    // consists of several steps must have it alone.
    enum class Sharing { kShared, kAlone };

    // Makes a change durable, or gives why it was not made.
    regstore::Status Run(const Store::Change &change, Sharing sharing);

  private:
    struct Request {
        const Store::Change &change;
        Sharing sharing;
        regstore::Status status{};
        bool done = false;
        bool leads = false;
        std::condition_variable wake;
    };

    std::vector<Request *> TakeGroup();
    void CommitGroup(const std::vector<Request *> &group);
    void HandOver();

    Store &store_;
    std::mutex lock_;
    std::deque<Request *> waiting_;
    bool led_ = false;
};

}  // namespace ntserver

#endif  // NTSERVER_COMMIT_QUEUE_H
