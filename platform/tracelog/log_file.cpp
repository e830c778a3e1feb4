#include "log_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <base/folders.h>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>  // renameat
#include <cstring>
#include <utility>

namespace tracelog {
namespace {

constexpr char kExtension[] = ".log";
constexpr char kLogFolder[] = "/log";
// Room for ".99" behind "<program>.log".
constexpr std::size_t kMaxProgram = NAME_MAX - (sizeof kExtension - 1) - 3;

constexpr std::uint64_t kMaxUnlooked = std::uint64_t{16} * 1024;
constexpr long kLookNanoseconds = 1'000'000;
// How much further a file grows before a rotation that failed is tried again.
constexpr std::uint64_t kRetryBytes = std::uint64_t{64} * 1024;

// A log never takes the place of a closed stdin, stdout or stderr: what the program prints there
// would land in it.
int AboveStandardStreams(int descriptor) noexcept {
    if (descriptor < 0 || descriptor > STDERR_FILENO) {
        return descriptor;
    }
    const base::UniqueDescriptor low(descriptor);
    return ::fcntl(low.Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

bool IsProgramName(const char *program) noexcept {
    if (program == nullptr || *program == '\0') {
        return false;
    }
    return std::strlen(program) <= kMaxProgram && std::strchr(program, '/') == nullptr;
}

}  // namespace

bool LogFile::Open(const char *program, int generations, std::uint32_t size_limit) noexcept {
    Close();
    if (!IsProgramName(program)) {
        return false;
    }
    const std::size_t length = std::strlen(program);
    std::memcpy(name_, program, length);
    std::memcpy(name_ + length, kExtension, sizeof kExtension);
    generations_ = generations;
    limit_ = size_limit;
    constexpr std::size_t room = sizeof folder_path_ - (sizeof kLogFolder - 1);
    if (!base::FolderPath(base::kStateFolder, folder_path_, room)) {
        return false;
    }
    std::memcpy(folder_path_ + std::strlen(folder_path_), kLogFolder, sizeof kLogFolder);
    return OpenFolder() && OpenFile();
}

void LogFile::Close() noexcept {
    file_.Reset();
    folder_.Reset();
    torn_ = false;
}

bool LogFile::OpenFolder() noexcept {
    constexpr int kFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    int descriptor = ::open(folder_path_, kFlags);
    if (descriptor < 0 && errno == ENOENT) {
        ::mkdir(folder_path_, 0700);  // or another process does
        descriptor = ::open(folder_path_, kFlags);
    }
    folder_.Reset(AboveStandardStreams(descriptor));
    return static_cast<bool>(folder_);
}

// On failure the file that is open, if any, stays.
bool LogFile::OpenFile() noexcept {
    constexpr int kFlags =
        O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    base::UniqueDescriptor file(
        AboveStandardStreams(::openat(folder_.Get(), name_, kFlags, S_IRUSR | S_IWUSR)));
    struct stat status;
    if (!file || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return false;
    }
    constexpr mode_t kMode = S_IRUSR | S_IWUSR;
    if ((status.st_mode & ALLPERMS) != kMode && ::fchmod(file.Get(), kMode) != 0) {
        return false;
    }
    file_ = std::move(file);
    device_ = status.st_dev;
    inode_ = status.st_ino;
    known_size_ = static_cast<std::uint64_t>(status.st_size);
    unlooked_ = 0;
    rotate_above_ = limit_;
    torn_ = false;
    return true;
}

// The name is gone or belongs to another file; the whole folder may have been replaced.
void LogFile::Reopen() noexcept {
    if (!OpenFile() && OpenFolder()) {
        OpenFile();
    }
}

bool LogFile::HasName(struct stat *named) const noexcept {
    return ::fstatat(folder_.Get(), name_, named, AT_SYMLINK_NOFOLLOW) == 0 &&
           named->st_dev == device_ && named->st_ino == inode_;
}

bool LogFile::IsLookDue(std::size_t length, const timespec &now) const noexcept {
    const long elapsed = now.tv_nsec - looked_.tv_nsec;
    if (now.tv_sec != looked_.tv_sec || elapsed < 0 || elapsed >= kLookNanoseconds) {
        return true;
    }
    const std::uint64_t room = limit_ > known_size_ ? limit_ - known_size_ : 0;
    return unlooked_ + length > std::min(kMaxUnlooked, room / 8);
}

void LogFile::Look(const timespec &now) noexcept {
    struct stat named;
    if (HasName(&named)) {
        known_size_ = static_cast<std::uint64_t>(named.st_size);
    } else {
        Reopen();
    }
    unlooked_ = 0;
    looked_ = now;
}

void LogFile::Write(const char *line, std::size_t length, const timespec &now) noexcept {
    if (IsLookDue(length, now)) {
        Look(now);
    }
    if (known_size_ > 0 && known_size_ + length > rotate_above_) {
        Rotate(length);
    }
    if (torn_) {
        Append("\n", 1);
    }
    Append(line, length);
}

void LogFile::Rotate(std::size_t length) noexcept {
    const base::UniqueDescriptor lock(
        ::openat(folder_.Get(), name_, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (lock && ::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) {
        return;  // another process is rotating
    }
    struct stat named;
    struct stat locked;
    if (!lock || !HasName(&named) || ::fstat(lock.Get(), &locked) != 0 ||
        locked.st_dev != device_ || locked.st_ino != inode_) {
        Reopen();  // another process has rotated
        return;
    }
    known_size_ = static_cast<std::uint64_t>(named.st_size);
    if (known_size_ + length <= limit_) {
        return;
    }
    if (ShiftGenerations()) {
        Reopen();
    } else {
        rotate_above_ = known_size_ + kRetryBytes;
    }
}

bool LogFile::ShiftGenerations() const noexcept {
    if (generations_ == 0) {
        return ::unlinkat(folder_.Get(), name_, 0) == 0;
    }
    char from[NAME_MAX + 1];
    char to[NAME_MAX + 1];
    for (int generation = generations_; generation > 0; --generation) {
        NameGeneration(generation - 1, from);
        NameGeneration(generation, to);
        const bool moved = ::renameat(folder_.Get(), from, folder_.Get(), to) == 0;
        // A gap, which a process killed while rotating leaves, costs nothing; anything else that
        // cannot be moved must not be overwritten by the next one.
        if (!moved && (errno != ENOENT || generation == 1)) {
            return false;
        }
    }
    return true;
}

// Generation 0 is the log itself. name must hold NAME_MAX + 1 bytes.
void LogFile::NameGeneration(int generation, char *name) const noexcept {
    const std::size_t length = std::strlen(name_);
    std::memcpy(name, name_, length + 1);
    if (generation > 0) {
        name[length] = '.';
        *std::to_chars(name + length + 1, name + NAME_MAX, generation).ptr = '\0';
    }
}

void LogFile::Append(const char *line, std::size_t length) noexcept {
    const ssize_t written = ::write(file_.Get(), line, length);
    if (written <= 0) {
        return;
    }
    const auto bytes = static_cast<std::uint64_t>(written);
    known_size_ += bytes;
    unlooked_ += bytes;
    torn_ = bytes < length;
}

}  // namespace tracelog
