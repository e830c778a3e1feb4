/*
 * The agent's event table: what the alert manager does about each event that the server agent
 * reports, and which destinations the report goes to.
 *
 * Conventions
 *  1. The functions give 0 on success and -1 or -2 on failure, as each text says; the trace says
 *     why.
 *  2. Events are keys below "SOFTWARE\XEV\KESALERTMAN\REPORTTABLE\USEREPORTAPI_EVENTLOG\SYSTEM",
 *     <source>\<event id>; they are never created here. Source, event id and destination id have 1
 *     to 255 bytes and no backslash; any other counts as one that does not exist.
 *  3. Records of single calls belong to the caller, with the destination buffers that lplpszDestID
 *     points at. What GetAllAgntSetting hands out belongs to the caller, who releases it with
 *     FreeAgntSettings. Outputs are untouched on failure unless a function's text says otherwise.
 *  4. Pointers must not be null unless a function's text says otherwise. Texts of records end
 *     inside their arrays; they are handed on as they stand (the system stores EUC-JP).
 *  5. Several values are not written in one transaction: what was written before a failure stays.
 *  6. The functions keep no state of their own and may be called from any thread; but on a Japanese
 *     system the readers switch the locale and the message catalogue of the whole process, so that
 *     there no other thread may use either meanwhile.
 */
#ifndef VELOX_AGENT_SETTING_H
#define VELOX_AGENT_SETTING_H

#include <ntwin32/types.h>
#include <records/event_data.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Links the event to the destination lplpszDestID[0] (nDestAction 1), unlinks it (0) or does
 * neither (any other), then writes nAction, ObstacleKind and AliveLevel, and the recovery action
 * when bWriteRecovery is not 0. -2: the destination does not exist, nothing is changed. -1: a field
 * is out of range or the event is missing; the link is changed by then. The record is not changed.
 */
NTWIN32_API int SetAgntSetting(AGNT_DATA *pAgntData, LONG bWriteRecovery) NTWIN32_NOEXCEPT;

/*
 * Links every event of the source szSourceName to the destination lplpszDestID[0] when nDestAction
 * is 1, and unlinks it with any other. szEventID receives the event that was linked last. -1: the
 * destination does not exist, there is no memory, or an event could not be linked (the others are);
 * -2: the source cannot be read.
 */
NTWIN32_API int SetAgntDataForSN(AGNT_DATA *CPAgntData) NTWIN32_NOEXCEPT;

/*
 * Reads the event szEventID of szSourceName. lplpszDestID points at buffers of EVENT_DEST_CAPACITY
 * bytes, at most EVENT_MAX_DEST, up to the first null pointer; as many links are listed and counted
 * in nDestIDCount. A missing value reads as action 3, obstacle kind 2, alive level 3, a trap name
 * of two blanks and an empty recovery action. On a Japanese system trap name and recovery action
 * are translated. -1: the event cannot be read; the record then holds links and defaults.
 */
NTWIN32_API int GetAgntSetting(AGNT_DATA *lpAgntData) NTWIN32_NOEXCEPT;

/*
 * Reads the whole table. *lplplpAgntData receives an array of *len pointers to single records with
 * EVENT_MAX_DEST destination buffers each, and a null pointer behind them; *pSN the number of
 * sources; *pEvntID the largest number of events of one source. An event that cannot be read stays
 * in the array with its defaults. -1: the table cannot be read or there is no memory; *len is 0
 * then.
 */
NTWIN32_API int GetAllAgntSetting(AGNT_DATA ***lplplpAgntData, DWORD *len, DWORD *pSN,
                                  DWORD *pEvntID) NTWIN32_NOEXCEPT;

/* Releases what GetAllAgntSetting handed out; null is accepted. */
NTWIN32_API void FreeAgntSettings(AGNT_DATA **lplpAgntData) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
