#include "files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "failure.h"

namespace veloxctl {

namespace {

class Descriptor {
  public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor() {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int Get() const { return descriptor_; }

  private:
    int descriptor_;
};

void WriteAll(int descriptor, std::string_view bytes, const std::string &path) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            FailSystem(path, errno);
        }
        bytes.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
}

// A file that is gone again unless it was moved to its place.
class FileBeside {
  public:
    FileBeside(std::string place, mode_t mode)
        : place_(std::move(place)),
          name_(place_ + ".XXXXXX"),
          file_(mkostemp(name_.data(), O_CLOEXEC)) {
        if (file_.Get() < 0 || fchmod(file_.Get(), mode) != 0) {
            FailSystem(place_, errno);
        }
    }
    ~FileBeside() {
        if (!moved_ && file_.Get() >= 0) {
            unlink(name_.c_str());
        }
    }
    FileBeside(const FileBeside &) = delete;
    FileBeside &operator=(const FileBeside &) = delete;

    void Write(std::string_view bytes) {
        WriteAll(file_.Get(), bytes, place_);
        if (fsync(file_.Get()) != 0) {
            FailSystem(place_, errno);
        }
    }

    void Move(bool replace) {
        if (renameat2(AT_FDCWD, name_.c_str(), AT_FDCWD, place_.c_str(),
                      replace ? 0 : RENAME_NOREPLACE) != 0) {
            FailSystem(place_, errno);
        }
        moved_ = true;
    }

  private:
    std::string place_;
    std::string name_;
    Descriptor file_;
    bool moved_ = false;
};

// Where a link leads, so that the file behind it is written and not the link replaced.
std::string Resolved(const std::string &path) {
    char *resolved = realpath(path.c_str(), nullptr);
    std::string place = resolved == nullptr ? path : resolved;
    std::free(resolved);
    return place;
}

[[noreturn]] void FailTooLarge(const std::string &shown, std::size_t limit) {
    Fail(EX_DATAERR, shown + ": larger than " + std::to_string(limit) + " bytes");
}

}  // namespace

std::string ReadFile(const std::string &path, std::size_t limit) {
    const bool is_input = path == "-";
    const std::string shown = is_input ? "standard input" : path;
    const Descriptor file(is_input ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.Get() < 0) {
        FailSystem(shown, errno);
    }
    struct stat status = {};
    if (fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode) &&
        static_cast<std::size_t>(status.st_size) > limit) {
        FailTooLarge(shown, limit);
    }
    std::string bytes;
    for (;;) {
        const std::size_t size = bytes.size();
        constexpr std::size_t kBlock = std::size_t{1} << 16;
        bytes.resize(size + kBlock);
        const ssize_t got = read(file.Get(), bytes.data() + size, kBlock);
        if (got < 0 && errno != EINTR) {
            FailSystem(shown, errno);
        }
        bytes.resize(size + (got > 0 ? static_cast<std::size_t>(got) : 0));
        if (got == 0) {
            return bytes;
        }
        if (bytes.size() > limit) {
            FailTooLarge(shown, limit);
        }
    }
}

void WriteFile(const std::string &path, std::string_view bytes, mode_t mode, bool replace) {
    const std::string place = Resolved(path);
    struct stat status = {};
    const bool exists = stat(place.c_str(), &status) == 0;
    if (exists && (S_ISCHR(status.st_mode) || S_ISFIFO(status.st_mode))) {
        const Descriptor file(open(place.c_str(), O_WRONLY | O_CLOEXEC));
        if (file.Get() < 0) {
            FailSystem(path, errno);
        }
        WriteAll(file.Get(), bytes, path);
        return;
    }
    if (exists && !S_ISREG(status.st_mode)) {
        Fail(EX_CANTCREAT, path + ": it is no regular file");
    }
    if (exists && !replace) {
        Fail(EX_CANTCREAT, path + ": it exists; -f replaces it");
    }
    FileBeside file(place, mode);
    file.Write(bytes);
    file.Move(replace);
}

}  // namespace veloxctl
