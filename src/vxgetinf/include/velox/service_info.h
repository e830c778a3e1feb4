/*
 * The service information text: contract, customer, machine, options and dealer of this server, as
 * every report to the maintenance centre carries them.
 *
 * Conventions
 *  1. Both functions give TRUE (1) on success and FALSE (0) on failure; the trace says why.
 *  2. On success *lphData is a new text, terminated, that the caller releases with free(), and
 *     *lpdwLen its length in bytes without the terminator. On failure *lphData is untouched and
 *     *lpdwLen is 0. Neither pointer may be null.
 *  3. A line that names an item (contract_items.h) stands before each line that holds a value. The
 *     names follow the system's language: Japanese for the language identifier 1041, in EUC-JP,
 * else English; the words "[CONTRACT]", "Corporate" and "Personal" come from the message catalogue
 *     "velox". Values are handed on as they are stored (EUC-JP).
 *  4. The text has at most 10239 bytes. More makes the call fail like a lack of memory.
 *  5. Thread safety: the functions set the process's locale, its message domain and the pointers of
 *     contract_items.h; they must not run beside anything that uses them.
 */
#ifndef VELOX_SERVICE_INFO_H
#define VELOX_SERVICE_INFO_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The capacity of the text with its terminator (convention 4). */
#define VX_SERVICE_INFO_CAPACITY 10240

/*
 * Builds the text with line ends "\n". FALSE when the customer kind ("KAISHAKBN") or the number of
 * options ("OPTCDN") cannot be read, when the kind is neither 1 nor 99, and without memory. An item
 * that cannot be read gives an empty line.
 */
NTWIN32_API BOOL GetVlxServiceInfo(char **lphData, DWORD *lpdwLen) NTWIN32_NOEXCEPT;

/*
 * The same for a mail's body: line ends are "\r\n", and where "ReportProduct" of the key
 * "SOFTWARE\XEV\KESALERTMAN\ALERTREPORT" is set, it stands in place of the device code.
 */
NTWIN32_API BOOL GetVlxServiceInfo_Mail(char **lphData, DWORD *lpdwLen) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
