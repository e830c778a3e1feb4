// Reading report destinations.
#include <algorithm>

#include "destination_kinds.h"
#include "key_counts.h"
#include "key_values.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "velox/destination_setting.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr DWORD NO_BOUND = 0xFFFFFFFF;

// Everything but nAction and szDestID, which are the caller's.
void ClearDestination(DEST_DATA *lpDestData) noexcept {
    for (char *lpszText : {lpDestData->szMethod, lpDestData->szCommandLine, lpDestData->szManagerIP,
                           lpDestData->szTelNo, lpDestData->szUserName, lpDestData->szPassWord}) {
        lpszText[0] = '\0';
    }
    for (DWORD *lpdwNumber : {&lpDestData->dwPortNumber, &lpDestData->dwSchedule,
                              &lpDestData->dwRetryInterval, &lpDestData->dwRetryCount}) {
        *lpdwNumber = 0;
    }
}

// The fields of a record lie pages apart, and those of many records in more memory than a cache
// holds: what the next one's reading writes to is fetched while this one is read.
void PrefetchDestination(const DEST_DATA *lpDestData) noexcept {
    const void *const lpFields[] = {lpDestData->szDestID,      lpDestData->szMethod,
                                    lpDestData->szCommandLine, lpDestData->szManagerIP,
                                    lpDestData->szTelNo,       lpDestData->szUserName,
                                    lpDestData->szPassWord,    &lpDestData->dwSchedule};
    for (const void *lpField : lpFields) {
        __builtin_prefetch(lpField, 1);
    }
}

bool OpenDestinationKey(const KEYPATH &path, AutoRegKey *lpKey) noexcept {
    if (OpenPath(path, KEY_READ, lpKey) != ERROR_SUCCESS) {
        TRACE_AS("GetDestSetting", TRACE_FAILURE, "<RegOpenKeyEx %s failed.return -1.",
                 path.szText);
        return false;
    }
    return true;
}

void ReadManager(HKEY hAddress, DEST_DATA *lpDestData) noexcept {
    (void)CopyText(lpDestData->szManagerIP, "0.0.0.0");
    QueryText(hAddress, "MANAGERIP", lpDestData->szManagerIP);
    QueryNumber(hAddress, "PORTNUMBER", &lpDestData->dwPortNumber);
}

void ReadDialUp(HKEY hAddress, DEST_DATA *lpDestData) noexcept {
    ReadManager(hAddress, lpDestData);
    (void)CopyText(lpDestData->szTelNo, "0");
    (void)CopyText(lpDestData->szPassWord, "0");
    QueryText(hAddress, "TELNO", lpDestData->szTelNo);
    QueryText(hAddress, "USERNAME", lpDestData->szUserName);
    QueryText(hAddress, "PASSWORD", lpDestData->szPassWord);
}

bool ReadAddress(const KEYPATH &path, DEST_DATA *lpDestData) noexcept {
    AutoRegKey key;
    if (!OpenDestinationKey(SubPath(path, "Address"), &key)) {
        return false;
    }
    if (IsDestKind(*lpDestData, KIND_COMMAND)) {
        QueryText(key.Get(), "COMMANDLINE", lpDestData->szCommandLine);
    } else if (IsDestKind(*lpDestData, KIND_IN_BAND)) {
        ReadManager(key.Get(), lpDestData);
    } else if (IsDestKind(*lpDestData, KIND_OUT_OF_BAND)) {
        ReadDialUp(key.Get(), lpDestData);
    }
    return true;
}

bool ReadSchedule(const KEYPATH &path, DEST_DATA *lpDestData) noexcept {
    AutoRegKey key;
    if (!OpenDestinationKey(SubPath(path, "Schedule"), &key)) {
        return false;
    }
    QueryNumber(key.Get(), "PARAM0", &lpDestData->dwSchedule);
    QueryNumber(key.Get(), "RETRYCOUNT", &lpDestData->dwRetryCount);
    QueryNumber(key.Get(), "RETRYINTERVAL", &lpDestData->dwRetryInterval);
    return true;
}

bool ReadDestination(DEST_DATA *lpDestData) noexcept {
    const KEYPATH path = DestinationPath(lpDestData->szDestID);
    AutoRegKey key;
    if (!OpenDestinationKey(path, &key)) {
        return false;
    }
    QueryText(key.Get(), "METHOD", lpDestData->szMethod);
    key.Reset();
    return ReadAddress(path, lpDestData) && ReadSchedule(path, lpDestData);
}

// One record of the list. Without a name, which another program may just have deleted, it is empty.
void ReadEntry(HKEY hList, DWORD dwIndex, DEST_DATA *lpDestData) noexcept {
    char szName[KES_REG_MAX_KEY_NAME + 1];
    DWORD dwLength = sizeof szName;
    if (RegEnumKeyEx(hList, dwIndex, szName, &dwLength, nullptr, nullptr, nullptr, nullptr) !=
        ERROR_SUCCESS) {
        lpDestData->szDestID[0] = '\0';
        ClearDestination(lpDestData);
        return;
    }
    (void)CopyText(lpDestData->szDestID, szName);
    (void)GetDestSetting(lpDestData);
}

}  // namespace

int GetDestSetting(DEST_DATA *lpDestData) noexcept {
    TRACE(TRACE_NOTE, ">lpDestData=%p", static_cast<void *>(lpDestData));
    ClearDestination(lpDestData);
    if (!ReadDestination(lpDestData)) {
        return -1;
    }
    TRACE(TRACE_NOTE, "<return 0.");
    return 0;
}

LONG GetAllDestSettingBounded(DEST_DATA **lplpDestData, DWORD dwCapacity, DWORD *len) noexcept {
    static constexpr char FUNCTION[] = "GetAllDestSetting";
    TRACE_AS(FUNCTION, TRACE_NOTE, ">lplpDestData=%p,len=%p", static_cast<void *>(lplpDestData),
             static_cast<void *>(len));
    AutoRegKey key;
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, AM_KEY_ID_LIST, 0, KEY_ALL_ACCESS, key.Put()) !=
        ERROR_SUCCESS) {
        TRACE_AS(FUNCTION, TRACE_NOTE, "<return 0.");
        return -1;
    }
    KEY_COUNTS counts;
    (void)QueryKeyCounts(key.Get(), &counts);
    const DWORD dwRead = std::min(counts.dwSubKeys, dwCapacity);
    *len = dwRead;
    for (DWORD i = 0; i < dwRead; ++i) {
        if (i + 1 < dwRead) {
            PrefetchDestination(lplpDestData[i + 1]);
        }
        ReadEntry(key.Get(), i, lplpDestData[i]);
    }
    key.Reset();
    TRACE_AS(FUNCTION, TRACE_NOTE, "<return 0.");
    return static_cast<LONG>(counts.dwSubKeys);
}

int GetAllDestSetting(DEST_DATA **lplpDestData, DWORD *len) noexcept {
    (void)GetAllDestSettingBounded(lplpDestData, NO_BOUND, len);
    return 0;
}
