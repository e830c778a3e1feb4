// "veloxctl queue deliver" and "veloxctl queue drop".
//
// State of an alert: a try is recorded in its file before anything is sent, as one that was
// interrupted; the file goes when the alert was accepted, or receives the reason when it was not.
// Whoever is killed in between leaves an alert that is tried again under the same Message-ID and
// event id, and never one that was recorded as delivered.
#include <algorithm>
#include <cstring>
#include <ctime>
#include <set>

#include "failure.h"
#include "prompt.h"
#include "queue/commands.h"
#include "queue/folder.h"
#include "queue/retry.h"
#include "queue/sender.h"
#include "registry.h"
#include "terminal.h"

namespace veloxctl::queue {

namespace {

using queuestore::Entry;
using queuestore::Queue;

constexpr char kInterrupted[] = "the try was interrupted: it is not known whether it was received";

// The worst that happened to any alert decides the command's exit status.
struct Summary {
    bool waiting = false;
    bool damaged = false;
    bool unwritten = false;

    int Status() const {
        return unwritten ? EX_IOERR : damaged ? EX_DATAERR : waiting ? EX_TEMPFAIL : EX_OK;
    }
};

std::int64_t IntervalOf(const Entry &entry) {
    const auto value = ReadValue(entry.item.destination + "\\SCHEDULE", "RETRYINTERVAL");
    std::uint32_t minutes = 0;
    if (value && value->data.size() == sizeof(minutes)) {
        std::memcpy(&minutes, value->data.data(), sizeof(minutes));
    }
    return IntervalAfter(entry.delivery.tries, FirstInterval(minutes));
}

class Deliverer {
  public:
    Deliverer(Queue *queue, Sender send, bool all)
        : queue_(queue), send_(std::move(send)), all_(all) {}

    const Summary &Result() const { return summary_; }

    void Deliver(const std::string &id) {
        Entry entry;
        std::string problem;
        bool missing = false;
        if (!queue_->Load(id, &entry, &problem, &missing)) {
            summary_.damaged = summary_.damaged || !missing;
            Complain(missing ? id + ": there is no such alert in the queue"
                             : Utf8ToTerminal(problem));
            return;
        }
        if (!all_ && !IsDue(entry.delivery.next_try, std::time(nullptr))) {
            summary_.waiting = true;
            return;
        }
        ++entry.delivery.tries;
        entry.delivery.reason = kInterrupted;
        if (Record(&entry)) {
            Finish(&entry, send_(entry));
        }
    }

  private:
    bool Record(Entry *entry) {
        entry->delivery.last_try = std::time(nullptr);
        entry->delivery.next_try = entry->delivery.last_try + IntervalOf(*entry);
        return Written(queue_->Replace(*entry, &problem_));
    }

    void Finish(Entry *entry, const Outcome &outcome) {
        if (outcome.sent) {
            if (Written(queue_->Remove(entry->id, &problem_))) {
                Print(entry->id + ": delivered\n");
            }
            return;
        }
        entry->delivery.reason = outcome.reason;
        summary_.waiting = true;
        Complain(entry->id + ": " + Utf8ToTerminal(outcome.reason));
        (void)Record(entry);
    }

    bool Written(bool done) {
        if (!done) {
            summary_.unwritten = true;
            Complain(Utf8ToTerminal(problem_));
        }
        return done;
    }

    Queue *queue_;
    Sender send_;
    bool all_;
    Summary summary_;
    std::string problem_;
};

// Until nothing new has come in the meantime: whoever queues an alert now may find nobody else to
// be woken.
void DeliverAll(Queue *queue, Deliverer *deliverer) {
    std::set<std::string> seen;
    for (bool more = true; more;) {
        more = false;
        for (const std::string &id : Ids(queue)) {
            if (seen.insert(id).second) {
                deliverer->Deliver(id);
                more = true;
            }
        }
    }
}

// Fails when an id is none of the queue's, before anything is done.
void CheckIds(Queue *queue, const std::vector<std::string> &ids) {
    const std::vector<std::string> present =
        queue != nullptr ? Ids(queue) : std::vector<std::string>();
    for (const std::string &id : ids) {
        if (std::find(present.begin(), present.end(), id) == present.end()) {
            Fail(EX_NOINPUT, id + ": there is no such alert in the queue");
        }
    }
}

}  // namespace

int RunDeliver(const Arguments &arguments) {
    const std::vector<std::string> &asked = arguments.All("ID");
    std::optional<Queue> queue = OpenLockedQueue();
    CheckIds(queue ? &*queue : nullptr, asked);
    if (!queue) {
        return EX_OK;
    }
    queue->Clean();
    if (Ids(&*queue).empty()) {
        return EX_OK;
    }
    Deliverer deliverer(&*queue, SelectedSender(), arguments.Has("now") || !asked.empty());
    for (const std::string &id : asked) {
        deliverer.Deliver(id);
    }
    if (asked.empty()) {
        DeliverAll(&*queue, &deliverer);
    }
    return deliverer.Result().Status();
}

int RunDrop(const Arguments &arguments) {
    const std::vector<std::string> &ids = arguments.All("ID");
    if (!arguments.Has("force")) {
        Confirm("Drop " + std::to_string(ids.size()) + " of the waiting alerts?",
                "give --force to drop them without asking");
    }
    std::optional<Queue> queue = OpenLockedQueue();
    CheckIds(queue ? &*queue : nullptr, ids);
    for (const std::string &id : ids) {
        std::string problem;
        if (!queue->Remove(id, &problem)) {
            Fail(EX_IOERR, Utf8ToTerminal(problem));
        }
    }
    return EX_OK;
}

}  // namespace veloxctl::queue
