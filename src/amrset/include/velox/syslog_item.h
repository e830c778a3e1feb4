/*
 * Adding and deleting items of the system log's event table. velox/syslog_setting.h reads and
 * changes them.
 *
 * Conventions
 *  1. AddSyslogItem and DelSyslogItem give 1 on success and a negative number on failure, as each
 *     text says; the trace says why.
 *  2. Items are keys below "SOFTWARE\XEV\KESALERTMAN\REPORTTABLE\EVENTLOG\APPLICATION",
 *     <source>\<event id>. A source and an event id have 1 to 255 bytes and no backslash; any other
 *     is refused before anything is changed.
 *  3. Texts are handed on as they stand (the system stores EUC-JP). Nothing is handed out.
 *  4. Several keys are not written in one transaction: what was written before a failure stays.
 *  5. The functions keep no state and may be called from any thread.
 */
#ifndef VELOX_SYSLOG_ITEM_H
#define VELOX_SYSLOG_ITEM_H

#include <ntwin32/types.h>
#include <records/event_data.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Adds the item szEventID to the source szSourceName, which is created when it does not exist, with
 * the keyword, the trap name (also as detail) and the recovery action of the record and defaults
 * for the rest. -3: the item exists; -1: a key cannot be created, those before it stay. Whether the
 * registry took each value is not looked at.
 */
NTWIN32_API int AddSyslogItem(const SYSLOG_DATA *pAddData) NTWIN32_NOEXCEPT;

/*
 * Deletes the item EventId of the source SrcName, and the source when it was its last item; with an
 * empty EventId the whole source. -1: a key cannot be opened or queried, or EventId is null; -2:
 * the system defined the item; -3: the source was not added by AddSyslogItem. 1 also when the
 * registry refused the deletion itself.
 */
NTWIN32_API int DelSyslogItem(const char *SrcName, const char *EventId) NTWIN32_NOEXCEPT;

/* Stores today's local date as eight digits, year, month and day, in timestr (at least 9 bytes). */
NTWIN32_API void GetCurrentFormatTime(char *timestr) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
