// The mail part and the schedule of the Velox report's destination.
#include "velox/mail_destination.h"

#include <ntwin32/registry.h>
#include <records/schedule.h>

#include "registry/catalogue.h"
#include "registry/handles.h"
#include "registry/keys.h"
#include "registry/read.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "registry/write.h"
#include "velox/service_info.h"

namespace {

constexpr char TRACE_SOURCE[] = "amstexml";

constexpr char KEY_ADDRESS[] = AM_KEY_VELOXREPORT "\\Address";
constexpr char KEY_SCHEDULE[] = AM_KEY_VELOXREPORT "\\SCHEDULE";
constexpr char DEFAULT_SUBJECT[] = CATALOGUE_MESSAGE("Velox Alert Notification");

void ReadSubject(VXML_DEST_DATA *lpVxmlDestData) noexcept {
    if (!ReadField(KEY_ADDRESS, "ESubject", lpVxmlDestData->szSubject)) {
        CutText(lpVxmlDestData->szSubject, CatalogueText(DEFAULT_SUBJECT));
    }
    TRACE_AS("GetAMAMDeseSetting", TRACE_NOTE, "lpVxmlDestData->szSubject=%s",
             lpVxmlDestData->szSubject);
}

// Missing numbers keep their presets.
void ReadNumbers(VXML_DEST_DATA *lpVxmlDestData) noexcept {
    (void)ReadNumber(KEY_ADDRESS, "EOpening", &lpVxmlDestData->szOpenStatus);
    TRACE_AS("GetAMAMDeseSetting", TRACE_NOTE, "lpVxmlDestData->szOpenStatus=%d",
             static_cast<int>(lpVxmlDestData->szOpenStatus));
    (void)ReadNumber(KEY_ADDRESS, "EReportLevel", &lpVxmlDestData->szRepLevel);
    TRACE_AS("GetAMAMDeseSetting", TRACE_NOTE, "lpVxmlDestData->szRepLevel=%d",
             static_cast<int>(lpVxmlDestData->szRepLevel));
}

bool WriteComment(const char *lpszTo) noexcept {
    char szComment[1025];
    return FormatText(szComment, sizeof szComment, "To: %s", lpszTo) &&
           WriteText(AM_KEY_VELOXREPORT, "Comment", szComment);
}

// The name of the first value that cannot be written; null when all were.
const char *WriteMailPart(const VXML_DEST_DATA &data) noexcept {
    if (!IsTerminated(data.szTo) || !WriteText(KEY_ADDRESS, "ETo", data.szTo)) {
        return "ETo";
    }
    if (!IsTerminated(data.szSubject) || !WriteText(KEY_ADDRESS, "ESubject", data.szSubject)) {
        return "ESubject";
    }
    if (!WriteNumber(KEY_ADDRESS, "EReportLevel", data.szRepLevel)) {
        return "EReportLevel";
    }
    return WriteComment(data.szTo) ? nullptr : "Comment";
}

// The name of the first value that cannot be written; null when all were.
const char *WriteScheduleValues(HKEY hSchedule, const DEST_DATA &destData) noexcept {
    SCHEDULE_VALUE aValues[SCHEDULE_VALUES];
    MakeScheduleValues(destData, aValues);
    for (const SCHEDULE_VALUE &value : aValues) {
        if (RegSetValueEx(hSchedule, value.szName, 0, REG_DWORD,
                          reinterpret_cast<const BYTE *>(&value.dwNumber),
                          sizeof value.dwNumber) != ERROR_SUCCESS) {
            return value.szName;
        }
    }
    return nullptr;
}

bool WriteSchedule(const DEST_DATA &destData) noexcept {
    static constexpr char FUNCTION[] = "SetAMAMDeseSetting";
    AutoRegKey key;
    DWORD dwDisposition = 0;
    if (RegCreateKeyEx(HKEY_LOCAL_MACHINE, KEY_SCHEDULE, 0, "", REG_OPTION_NON_VOLATILE,
                       KEY_ALL_ACCESS, nullptr, key.Put(), &dwDisposition) != ERROR_SUCCESS) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<RegCreateKeyEx %s failed.", KEY_SCHEDULE);
        return false;
    }
    if (const char *szRefused = WriteScheduleValues(key.Get(), destData); szRefused != nullptr) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "RegSetValueEx %s failed.", szRefused);
        key.Reset();
        TRACE_AS(FUNCTION, TRACE_NOTE, "<return FALSE.");
        return false;
    }
    // Left open on success, which callers have always seen.
    (void)key.Release();
    return true;
}

}  // namespace

BOOL GetAMAMDeseSetting(VXML_DEST_DATA *lpVxmlDestData, char **phMem) noexcept {
    TRACE(TRACE_NOTE, ">lpVxmlDestData=%p,phMem=%p", static_cast<void *>(lpVxmlDestData),
          static_cast<void *>(phMem));
    *phMem = nullptr;
    *lpVxmlDestData = {};
    lpVxmlDestData->szRepLevel = VXML_DEFAULT_REPORT_LEVEL;
    if (!ReadField(KEY_ADDRESS, "ETo", lpVxmlDestData->szTo)) {
        TRACE(TRACE_FAILURE, "<AMAMRegReadEx %s failed.", "ETo");
        return FALSE;
    }
    ReadSubject(lpVxmlDestData);
    BOOL bResult = TRUE;
    DWORD dwLength = 0;
    if (!GetVlxServiceInfo(phMem, &dwLength)) {
        TRACE(TRACE_FAILURE, "GetVlxServiceInfo() return FALSE.");
        bResult = FALSE;
    }
    ReadNumbers(lpVxmlDestData);
    TRACE(TRACE_NOTE, "<return %d", bResult);
    return bResult;
}

BOOL SetAMAMDeseSetting(const VXML_DEST_DATA *lpVxmlDestData, const DEST_DATA *pDestData) noexcept {
    TRACE(TRACE_NOTE, ">lpVxmlDestData=%p,pDestData=%p", static_cast<const void *>(lpVxmlDestData),
          static_cast<const void *>(pDestData));
    const char *szRefused = lpVxmlDestData == nullptr ? nullptr : WriteMailPart(*lpVxmlDestData);
    if (szRefused != nullptr) {
        TRACE(TRACE_FAILURE, "<AMAMRegWrite %s failed.", szRefused);
        return FALSE;
    }
    if (!WriteSchedule(*pDestData)) {
        return FALSE;
    }
    TRACE(TRACE_NOTE, "<return %d", TRUE);
    return TRUE;
}
