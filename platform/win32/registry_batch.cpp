// KesRegApplyBatch: many changes, sent in few large frames, made whole or not at all.
#include <optional>

#include <ntwin32/registry.h>

#include "registry_arguments.h"
#include "registry_client.h"

namespace win32 {

namespace {

using ntserver::Operation;
using regstore::Status;

// A frame is sent before it grows beyond this, unless a single change does.
constexpr std::size_t kFrameSize = std::size_t{256} << 10;

// Turns one change into its message; false when its arguments are ill-formed.
bool ToMessage(const KES_REG_CHANGE &from, std::string_view previous_path,
               ntserver::BatchChange *change) noexcept {
    const bool sets = from.dwOperation == KES_REG_SET_VALUE;
    if (from.dwOperation < KES_REG_CREATE_KEY || from.dwOperation > KES_REG_DELETE_TREE ||
        from.dwReserved != 0 || from.cbData > KES_REG_MAX_DATA ||
        (sets && from.lpData == nullptr && from.cbData != 0))
        return false;
    const bool names = sets || from.dwOperation == KES_REG_DELETE_VALUE;
    change->operation = static_cast<std::uint8_t>(from.dwOperation);
    change->path = PathArgument(from.lpPath);
    change->same_path = change->path == previous_path;
    change->name = names ? NameArgument(from.lpValueName) : std::string_view();
    change->type = sets ? from.dwType : 0;
    change->data = sets && from.cbData != 0
                       ? std::string_view(reinterpret_cast<const char *>(from.lpData), from.cbData)
                       : std::string_view();
    return change->name.size() <= regstore::kMaxName && change->path.size() <= regstore::kMaxPath;
}

// Sends a batch's frames. What it sends takes effect only with the last, which Commit sends.
class BatchSender {
  public:
    BatchSender(Connection *connection, ntserver::Deadline deadline)
        : connection_(*connection), deadline_(deadline) {}

    bool SendChanges(const KES_REG_CHANGE *changes, DWORD count) {
        std::string_view path;
        for (DWORD i = 0; i < count; ++i) {
            ntserver::BatchChange change;
            // Checked before: ToMessage cannot fail.
            if (!ToMessage(changes[i], path, &change) || !Add(&change, i == 0))
                return false;
            path = PathArgument(changes[i].lpPath);
        }
        return SendFrame();
    }
    bool SendCommit(HKEY key, DWORD count) {
        ntserver::FrameBuilder frame(&bytes_, Operation::kBatchCommit, connection_.NextTag());
        frame.Payload().PutMessage(ntserver::BatchCommitRequest{key, count});
        frame.Finish();
        return SendFrame();
    }

  private:
    bool Add(ntserver::BatchChange *change, bool first) {
        change->same_path = change->same_path && !first;
        if (change->same_path)
            change->path = {};
        const std::size_t size = change->path.size() + change->name.size() + change->data.size();
        if (!bytes_.empty() && bytes_.size() + size > kFrameSize && !SendFrame())
            return false;
        if (bytes_.empty())
            frame_.emplace(&bytes_, Operation::kBatchChanges, connection_.NextTag());
        frame_->Payload().PutMessage(*change);
        frame_->Finish();
        return true;
    }
    bool SendFrame() {
        const bool sent = connection_.SendRaw(bytes_, deadline_);
        bytes_.clear();
        return sent;
    }

    Connection &connection_;
    ntserver::Deadline deadline_;
    std::string bytes_;
    std::optional<ntserver::FrameBuilder> frame_;
};

// One try at a whole batch. *sent tells whether the daemon may have got all of it.
Status TryBatch(Connection *connection, HKEY key, const KES_REG_CHANGE *changes, DWORD count,
                bool *sent, ntserver::BatchAnswer *answer) {
    *sent = false;
    const Status ready = connection->MakeReady();
    if (ready != Status::kSuccess)
        return ready;
    BatchSender sender(connection, ntserver::Clock::now() + ntserver::kBatchLimit);
    if (!sender.SendChanges(changes, count) || !sender.SendCommit(key, count))
        return Status::kNoAnswer;
    *sent = true;
    return connection->ReceiveAnswer(Operation::kBatchCommit, answer, ntserver::kBatchLimit);
}

Status ApplyBatch(HKEY key, const KES_REG_CHANGE *changes, DWORD count,
                  ntserver::BatchAnswer *answer) {
    ThreadState *state = nullptr;
    Status status = PrepareThread(&state);
    bool sent = false;
    for (int attempt = 0; status == Status::kSuccess && attempt < 2 && !sent; ++attempt) {
        status = TryBatch(&state->connection, key, changes, count, &sent, answer);
        if (status == Status::kNoAnswer && !sent && attempt == 0)
            status = Status::kSuccess;
    }
    return status;
}

}  // namespace

}  // namespace win32

using namespace win32;

LONG KesRegApplyBatch(HKEY hKey, const KES_REG_CHANGE *lpChanges, DWORD dwCount,
                      DWORD *lpdwFailed) NTWIN32_NOEXCEPT {
    ntserver::BatchAnswer answer{dwCount};
    if (lpChanges == nullptr && dwCount != 0)
        return ERROR_INVALID_PARAMETER;
    for (DWORD i = 0; i < dwCount; ++i) {
        ntserver::BatchChange change;
        if (!ToMessage(lpChanges[i], {}, &change)) {
            HandOutNumber(i, lpdwFailed);
            return ERROR_INVALID_PARAMETER;
        }
    }
    const LONG result = Guard([&] { return ApplyBatch(hKey, lpChanges, dwCount, &answer); });
    if (result != ERROR_SUCCESS)
        HandOutNumber(answer.failed, lpdwFailed);
    return result;
}
