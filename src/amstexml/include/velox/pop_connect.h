/*
 * POP before SMTP: a log-in to the POP server, for mail servers that take mail only from a client
 * that has logged in shortly before.
 *
 * Conventions
 *  1. The settings are the values "POPFlag", "POPPort", "POPServer", "POPUser", "POPPass" (as
 *     Ras_Encode makes it) and "POPTime" of the mail base key (mail_base.h).
 *  2. The log-in is the module amrpop.dll's (records/mail_modules.h), which is loaded and unloaded
 *     within the call. Nothing is kept between calls.
 *  3. The password is never traced, and every plain copy of it is wiped.
 *  4. Thread safety: the function may be called from any thread.
 */
#ifndef VELOX_POP_CONNECT_H
#define VELOX_POP_CONNECT_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Logs in to the POP server and out again where "POPFlag" is not 0, then waits "POPTime" seconds
 * (none when it is missing or 0), so that the server can register the log-in. The wait blocks the
 * caller and ends early when a signal handler runs.
 * Gives 1 when no log-in is wanted or it succeeded, 0 on any failure, a missing "POPFlag" included.
 */
NTWIN32_API int AMPBSConnect(void) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
