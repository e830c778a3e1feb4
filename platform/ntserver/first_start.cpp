#include "first_start.h"

#include <cerrno>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "log.h"
#include "regfile/regfile.h"
#include "regstore/environment.h"
#include "regstore/writer.h"

namespace ntserver {

namespace {

using regfile::Change;
using regstore::Status;

constexpr char kDefaults[] = "/data/defaults.reg";
constexpr char kDraftFolder[] = "/creating";
constexpr std::size_t kLargestDefaults = std::size_t{16} << 20;

bool Fail(const std::string &path, const std::string &cause, std::string *problem) {
    *problem = path + ": " + cause;
    return false;
}

bool ReadFile(const std::string &path, std::string *content, std::string *problem) {
    const base::UniqueDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file)
        return Fail(path, std::strerror(errno), problem);
    char buffer[4096];
    ssize_t got = 0;
    while ((got = TEMP_FAILURE_RETRY(::read(file.Get(), buffer, sizeof buffer))) > 0) {
        content->append(buffer, static_cast<std::size_t>(got));
        if (content->size() > kLargestDefaults)
            return Fail(path, "the file is too large", problem);
    }
    return got == 0 || Fail(path, std::strerror(errno), problem);
}

bool ReadDefaults(const std::string &path, std::vector<Change> *changes, std::string *problem) {
    std::string content;
    if (!ReadFile(path, &content, problem))
        return false;
    regfile::Problem fault;
    if (regfile::Parse(content, changes, &fault))
        return true;
    return Fail(path + ":" + std::to_string(fault.line) + ":" + std::to_string(fault.column),
                fault.cause, problem);
}

// Defaults only add: a deletion in them is a mistake of the file.
Status Make(regstore::Writer &writer, const Change &change) {
    regstore::KeyId key = 0;
    bool created = false;
    const Status status = writer.CreateKey(regstore::kRootKey, *change.path, {}, &key, &created);
    if (status != Status::kSuccess || change.kind == Change::Kind::kCreateKey)
        return status;
    if (change.kind != Change::Kind::kSetValue)
        return Status::kInvalidData;
    return writer.SetValue(
        key, change.name, change.type,
        {reinterpret_cast<const char *>(change.data.data()), change.data.size()});
}

// Writes the whole store in one transaction.
bool Fill(const std::string &folder, const std::string &defaults,
          const std::vector<Change> &changes, std::string *problem) {
    const auto environment = regstore::Environment::Open(folder, regstore::Access::kWrite, problem);
    if (environment == nullptr)
        return Fail(folder, *problem, problem);
    regstore::Writer writer(*environment);
    int code = writer.Begin();
    if (code != MDB_SUCCESS)
        return Fail(folder, mdb_strerror(code), problem);
    Status status = writer.Initialise();
    for (const Change &change : changes) {
        if (status != Status::kSuccess)
            break;
        status = Make(writer, change);
        if (status != Status::kSuccess)
            return Fail(defaults + ":" + std::to_string(change.line),
                        "the change cannot be made (error " +
                            std::to_string(static_cast<unsigned>(status)) + ")",
                        problem);
    }
    if (status == Status::kSuccess)
        status = writer.Commit(&code);
    if (status == Status::kSuccess)
        return true;
    return Fail(folder, code != 0 ? mdb_strerror(code) : "the store cannot be written", problem);
}

// What a start that was cut short left.
void RemoveDraft(const std::string &draft) noexcept {
    for (const char *name : {"/data.mdb", "/lock.mdb"})
        ::unlink((draft + name).c_str());
    ::rmdir(draft.c_str());
}

bool MoveIn(const std::string &draft, const std::string &folder, std::string *problem) {
    const std::string from = draft + "/" + regstore::kDataFile;
    const std::string to = folder + "/" + regstore::kDataFile;
    if (::rename(from.c_str(), to.c_str()) != 0 || !SyncFolder(folder))
        return Fail(to, std::strerror(errno), problem);
    return true;
}

}  // namespace

bool MakeStoreIfAbsent(const Folders &folders, std::string *problem) {
    const std::string data = folders.store + "/" + regstore::kDataFile;
    const std::string draft = folders.store + kDraftFolder;
    struct stat about = {};
    if (::lstat(data.c_str(), &about) == 0)
        return true;
    if (errno != ENOENT)
        return Fail(data, std::strerror(errno), problem);
    const std::string defaults = folders.root + kDefaults;
    std::vector<Change> changes;
    if (!ReadDefaults(defaults, &changes, problem))
        return false;
    RemoveDraft(draft);
    if (::mkdir(draft.c_str(), 0700) != 0)
        return Fail(draft, std::strerror(errno), problem);
    const bool made =
        Fill(draft, defaults, changes, problem) && MoveIn(draft, folders.store, problem);
    RemoveDraft(draft);
    if (made)
        Log(Priority::kNotice, "%s: made from %s", data.c_str(), defaults.c_str());
    return made;
}

}  // namespace ntserver
