// Items of the system log's event table: a source with its items, and the keys of each item.
#include "velox/syslog_item.h"

#include <ctime>

#include "key_counts.h"
#include "key_path.h"
#include "key_values.h"
#include "registry/keys.h"
#include "registry/text.h"
#include "registry/trace.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr char VERSION_TEXT[] = "0003,0008,0000";
constexpr char FORMAT_VERSION_TEXT[] = "1,0,0";
constexpr char FACTOR_CODE_TEXT[] = "73";
constexpr std::size_t DATE_CAPACITY = 9;

// ---- AddSyslogItem ------------------------------------------------------------------------------

bool CreateItemKey(const KEYPATH &path, AutoRegKey *lpKey) noexcept {
    if (CreatePath(path, lpKey) != ERROR_SUCCESS) {
        TRACE_AS("AddSyslogItem", TRACE_FAILURE, "<RegCreateKeyEx %s failed.return -1.",
                 path.szText);
        return false;
    }
    return true;
}

bool KeyOpens(const KEYPATH &path) noexcept {
    AutoRegKey key;
    return OpenPath(path, KEY_ALL_ACCESS, &key) == ERROR_SUCCESS;
}

void WriteSourceValues(HKEY hSource) noexcept {
    char szToday[DATE_CAPACITY];
    GetCurrentFormatTime(szToday);
    SetText(hSource, "CREATEDATE", szToday);
    SetText(hSource, "CREATEVERSION", VERSION_TEXT);
    SetText(hSource, "DATE", szToday);
    SetText(hSource, "FORMATVERSION", FORMAT_VERSION_TEXT);
    SetText(hSource, "VERSION", VERSION_TEXT);
    SetNumber(hSource, "SYSTEMDEFINED", 0);
}

// A source that exists is left as it is.
bool ProvideSource(const KEYPATH &source) noexcept {
    if (KeyOpens(source)) {
        return true;
    }
    AutoRegKey key;
    DWORD dwDisposition = REG_CREATED_NEW_KEY;
    if (CreatePath(source, &key, &dwDisposition) != ERROR_SUCCESS) {
        TRACE_AS("AddSyslogItem", TRACE_FAILURE, "<RegCreateKeyEx %s failed.return -1.",
                 source.szText);
        return false;
    }
    if (dwDisposition == REG_CREATED_NEW_KEY) {
        WriteSourceValues(key.Get());
    }
    return true;
}

void WriteEventSetting(HKEY hKey, const SYSLOG_DATA &addData) noexcept {
    SetNumber(hKey, "ACTION", 0);
    SetText(hKey, "ALERTTYPE", addData.szSourceName);
    SetNumber(hKey, "ALIVELEVEL", 7);
    SetText(hKey, "CRITICALMESSAGE", "");
    SetText(hKey, "DETAIL", addData.szTrapName);
    SetText(hKey, "KESKIND", addData.szSourceName);
    SetText(hKey, "FACTORCODE", FACTOR_CODE_TEXT);
    SetNumber(hKey, "MARKFLAG", 0);
    SetNumber(hKey, "OBSTACLEKIND", 3);
    SetText(hKey, "OID", "");
    SetText(hKey, "RECOVERYACTION", "");
    SetNumber(hKey, "SYSTEMDEFINED", 0);
    SetText(hKey, "TRAPNAME", addData.szTrapName);
    SetText(hKey, "RECOVERYACTION", addData.szRecoveryAction);
}

void WriteWatchSetting(HKEY hKey, const SYSLOG_DATA &addData) noexcept {
    SetNumber(hKey, "FILTERINGMETHOD", 0);
    SetText(hKey, "KEYWORD", addData.szKeyWord);
    SetNumber(hKey, "LASTTIME", 0);
    SetNumber(hKey, "REPORTCOUNT", 1);
    SetNumber(hKey, "SUPPRESTIME", 0);
    SetNumber(hKey, "THRESHOLD", 1);
    SetNumber(hKey, "WATCHTIME", 0xFFFFFF);
}

void WriteNothing(HKEY, const SYSLOG_DATA &) noexcept {}

// The keys below an item in the order of their creation, and what stands in each.
struct ITEM_KEY {
    const char *szKey;
    void (*pfnWrite)(HKEY hKey, const SYSLOG_DATA &addData);
};
constexpr ITEM_KEY ITEM_KEYS[] = {{"DESTINATIONSETTING", WriteNothing},
                                  {"DESTINATIONSETTING\\GID_LIST", WriteNothing},
                                  {"DESTINATIONSETTING\\ID_LIST", WriteNothing},
                                  {"EVENTSETTING", WriteEventSetting},
                                  {"WATCHSETTING", WriteWatchSetting}};

bool CreateItem(const KEYPATH &item, const SYSLOG_DATA &addData) noexcept {
    AutoRegKey key;
    if (!CreateItemKey(item, &key)) {
        return false;
    }
    for (const ITEM_KEY &itemKey : ITEM_KEYS) {
        key.Reset();
        if (!CreateItemKey(SubPath(item, itemKey.szKey), &key)) {
            return false;
        }
        itemKey.pfnWrite(key.Get(), addData);
    }
    return true;
}

// ---- DelSyslogItem ------------------------------------------------------------------------------

bool OpenToDelete(const KEYPATH &path, AutoRegKey *lpKey) noexcept {
    if (OpenPath(path, KEY_ALL_ACCESS, lpKey) != ERROR_SUCCESS) {
        TRACE_AS("DelSyslogItem", TRACE_FAILURE, "<RegOpenKeyEx %s failed.return -1.", path.szText);
        return false;
    }
    return true;
}

// A source is kept also when its items cannot be counted.
bool IsEmptySource(HKEY hSource) noexcept {
    KEY_COUNTS counts;
    return QueryKeyCounts(hSource, &counts) == ERROR_SUCCESS && counts.dwSubKeys == 0;
}

int DeleteItem(const KEYPATH &source, const char *lpszEventID) noexcept {
    const KEYPATH item = NamePath(source, lpszEventID);
    AutoRegKey key;
    if (!OpenToDelete(SubPath(item, "EVENTSETTING"), &key)) {
        return -1;
    }
    DWORD dwSystemDefined = 0;
    QueryNumber(key.Get(), "SYSTEMDEFINED", &dwSystemDefined);
    key.Reset();
    if (dwSystemDefined == 1) {
        TRACE_AS("DelSyslogItem", TRACE_FAILURE,
                 "<RegQueryValueEx SYSTEMDEFINED failed.return -2.");
        return -2;
    }
    (void)DeletePathTree(item);
    if (!OpenToDelete(source, &key)) {
        return -1;
    }
    const bool bEmpty = IsEmptySource(key.Get());
    key.Reset();
    if (bEmpty) {
        (void)DeletePath(source);
    }
    TRACE_AS("DelSyslogItem", TRACE_NOTE, "<return 1.");
    return 1;
}

// A source counts as added by AddSyslogItem when it has the value at all, whatever it holds.
int DeleteSource(const KEYPATH &source) noexcept {
    AutoRegKey key;
    if (!OpenToDelete(source, &key)) {
        return -1;
    }
    DWORD dwType = REG_DWORD;
    DWORD dwSystemDefined = 0;
    DWORD dwSize = sizeof dwSystemDefined;
    const LONG lResult = RegQueryValueEx(key.Get(), "SYSTEMDEFINED", nullptr, &dwType,
                                         reinterpret_cast<BYTE *>(&dwSystemDefined), &dwSize);
    key.Reset();
    if (lResult == ERROR_FILE_NOT_FOUND) {
        TRACE_AS("DelSyslogItem", TRACE_FAILURE,
                 "<RegQueryValueEx SYSTEMDEFINED failed.return -3.");
        return -3;
    }
    if (lResult != ERROR_SUCCESS && lResult != ERROR_MORE_DATA) {
        TRACE_AS("DelSyslogItem", TRACE_FAILURE, "<return -1.");
        return -1;
    }
    (void)DeletePathTree(source);
    // Says -1 although the source is gone and the result is 1: kept for those who read the log.
    TRACE_AS("DelSyslogItem", TRACE_NOTE, "<return -1.");
    return 1;
}

}  // namespace

int AddSyslogItem(const SYSLOG_DATA *pAddData) noexcept {
    TRACE(TRACE_NOTE, ">pAddData=%p", static_cast<const void *>(pAddData));
    const KEYPATH source = NamePath(RootPath(AM_KEY_SYSLOG_SOURCES), pAddData->szSourceName);
    const KEYPATH item = NamePath(source, pAddData->szEventID);
    if (!item.bUsable) {
        TRACE(TRACE_FAILURE, "<RegCreateKeyEx %s failed.return -1.", item.szText);
        return -1;
    }
    if (!ProvideSource(source)) {
        return -1;
    }
    if (KeyOpens(item)) {
        TRACE(TRACE_NOTE, "<%s already exists!return -3.", item.szText);
        return -3;
    }
    if (!CreateItem(item, *pAddData)) {
        return -1;
    }
    TRACE(TRACE_NOTE, "<return 1");
    return 1;
}

int DelSyslogItem(const char *SrcName, const char *EventId) noexcept {
    TRACE(TRACE_NOTE, ">SrcName=%s,EventId=%s", TextOrNull(SrcName), TextOrNull(EventId));
    const KEYPATH source = NamePath(RootPath(AM_KEY_SYSLOG_SOURCES), SrcName);
    if (EventId == nullptr) {
        TRACE(TRACE_FAILURE, "<return -1.");
        return -1;
    }
    return EventId[0] == '\0' ? DeleteSource(source) : DeleteItem(source, EventId);
}

void GetCurrentFormatTime(char *timestr) noexcept {
    TRACE(TRACE_NOTE, ">timestr=%p", static_cast<void *>(timestr));
    const std::time_t now = std::time(nullptr);
    std::tm today = {};
    (void)localtime_r(&now, &today);
    (void)FormatText(timestr, DATE_CAPACITY, "%d%02d%02d", today.tm_year + 1900, today.tm_mon + 1,
                     today.tm_mday);
    TRACE(TRACE_NOTE, "<%s", timestr);
}
