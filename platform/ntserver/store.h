// The daemon's store: opened once it is verified, read by many threads, changed by one at a time.
//
// State: `environment_` is open for as long as the store lives, but for the moment in which it is
// closed and opened again after a commit that failed. Every reading thread has a StoreReader, which
// stands in `readers_` and loses its LMDB transaction in that moment. `trusted_` falls when a
// verification finds damage; clients are then told not to map the store.
//
// Locks: `opening_` is shared by whoever reads or writes and held alone by the reopening;
// `registration_` guards `readers_` and is taken after `opening_`.
#ifndef NTSERVER_STORE_H
#define NTSERVER_STORE_H

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

#include "base/descriptor.h"
#include "folders.h"
#include "ntserver/messages.h"
#include "regstore/environment.h"
#include "regstore/generation.h"
#include "regstore/writer.h"
#include "verification.h"

namespace ntserver {

class Store;

// One thread's way to read the store.
class StoreReader {
  public:
    explicit StoreReader(Store *store);
    ~StoreReader();
    StoreReader(const StoreReader &) = delete;
    StoreReader &operator=(const StoreReader &) = delete;

    // Calls function(reader) in a snapshot and gives its result.
    template <typename Function>
    regstore::Status Read(Function function);

  private:
    friend class Store;
    regstore::Status Prepare();

    Store &store_;
    std::unique_ptr<regstore::Reader> reader_;
};

class Store {
  public:
    // Takes the lock, makes a store with the default registry where there is none, verifies and
    // opens it. Null with *problem: it is in use, damaged, or cannot be read. `go_on` is asked
    // about once a second while it takes time.
    static std::unique_ptr<Store> Open(const Folders &folders, const std::function<bool()> &go_on,
                                       std::string *problem);

    // One transaction for the whole group of changes, and the commit that makes them durable. Each
    // change gives its own result. Called by one thread at a time.
    using Change = std::function<regstore::Status(regstore::Writer &)>;
    void Apply(const std::vector<const Change *> &changes, std::vector<regstore::Status> *results);

    // Verifies the present state while the service goes on.
    Verification Verify(std::chrono::milliseconds limit, const std::function<bool()> &go_on);

    // Frees the reader slots and snapshots of processes that died.
    void ForgetDeadReaders() noexcept;

    // The service begins or ends: mapping clients say hello again.
    void Announce(bool service_runs) noexcept { generation_->Advance(service_runs); }
    // What a client must know; the text is the store's own.
    void Describe(HelloAnswer *answer) const noexcept;
    void Describe(ServerAnswer *answer) const noexcept;

  private:
    friend class StoreReader;
    Store() = default;

    void FinishDeadWriter() noexcept;
    bool OpenEnvironment(std::string *problem);
    regstore::Status Commit(regstore::Writer *writer);
    bool ApplyTogether(const std::vector<const Change *> &changes,
                       std::vector<regstore::Status> *results);
    regstore::Status Recover(int code, std::size_t transaction);

    static constexpr unsigned kCommitsBetweenChecks = 64;

    std::string folder_;
    unsigned commits_ = 0;  // of this run; the committing thread's own
    base::UniqueDescriptor lock_;
    std::unique_ptr<regstore::Environment> environment_;
    std::unique_ptr<regstore::Generation> generation_;
    std::shared_mutex opening_;
    std::mutex registration_;
    std::vector<StoreReader *> readers_;
    std::atomic<bool> trusted_{true};
    std::atomic<std::int64_t> keys_{0};
    std::atomic<std::int64_t> values_{0};
};

template <typename Function>
regstore::Status StoreReader::Read(Function function) {
    const std::shared_lock held(store_.opening_);
    const regstore::Status status = Prepare();
    if (status != regstore::Status::kSuccess)
        return status;
    const regstore::ReadScope scope(*reader_);
    return scope.Code() == MDB_SUCCESS ? function(*reader_)
                                       : regstore::StatusFromLmdb(scope.Code());
}

}  // namespace ntserver

#endif  // NTSERVER_STORE_H
