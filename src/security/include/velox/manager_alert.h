/*
 * Alerts of the queue, handed to the manager.
 *
 * Conventions
 *  1. Texts end with a zero byte and are EUC-JP, the event id is ASCII.
 *  2. All memory is the caller's. Address and port of the manager are those of report_method.h; the
 *     module amrvxmn.dll is loaded from the product's "lib" folder and unloaded within the call.
 *  3. One thread at a time: the module composes the service information text (mail_report.h).
 */
#ifndef VELOX_MANAGER_ALERT_H
#define VELOX_MANAGER_ALERT_H

#include <ntwin32/types.h>
#include <records/manager.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The manager was not called: no memory for its parameters, or the module or its function is
   missing. The trace says which. */
#define KES_MANAGER_NOT_CALLED (-1)

/*
 * Hands one alert to the manager. lpszErrorMessage (VLX_ALERT_ERROR_CAPACITY bytes) receives what
 * the module says of a failure, else an empty text. Gives 0 when the manager has accepted the
 * alert, KES_MANAGER_NOT_CALLED, or the module's own result.
 */
NTWIN32_API int KesSendAlertToManager(const VLX_MANAGER_ALERT *lpAlert,
                                      char *lpszErrorMessage) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
