/*
 * Reports to the maintenance centre by internet mail.
 *
 * Conventions
 *  1. Registry keys are below HKEY_LOCAL_MACHINE. Texts are EUC-JP, addresses ASCII; every text
 * ends with a zero byte.
 *  2. A report needs the destination list, the mail base settings (mail_base.h), the revision and
 *     the contract data. Missing ones give the codes below, and nothing is sent.
 *  3. The modules amcregac.dll, amrpop.dll (where POP before SMTP is set) and amrsmtp.dll are
 * loaded from the product's "lib" folder and unloaded within the call.
 *  4. Memory that a function hands out is the caller's to release with free().
 *  5. Thread safety: the functions that compose a report set the process's locale and message
 *     domain; they must not run beside anything that uses them.
 */
#ifndef VELOX_MAIL_REPORT_H
#define VELOX_MAIL_REPORT_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The report kinds and their identifier lines; any other number gives an empty one. */
#define VX_REPORT_OPENING 0u /* "X": the opening message follows the service information */
#define VX_REPORT_TEST 1u    /* "C" */
#define VX_REPORT_ALERT 2u   /* "A": its success is not recorded */

/* What AMAMVeloxTestReport gives. */
#define VX_REPORT_SENT 0
#define VX_REPORT_NO_DESTINATION (-4)       /* the list is null, empty or without an address */
#define VX_REPORT_DESTINATION_TOO_LONG (-5) /* the list, or an address, or too many addresses */
#define VX_REPORT_DESTINATION_INVALID (-6)  /* a blank inside an address */
#define VX_REPORT_NO_SERVER (-7)            /* "IP" is missing or empty */
#define VX_REPORT_NO_SENDER (-8)            /* "Address" is missing or empty */
#define VX_REPORT_NO_CUSTOMER_MAIL (-9)     /* the customer's "MAIL" is missing or empty */
#define VX_REPORT_NOT_COMPOSED (-10)        /* no "VERSION", no service information, no memory */
#define VX_REPORT_NOT_ENCODED (-11)
#define VX_REPORT_NO_MODULE (-12)         /* amrsmtp.dll cannot be loaded */
#define VX_REPORT_NO_FUNCTION (-13)       /* it lacks the function */
#define VX_REPORT_CONNECTION_FAILED (-14) /* status 1 of the module */
#define VX_REPORT_ENVELOPE_REFUSED (-15)  /* status 2 */
#define VX_REPORT_DATA_REFUSED (-16)      /* status 3 */
#define VX_REPORT_SEND_FAILED (-17)       /* any other status */
#define VX_REPORT_POP_FAILED (-18)        /* the POP log-in failed */
#define VX_REPORT_NO_PRODUCT_FOLDER (-20) /* "%KesDir%" cannot be expanded */

/* The longest destination list, address and subject in bytes, and the most addresses. */
#define VX_DESTINATION_LIST_LENGTH 512
#define VX_DESTINATION_LENGTH 80
#define VX_DESTINATION_COUNT 100
#define VX_SUBJECT_LENGTH 31

/*
 * Sends one report and records its success: kind 0 sets "EOpening" of the Velox report destination
 * to 1 unless it is 2 or more, kind 1 sets it to 2 and "SETTING" of the set-up key to 1.
 * - lpszResult: neither read nor written; may be null.
 * - dwKind: the report kind.
 * - lpszSubject: the subject; null counts as empty, more than VX_SUBJECT_LENGTH bytes are cut at a
 *   whole character.
 * - lpszETo: the destination list, addresses separated by commas; blanks around an address and
 *   empty entries are skipped.
 * - lpszMessage: the opening message for kind 0, sent as it is; null counts as empty.
 * A missing "Option" sends as if it were 0: in clear text. Gives one of the codes above; all but
 * VX_REPORT_SENT leave the registry unchanged.
 */
NTWIN32_API int AMAMVeloxTestReport(char *lpszResult, DWORD dwKind, const char *lpszSubject,
                                    const char *lpszETo, const char *lpszMessage) NTWIN32_NOEXCEPT;

/*
 * Composes the body of a report of kind dwKind, as AMAMVeloxTestReport encodes and sends it, and
 * sends nothing. *lplpBody receives a new block of *lpdwSize bytes, lines ended by "\r\n", followed
 * by a zero byte; both are untouched on failure. Gives 0 or VX_REPORT_NOT_COMPOSED.
 */
NTWIN32_API int KesComposeReport(DWORD dwKind, const char *lpszMessage, char **lplpBody,
                                 DWORD *lpdwSize) NTWIN32_NOEXCEPT;

/*
 * Reads the destination list ("ETo" of the Velox report destination) into szMailTo
 * (VX_DESTINATION_LIST_LENGTH + 1 bytes). TRUE, or FALSE with szMailTo untouched.
 */
NTWIN32_API BOOL GetVlxTo(char *szMailTo) NTWIN32_NOEXCEPT;

/* The opening state, "EOpening" of the Velox report destination: 0 none, 1 after a successful
   report of kind 0, 2 of kind 1. 0 as well when it cannot be read. */
NTWIN32_API DWORD GetEOpening(void) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
