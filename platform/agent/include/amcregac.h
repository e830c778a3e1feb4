/*
 * libamcregac: registry paths of report methods and report destinations. The module amcregac.dll
 * gives the same functions to programs that load it at run time.
 *
 * Conventions
 *  1. Every function gives TRUE on success and FALSE on failure; outputs are untouched on failure.
 *  2. Paths are relative to HKEY_LOCAL_MACHINE, which the key out-parameter receives (may be null).
 *  3. *lpdwSize is the capacity of lpPath in bytes with the terminator on entry and the size used
 * on success. With a size of 0 the needed size is stored, lpPath is untouched and the result is
 *     TRUE; a size that is too small gives FALSE.
 *  4. Thread safety: every function may be called from any thread; nothing is kept between calls.
 */
#ifndef AMCREGAC_H
#define AMCREGAC_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The settings key of a report method, for example of category "Report" and method
 * "VeloxReport(Internet Mail)". FALSE for an unknown category or method.
 */
NTWIN32_API BOOL AMACBSGetMethodRegistryPath(const char *lpCategory, const char *lpMethod,
                                             HKEY *lphKey, char *lpPath,
                                             DWORD *lpdwSize) NTWIN32_NOEXCEPT;

/* The key of the report destination lpDestinationId. FALSE when there is no such destination. */
NTWIN32_API BOOL AMACDSGetIDRegistryPath(const char *lpDestinationId, HKEY *lphKey, char *lpPath,
                                         DWORD *lpdwSize) NTWIN32_NOEXCEPT;

/* Selects the registry that later calls read. Only 0, the local one, exists; nothing is kept. */
NTWIN32_API BOOL AMACEXSetRegistryNumber(DWORD dwNumber) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
