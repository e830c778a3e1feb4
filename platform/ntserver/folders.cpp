#include "folders.h"

#include <cerrno>
#include <climits>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/folders.h"
#include "regstore/environment.h"

namespace ntserver {

namespace {

constexpr mode_t kSharedMode = 0755;
constexpr mode_t kPrivateMode = 0700;

bool Fail(const std::string &path, const char *step, std::string *problem) {
    *problem = path + ": " + step + ": " + std::strerror(errno);
    return false;
}

bool Find(const base::Folder &folder, std::string *path, std::string *problem) {
    char buffer[PATH_MAX];
    if (!base::FolderPath(folder, buffer, sizeof buffer)) {
        *problem = std::string(folder.variable) + " must hold an absolute path";
        return false;
    }
    *path = buffer;
    return true;
}

// Makes a folder and those above it; leaves what exists as it is.
bool MakeFolder(const std::string &path, mode_t mode, std::string *problem) {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string part = path.substr(0, end);
        const bool whole = end == std::string::npos;
        if (::mkdir(part.c_str(), whole ? mode : kSharedMode) != 0 && errno != EEXIST)
            return Fail(part, "the folder cannot be made", problem);
        if (whole)
            return true;
    }
}

bool MakePrivate(const std::string &path, std::string *problem) {
    const base::UniqueDescriptor folder(
        ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat about = {};
    if (!folder || ::fstat(folder.Get(), &about) != 0)
        return Fail(path, "the folder cannot be opened", problem);
    if (about.st_uid != ::geteuid()) {
        *problem = path + ": the folder belongs to another user";
        return false;
    }
    if ((about.st_mode & 07777) != kPrivateMode && ::fchmod(folder.Get(), kPrivateMode) != 0)
        return Fail(path, "the folder's mode cannot be set", problem);
    return true;
}

}  // namespace

bool FindFolders(Folders *folders, std::string *problem) {
    std::string state;
    if (!Find(base::kProductRoot, &folders->root, problem) ||
        !Find(base::kStateFolder, &state, problem) ||
        !Find(base::kRunFolder, &folders->run, problem))
        return false;
    folders->store = state + "/" + regstore::kStoreFolder;
    return true;
}

bool PrepareFolders(const Folders &folders, std::string *problem) {
    // Modes are meant as they are written, whatever the umask of the caller.
    const mode_t umask_before = ::umask(0);
    const bool made = MakeFolder(folders.store, kPrivateMode, problem) &&
                      MakeFolder(folders.run, kSharedMode, problem);
    ::umask(umask_before);
    return made && MakePrivate(folders.store, problem);
}

bool LockFolder(const std::string &folder, const char *name, const char *holder_does,
                base::UniqueDescriptor *lock, std::string *problem) {
    const std::string path = folder + "/" + name;
    base::UniqueDescriptor file(
        ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file)
        return Fail(path, "the lock file cannot be opened", problem);
    if (::flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK)
            return Fail(path, "the lock cannot be taken", problem);
        *problem = folder + ": another KESntserver " + holder_does;
        return false;
    }
    *lock = std::move(file);
    return true;
}

bool SyncFolder(const std::string &folder) noexcept {
    const base::UniqueDescriptor descriptor(
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return descriptor && ::fsync(descriptor.Get()) == 0;
}

}  // namespace ntserver
