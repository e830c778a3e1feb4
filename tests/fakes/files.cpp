// Files and events of libNTwin32. CreateFile opens what AddFile gave; KesOpenMediaFile opens real
// files, because its callers go on with a file descriptor.
#include <fcntl.h>
#include <ntwin32/event.h>
#include <ntwin32/file.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "state.h"

namespace fakes {

namespace {

struct OpenFile {
    std::string bytes;
    std::size_t position = 0;
};

struct Files {
    std::map<std::string, std::string> by_path;
    std::map<HANDLE, OpenFile> open;
    std::map<HANDLE, bool> events;  // signalled or not
    HANDLE next = 0x100;
    DWORD read_limit = 0xFFFFFFFF;
};

Files &TheFiles() {
    static Files files;
    return files;
}

}  // namespace

void AddFile(const std::string &path, std::string bytes) {
    TheFiles().by_path[path] = std::move(bytes);
}

void LimitReads(DWORD size) {
    TheFiles().read_limit = size;
}

int OpenFiles() {
    return static_cast<int>(TheFiles().open.size());
}

int OpenEvents() {
    return static_cast<int>(TheFiles().events.size());
}

namespace internal {

void ResetFiles() {
    TheFiles() = {};
}

}  // namespace internal

}  // namespace fakes

using namespace fakes;

HANDLE CreateFile(const char *lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode, const void *,
                  DWORD dwCreationDisposition, DWORD dwFlagsAndAttributes, HANDLE) noexcept {
    char detail[64];
    (void)std::snprintf(detail, sizeof detail, " access=0x%X share=%u disposition=%u flags=0x%X",
                        dwDesiredAccess, dwShareMode, dwCreationDisposition, dwFlagsAndAttributes);
    if (Enter("CreateFile", std::string(lpFileName) + detail) != 0) {
        return INVALID_HANDLE_VALUE;
    }
    const auto found = TheFiles().by_path.find(lpFileName);
    if (found == TheFiles().by_path.end()) {
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE handle = TheFiles().next++;
    TheFiles().open[handle] = {found->second, 0};
    return handle;
}

BOOL ReadFile(HANDLE hFile, void *lpBuffer, DWORD nNumberOfBytesToRead, DWORD *lpNumberOfBytesRead,
              void *) noexcept {
    const auto found = TheFiles().open.find(hFile);
    if (Enter("ReadFile", std::to_string(nNumberOfBytesToRead)) != 0 ||
        found == TheFiles().open.end()) {
        return FALSE;
    }
    OpenFile &file = found->second;
    const std::size_t size = std::min<std::size_t>(
        std::min(nNumberOfBytesToRead, TheFiles().read_limit), file.bytes.size() - file.position);
    std::memcpy(lpBuffer, file.bytes.data() + file.position, size);
    file.position += size;
    *lpNumberOfBytesRead = static_cast<DWORD>(size);
    return TRUE;
}

BOOL CloseHandle(HANDLE hObject) noexcept {
    Enter("CloseHandle");
    const bool closed = TheFiles().open.erase(hObject) + TheFiles().events.erase(hObject) == 1;
    EXPECT_TRUE(closed) << "CloseHandle of a handle that is not open";
    return closed ? TRUE : FALSE;
}

DWORD GetLastError() noexcept {
    return 0;
}

int KesOpenMediaFile(const char *lpFileName) noexcept {
    if (Enter("KesOpenMediaFile", lpFileName) != 0) {
        return -1;
    }
    return open(lpFileName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
}

HANDLE CreateEvent(const void *, BOOL bManualReset, BOOL bInitialState,
                   const char *lpName) noexcept {
    const std::string detail = "manual=" + std::to_string(bManualReset) +
                               " signalled=" + std::to_string(bInitialState) +
                               " name=" + (lpName == nullptr ? "null" : lpName);
    if (Enter("CreateEvent", detail) != 0) {
        return 0;
    }
    const HANDLE handle = TheFiles().next++;
    TheFiles().events[handle] = bInitialState != 0;
    return handle;
}
