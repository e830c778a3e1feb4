#include "regstore/environment.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace regstore {

namespace {

constexpr std::size_t kFullMap = std::size_t{64} << 30;
constexpr std::size_t kSmallestMap = std::size_t{16} << 20;
// One slot a reading thread of every process; 126 would be LMDB's own choice.
constexpr unsigned kReaderSlots = 4096;

std::string Reason(const char *step, int code) {
    return std::string(step) + ": " + mdb_strerror(code);
}

struct CloseEnvironment {
    void operator()(MDB_env *handle) const noexcept { mdb_env_close(handle); }
};
using UniqueEnvironment = std::unique_ptr<MDB_env, CloseEnvironment>;

// LMDB leaves this descriptor open across exec.
void CloseOnExec(MDB_env *handle) noexcept {
    int descriptor = -1;
    if (mdb_env_get_fd(handle, &descriptor) == MDB_SUCCESS)
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
}

// Begins a read; when all slots are taken, those of processes that died without a goodbye are
// freed.
int BeginRead(MDB_env *handle, MDB_txn **transaction) {
    int code = mdb_txn_begin(handle, nullptr, MDB_RDONLY, transaction);
    int stale = 0;
    if (code == MDB_READERS_FULL && mdb_reader_check(handle, &stale) == MDB_SUCCESS && stale > 0)
        code = mdb_txn_begin(handle, nullptr, MDB_RDONLY, transaction);
    return code;
}

// The main database has its number from the start, but gets its order of keys only here.
int OpenDatabase(MDB_env *handle) {
    MDB_txn *transaction = nullptr;
    int code = BeginRead(handle, &transaction);
    if (code != MDB_SUCCESS)
        return code;
    MDB_dbi database = 0;
    code = mdb_dbi_open(transaction, nullptr, 0, &database);
    mdb_txn_abort(transaction);
    if (code == MDB_SUCCESS && database != Environment::kDatabase)
        code = MDB_BAD_DBI;
    return code;
}

int OpenWithMap(const std::string &folder, Access access, std::size_t map_size,
                UniqueEnvironment *opened) {
    MDB_env *handle = nullptr;
    int code = mdb_env_create(&handle);
    if (code != MDB_SUCCESS)
        return code;
    UniqueEnvironment environment(handle);
    const unsigned flags = MDB_NOTLS | (access == Access::kRead ? MDB_RDONLY : 0U);
    if ((code = mdb_env_set_maxreaders(handle, kReaderSlots)) != MDB_SUCCESS ||
        (code = mdb_env_set_mapsize(handle, map_size)) != MDB_SUCCESS ||
        (code = mdb_env_open(handle, folder.c_str(), flags, 0600)) != MDB_SUCCESS)
        return code;
    CloseOnExec(handle);
    if ((code = OpenDatabase(handle)) != MDB_SUCCESS)
        return code;
    *opened = std::move(environment);
    return MDB_SUCCESS;
}

}  // namespace

std::size_t MapSize() noexcept {
    struct rlimit limit = {};
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return kFullMap;
    // A quarter leaves room for the program itself.
    const std::size_t quarter = static_cast<std::size_t>(limit.rlim_cur / 4);
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return std::clamp(quarter / page * page, kSmallestMap, kFullMap);
}

std::unique_ptr<Environment> Environment::Open(const std::string &folder, Access access,
                                               std::string *problem) {
    UniqueEnvironment opened;
    int code = ENOMEM;
    for (std::size_t size = MapSize(); code == ENOMEM && size >= kSmallestMap; size /= 2)
        code = OpenWithMap(folder, access, size, &opened);
    if (code != MDB_SUCCESS) {
        *problem = Reason("the store cannot be opened", code);
        return nullptr;
    }
    return std::unique_ptr<Environment>(new Environment(opened.release()));
}

Environment::~Environment() {
    if (handle_ != nullptr)
        mdb_env_close(handle_);
}

std::unique_ptr<Reader> Reader::Open(const Environment &environment, int *code) {
    MDB_txn *transaction = nullptr;
    *code = BeginRead(environment.Handle(), &transaction);
    if (*code != MDB_SUCCESS)
        return nullptr;
    MDB_cursor *cursor = nullptr;
    *code = mdb_cursor_open(transaction, Environment::kDatabase, &cursor);
    if (*code != MDB_SUCCESS) {
        mdb_txn_abort(transaction);
        return nullptr;
    }
    mdb_txn_reset(transaction);
    return std::unique_ptr<Reader>(new Reader(transaction, cursor));
}

Reader::~Reader() {
    if (cursor_ != nullptr)
        mdb_cursor_close(cursor_);
    if (transaction_ != nullptr)
        mdb_txn_abort(transaction_);
}

}  // namespace regstore
