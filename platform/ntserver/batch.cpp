#include "batch.h"

#include "ntserver/protocol.h"
#include "ntserver/wire.h"

namespace ntserver {

namespace {

using regstore::KeyId;
using regstore::Status;
using regstore::Writer;

// As KES_REG_OPERATION counts.
enum Kind : std::uint8_t { kCreateKey = 1, kSetValue = 2, kDeleteValue = 3, kDeleteTree = 4 };

bool IsWellFormed(const BatchChange &change, bool first) noexcept {
    const bool sets = change.operation == kSetValue;
    const bool names = sets || change.operation == kDeleteValue;
    return change.operation >= kCreateKey && change.operation <= kDeleteTree &&
           !(change.same_path && (first || !change.path.empty())) &&
           (names || change.name.empty()) && (sets || (change.type == 0 && change.data.empty()));
}

// Something that is absent needs no deletion.
Status ForgiveAbsence(Status status) noexcept {
    return status == Status::kNotFound ? Status::kSuccess : status;
}

// Changes of one batch come in runs below the same path, which is looked up once for each run.
class Applier {
  public:
    Applier(KeyId key, Writer &writer) noexcept : key_(key), writer_(writer) {}

    Status Apply(const BatchChange &change) {
        if (!change.same_path) {
            path_ = change.path;
            found_ = kNone;
        }
        switch (change.operation) {
            case kSetValue:
                return SetValue(change);
            case kDeleteValue:
                return DeleteValue(change.name);
            case kDeleteTree:
                found_ = kNone;
                return ForgiveAbsence(writer_.DeleteTree(key_, path_));
            default:
                return Create();
        }
    }

  private:
    Status Create() {
        bool created = false;
        return found_ != kNone ? Status::kSuccess
                               : writer_.CreateKey(key_, path_, {}, &found_, &created);
    }
    Status SetValue(const BatchChange &change) {
        const Status status = Create();
        return status != Status::kSuccess
                   ? status
                   : writer_.SetValue(found_, change.name, change.type, change.data);
    }
    Status DeleteValue(std::string_view name) {
        Status status = Status::kSuccess;
        if (found_ == kNone)
            status = writer_.FindKey(key_, path_, &found_);
        if (status == Status::kSuccess)
            status = writer_.DeleteValue(found_, name);
        return ForgiveAbsence(status);
    }

    static constexpr KeyId kNone = 0;

    KeyId key_;
    Writer &writer_;
    std::string_view path_;
    KeyId found_ = kNone;  // the key at path_, once it was looked up
};

}  // namespace

bool Batch::Add(std::string_view payload, Keep keep) {
    begun_ = true;
    for (Decoder decoder(payload); !decoder.AtEnd(); ++count_) {
        BatchChange change;
        if (!decoder.GetMessage(&change) || !IsWellFormed(change, count_ == 0) ||
            count_ == UINT32_MAX)
            return false;
    }
    size_ += payload.size() + sizeof(std::string);
    too_large_ = too_large_ || size_ > kMaxBatchBytes;
    if (too_large_)
        frames_.clear();
    else if (keep == Keep::kYes)
        frames_.emplace_back(payload);
    return true;
}

void Batch::Clear() noexcept {
    *this = Batch();
}

Status Batch::Apply(KeyId key, Writer &writer, std::uint32_t *failed) const {
    Applier applier(key, writer);
    std::uint32_t index = 0;
    for (const std::string &frame : frames_) {
        for (Decoder decoder(frame); !decoder.AtEnd(); ++index) {
            BatchChange change;
            // Add has seen that every frame is well formed.
            const Status status =
                decoder.GetMessage(&change) ? applier.Apply(change) : Status::kInvalidData;
            if (status != Status::kSuccess) {
                *failed = index;
                return status;
            }
        }
    }
    *failed = index;
    return Status::kSuccess;
}

}  // namespace ntserver
