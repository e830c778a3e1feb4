/*
 * Files of libNTwin32, made for reading removable media.
 *
 * Conventions
 *  1. CreateFile gives INVALID_HANDLE_VALUE on failure; the other functions give non-zero on
 * success and 0 on failure. GetLastError() tells the reason.
 *  2. A file is opened without following a link in its last component and without waiting, and only
 *     when it is a regular file. Reading stops at 4 MiB: the read that would pass it fails.
 *  3. A handle belongs to its caller, who gives it to CloseHandle once. Handles fit 32 bits.
 *  4. Thread safety: every function may be called from any thread; one file has one position.
 */
#ifndef NTWIN32_FILE_H
#define NTWIN32_FILE_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

#define GENERIC_READ 0x80000000u
#define FILE_SHARE_READ 0x00000001u
#define OPEN_EXISTING 3u
#define FILE_ATTRIBUTE_NORMAL 0x00000080u

/* The most bytes that can be read from one file (convention 2). */
#define KES_MAX_MEDIA_FILE 0x400000u

/*
 * Opens the existing file lpFileName (a path in the file system's bytes) for reading.
 * dwDesiredAccess must be GENERIC_READ and dwCreationDisposition OPEN_EXISTING; with dwShareMode 0
 * an advisory lock is not taken (the medium may be read-only). lpSecurityAttributes and
 * hTemplateFile are ignored. INVALID_HANDLE_VALUE: absent, no regular file, a link, not readable,
 * wrong arguments.
 */
NTWIN32_API HANDLE CreateFile(const char *lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode,
                              const void *lpSecurityAttributes, DWORD dwCreationDisposition,
                              DWORD dwFlagsAndAttributes, HANDLE hTemplateFile) NTWIN32_NOEXCEPT;

/*
 * Reads up to nNumberOfBytesToRead bytes into lpBuffer and stores their number in
 * *lpNumberOfBytesRead: 0 with success at the end of the file, 0 on failure. lpOverlapped must be
 * null.
 */
NTWIN32_API BOOL ReadFile(HANDLE hFile, void *lpBuffer, DWORD nNumberOfBytesToRead,
                          DWORD *lpNumberOfBytesRead, void *lpOverlapped) NTWIN32_NOEXCEPT;

/* Closes a file or an event. 0 for a handle that is not open. */
NTWIN32_API BOOL CloseHandle(HANDLE hObject) NTWIN32_NOEXCEPT;

/* The reason of this thread's last failed call (an ERROR_ code of types.h). */
NTWIN32_API DWORD GetLastError(void) NTWIN32_NOEXCEPT;

/*
 * Opens the regular file lpFileName by the rule of convention 2 and gives a file descriptor, or -1
 * with errno set (ELOOP for a link, EINVAL for what is no regular file). For readers that take the
 * file's size themselves; the caller closes it with close().
 */
NTWIN32_API int KesOpenMediaFile(const char *lpFileName) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
