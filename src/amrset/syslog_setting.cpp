// The table of messages that are watched for in the system log.
#include "velox/syslog_setting.h"

#include "event_table.h"
#include "key_values.h"
#include "registry/keys.h"
#include "registry/trace.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

EVENT_FIELDS FieldsOf(void *lpRecord) noexcept {
    auto *lpSyslogData = static_cast<SYSLOG_DATA *>(lpRecord);
    return {.lpRecord = lpSyslogData,
            .lpszSourceName = lpSyslogData->szSourceName,
            .lpszEventID = lpSyslogData->szEventID,
            .lplpszDestID = lpSyslogData->lplpszDestID,
            .lpnDestIDCount = &lpSyslogData->nDestIDCount,
            .lpnDestAction = &lpSyslogData->nDestAction,
            .lpnAction = &lpSyslogData->nAction,
            .lpObstacleKind = &lpSyslogData->ObstacleKind,
            .lpAliveLevel = &lpSyslogData->AliveLevel,
            .lpszTrapName = lpSyslogData->szTrapName,
            .lpszRecoveryAction = lpSyslogData->szRecoveryAction,
            .lpdwSystemDefined = &lpSyslogData->dwSystemDefined,
            .lpszKeyWord = lpSyslogData->szKeyWord,
            .lpdwReportCount = &lpSyslogData->dwReportCount,
            .lpdwWatchTime = &lpSyslogData->dwWatchTime};
}

bool ReadWatchSetting(const KEYPATH &event, const EVENT_FIELDS &fields) noexcept {
    AutoRegKey key;
    if (!OpenEventKey("GetSyslogSetting", event, "WATCHSETTING", KEY_ALL_ACCESS, &key)) {
        return false;
    }
    QueryText(key.Get(), "KeyWord", fields.lpszKeyWord, EVENT_KEYWORD_CAPACITY);
    QueryNumber(key.Get(), "WatchTime", fields.lpdwWatchTime);
    QueryNumber(key.Get(), "ReportCount", fields.lpdwReportCount);
    return true;
}

// The keyword and the other watch values are left alone.
bool WriteWatchSetting(const KEYPATH &event, const EVENT_FIELDS &fields) noexcept {
    AutoRegKey key;
    if (!OpenEventKey("SetSyslogSetting", event, "WATCHSETTING", KEY_READ, &key)) {
        return false;
    }
    SetNumber(key.Get(), "ReportCount", *fields.lpdwReportCount);
    SetNumber(key.Get(), "WatchTime", *fields.lpdwWatchTime);
    return true;
}

// Only the last list holds names; the other buffers are claimed with them.
constexpr NAME_LIST SOURCE_LISTS[] = {
    {{"malloc lpszSubKey failed.", "malloc lpszSubKey[%d] failed."}, 512},
    {{"malloc SrcName failed.", "malloc SrcName[%d] failed."}, 512}};
constexpr NAME_LIST EVENT_LISTS[] = {
    {{"malloc EventID failed.", "malloc EventID[%d] failed."}, 512}};

constexpr EVENT_TABLE SYSLOG_TABLE = {
    .szRoot = AM_KEY_SYSLOG_SOURCES,
    .cbRecord = sizeof(SYSLOG_DATA),
    .pfnFields = FieldsOf,
    .szNoTrapName = "",
    .pfnReadMore = ReadWatchSetting,
    .pfnWriteMore = WriteWatchSetting,
    .set = {.szFunction = "SetSyslogSetting",
            .szBadAction = "<pSyslogData->nAction error.return -1.",
            .szBadObstacleKind = "<pSyslogData->ObstacleKind error.return -1.",
            .szBadAliveLevel = "<pSyslogData->AliveLevel error.return -1."},
    .setForSource = {.szFunction = "SetSyslogDataForSN",
                     .szNoDestination = "<RegOpenKeyEx %s failed.return -1.",
                     .szNoSource = "<CalculateSubKey() returned -1.return -2.",
                     .names = {"<malloc IDresult error!", "malloc IDresult[ %d ] error!"},
                     .szExit = "<return %d."},
    .get = {.szFunction = "GetSyslogSetting", .szEntry = ">lpSyslogData=%p"},
    .getAll = {.szFunction = "GetAllSyslogSetting",
               .sources = {SOURCE_LISTS, 2, 1},
               .events = {EVENT_LISTS, 1, 0},
               .records = {"malloc lplpSyslogData failed.", "malloc lplpSyslogData[%d] failed."},
               .szNoDestID = "malloc lplpSyslogData[%d]->lplpszDestID[%d] failed."}};

}  // namespace

int SetSyslogSetting(SYSLOG_DATA *pSyslogData, LONG bWriteRecovery) noexcept {
    TRACE(TRACE_NOTE, ">pSyslogData=%p", static_cast<void *>(pSyslogData));
    const int nResult = SetEvent(SYSLOG_TABLE, FieldsOf(pSyslogData), bWriteRecovery != 0);
    if (nResult == 0) {
        TRACE(TRACE_NOTE, "<return 0.");
    }
    return nResult;
}

int SetSyslogDataForSN(SYSLOG_DATA *CPSyslogData) noexcept {
    TRACE(TRACE_NOTE, ">CPSyslogData=%p", static_cast<void *>(CPSyslogData));
    return SetEventsOfSource(SYSLOG_TABLE, FieldsOf(CPSyslogData));
}

int GetSyslogSetting(SYSLOG_DATA *lpSyslogData) noexcept {
    return GetEvent(SYSLOG_TABLE, FieldsOf(lpSyslogData));
}

int GetAllSyslogSetting(SYSLOG_DATA ***lplplpSyslogData, DWORD *len, DWORD *pSN,
                        DWORD *pEvntID) noexcept {
    TRACE(TRACE_NOTE, ">lplplpSyslogData=%p,len=%p,pSN=%p,pEvntID=%p",
          static_cast<void *>(lplplpSyslogData), static_cast<void *>(len), static_cast<void *>(pSN),
          static_cast<void *>(pEvntID));
    *len = 0;
    EVENT_LIST list = {};
    if (GetAllEvents(SYSLOG_TABLE, &list) != 0) {
        return -1;
    }
    *lplplpSyslogData = reinterpret_cast<SYSLOG_DATA **>(list.lplpRecords);
    *len = list.dwRecords;
    *pSN = list.dwSources;
    *pEvntID = list.dwMostEvents;
    return 0;
}

void FreeSyslogSettings(SYSLOG_DATA **lplpSyslogData) noexcept {
    FreeEvents(SYSLOG_TABLE, reinterpret_cast<void **>(lplpSyslogData));
}
