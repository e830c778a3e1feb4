#include "store.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "first_start.h"
#include "log.h"

namespace ntserver {

namespace {

using regstore::Status;

constexpr char kLockFile[] = "server.lock";
constexpr std::chrono::milliseconds kStartLimit = std::chrono::hours(1);
// With less room than this a write error counts as a full disk, whatever number it came with.
constexpr std::uint64_t kScarceBytes = std::uint64_t{1} << 20;

// After these a transaction can go on; after any other failure it is broken.
bool LeavesTransactionWhole(Status status) noexcept {
    switch (status) {
        case Status::kSuccess:
        case Status::kNotFound:
        case Status::kAccessDenied:
        case Status::kInvalidHandle:
        case Status::kInvalidParameter:
        case Status::kBadPath:
        case Status::kKeyDeleted:
            return true;
        default:
            return false;
    }
}

bool IsFull(const std::string &folder) noexcept {
    struct statvfs about = {};
    return ::statvfs(folder.c_str(), &about) == 0 &&
           std::uint64_t{about.f_bavail} * about.f_frsize < kScarceBytes;
}

base::UniqueDescriptor OpenData(const std::string &folder) noexcept {
    const std::string path = folder + "/" + regstore::kDataFile;
    return base::UniqueDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
}

// Verifies the store as it stands on disk, before anything maps it.
Verification VerifyAtStart(const std::string &folder, const std::function<bool()> &go_on) {
    Verification verification;
    const base::UniqueDescriptor data = OpenData(folder);
    regstore::Heads heads;
    if (!data)
        verification.damage = std::string("the file cannot be opened: ") + std::strerror(errno);
    else if (!regstore::ReadHeads(data.Get(), &heads, &verification.damage))
        verification.soundness = Soundness::kDamaged;
    else
        verification = VerifyInChild(data.Get(), heads, kStartLimit, go_on);
    return verification;
}

std::string Refusal(const std::string &folder, const Verification &verification) {
    const std::string file = folder + "/" + regstore::kDataFile;
    if (verification.soundness == Soundness::kDamaged)
        return file + ": the store is damaged (" + verification.damage +
               "); it is left as it is: put a good copy in its place";
    return file + ": the store could not be verified: " + verification.damage;
}

}  // namespace

StoreReader::StoreReader(Store *store) : store_(*store) {
    const std::scoped_lock held(store_.registration_);
    store_.readers_.push_back(this);
}

StoreReader::~StoreReader() {
    const std::shared_lock held(store_.opening_);
    const std::scoped_lock registration(store_.registration_);
    std::erase(store_.readers_, this);
    reader_.reset();
}

Status StoreReader::Prepare() {
    int code = MDB_SUCCESS;
    if (reader_ == nullptr && store_.environment_ != nullptr)
        reader_ = regstore::Reader::Open(*store_.environment_, &code);
    if (reader_ != nullptr)
        return Status::kSuccess;
    return code == MDB_SUCCESS ? Status::kStoreFailed : regstore::StatusFromLmdb(code);
}

std::unique_ptr<Store> Store::Open(const Folders &folders, const std::function<bool()> &go_on,
                                   std::string *problem) {
    std::unique_ptr<Store> store(new Store);
    store->folder_ = folders.store;
    if (!LockFolder(folders.store, kLockFile, "keeps this store", &store->lock_, problem) ||
        !MakeStoreIfAbsent(folders, problem))
        return nullptr;
    const Verification verification = VerifyAtStart(folders.store, go_on);
    if (verification.soundness != Soundness::kSound) {
        *problem = Refusal(folders.store, verification);
        return nullptr;
    }
    store->keys_ = verification.totals.keys;
    store->values_ = verification.totals.values;
    store->generation_ = regstore::Generation::Open(folders.store, regstore::Access::kWrite);
    if (store->generation_ == nullptr) {
        *problem = folders.store + "/generation: the file cannot be mapped";
        return nullptr;
    }
    if (!store->OpenEnvironment(problem))
        return nullptr;
    return store;
}

bool Store::OpenEnvironment(std::string *problem) {
    environment_ = regstore::Environment::Open(folder_, regstore::Access::kWrite, problem);
    if (environment_ == nullptr) {
        *problem = folder_ + ": " + *problem;
        return false;
    }
    FinishDeadWriter();
    ForgetDeadReaders();
    return true;
}

// A writer that died after it wrote its head page and before it announced it in the lock file
// leaves readers at the snapshot before that page. Who takes the lock of a dead writer announces
// the page.
void Store::FinishDeadWriter() noexcept {
    MDB_txn *transaction = nullptr;
    if (mdb_txn_begin(environment_->Handle(), nullptr, 0, &transaction) == MDB_SUCCESS)
        mdb_txn_abort(transaction);
}

void Store::ForgetDeadReaders() noexcept {
    const std::shared_lock held(opening_);
    int dead = 0;
    if (environment_ != nullptr)
        mdb_reader_check(environment_->Handle(), &dead);
}

void Store::Apply(const std::vector<const Change *> &changes, std::vector<Status> *results) {
    results->assign(changes.size(), Status::kStoreFailed);
    if (ApplyTogether(changes, results) || changes.size() == 1)
        return;
    // One of them broke the transaction, or together they were too much: each has its own chance.
    for (std::size_t i = 0; i < changes.size(); ++i) {
        std::vector<Status> result(1, Status::kStoreFailed);
        ApplyTogether({changes[i]}, &result);
        (*results)[i] = result.front();
    }
}

// False when the transaction failed; the results of a single change are right nevertheless.
bool Store::ApplyTogether(const std::vector<const Change *> &changes,
                          std::vector<Status> *results) {
    if (environment_ == nullptr && Recover(MDB_PANIC, 0) != Status::kSuccess)
        return false;
    std::shared_lock held(opening_);
    regstore::Writer writer(*environment_);
    const int code = writer.Begin();
    if (code != MDB_SUCCESS) {
        results->assign(results->size(), regstore::StatusFromLmdb(code));
        held.unlock();
        static_cast<void>(Recover(code, 0));
        return false;
    }
    for (std::size_t i = 0; i < changes.size(); ++i) {
        Status &result = (*results)[i];
        result = (*changes[i])(writer);
        if (!LeavesTransactionWhole(result))
            return false;
        // A change that is a whole batch may have been made in part.
        if (changes.size() == 1 && result != Status::kSuccess)
            return true;
    }
    if (!writer.Changed())
        return true;
    held.unlock();
    const Status committed = Commit(&writer);
    for (Status &result : *results)
        result = result == Status::kSuccess ? committed : result;
    return committed == Status::kSuccess;
}

Status Store::Commit(regstore::Writer *writer) {
    const regstore::Totals growth = writer->Growth();
    const std::size_t transaction = writer->TransactionId();
    int code = MDB_SUCCESS;
    Status status = writer->Commit(&code);
    if (code != MDB_SUCCESS)
        status = Recover(code, transaction);
    if (status == Status::kSuccess) {
        keys_ += growth.keys;
        values_ += growth.values;
    }
    // While the snapshot of a dead reader stands, every commit takes new pages.
    if (++commits_ % kCommitsBetweenChecks == 0)
        ForgetDeadReaders();
    return status;
}

// After a failed commit LMDB may refuse every further one, and what it wrote last is in doubt: the
// environment is opened anew, and tells whether the transaction is in it.
Status Store::Recover(int code, std::size_t transaction) {
    const std::unique_lock alone(opening_);
    const bool full = code == ENOSPC || code == EDQUOT || IsFull(folder_);
    Log(Priority::kError, "%s: a commit failed: %s", folder_.c_str(), mdb_strerror(code));
    {
        const std::scoped_lock held(registration_);
        for (StoreReader *reader : readers_)
            reader->reader_.reset();
    }
    environment_.reset();
    std::string problem;
    environment_ = regstore::Environment::Open(folder_, regstore::Access::kWrite, &problem);
    if (environment_ == nullptr) {
        Log(Priority::kError, "%s: %s", folder_.c_str(), problem.c_str());
        return Status::kStoreFailed;
    }
    MDB_envinfo info = {};
    mdb_env_info(environment_->Handle(), &info);
    if (transaction != 0 && info.me_last_txnid >= transaction)
        return mdb_env_sync(environment_->Handle(), 1) == MDB_SUCCESS ? Status::kSuccess
                                                                      : Status::kNoAnswer;
    if (transaction == 0)
        return Status::kSuccess;
    return full ? Status::kDiskFull : Status::kStoreFailed;
}

Verification Store::Verify(std::chrono::milliseconds limit, const std::function<bool()> &go_on) {
    const base::UniqueDescriptor data = OpenData(folder_);
    StoreReader reader(this);
    Verification verification;
    verification.damage = "the store changes too fast to be looked at";
    if (!data)
        return verification;
    regstore::Heads heads;
    // The head pages must be those of the snapshot that keeps the pages from being used again.
    for (int attempt = 0; attempt < 1000; ++attempt) {
        const Status status = reader.Read([&](regstore::Reader &snapshot) {
            std::string damage;
            if (!regstore::ReadHeads(data.Get(), &heads, &damage) ||
                heads.current.transaction != mdb_txn_id(snapshot.Current().transaction))
                return Status::kMoreData;
            verification = VerifyInChild(data.Get(), heads, limit, go_on);
            return Status::kSuccess;
        });
        if (status != Status::kMoreData)
            break;
    }
    if (verification.soundness == Soundness::kDamaged && trusted_.exchange(false)) {
        Log(Priority::kError, "%s: the store is damaged: %s", folder_.c_str(),
            verification.damage.c_str());
        Announce(true);
    }
    return verification;
}

void Store::Describe(HelloAnswer *answer) const noexcept {
    struct stat data = {};
    struct stat names = {};
    const std::string path = folder_ + "/" + regstore::kDataFile;
    answer->verified =
        trusted_ && ::stat(path.c_str(), &data) == 0 && ::stat("/proc/self/ns/pid", &names) == 0;
    answer->generation = generation_->Value();
    answer->pid_namespace_device = names.st_dev;
    answer->pid_namespace_inode = names.st_ino;
    answer->data_device = data.st_dev;
    answer->data_inode = data.st_ino;
    answer->data_size = static_cast<std::uint64_t>(data.st_size);
    answer->folder = folder_;
}

void Store::Describe(ServerAnswer *answer) const noexcept {
    struct stat data = {};
    const std::string path = folder_ + "/" + regstore::kDataFile;
    if (::stat(path.c_str(), &data) == 0)
        answer->store_bytes = static_cast<std::uint64_t>(data.st_size);
    answer->folder = folder_;
    answer->keys = static_cast<std::uint64_t>(keys_);
    answer->values = static_cast<std::uint64_t>(values_);
    answer->format = regstore::kFormatVersion;
}

}  // namespace ntserver
