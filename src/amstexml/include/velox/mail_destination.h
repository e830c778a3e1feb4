/*
 * The mail settings of the Velox report's destination: addresses, subject, report level and
 * schedule of the destination "VELOXREPORT", an ordinary destination of
 * velox/destination_setting.h.
 *
 * Conventions
 *  1. The functions give TRUE (1) or FALSE (0); the trace says why.
 *  2. Everything lies below HKEY_LOCAL_MACHINE,
 *     "SOFTWARE\XEV\KESALERTMAN\DESTINATION\ID_LIST\VELOXREPORT".
 *  3. Records belong to the caller. Pointers must not be null unless a function's text says
 *     otherwise. Texts end inside their arrays; they are handed on as they stand (the system stores
 *     EUC-JP).
 *  4. Several values are not written in one transaction: what was written before a failure stays.
 *  5. Thread safety: SetAMAMDeseSetting may be called from any thread; GetAMAMDeseSetting switches
 *     the locale and the message catalogue of the process, as GetVlxServiceInfo does.
 */
#ifndef VELOX_MAIL_DESTINATION_H
#define VELOX_MAIL_DESTINATION_H

#include <assert.h>
#include <ntwin32/types.h>
#include <records/destination_data.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VXML_DEST_TEXT_CAPACITY 513

/* What a missing "EReportLevel" reads as. */
#define VXML_DEFAULT_REPORT_LEVEL 3u

/* The mail destination record. */
typedef struct VXML_DEST_DATA {
    char szTo[VXML_DEST_TEXT_CAPACITY];      /* "ETo": addresses, separated by commas */
    char szSubject[VXML_DEST_TEXT_CAPACITY]; /* "ESubject" */
    BYTE abyReserved[514];                   /* not used; cleared by GetAMAMDeseSetting */
    DWORD szOpenStatus;                      /* "EOpening": 0 none, 1 test, 2 opening report sent */
    DWORD szRepLevel;                        /* "EReportLevel" */
} VXML_DEST_DATA;

static_assert(offsetof(VXML_DEST_DATA, szSubject) == 513, "layout of VXML_DEST_DATA");
static_assert(offsetof(VXML_DEST_DATA, abyReserved) == 1026, "layout of VXML_DEST_DATA");
static_assert(offsetof(VXML_DEST_DATA, szOpenStatus) == 1540, "layout of VXML_DEST_DATA");
static_assert(offsetof(VXML_DEST_DATA, szRepLevel) == 1544, "layout of VXML_DEST_DATA");
static_assert(sizeof(VXML_DEST_DATA) == 1548, "layout of VXML_DEST_DATA");

/*
 * Reads the mail settings, and the service information text beside them: *phMem receives a text
 * that the caller releases with free(), or null. A missing subject reads as "Velox Alert
 * Notification" in the language of the catalogue, a missing opening state as 0, a missing report
 * level as 3. FALSE: the addresses cannot be read (the record is then empty with its defaults), or
 * there is no service information text (everything else is read then).
 */
NTWIN32_API BOOL GetAMAMDeseSetting(VXML_DEST_DATA *lpVxmlDestData, char **phMem) NTWIN32_NOEXCEPT;

/*
 * Writes addresses, subject and report level, and the destination's comment "To: <addresses>", then
 * the schedule (dwSchedule, dwRetryCount and dwRetryInterval of pDestData). With a null
 * lpVxmlDestData only the schedule is written; the opening state never is. FALSE: a value or the
 * schedule's key was refused, or a text does not end inside its field; what comes before it is
 * written. After success the handle of the schedule's key stays open, which costs nothing.
 */
NTWIN32_API BOOL SetAMAMDeseSetting(const VXML_DEST_DATA *lpVxmlDestData,
                                    const DEST_DATA *pDestData) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
