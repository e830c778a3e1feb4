// The destinations of SNMP traps: values "0", "1", ... whose names only the writer looks at.
#include <ntwin32/registry.h>
#include <strings.h>

#include <algorithm>
#include <cstdlib>

#include "blocks.h"
#include "key_counts.h"
#include "key_values.h"
#include "registry/handles.h"
#include "registry/keys.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "velox/base_setting.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr DWORD NO_BOUND = 0xFFFFFFFF;
constexpr std::size_t VALUE_NAME_CAPACITY = 256;

// Opens the list and counts it; both readers fail with the same texts here.
bool OpenTraps(const char *szFunction, AutoRegKey *lpKey, DWORD *lpdwTraps) noexcept {
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, AM_KEY_TRAPS, 0, KEY_ALL_ACCESS, lpKey->Put()) !=
        ERROR_SUCCESS) {
        TRACE_AS(szFunction, TRACE_FAILURE, "<RegOpenKeyEx %s failed.return FALSE.", AM_KEY_TRAPS);
        return false;
    }
    KEY_COUNTS counts;
    if (QueryKeyCounts(lpKey->Get(), &counts) != ERROR_SUCCESS) {
        TRACE_AS(szFunction, TRACE_FAILURE, "<RegQueryInfoKey failed.return FALSE.");
        return false;
    }
    *lpdwTraps = counts.dwValues;
    return true;
}

// Reads the value dwIndex; the name goes into lpbPtr and is not looked at. A value that fills the
// buffer without a terminator is one byte too long.
LONG ReadTrap(HKEY hKey, DWORD dwIndex, char *lpbPtr, char *lpszTrap) noexcept {
    DWORD dwName = VALUE_NAME_CAPACITY;
    DWORD dwSize = TRAP_DEST_CAPACITY;
    const LONG lResult = RegEnumValue(hKey, dwIndex, lpbPtr, &dwName, nullptr, nullptr,
                                      reinterpret_cast<BYTE *>(lpszTrap), &dwSize);
    if (lResult != ERROR_SUCCESS || dwSize < TRAP_DEST_CAPACITY) {
        lpszTrap[lResult == ERROR_SUCCESS ? dwSize : 0] = '\0';
        return lResult;
    }
    return CutText(lpszTrap, TRAP_DEST_CAPACITY, lpszTrap) ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

// Reads dwTraps values, or up to the end when others have been removed meanwhile. A value that
// cannot be read fails the list: written back without it, it would be lost.
bool ReadTraps(const char *szFunction, HKEY hKey, DWORD dwTraps, char *lpbPtr, char **lplpTrapDest,
               DWORD *lpdwRead) noexcept {
    DWORD dwRead = 0;
    for (; dwRead < dwTraps; ++dwRead) {
        const LONG lResult = ReadTrap(hKey, dwRead, lpbPtr, lplpTrapDest[dwRead]);
        if (lResult == ERROR_NO_MORE_ITEMS) {
            break;
        }
        if (lResult != ERROR_SUCCESS) {
            TRACE_AS(szFunction, TRACE_FAILURE, "RegEnumValue(%d) failed.",
                     static_cast<int>(dwRead));
            return false;
        }
    }
    *lpdwRead = dwRead;
    return true;
}

constexpr BLOCK_TEXTS LIST_TEXTS = {"malloc lplpTrapDest failed.", "malloc lplpTrapDest failed."};

// TrapDestRead after its entry: the list is handed out only when it is whole.
bool ReadTrapList(HKEY hKey, DWORD dwTraps, DWORD *count, char ***lplplpTrapDest) noexcept {
    static constexpr char FUNCTION[] = "TrapDestRead";
    AutoBlocks<char> list(AllocateBlocks<char>(FUNCTION, LIST_TEXTS, dwTraps, TRAP_DEST_CAPACITY));
    if (!list.IsValid()) {
        return false;
    }
    const AutoMemory<char> name(static_cast<char *>(std::malloc(VALUE_NAME_CAPACITY)));
    if (!name.IsValid()) {
        TRACE_AS(FUNCTION, TRACE_MEMORY, "malloc lpbPtr failed.");
        return false;
    }
    if (!ReadTraps(FUNCTION, hKey, dwTraps, name.Get(), list.Get(), count)) {
        return false;
    }
    *lplplpTrapDest = list.Release();
    return true;
}

// ---- SetTrapDest --------------------------------------------------------------------------------

bool TrapsFit(LONG nCount, char **lplpTrapDest) noexcept {
    for (LONG i = 0; i < nCount; ++i) {
        if (lplpTrapDest[i] == nullptr ||
            strnlen(lplpTrapDest[i], TRAP_DEST_CAPACITY) == TRAP_DEST_CAPACITY) {
            TRACE_AS("SetTrapDest", TRACE_FAILURE, "<lplpTrapDest[%d] invalid.return FALSE.", i);
            return false;
        }
    }
    return true;
}

// For a key that could not be deleted, for example because it has sub-keys.
void DeleteValues(HKEY hKey) noexcept {
    char szName[VALUE_NAME_CAPACITY];
    DWORD dwName = sizeof szName;
    while (RegEnumValue(hKey, 0, szName, &dwName, nullptr, nullptr, nullptr, nullptr) ==
               ERROR_SUCCESS &&
           RegDeleteValue(hKey, szName) == ERROR_SUCCESS) {
        dwName = sizeof szName;
    }
}

bool RenewTraps(AutoRegKey *lpKey) noexcept {
    (void)RegDeleteKey(HKEY_LOCAL_MACHINE, AM_KEY_TRAPS);
    DWORD dwDisposition = REG_CREATED_NEW_KEY;
    if (RegCreateKeyEx(HKEY_LOCAL_MACHINE, AM_KEY_TRAPS, 0, "", REG_OPTION_NON_VOLATILE,
                       KEY_ALL_ACCESS, nullptr, lpKey->Put(), &dwDisposition) != ERROR_SUCCESS) {
        TRACE_AS("SetTrapDest", TRACE_FAILURE, "<RegCreateKeyEx %s failed.return FALSE.",
                 AM_KEY_TRAPS);
        return false;
    }
    if (dwDisposition == REG_OPENED_EXISTING_KEY) {
        DeleteValues(lpKey->Get());
    }
    return true;
}

bool WriteTraps(HKEY hKey, LONG nCount, char **lplpTrapDest) noexcept {
    for (LONG i = 0; i < nCount; ++i) {
        char szName[16];
        if (!FormatText(szName, sizeof szName, "%d", i) ||
            SetText(hKey, szName, lplpTrapDest[i], TRAP_DEST_CAPACITY) != ERROR_SUCCESS) {
            TRACE_AS("SetTrapDest", TRACE_FAILURE, "<RegSetValueEx %d failed.return FALSE.", i);
            return false;
        }
    }
    return true;
}

}  // namespace

DWORD TrapDestRead(DWORD *count, char ***lplplpTrapDest) noexcept {
    TRACE(TRACE_NOTE, ">count=%p,lplplpTrapDest=%p", static_cast<void *>(count),
          static_cast<void *>(lplplpTrapDest));
    AutoRegKey key;
    DWORD dwTraps = 0;
    if (!OpenTraps(__func__, &key, &dwTraps)) {
        return FALSE;
    }
    const bool bRead = ReadTrapList(key.Get(), dwTraps, count, lplplpTrapDest);
    key.Reset();
    TRACE(TRACE_NOTE, bRead ? "<return TRUE" : "<return FALSE");
    return bRead ? TRUE : FALSE;
}

void FreeTrapDest(char **lplpTrapDest) noexcept {
    FreeBlocks(lplpTrapDest);
}

LONG GetTrapDestBounded(DWORD *count, char **lplpTrapDest, DWORD dwCapacity) noexcept {
    static constexpr char FUNCTION[] = "GetTrapDest";
    TRACE_AS(FUNCTION, TRACE_NOTE, ">count=%p,lplpTrapDest=%p", static_cast<void *>(count),
             static_cast<void *>(lplpTrapDest));
    AutoRegKey key;
    DWORD dwTraps = 0;
    if (!OpenTraps(FUNCTION, &key, &dwTraps)) {
        return -1;
    }
    const AutoMemory<char> name(static_cast<char *>(std::malloc(VALUE_NAME_CAPACITY)));
    if (!name.IsValid()) {
        TRACE_AS(FUNCTION, TRACE_MEMORY, "<malloc lpbPtr failed.");
        return -1;
    }
    if (!ReadTraps(FUNCTION, key.Get(), std::min(dwTraps, dwCapacity), name.Get(), lplpTrapDest,
                   count)) {
        TRACE_AS(FUNCTION, TRACE_NOTE, "<return FALSE");
        return -1;
    }
    key.Reset();
    TRACE_AS(FUNCTION, TRACE_NOTE, "<return TRUE.");
    return static_cast<LONG>(dwTraps);
}

DWORD GetTrapDest(DWORD *count, char **lplpTrapDest) noexcept {
    return GetTrapDestBounded(count, lplpTrapDest, NO_BOUND) == -1 ? FALSE : TRUE;
}

DWORD SetTrapDest(LONG nCount, char **lplpTrapDest) noexcept {
    TRACE(TRACE_NOTE, ">nCount=%d,lplpTrapDest=%p", nCount, static_cast<void *>(lplpTrapDest));
    AutoRegKey key;
    if (!TrapsFit(nCount, lplpTrapDest) || !RenewTraps(&key) ||
        !WriteTraps(key.Get(), nCount, lplpTrapDest)) {
        return FALSE;
    }
    key.Reset();
    TRACE(TRACE_NOTE, "<return TRUE.");
    return TRUE;
}

DWORD DelDest(DWORD *nCount, const char *lpTrapDest, char **lplpTrapDest) noexcept {
    TRACE(TRACE_NOTE, "> nCount=%p,lpTrapDest=%s,lplpTrapDest=%p", static_cast<void *>(nCount),
          TextOrNull(lpTrapDest), static_cast<void *>(lplpTrapDest));
    DWORD dwKept = 0;
    for (DWORD i = 0; i < *nCount; ++i) {
        if (lpTrapDest != nullptr && strcasecmp(lplpTrapDest[i], lpTrapDest) == 0) {
            continue;
        }
        if (dwKept != i) {
            CutText(lplpTrapDest[dwKept], TRAP_DEST_CAPACITY, lplpTrapDest[i]);
        }
        ++dwKept;
    }
    *nCount = dwKept;
    TRACE(TRACE_NOTE, "<return TRUE");
    return TRUE;
}
