/*
 * Sub-keys of a registry key and colon-separated lists.
 *
 * Conventions
 *  1. Key paths are below HKEY_LOCAL_MACHINE, for example
 *     "SOFTWARE\XEV\KESALERTMAN\BASESETTING\REPORT".
 *  2. Buffers belong to the caller, who gives at least 256 bytes for each name. Names have at most
 *     255 bytes and are handed on as they are stored, in the registry's order.
 *  3. Pointers must not be null unless a function's text says otherwise.
 *  4. The functions keep no state and may be called from any thread.
 */
#ifndef VELOX_SUB_KEY_H
#define VELOX_SUB_KEY_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The number of direct sub-keys of lpszKeyName, or -1 when the key cannot be opened or queried. A
 * null path is traced as "NULL" and passed on: it names the root.
 */
NTWIN32_API LONG CalculateSubKey(const char *lpszKeyName) NTWIN32_NOEXCEPT;

/*
 * Copies the names of all sub-keys of lpszKeyName into the buffers of lplpszSubKey and stores their
 * number in *num. The array must have a buffer for every sub-key; SearchSubKeyBounded asks for no
 * such promise. When the key cannot be opened nothing is stored, so that the caller presets *num.
 * A name that cannot be read is replaced by the one before it (at first by an empty text).
 */
NTWIN32_API void SearchSubKey(const char *lpszKeyName, char **lplpszSubKey,
                              DWORD *num) NTWIN32_NOEXCEPT;

/*
 * SearchSubKey for an array of dwCapacity buffers (null with a capacity of 0): at most that many
 * names are copied and *num receives how many. The result is the number of sub-keys, which may be
 * larger, or -1 when the key cannot be opened. Its trace records are those of SearchSubKey.
 */
NTWIN32_API LONG SearchSubKeyBounded(const char *lpszKeyName, char **lplpszSubKey, DWORD dwCapacity,
                                     DWORD *num) NTWIN32_NOEXCEPT;

/*
 * Cuts the list lpInString in place at each ':' and stores the start of each field in
 * lplpOutString, which must have room for every field. Unused entries keep their content; an empty
 * list has no field, "a:" has two.
 */
NTWIN32_API void SeperateString(char *lpInString, char **lplpOutString) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
