#include "commit_queue.h"

namespace ntserver {

namespace {

// Bounds how long one commit keeps its first client waiting.
constexpr std::size_t kLargestGroup = 256;

}  // namespace

regstore::Status CommitQueue::Run(const Store::Change &change, Sharing sharing) {
    Request mine{change, sharing, {}, false, false, {}};
    std::unique_lock held(lock_);
    waiting_.push_back(&mine);
    if (led_)
        mine.wake.wait(held, [&] { return mine.done || mine.leads; });
    else
        led_ = true;
    while (!mine.done) {
        const std::vector<Request *> group = TakeGroup();
        held.unlock();
        CommitGroup(group);
        held.lock();
        for (Request *request : group) {
            request->done = true;
            if (request != &mine)
                request->wake.notify_one();
        }
        if (mine.done)
            HandOver();
    }
    return mine.status;
}

// The longest run of requests that may share a transaction, or one that may not.
std::vector<CommitQueue::Request *> CommitQueue::TakeGroup() {
    std::vector<Request *> group;
    while (!waiting_.empty() && group.size() < kLargestGroup) {
        Request *const next = waiting_.front();
        if (next->sharing == Sharing::kAlone && !group.empty())
            break;
        group.push_back(next);
        waiting_.pop_front();
        if (next->sharing == Sharing::kAlone)
            break;
    }
    return group;
}

void CommitQueue::CommitGroup(const std::vector<Request *> &group) {
    std::vector<const Store::Change *> changes;
    std::vector<regstore::Status> results;
    changes.reserve(group.size());
    for (const Request *request : group)
        changes.push_back(&request->change);
    store_.Apply(changes, &results);
    for (std::size_t i = 0; i < group.size(); ++i)
        group[i]->status = results[i];
}

void CommitQueue::HandOver() {
    if (waiting_.empty()) {
        led_ = false;
        return;
    }
    waiting_.front()->leads = true;
    waiting_.front()->wake.notify_one();
}

}  // namespace ntserver
