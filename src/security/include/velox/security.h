/*
 * The opening report of a security product.
 *
 * Conventions
 *  1. Result 0: the report was sent. -1: it was not; the trace says why. Any other result is that
 * of the mail report or of the management-server module.
 *  2. The function waits for the report to be sent. It may be called from one thread at a time: the
 *     name of the reporting product stands in the registry while it runs.
 */
#ifndef VELOX_SECURITY_H
#define VELOX_SECURITY_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Sends the opening report of the product SecName (EUC-JP, neither null nor empty) by the selected
   method: internet mail or the manager. The dial-up method cannot send one. */
NTWIN32_API int SecurityOpenReport(const char *SecName) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
