#include "password_key.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <base/descriptor.h>
#include <base/folders.h>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

namespace agent {
namespace {

constexpr char kKeyName[] = "/ras.key";

std::string StateFolder() {
    char folder[PATH_MAX];
    return base::FolderPath(base::kStateFolder, folder, sizeof folder) ? folder : "";
}

bool IsSafeKeyFile(const struct stat &status) {
    return S_ISREG(status.st_mode) && status.st_size == crypto_secretbox_KEYBYTES &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0 &&
           (status.st_uid == ::geteuid() || status.st_uid == 0);
}

// A file beside the key that goes away by itself.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string &path)
        : path_(path + ".XXXXXX"), descriptor_(::mkostemp(path_.data(), O_CLOEXEC)) {}
    ~TemporaryFile() {
        if (descriptor_) {
            ::unlink(path_.c_str());
        }
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    bool WriteDurably(const void *bytes, std::size_t size) {
        return descriptor_ &&
               ::write(descriptor_.Get(), bytes, size) == static_cast<ssize_t>(size) &&
               ::fsync(descriptor_.Get()) == 0;
    }
    const std::string &Path() const { return path_; }

  private:
    std::string path_;
    base::UniqueDescriptor descriptor_;
};

bool SyncFolder(const std::string &folder) {
    const base::UniqueDescriptor descriptor(
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return descriptor && ::fsync(descriptor.Get()) == 0;
}

// Linking fails when the name is taken, which renaming would not. True when there is a key then,
// whoever made it.
bool MakeKeyFile(const std::string &folder) {
    unsigned char bytes[crypto_secretbox_KEYBYTES];
    crypto_secretbox_keygen(bytes);
    const std::string path = folder + kKeyName;
    TemporaryFile file(path);
    const bool written = file.WriteDurably(bytes, sizeof bytes);
    sodium_memzero(bytes, sizeof bytes);
    if (!written) {
        return false;
    }
    const bool linked = ::link(file.Path().c_str(), path.c_str()) == 0;
    return (linked || errno == EEXIST) && SyncFolder(folder);
}

}  // namespace

bool PasswordKey::Read(const char *path) {
    const base::UniqueDescriptor file(
        ::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status;
    return file && ::fstat(file.Get(), &status) == 0 && IsSafeKeyFile(status) &&
           ::read(file.Get(), bytes_, sizeof bytes_) == static_cast<ssize_t>(sizeof bytes_);
}

bool PasswordKey::Load() {
    const std::string folder = StateFolder();
    return !folder.empty() && Read((folder + kKeyName).c_str());
}

bool PasswordKey::LoadOrMake() {
    const std::string folder = StateFolder();
    if (folder.empty()) {
        return false;
    }
    const std::string path = folder + kKeyName;
    struct stat status;
    const bool absent = ::lstat(path.c_str(), &status) != 0 && errno == ENOENT;
    return (!absent || MakeKeyFile(folder)) && Read(path.c_str());
}

}  // namespace agent
