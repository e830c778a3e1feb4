// How many sub-keys and values a key has.
#ifndef AMRSET_KEY_COUNTS_H
#define AMRSET_KEY_COUNTS_H

#include <ntwin32/registry.h>

struct KEY_COUNTS {
    DWORD dwSubKeys = 0;
    DWORD dwValues = 0;
};

// On failure the counts are left as they are.
inline LONG QueryKeyCounts(HKEY hKey, KEY_COUNTS *lpCounts) noexcept {
    char szClass[4096];
    DWORD dwClass = sizeof szClass;
    DWORD dwMaxSubKey = 0;
    DWORD dwMaxClass = 0;
    DWORD dwMaxValueName = 0;
    DWORD dwMaxValue = 0;
    DWORD dwDescriptor = 0;
    FILETIME ftLastWrite = {};
    return RegQueryInfoKey(hKey, szClass, &dwClass, nullptr, &lpCounts->dwSubKeys, &dwMaxSubKey,
                           &dwMaxClass, &lpCounts->dwValues, &dwMaxValueName, &dwMaxValue,
                           &dwDescriptor, &ftLastWrite);
}

#endif  // AMRSET_KEY_COUNTS_H
