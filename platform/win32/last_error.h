// The reason of a thread's last failed call, and the C boundary that keeps exceptions inside.
#ifndef WIN32_LAST_ERROR_H
#define WIN32_LAST_ERROR_H

#include <ntwin32/types.h>

namespace win32 {

void SetLastError(DWORD error) noexcept;

// The Win32 code for an errno value of a file operation.
DWORD ErrorOfErrno(int number) noexcept;

// Sets the last error and gives `failure`, for a single return statement.
template <typename Result>
Result Fail(DWORD error, Result failure) noexcept {
    SetLastError(error);
    return failure;
}

// Runs the body of an exported function. What it throws is memory that could not be had.
template <typename Result, typename Body>
Result AtBoundary(Result failure, Body body) noexcept {
    try {
        return body();
    } catch (...) {
        return Fail(ERROR_NOT_ENOUGH_MEMORY, failure);
    }
}

}  // namespace win32

#endif  // WIN32_LAST_ERROR_H
