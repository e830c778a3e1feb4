// The store's LMDB environment, and the snapshot of it that one thread reads.
//
// Rules of LMDB that hold here: a process opens an environment at most once at a time and closes no
// other descriptor of its lock file; a process that was forked never touches its parent's
// environment (see Environment::Abandon).
#ifndef REGSTORE_ENVIRONMENT_H
#define REGSTORE_ENVIRONMENT_H

#include <cstddef>
#include <memory>
#include <string>

#include <lmdb.h>

#include "regstore/enumeration.h"
#include "regstore/snapshot.h"
#include "regstore/status.h"

namespace regstore {

// Names within the store's folder.
inline constexpr char kStoreFolder[] = "registry";  // below the state folder
inline constexpr char kDataFile[] = "data.mdb";

enum class Access { kRead, kWrite };

// How much address space the store's map takes: the same from the start to the end, because a map
// that grows would have to be moved under every reader. A limit of address space makes it smaller.
std::size_t MapSize() noexcept;

class Environment {
  public:
    // Opens the store in a folder that exists; with kWrite an empty one is made. A store's file is
    // believed as it stands: who opens it has had it verified. On failure *problem tells the step.
    static std::unique_ptr<Environment> Open(const std::string &folder, Access access,
                                             std::string *problem);
    ~Environment();
    Environment(const Environment &) = delete;
    Environment &operator=(const Environment &) = delete;

    MDB_env *Handle() const noexcept { return handle_; }
    // The main database; the store has no other.
    static constexpr MDB_dbi kDatabase = 1;

    // In a forked child: forgets the environment without a call into LMDB, whose closing would
    // clear the parent's reader slots and locks.
    void Abandon() noexcept { handle_ = nullptr; }

  private:
    explicit Environment(MDB_env *handle) noexcept : handle_(handle) {}

    MDB_env *handle_;
};

// One thread's way to read the store. Between two calls it holds a reader slot but no snapshot, so
// that a thread that rests keeps no page of the store from being used again.
class Reader {
  public:
    // Null with *code set to LMDB's reason. The environment must outlive the reader.
    static std::unique_ptr<Reader> Open(const Environment &environment, int *code);
    ~Reader();
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    // Takes a snapshot of the latest committed state; gives LMDB's code.
    int Renew() noexcept { return mdb_txn_renew(transaction_); }
    void Reset() noexcept { mdb_txn_reset(transaction_); }
    Snapshot Current() const noexcept { return {transaction_, Environment::kDatabase}; }
    // For walks down a path, whose keys' records mostly lie side by side.
    Snapshot CurrentForPath() const noexcept {
        const bool ready = mdb_cursor_renew(transaction_, cursor_) == MDB_SUCCESS;
        return {transaction_, Environment::kDatabase, ready ? cursor_ : nullptr};
    }

    // Where this thread's enumerations stand.
    Enumerator &Enumeration() noexcept { return enumerator_; }

    // In a forked child: forgets the transaction, as Environment::Abandon does.
    void Abandon() noexcept {
        transaction_ = nullptr;
        cursor_ = nullptr;
    }

  private:
    Reader(MDB_txn *transaction, MDB_cursor *cursor) noexcept
        : transaction_(transaction), cursor_(cursor) {}

    MDB_txn *transaction_;
    MDB_cursor *cursor_;
    Enumerator enumerator_;
};

// A snapshot for the time of one call.
class ReadScope {
  public:
    explicit ReadScope(Reader &reader) noexcept : reader_(reader), code_(reader.Renew()) {}
    ~ReadScope() {
        if (code_ == MDB_SUCCESS)
            reader_.Reset();
    }
    ReadScope(const ReadScope &) = delete;
    ReadScope &operator=(const ReadScope &) = delete;

    int Code() const noexcept { return code_; }
    Snapshot Current() const noexcept { return reader_.Current(); }

  private:
    Reader &reader_;
    int code_;
};

}  // namespace regstore

#endif  // REGSTORE_ENVIRONMENT_H
