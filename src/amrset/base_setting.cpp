// Base settings: the switch of each report kind and the delayed shutdown.
#include "velox/base_setting.h"

#include <strings.h>

#include <cstdlib>

#include "blocks.h"
#include "key_path.h"
#include "key_values.h"
#include "registry/keys.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "velox/sub_key.h"

#define KEY_OTHER AM_KEY_BASESETTING "\\OTHER"
#define KEY_SHUTDOWN KEY_OTHER "\\SHUTDOWN DELAY"
#define KEY_SHUTDOWN_SETTING KEY_SHUTDOWN "\\SETTING"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr char KIND_SHUTDOWN[] = "SHUTDOWN DELAY";
constexpr char KIND_SNMP[] = "Manager (SNMP)";
constexpr std::size_t NAME_CAPACITY = 1024;

bool IsKind(const BASE_DATA &baseData, const char *szKind) noexcept {
    return strncasecmp(baseData.szKindName, szKind, sizeof baseData.szKindName) == 0;
}

// ---- SetBaseSetting -----------------------------------------------------------------------------

bool WriteShutdownTime(const BASE_DATA &baseData) noexcept {
    const KEYPATH path = RootPath(KEY_SHUTDOWN_SETTING);
    AutoRegKey key;
    if (OpenPath(path, KEY_READ, &key) != ERROR_SUCCESS) {
        TRACE_AS("SetBaseSetting", TRACE_NOTE, "<RegOpenKeyEx %s failed.return -1.", path.szText);
        return false;
    }
    SetNumber(key.Get(), "SHUTDOWNTIME", baseData.dwShutdownTime);
    return true;
}

// ---- GetBaseSetting -----------------------------------------------------------------------------

int ReadReportKind(BASE_DATA *lpBaseData) noexcept {
    const KEYPATH path = NamePath(RootPath(AM_KEY_REPORT), lpBaseData->szKindName);
    AutoRegKey key;
    if (OpenPath(path, KEY_READ, &key) != ERROR_SUCCESS) {
        TRACE_AS("GetBaseSetting", TRACE_FAILURE, "<RegOpenKeyEx %s failed.return -1.",
                 path.szText);
        return -1;
    }
    DWORD dwEnabled = 0;
    QueryNumber(key.Get(), "ENABLED", &dwEnabled);
    if (IsKind(*lpBaseData, KIND_SNMP)) {
        lpBaseData->nTrapDestCount = 0;
        lpBaseData->lplpTrapDest = nullptr;
        (void)TrapDestRead(&lpBaseData->nTrapDestCount, &lpBaseData->lplpTrapDest);
    }
    key.Reset();
    lpBaseData->dwEnabled = dwEnabled;
    return 0;
}

// Reads one number of a key whose path is fixed; 0 when the value is missing.
bool ReadShutdownNumber(const char *szPath, const char *szName, DWORD *lpdwNumber) noexcept {
    AutoRegKey key;
    if (OpenPath(RootPath(szPath), KEY_READ, &key) != ERROR_SUCCESS) {
        TRACE_AS("GetBaseSetting", TRACE_FAILURE, "<RegOpenKeyEx %s failed.return -1.", szPath);
        return false;
    }
    *lpdwNumber = 0;
    QueryNumber(key.Get(), szName, lpdwNumber);
    return true;
}

int ReadShutdownKind(BASE_DATA *lpBaseData) noexcept {
    const bool bRead =
        ReadShutdownNumber(KEY_SHUTDOWN, "ENABLED", &lpBaseData->dwEnabled) &&
        ReadShutdownNumber(KEY_SHUTDOWN_SETTING, "SHUTDOWNTIME", &lpBaseData->dwShutdownTime);
    return bRead ? 0 : -1;
}

// ---- GetAllBaseSetting --------------------------------------------------------------------------

struct BaseListPolicy {
    using Type = BASE_DATA **;
    static Type None() noexcept { return nullptr; }
    static void Close(Type lplpBaseData) noexcept { FreeBaseSettings(lplpBaseData); }
};
using AutoBaseList = AutoHandle<BaseListPolicy>;

constexpr BLOCK_TEXTS NAME_TEXTS = {"<malloc lplpszSubKey error!",
                                    "malloc lplpszSubKey[%d] error!"};
constexpr BLOCK_TEXTS RECORD_TEXTS = {"malloc lplpBaseData error!",
                                      "malloc lplpBaseData[%d] error!"};

// Fills the records in order and gives the number of kinds. Fewer kinds than were counted leave
// records over, which are released.
DWORD ReadBaseList(BASE_DATA **lplpBaseData, char **lplpszSubKey, DWORD dwEntries) noexcept {
    DWORD dwKinds = 0;
    (void)SearchSubKeyBounded(AM_KEY_REPORT, lplpszSubKey, dwEntries - 1, &dwKinds);
    for (DWORD i = 0; i < dwKinds; ++i) {
        (void)CopyText(lplpBaseData[i]->szKindName, lplpszSubKey[i]);
        (void)GetBaseSetting(lplpBaseData[i]);
    }
    (void)CopyText(lplpBaseData[dwKinds]->szKindName, KIND_SHUTDOWN);
    (void)GetBaseSetting(lplpBaseData[dwKinds]);
    for (DWORD i = dwKinds + 1; i < dwEntries; ++i) {
        std::free(lplpBaseData[i]);
        lplpBaseData[i] = nullptr;
    }
    return dwKinds;
}

}  // namespace

int SetBaseSetting(const BASE_DATA *pBaseData) noexcept {
    TRACE(TRACE_NOTE, ">pBaseData=%p", static_cast<const void *>(pBaseData));
    const bool bShutdown = IsKind(*pBaseData, KIND_SHUTDOWN);
    if (bShutdown && !WriteShutdownTime(*pBaseData)) {
        return -1;
    }
    if (pBaseData->dwEnabled > 1) {
        TRACE(TRACE_FAILURE, "<return -1.");
        return -1;
    }
    const KEYPATH path =
        NamePath(RootPath(bShutdown ? KEY_OTHER : AM_KEY_REPORT), pBaseData->szKindName);
    AutoRegKey key;
    if (OpenPath(path, KEY_READ, &key) != ERROR_SUCCESS) {
        TRACE(TRACE_FAILURE, "<RegOpenKeyEx %s failed.return -1.", path.szText);
        return -1;
    }
    SetNumber(key.Get(), "ENABLED", pBaseData->dwEnabled);
    // The whole array, whatever lies behind the terminator.
    (void)RegSetValueEx(key.Get(), "TrapDestination", 0, REG_SZ,
                        reinterpret_cast<const BYTE *>(pBaseData->szTrapDestination),
                        sizeof pBaseData->szTrapDestination);
    key.Reset();
    TRACE(TRACE_NOTE, "<return 0.");
    return 0;
}

int GetBaseSetting(BASE_DATA *lpBaseData) noexcept {
    TRACE(TRACE_NOTE, ">lpBaseData=%p", static_cast<void *>(lpBaseData));
    const int nResult = IsKind(*lpBaseData, KIND_SHUTDOWN) ? ReadShutdownKind(lpBaseData)
                                                           : ReadReportKind(lpBaseData);
    if (nResult == 0) {
        TRACE(TRACE_NOTE, "<return 0.");
    }
    return nResult;
}

int GetAllBaseSetting(BASE_DATA ***lplplpBaseData, DWORD *len) noexcept {
    TRACE(TRACE_NOTE, ">lplplpBaseData=%p,len=%p", static_cast<void *>(lplplpBaseData),
          static_cast<void *>(len));
    const LONG lKinds = CalculateSubKey(AM_KEY_REPORT);
    // Written after every count, also after one that succeeded.
    TRACE(TRACE_RESULT, "CalculateSubKey(%s) failed.", AM_KEY_REPORT);
    if (lKinds == -1) {
        TRACE(TRACE_FAILURE, "<CalculateSubKey failed.return -1.");
        return -1;
    }
    const DWORD dwEntries = static_cast<DWORD>(lKinds) + 1;
    const AutoBlocks<char> names(
        AllocateBlocks<char>(__func__, NAME_TEXTS, dwEntries, NAME_CAPACITY));
    AutoBaseList list;
    if (names.IsValid()) {
        list.Reset(AllocateBlocks<BASE_DATA>(__func__, RECORD_TEXTS, dwEntries, sizeof(BASE_DATA)));
    }
    if (!list.IsValid()) {
        TRACE(TRACE_NOTE, "<return -1.");
        return -1;
    }
    *len = ReadBaseList(list.Get(), names.Get(), dwEntries);
    *lplplpBaseData = list.Release();
    TRACE(TRACE_NOTE, "<return 0");
    return 0;
}

void FreeBaseSettings(BASE_DATA **lplpBaseData) noexcept {
    for (BASE_DATA **lplpNext = lplpBaseData; lplpNext != nullptr && *lplpNext != nullptr;
         ++lplpNext) {
        FreeTrapDest((*lplpNext)->lplpTrapDest);
        std::free(*lplpNext);
    }
    std::free(static_cast<void *>(lplpBaseData));
}
