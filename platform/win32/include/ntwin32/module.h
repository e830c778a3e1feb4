/*
 * Run-time modules of libNTwin32.
 *
 * Conventions
 *  1. Modules load only by an absolute path below the product's "lib" folder; a bare name is looked
 *     up there. When the caller is root, neither the module nor its folder may be writable by
 * others.
 *  2. A module belongs to its caller, who gives it to FreeLibrary once for every LoadLibrary.
 *  3. Thread safety: every function may be called from any thread.
 */
#ifndef NTWIN32_MODULE_H
#define NTWIN32_MODULE_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A function of a module; the caller converts it to the function's own type. */
typedef void (*FARPROC)(void);

/* Loads a module; null on failure (GetLastError: ERROR_MOD_NOT_FOUND or ERROR_ACCESS_DENIED). */
NTWIN32_API HMODULE LoadLibrary(const char *lpLibFileName) NTWIN32_NOEXCEPT;

/* The address of the function lpProcName of a loaded module; null when there is none. */
NTWIN32_API FARPROC GetProcAddress(HMODULE hModule, const char *lpProcName) NTWIN32_NOEXCEPT;

/* Ends one use of a module; non-zero on success. */
NTWIN32_API BOOL FreeLibrary(HMODULE hLibModule) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
