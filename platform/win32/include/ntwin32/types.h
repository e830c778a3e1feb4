/*
 * The Win32 types of libNTwin32.
 *
 * Conventions
 *  1. Every type has a fixed width, whatever the compiler: DWORD is 32 bits unsigned, LONG and BOOL
 *     are 32 bits signed, HKEY and HANDLE are as wide as a pointer. A file's handle fits 32 bits.
 *  2. Texts are byte strings that end with a zero byte. The library does not interpret their
 *     encoding; the system stores all texts in EUC-JP.
 *  3. The headers are C and may be included alone, in any order, from C and C++.
 */
#ifndef NTWIN32_TYPES_H
#define NTWIN32_TYPES_H

#include <stdint.h>

#if defined(__GNUC__)
#define NTWIN32_API __attribute__((visibility("default")))
#else
#define NTWIN32_API
#endif

#ifdef __cplusplus
#define NTWIN32_NOEXCEPT noexcept
extern "C" {
#else
#define NTWIN32_NOEXCEPT
#endif

typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef uint32_t UINT;
typedef int32_t LONG;
typedef int32_t BOOL;
typedef uint16_t LANGID;
typedef uint32_t REGSAM;

/* A registry key: the key's id, a number that is never given to another key. */
typedef uintptr_t HKEY;
/* A file or an event. INVALID_HANDLE_VALUE and 0 are never valid. */
typedef intptr_t HANDLE;
/* A loaded module; null is never valid. */
typedef void *HMODULE;
/* A memory block of GlobalAlloc: the address of its first byte. */
typedef void *HGLOBAL;

/* A time in 100 ns steps since 1601-01-01 00:00 UTC, as the Win32 documentation defines it. */
typedef struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
} FILETIME;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

#define INVALID_HANDLE_VALUE ((HANDLE)-1)

/* Win32 error codes that the library gives out (values of the Win32 documentation). */
#define ERROR_SUCCESS 0
#define ERROR_FILE_NOT_FOUND 2
#define ERROR_ACCESS_DENIED 5
#define ERROR_INVALID_HANDLE 6
#define ERROR_NOT_ENOUGH_MEMORY 8
#define ERROR_INVALID_DATA 13
#define ERROR_SHARING_VIOLATION 32
#define ERROR_INVALID_PARAMETER 87
#define ERROR_DISK_FULL 112
#define ERROR_INSUFFICIENT_BUFFER 122
#define ERROR_MOD_NOT_FOUND 126
#define ERROR_PROC_NOT_FOUND 127
#define ERROR_BAD_PATHNAME 161
#define ERROR_MORE_DATA 234
#define ERROR_NO_MORE_ITEMS 259
#define ERROR_REGISTRY_IO_FAILED 1016
#define ERROR_KEY_DELETED 1018
#define ERROR_SERVICE_NOT_ACTIVE 1062
#define ERROR_TIMEOUT 1460

#ifdef __cplusplus
}
#endif

#endif
