#include "file.h"

#include <fcntl.h>
#include <ntwin32/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "handles.h"
#include "last_error.h"

namespace win32 {
namespace {

// Reads until `size` bytes are there or the file ends; -1 with errno set on failure.
ssize_t ReadFully(int descriptor, char *buffer, std::size_t size, std::size_t position) noexcept {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count =
            ::pread(descriptor, buffer + done, size - done, static_cast<off_t>(position + done));
        if (count == 0) {
            break;
        }
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return -1;
        }
    }
    return static_cast<ssize_t>(done);
}

bool IsRegular(const struct stat &status) noexcept {
    return S_ISREG(status.st_mode);
}

// The kind is asked for before opening, because opening a device may already have an effect, and
// after it, because the name may have changed hands.
base::UniqueDescriptor OpenRegularFile(const char *path) noexcept {
    struct stat status;
    if (::lstat(path, &status) != 0) {
        return {};
    }
    if (!IsRegular(status)) {
        errno = S_ISLNK(status.st_mode) ? ELOOP : EINVAL;
        return {};
    }
    base::UniqueDescriptor file(
        ::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file && (::fstat(file.Get(), &status) != 0 || !IsRegular(status))) {
        file.Reset();
        errno = EINVAL;
    }
    return file;
}

HANDLE OpenFile(const char *path) {
    base::UniqueDescriptor descriptor(KesOpenMediaFile(path));
    if (!descriptor) {
        return Fail(ErrorOfErrno(errno), INVALID_HANDLE_VALUE);
    }
    const HANDLE handle = InsertObject(std::make_shared<File>(std::move(descriptor)));
    return handle != 0 ? handle : Fail(ERROR_NOT_ENOUGH_MEMORY, INVALID_HANDLE_VALUE);
}

BOOL ReadOpenFile(HANDLE handle, void *buffer, DWORD size, DWORD *count) {
    const std::shared_ptr<File> file = FindObject<File>(handle);
    if (file == nullptr) {
        return Fail(ERROR_INVALID_HANDLE, FALSE);
    }
    std::size_t read = 0;
    const DWORD error = file->Read(buffer, size, &read);
    if (error != ERROR_SUCCESS) {
        return Fail(error, FALSE);
    }
    *count = static_cast<DWORD>(read);
    return TRUE;
}

}  // namespace

DWORD File::Read(void *buffer, std::size_t size, std::size_t *count) noexcept {
    const std::lock_guard lock(mutex_);
    const std::size_t wanted = std::min<std::size_t>(size, KES_MAX_MEDIA_FILE - position_);
    const ssize_t read =
        ReadFully(descriptor_.Get(), static_cast<char *>(buffer), wanted, position_);
    if (read < 0) {
        return ErrorOfErrno(errno);
    }
    position_ += static_cast<std::size_t>(read);
    if (size > wanted && position_ == KES_MAX_MEDIA_FILE && !IsAtEnd()) {
        return ERROR_INVALID_DATA;
    }
    *count = static_cast<std::size_t>(read);
    return ERROR_SUCCESS;
}

bool File::IsAtEnd() const noexcept {
    char byte;
    return ReadFully(descriptor_.Get(), &byte, 1, position_) == 0;
}

}  // namespace win32

extern "C" {

HANDLE CreateFile(const char *lpFileName, DWORD dwDesiredAccess, DWORD /*dwShareMode*/,
                  const void * /*lpSecurityAttributes*/, DWORD dwCreationDisposition,
                  DWORD /*dwFlagsAndAttributes*/, HANDLE /*hTemplateFile*/) noexcept {
    if (lpFileName == nullptr || dwDesiredAccess != GENERIC_READ ||
        dwCreationDisposition != OPEN_EXISTING) {
        return win32::Fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
    }
    return win32::AtBoundary(INVALID_HANDLE_VALUE, [&] { return win32::OpenFile(lpFileName); });
}

BOOL ReadFile(HANDLE hFile, void *lpBuffer, DWORD nNumberOfBytesToRead, DWORD *lpNumberOfBytesRead,
              void *lpOverlapped) noexcept {
    if (lpNumberOfBytesRead == nullptr || lpOverlapped != nullptr ||
        (lpBuffer == nullptr && nNumberOfBytesToRead != 0)) {
        return win32::Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    *lpNumberOfBytesRead = 0;
    return win32::AtBoundary(BOOL{FALSE}, [&] {
        return win32::ReadOpenFile(hFile, lpBuffer, nNumberOfBytesToRead, lpNumberOfBytesRead);
    });
}

int KesOpenMediaFile(const char *lpFileName) noexcept {
    if (lpFileName == nullptr) {
        errno = EINVAL;
        return -1;
    }
    return win32::OpenRegularFile(lpFileName).Release();
}

}  // extern "C"
