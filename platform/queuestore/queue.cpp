#include <dirent.h>
#include <fcntl.h>
#include <queuestore/queue.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <memory>

namespace queuestore {

namespace {

constexpr char kEnding[] = ".json";
constexpr char kTemporaryEnding[] = ".tmp";
constexpr char kLockName[] = ".lock";
constexpr mode_t kFolderMode = 0700;
constexpr mode_t kFileMode = 0600;
constexpr mode_t kOthersMayWrite = S_IWGRP | S_IWOTH;
constexpr std::time_t kLeftBehind = 3600;  // seconds after which a file beside is nobody's

struct CloseDirectory {
    void operator()(DIR *directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

std::string FileOf(const std::string &id) {
    return id + kEnding;
}

std::string TemporaryOf(const std::string &id) {
    return "." + id + kTemporaryEnding;
}

bool WriteAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// Reads at most one byte more than a file may have.
bool ReadAll(int file, std::string *bytes) {
    char block[4096];
    while (bytes->size() <= kMaxFileSize) {
        const ssize_t size = read(file, block, sizeof block);
        if (size == 0) {
            return true;
        }
        if (size > 0) {
            bytes->append(block, static_cast<std::size_t>(size));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

// The names in an open folder. False with errno set when it cannot be read.
bool ReadNames(int folder, std::vector<std::string> *names) {
    // Another description of the folder, so that every listing starts at its beginning.
    base::UniqueDescriptor again(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const Directory directory(again ? fdopendir(again.Get()) : nullptr);
    if (!directory) {
        return false;
    }
    (void)again.Release();
    for (;;) {
        errno = 0;
        const dirent *found = readdir(directory.get());
        if (found == nullptr) {
            return errno == 0;
        }
        names->emplace_back(found->d_name);
    }
}

// Makes the folder where it is missing. The folder above is synced even when it is there: whoever
// made it may have been killed before doing so.
bool Make(const std::string &folder) {
    if (mkdir(folder.c_str(), kFolderMode) != 0 && errno != EEXIST) {
        return false;
    }
    const std::string above = folder.substr(0, folder.rfind('/') + 1);
    const base::UniqueDescriptor parent(
        open(above.empty() ? "." : above.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return parent && fsync(parent.Get()) == 0;
}

// The id of an alert's file, or an empty text.
std::string IdOf(const std::string &name) {
    const std::string_view ending = kEnding;
    if (name.size() <= ending.size() || !name.ends_with(ending)) {
        return {};
    }
    std::string id = name.substr(0, name.size() - ending.size());
    return IsId(id) ? id : std::string();
}

bool IsLeftBehind(int folder, const std::string &name) {
    struct stat status = {};
    return name.starts_with('.') && name.ends_with(kTemporaryEnding) &&
           fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           status.st_mtime < std::time(nullptr) - kLeftBehind;
}

}  // namespace

bool Queue::Fail(const std::string &name, std::string *problem) const {
    const int error = errno;
    *problem = folder_ + (name.empty() ? "" : "/" + name) + ": " + std::strerror(error);
    return false;
}

bool Queue::Open(const std::string &folder, bool create, std::string *problem) {
    folder_ = folder;
    if (create && !Make(folder)) {
        return Fail({}, problem);
    }
    directory_.Reset(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    if (!directory_ || fstat(directory_.Get(), &status) != 0) {
        return Fail({}, problem);
    }
    if ((status.st_mode & kOthersMayWrite) != 0 || status.st_uid != geteuid()) {
        *problem = folder_ + ": others than its owner may write to it, or it is not this user's";
        return false;
    }
    return true;
}

// An alert whose folder could not be synced is taken away again: one that was refused must not go
// out later. A change whose folder could not be synced stands, but may be lost with the power.
bool Queue::Write(const Entry &entry, bool is_new, std::string *problem) {
    const std::string temporary = TemporaryOf(entry.id);
    const std::string name = FileOf(entry.id);
    const int folder = directory_.Get();
    base::UniqueDescriptor file(openat(folder, temporary.c_str(),
                                       O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                       kFileMode));
    if (!file) {
        return Fail(temporary, problem);
    }
    const std::string text = Format(entry);
    if (!WriteAll(file.Get(), text) || fsync(file.Get()) != 0 ||
        renameat(folder, temporary.c_str(), folder, name.c_str()) != 0) {
        Fail(name, problem);
        unlinkat(folder, temporary.c_str(), 0);
        return false;
    }
    if (fsync(folder) != 0) {
        Fail({}, problem);
        if (is_new) {
            unlinkat(folder, name.c_str(), 0);
            fsync(folder);
        }
        return false;
    }
    return true;
}

bool Queue::Add(const Entry &entry, std::string *problem) {
    if (Format(entry).size() > kMaxFileSize) {
        *problem = folder_ + "/" + FileOf(entry.id) + ": it would have more than 2 MiB";
        return false;
    }
    return Write(entry, true, problem);
}

bool Queue::Replace(const Entry &entry, std::string *problem) {
    // What a killed deliverer left of the same alert; the lock keeps everybody else away.
    unlinkat(directory_.Get(), TemporaryOf(entry.id).c_str(), 0);
    return Write(entry, false, problem);
}

bool Queue::List(std::vector<std::string> *ids, std::string *problem) {
    std::vector<std::string> names;
    if (!ReadNames(directory_.Get(), &names)) {
        return Fail({}, problem);
    }
    ids->clear();
    for (const std::string &name : names) {
        if (std::string id = IdOf(name); !id.empty()) {
            ids->push_back(std::move(id));
        }
    }
    std::sort(ids->begin(), ids->end());
    return true;
}

bool Queue::Load(const std::string &id, Entry *entry, std::string *problem, bool *missing) {
    const std::string name = FileOf(id);
    const base::UniqueDescriptor file(
        openat(directory_.Get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (missing != nullptr) {
        *missing = !file && errno == ENOENT;
    }
    struct stat status = {};
    std::string bytes;
    if (!file || fstat(file.Get(), &status) != 0) {
        return Fail(name, problem);
    }
    if (!S_ISREG(status.st_mode)) {
        *problem = folder_ + "/" + name + ": it is no regular file";
        return false;
    }
    if (!ReadAll(file.Get(), &bytes)) {
        return Fail(name, problem);
    }
    std::string cause;
    if (Parse(bytes, entry, &cause) && entry->id == id) {
        return true;
    }
    *problem = folder_ + "/" + name + ": " + (cause.empty() ? "it holds another id" : cause);
    return false;
}

bool Queue::Remove(const std::string &id, std::string *problem) {
    const std::string name = FileOf(id);
    if (unlinkat(directory_.Get(), name.c_str(), 0) != 0) {
        return Fail(name, problem);
    }
    return fsync(directory_.Get()) == 0 || Fail({}, problem);
}

bool Queue::Lock(bool *busy, std::string *problem) {
    lock_.Reset(
        openat(directory_.Get(), kLockName, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kFileMode));
    *busy = false;
    if (!lock_) {
        return Fail(kLockName, problem);
    }
    if (flock(lock_.Get(), LOCK_EX | LOCK_NB) != 0) {
        *busy = errno == EWOULDBLOCK;
        lock_.Reset();
        return Fail(kLockName, problem);
    }
    return true;
}

void Queue::Clean() {
    std::vector<std::string> names;
    if (!ReadNames(directory_.Get(), &names)) {
        return;
    }
    for (const std::string &name : names) {
        if (IsLeftBehind(directory_.Get(), name)) {
            unlinkat(directory_.Get(), name.c_str(), 0);
        }
    }
}

}  // namespace queuestore
