// Typed reads of values below HKEY_LOCAL_MACHINE through AMAMRegReadEx, whose trace they share.
#ifndef REGISTRY_READ_H
#define REGISTRY_READ_H

#include <ntwin32/registry.h>

#include <cstddef>
#include <cstring>

#include "registry/text.h"
#include "velox/registry_access.h"

// Reads a text of at most N - 1 bytes, its terminator included: the array is one byte larger than
// the size that is read and zeroed first, so that a value stored without terminator ends inside.
// After a failure the text is empty.
template <std::size_t N>
[[nodiscard]] bool ReadText(const char *lpszPath, const char *lpszValue,
                            char (&szText)[N]) noexcept {
    DWORD dwType = REG_SZ;
    DWORD dwSize = N - 1;
    std::memset(szText, 0, N);
    return AMAMRegReadEx(HKEY_LOCAL_MACHINE, lpszPath, lpszValue, &dwType, &dwSize,
                         reinterpret_cast<BYTE *>(szText)) != FALSE;
}

// Reads a text into a field whose size is the size that is read: a value of that many bytes without
// terminator does not fit and counts as one that cannot be read. After a failure the field is
// empty.
template <std::size_t N>
[[nodiscard]] bool ReadField(const char *lpszPath, const char *lpszValue,
                             char (&szField)[N]) noexcept {
    char szText[N + 1];
    const bool bRead = ReadText(lpszPath, lpszValue, szText);
    return CopyText(szField, szText) && bRead;
}

// Reads a number. After a failure *lpdwNumber is what it was.
[[nodiscard]] inline bool ReadNumber(const char *lpszPath, const char *lpszValue,
                                     DWORD *lpdwNumber) noexcept {
    DWORD dwNumber = 0;
    DWORD dwType = REG_DWORD;
    DWORD dwSize = sizeof dwNumber;
    if (AMAMRegReadEx(HKEY_LOCAL_MACHINE, lpszPath, lpszValue, &dwType, &dwSize,
                      reinterpret_cast<BYTE *>(&dwNumber)) == FALSE) {
        return false;
    }
    *lpdwNumber = dwNumber;
    return true;
}

#endif  // REGISTRY_READ_H
