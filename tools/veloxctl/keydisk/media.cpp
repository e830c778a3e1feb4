#include "keydisk/media.h"

#include <ntwin32/file.h>
#include <records/key_disk.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "failure.h"
#include "files.h"
#include "keydisk/image.h"

namespace veloxctl::keydisk {

namespace {

const char *ProblemOf(int error_number, bool is_link) {
    switch (error_number) {
        case ENOENT:
            return "the file is missing";
        case ELOOP:
            return is_link ? "it is a symbolic link" : "too many symbolic links lead to it";
        case EINVAL:
            return "it is no regular file";
        default:
            return std::strerror(error_number);
    }
}

// Reads up to one byte more than a disk's file may have.
bool ReadUpToLimit(int descriptor, MediaFile *file) {
    file->bytes.resize(KES_MAX_MEDIA_FILE + 1);
    std::size_t size = 0;
    while (size < file->bytes.size()) {
        const ssize_t got = read(descriptor, file->bytes.data() + size, file->bytes.size() - size);
        if (got < 0 && errno != EINTR) {
            file->problem = std::strerror(errno);
            return false;
        }
        if (got == 0) {
            break;
        }
        size += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    file->bytes.resize(size);
    if (size > KES_MAX_MEDIA_FILE) {
        file->problem = "it is larger than 4 MiB";
        return false;
    }
    return true;
}

}  // namespace

PrivateFolder::PrivateFolder() {
    const char *parent = secure_getenv("TMPDIR");
    path_ = std::string(parent != nullptr && *parent == '/' ? parent : "/tmp") + "/veloxctl.XXXXXX";
    if (mkdtemp(path_.data()) == nullptr) {
        FailSystem(path_, errno);
    }
}

PrivateFolder::~PrivateFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

OpenedDisk::OpenedDisk(const std::string &path) : folder_(path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        FailSystem(path, errno);
    }
    if (S_ISDIR(status.st_mode)) {
        return;
    }
    if (!S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode)) {
        Fail(EX_DATAERR, path + ": it is neither a folder nor an image of a disk");
    }
    extracted_.emplace();
    ExtractImage(path, extracted_->Path());
    folder_ = extracted_->Path();
}

MediaFile ReadMediaFile(const std::string &folder, const char *name) {
    MediaFile file;
    const std::string path = folder + "/" + name;
    struct stat status = {};
    file.present = lstat(path.c_str(), &status) == 0;
    const int descriptor = KesOpenMediaFile(path.c_str());
    if (descriptor < 0) {
        file.problem = ProblemOf(errno, file.present && S_ISLNK(status.st_mode));
        return file;
    }
    file.readable = ReadUpToLimit(descriptor, &file);
    close(descriptor);
    return file;
}

}  // namespace veloxctl::keydisk
