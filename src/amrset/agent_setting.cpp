// The agent's event table.
#include "velox/agent_setting.h"

#include "event_table.h"
#include "registry/keys.h"
#include "registry/trace.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

EVENT_FIELDS FieldsOf(void *lpRecord) noexcept {
    auto *lpAgntData = static_cast<AGNT_DATA *>(lpRecord);
    return {.lpRecord = lpAgntData,
            .lpszSourceName = lpAgntData->szSourceName,
            .lpszEventID = lpAgntData->szEventID,
            .lplpszDestID = lpAgntData->lplpszDestID,
            .lpnDestIDCount = &lpAgntData->nDestIDCount,
            .lpnDestAction = &lpAgntData->nDestAction,
            .lpnAction = &lpAgntData->nAction,
            .lpObstacleKind = &lpAgntData->ObstacleKind,
            .lpAliveLevel = &lpAgntData->AliveLevel,
            .lpszTrapName = lpAgntData->szTrapName,
            .lpszRecoveryAction = lpAgntData->szRecoveryAction,
            .lpdwSystemDefined = nullptr,
            .lpszKeyWord = nullptr,
            .lpdwReportCount = nullptr,
            .lpdwWatchTime = nullptr};
}

// Only the names are used; the other buffers are claimed with them.
constexpr NAME_LIST SOURCE_LISTS[] = {
    {{"<malloc lpszSubKey failed.return -1.", ""}, 0},
    {{"malloc SrcName failed.", "malloc SrcName[%d] failed."}, 512}};
constexpr NAME_LIST EVENT_LISTS[] = {
    {{"malloc lpszSubKey failed", "malloc lpszSubKey[%d] failed"}, 512},
    {{"malloc EventID failed.", "malloc EventID[%d] failed."}, 512},
    {{"malloc TrapName failed.", "malloc TrapName[%d] failed."}, EVENT_TRAPNAME_CAPACITY}};

constexpr EVENT_TABLE AGNT_TABLE = {
    .szRoot = AM_KEY_AGENT_SOURCES,
    .cbRecord = sizeof(AGNT_DATA),
    .pfnFields = FieldsOf,
    .szNoTrapName = "  ",
    .pfnReadMore = nullptr,
    .pfnWriteMore = nullptr,
    .set = {.szFunction = "SetAgntSetting",
            .szBadAction = "<pAgntData->nAction invalid.return -1.",
            .szBadObstacleKind = "<pAgntData->ObstacleKind error.return -1.",
            .szBadAliveLevel = "<pAgntData->AliveLevel error.return -1."},
    .setForSource = {.szFunction = "SetAgntDataForSN",
                     .szNoDestination = "<RegOpenKeyEx() %s failed.return -1.",
                     .szNoSource = "<CalculateSubKey() return -1.return -2.",
                     .names = {"<malloc IDresult error!return -1.", "malloc IDresult[ %d ] error!"},
                     .szExit = "<return %d"},
    .get = {.szFunction = "GetAgntSetting", .szEntry = ">lpAgntData=%p"},
    .getAll = {.szFunction = "GetAllAgntSetting",
               .sources = {SOURCE_LISTS, 2, 1},
               .events = {EVENT_LISTS, 3, 1},
               .records = {"malloc lplpAgntData failed.", "malloc lplpAgntData[%d] failed."},
               .szNoDestID = "malloc lplpAgntData[%d]->lplpszDestID[%d] failed."}};

}  // namespace

int SetAgntSetting(AGNT_DATA *pAgntData, LONG bWriteRecovery) noexcept {
    TRACE(TRACE_NOTE, "> pAgntData=%p", static_cast<void *>(pAgntData));
    const int nResult = SetEvent(AGNT_TABLE, FieldsOf(pAgntData), bWriteRecovery != 0);
    if (nResult == 0) {
        TRACE(TRACE_NOTE, "<return 0");
    }
    return nResult;
}

int SetAgntDataForSN(AGNT_DATA *CPAgntData) noexcept {
    TRACE(TRACE_NOTE, ">CPAgntData=%p", static_cast<void *>(CPAgntData));
    return SetEventsOfSource(AGNT_TABLE, FieldsOf(CPAgntData));
}

int GetAgntSetting(AGNT_DATA *lpAgntData) noexcept {
    return GetEvent(AGNT_TABLE, FieldsOf(lpAgntData));
}

int GetAllAgntSetting(AGNT_DATA ***lplplpAgntData, DWORD *len, DWORD *pSN,
                      DWORD *pEvntID) noexcept {
    TRACE(TRACE_NOTE, ">lplplpAgntData=%p,len=%p,pSN=%p,pEvntID=%p",
          static_cast<void *>(lplplpAgntData), static_cast<void *>(len), static_cast<void *>(pSN),
          static_cast<void *>(pEvntID));
    *len = 0;
    EVENT_LIST list = {};
    if (GetAllEvents(AGNT_TABLE, &list) != 0) {
        return -1;
    }
    *lplplpAgntData = reinterpret_cast<AGNT_DATA **>(list.lplpRecords);
    *len = list.dwRecords;
    *pSN = list.dwSources;
    *pEvntID = list.dwMostEvents;
    return 0;
}

void FreeAgntSettings(AGNT_DATA **lplpAgntData) noexcept {
    FreeEvents(AGNT_TABLE, reinterpret_cast<void **>(lplpAgntData));
}
