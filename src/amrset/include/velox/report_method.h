/*
 * The way in which the Velox report reaches the maintenance centre, the service's opening state,
 * and the parameters of the manager to which reports are handed.
 *
 * Conventions
 *  1. The functions of the method and of the opening state give 0 on success and -1 on failure,
 * those of the parameter record 1 on success and 0 on failure. The trace says why.
 *  2. Everything lives in the registry below HKEY_LOCAL_MACHINE; no key is created.
 *  3. Texts end with a zero byte and are handed on as they are stored.
 *  4. The functions keep no state and may be called from any thread.
 */
#ifndef VELOX_REPORT_METHOD_H
#define VELOX_REPORT_METHOD_H

#include <ntwin32/types.h>
#include <records/manager.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Report methods. */
#define VLX_METHOD_INTERNET_MAIL 0u
#define VLX_METHOD_DIAL_UP 1u
#define VLX_METHOD_TRANS_TO_MANAGER 2u

/* Stores the selected method's number in *selected_method, which stays untouched when the stored
   text cannot be read (-1) or names no method (-1). */
NTWIN32_API LONG AMGetVlxMethod(DWORD *selected_method) NTWIN32_NOEXCEPT;

/* Selects a method. -1 for a number that is none, or a refused write. */
NTWIN32_API LONG AMSetVlxMethod(DWORD selected_method) NTWIN32_NOEXCEPT;

/* Brings the set-up state and the opening state back to 0. A failure after the first of the two
   leaves it at 0. */
NTWIN32_API LONG AMResetOpenSet(void) NTWIN32_NOEXCEPT;

/* Stores the manager's address in buffer (at least VLX_MANAGER_IP_CAPACITY bytes), "0.0.0.0" when
   none is stored or it does not fit. -1 only for a null buffer. */
NTWIN32_API LONG GetManagerIP(char *buffer) NTWIN32_NOEXCEPT;

/* Fills the record; the caller gives it to FreeManagerParam. Values that are not stored read as
   "0.0.0.0", an empty host and port 31136; with the address "0.0.0.0" the host is empty. 0 when
   there is no memory: the record is then zeroed. */
NTWIN32_API LONG GetManagerParam(VLX_MANAGER_PARAM *lpManagerParam) NTWIN32_NOEXCEPT;

/* Stores address, host (also as the comment) and port, up to the first write that is refused (0).
 */
NTWIN32_API LONG PutManagerParam(const VLX_MANAGER_PARAM *lpManagerParam) NTWIN32_NOEXCEPT;

/* Releases the record's texts, each a malloc block or null, and zeroes the record. */
NTWIN32_API void FreeManagerParam(VLX_MANAGER_PARAM *lpManagerParam) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
