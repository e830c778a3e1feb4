// Sub-keys of a key, and lists in one text.
#include "velox/sub_key.h"

#include <ntwin32/registry.h>

#include <algorithm>

#include "key_counts.h"
#include "registry/handles.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "separated_list.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr DWORD NO_BOUND = 0xFFFFFFFF;
constexpr std::size_t NAME_CAPACITY = KES_REG_MAX_KEY_NAME + 1;

// The result of each call is not looked at: what the buffer held last is copied again.
void ListNames(HKEY hKey, char **lplpszSubKey, DWORD dwNames) noexcept {
    char szName[NAME_CAPACITY] = {};
    char szClass[4096];
    for (DWORD i = 0; i < dwNames; ++i) {
        DWORD dwLength = sizeof szName;
        DWORD dwClass = sizeof szClass;
        (void)RegEnumKeyEx(hKey, i, szName, &dwLength, nullptr, szClass, &dwClass, nullptr);
        (void)CopyText(lplpszSubKey[i], sizeof szName, szName);
    }
}

}  // namespace

LONG CalculateSubKey(const char *lpszKeyName) noexcept {
    TRACE(TRACE_NOTE, ">lpszKeyName=%s", TextOrNull(lpszKeyName));
    AutoRegKey key;
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, lpszKeyName, 0, KEY_ALL_ACCESS, key.Put()) !=
        ERROR_SUCCESS) {
        TRACE(TRACE_FAILURE, "<RegOpenKeyEx %s failed.return -1.", TextOrNull(lpszKeyName));
        return -1;
    }
    KEY_COUNTS counts;
    const LONG lResult = QueryKeyCounts(key.Get(), &counts);
    key.Reset();
    if (lResult != ERROR_SUCCESS) {
        TRACE(TRACE_FAILURE, "<RegQueryInfoKey failed.return -1.");
        return -1;
    }
    const auto lSubKeys = static_cast<LONG>(counts.dwSubKeys);
    TRACE(TRACE_NOTE, "<return %d", lSubKeys);
    return lSubKeys;
}

LONG SearchSubKeyBounded(const char *lpszKeyName, char **lplpszSubKey, DWORD dwCapacity,
                         DWORD *num) noexcept {
    static constexpr char FUNCTION[] = "SearchSubKey";
    TRACE_AS(FUNCTION, TRACE_NOTE, ">lpszKeyName=%s,lplpszSubKey=%p,num=%p",
             TextOrNull(lpszKeyName), static_cast<void *>(lplpszSubKey), static_cast<void *>(num));
    AutoRegKey key;
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, lpszKeyName, 0, KEY_ALL_ACCESS, key.Put()) !=
        ERROR_SUCCESS) {
        TRACE_AS(FUNCTION, TRACE_NOTE, "<");
        return -1;
    }
    KEY_COUNTS counts;
    (void)QueryKeyCounts(key.Get(), &counts);
    const DWORD dwListed = std::min(counts.dwSubKeys, dwCapacity);
    ListNames(key.Get(), lplpszSubKey, dwListed);
    *num = dwListed;
    TRACE_AS(FUNCTION, TRACE_NOTE, "*num=%d", static_cast<int>(dwListed));
    key.Reset();
    TRACE_AS(FUNCTION, TRACE_NOTE, "<");
    return static_cast<LONG>(counts.dwSubKeys);
}

void SearchSubKey(const char *lpszKeyName, char **lplpszSubKey, DWORD *num) noexcept {
    (void)SearchSubKeyBounded(lpszKeyName, lplpszSubKey, NO_BOUND, num);
}

void SeperateStringBounded(char *lpInString, char **lplpOutString, DWORD dwCapacity) noexcept {
    static constexpr char FUNCTION[] = "SeperateString";
    TRACE_AS(FUNCTION, TRACE_NOTE, ">lpInString=%s,lplpOutString=%p", TextOrNull(lpInString),
             static_cast<void *>(lplpOutString));
    DWORD dwField = 0;
    char *lpStart = lpInString;
    const auto StoreField = [&]() noexcept {
        if (dwField < dwCapacity) {
            lplpOutString[dwField] = lpStart;
        }
    };
    for (char *lpChar = lpInString; lpChar != nullptr && *lpChar != '\0'; ++lpChar) {
        if (*lpChar == ':') {
            StoreField();
            *lpChar = '\0';
            lpStart = lpChar + 1;
            ++dwField;
        }
        if (lpChar[1] == '\0') {
            StoreField();
        }
    }
    TRACE_AS(FUNCTION, TRACE_NOTE, "<");
}

void SeperateString(char *lpInString, char **lplpOutString) noexcept {
    SeperateStringBounded(lpInString, lplpOutString, NO_BOUND);
}
