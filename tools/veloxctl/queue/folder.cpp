#include "queue/folder.h"

#include <ntwin32/system.h>
#include <unistd.h>

#include <climits>
#include <ctime>

#include "failure.h"
#include "terminal.h"

namespace veloxctl::queue {

std::optional<queuestore::Queue> OpenQueue() {
    char state[PATH_MAX];
    if (GetKesStatePath(state, sizeof(state)) == FALSE) {
        Fail(EX_CONFIG, "KES_STATE is no absolute path");
    }
    const std::string folder = std::string(state) + "/queue";
    if (access(folder.c_str(), F_OK) != 0 && errno == ENOENT) {
        return std::nullopt;
    }
    std::optional<queuestore::Queue> queue(std::in_place);
    std::string problem;
    if (!queue->Open(folder, false, &problem)) {
        Fail(EX_NOPERM, Utf8ToTerminal(problem));
    }
    return queue;
}

std::optional<queuestore::Queue> OpenLockedQueue() {
    std::optional<queuestore::Queue> queue = OpenQueue();
    bool busy = false;
    std::string problem;
    if (queue && !queue->Lock(&busy, &problem)) {
        Fail(busy ? EX_TEMPFAIL : EX_IOERR,
             busy ? "another process is delivering or dropping alerts" : Utf8ToTerminal(problem));
    }
    return queue;
}

std::vector<std::string> Ids(queuestore::Queue *queue) {
    std::vector<std::string> ids;
    std::string problem;
    if (!queue->List(&ids, &problem)) {
        Fail(EX_IOERR, Utf8ToTerminal(problem));
    }
    return ids;
}

std::string TimeStamp(std::int64_t time) {
    const std::time_t seconds = time;
    tm utc = {};
    if (time == 0 || gmtime_r(&seconds, &utc) == nullptr) {
        return "-";
    }
    char text[64] = {};
    (void)std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text;
}

}  // namespace veloxctl::queue
