#include "last_error.h"

#include <ntwin32/file.h>

#include <cerrno>

namespace win32 {
namespace {

thread_local DWORD t_last_error = ERROR_SUCCESS;

}  // namespace

void SetLastError(DWORD error) noexcept {
    t_last_error = error;
}

DWORD ErrorOfErrno(int number) noexcept {
    switch (number) {
        case ENOENT:
        case ENOTDIR:
            return ERROR_FILE_NOT_FOUND;
        case ENAMETOOLONG:
            return ERROR_BAD_PATHNAME;
        case ENOMEM:
        case EMFILE:
        case ENFILE:
            return ERROR_NOT_ENOUGH_MEMORY;
        case EIO:
            return ERROR_INVALID_DATA;
        default:
            return ERROR_ACCESS_DENIED;
    }
}

}  // namespace win32

extern "C" DWORD GetLastError(void) noexcept {
    return win32::t_last_error;
}
