// The module's one function. It keeps nothing between calls: the queue is the folder.
#include <ntwin32/system.h>
#include <queuestore/queue.h>
#include <tracelog.h>

#include <ctime>
#include <exception>

#include "slots.h"

extern "C" NTWIN32_API AMQUENEWADD AMQueNewAdd;

namespace {

constexpr char kSource[] = "amvmque";
constexpr char kFunction[] = "AMQueNewAdd";
constexpr int kNote = 0;
constexpr int kFailure = 1;
constexpr int kMemory = 2;

bool QueueFolder(std::string *folder) {
    char state[4096];
    if (GetKesStatePath(state, sizeof state) == FALSE) {
        return false;
    }
    *folder = std::string(state) + "/queue";
    return true;
}

bool Add(const AMQUE_ITEM &slots, std::string *id, std::string *problem) {
    queuestore::Entry entry;
    std::string folder;
    if (!CopySlots(slots, &entry.item, problem)) {
        return false;
    }
    if (!QueueFolder(&folder)) {
        *problem = "the folder of the product's state is not known";
        return false;
    }
    entry.id = *id = queuestore::NewId();
    entry.message_id = queuestore::MessageIdOf(entry.id, entry.item.computer);
    entry.queued = std::time(nullptr);
    queuestore::Queue queue;
    return queue.Open(folder, true, problem) && queue.Add(entry, problem);
}

}  // namespace

BOOL AMQueNewAdd(const AMQUE_ITEM *lpItem) noexcept {
    TraceLog(kNote, kSource, kFunction, __LINE__, ">lpItem=%p", static_cast<const void *>(lpItem));
    try {
        std::string id;
        std::string problem = "the item is null";
        if (lpItem == nullptr || !Add(*lpItem, &id, &problem)) {
            TraceLog(kFailure, kSource, kFunction, __LINE__, "<%s.return FALSE.", problem.c_str());
            return FALSE;
        }
        TraceLog(kNote, kSource, kFunction, __LINE__, "<%s.return TRUE.", id.c_str());
        return TRUE;
    } catch (const std::exception &) {  // no memory: nothing else is thrown
        TraceLog(kMemory, kSource, kFunction, __LINE__, "<no memory.return FALSE.");
        return FALSE;
    }
}
