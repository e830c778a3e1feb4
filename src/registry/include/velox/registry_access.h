/*
 * Reading and writing one registry value: open the key, do one value operation, close the key.
 *
 * Conventions
 *  1. Each function gives TRUE (1) on success and FALSE (0) on any failure; the trace says why.
 *  2. No key stays open, whether the value operation succeeded or not.
 *  3. Sizes are in bytes; the size of a text counts its terminating zero.
 *  4. Texts are handed on as they are stored (the system stores EUC-JP).
 *  5. The functions keep no state and may be called from any thread; several values written one
 * after another are not one transaction.
 */
#ifndef VELOX_REGISTRY_ACCESS_H
#define VELOX_REGISTRY_ACCESS_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Reads the value lpszValue of the key lpszPath below hRoot. *lpdwType receives the type. On entry
 * *lpdwSize is the capacity of lpbyData (at least 1), on success the number of bytes stored. Type
 * and the first byte of lpbyData are set to 0 first, so that after a failure the text is empty.
 * Null texts are traced as "NULL" and passed on.
 */
NTWIN32_API DWORD RegReadEx(HKEY hRoot, const char *lpszPath, const char *lpszValue,
                            DWORD *lpdwType, DWORD *lpdwSize, BYTE *lpbyData) NTWIN32_NOEXCEPT;

/* RegReadEx, but type and buffer are left as they are before the query. */
NTWIN32_API DWORD AMAMRegReadEx(HKEY hRoot, const char *lpszPath, const char *lpszValue,
                                DWORD *lpdwType, DWORD *lpdwSize, BYTE *lpbyData) NTWIN32_NOEXCEPT;

/*
 * Stores nSize bytes at lpData as the value lpszValue of type dwType in the existing key lpszPath
 * below hRoot. A key that does not exist is not created: the result is FALSE.
 */
NTWIN32_API DWORD AMAMRegWrite(HKEY hRoot, const char *lpszPath, const char *lpszValue,
                               DWORD dwType, const void *lpData, LONG nSize) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
