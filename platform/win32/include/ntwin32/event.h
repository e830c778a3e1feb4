/*
 * Events of libNTwin32: objects that one thread signals and another waits for.
 *
 * Conventions
 *  1. CreateEvent gives 0 on failure; the others give non-zero on success.
 *  2. An event belongs to its caller, who gives it to CloseHandle (file.h) once.
 *  3. Thread safety: every function may be called from any thread.
 */
#ifndef NTWIN32_EVENT_H
#define NTWIN32_EVENT_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

#define WAIT_OBJECT_0 0u
#define WAIT_TIMEOUT 258u
#define WAIT_FAILED 0xFFFFFFFFu
#define INFINITE 0xFFFFFFFFu

/* Makes an event without a name: lpName must be null. lpEventAttributes is ignored. With
   bManualReset 0 a wait that succeeds takes the signal away. */
NTWIN32_API HANDLE CreateEvent(const void *lpEventAttributes, BOOL bManualReset, BOOL bInitialState,
                               const char *lpName) NTWIN32_NOEXCEPT;

NTWIN32_API BOOL SetEvent(HANDLE hEvent) NTWIN32_NOEXCEPT;
NTWIN32_API BOOL ResetEvent(HANDLE hEvent) NTWIN32_NOEXCEPT;

/* Waits at most dwMilliseconds for the event: WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED. */
NTWIN32_API DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
