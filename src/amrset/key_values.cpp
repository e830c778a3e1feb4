#include "key_values.h"

#include <cstring>

#include "registry/text.h"
#include "registry/trace.h"

static constexpr char TRACE_SOURCE[] = "amrset";

bool QueryNumber(HKEY hKey, const char *szName, DWORD *lpdwNumber) noexcept {
    DWORD dwType = REG_DWORD;
    DWORD dwNumber = 0;
    DWORD dwSize = sizeof dwNumber;
    const LONG lResult = RegQueryValueEx(hKey, szName, nullptr, &dwType,
                                         reinterpret_cast<BYTE *>(&dwNumber), &dwSize);
    if (lResult != ERROR_SUCCESS || dwSize != sizeof dwNumber) {
        return false;
    }
    *lpdwNumber = dwNumber;
    return true;
}

bool QueryText(HKEY hKey, const char *szName, char *lpszText, std::size_t dwCapacity) noexcept {
    DWORD dwType = REG_SZ;
    auto dwSize = static_cast<DWORD>(dwCapacity);
    if (RegQueryValueEx(hKey, szName, nullptr, &dwType, reinterpret_cast<BYTE *>(lpszText),
                        &dwSize) != ERROR_SUCCESS) {
        return false;
    }
    if (dwSize < dwCapacity) {
        lpszText[dwSize] = '\0';
    }
    CutText(lpszText, dwCapacity, lpszText);
    return true;
}

LONG SetNumber(HKEY hKey, const char *szName, DWORD dwNumber) noexcept {
    return RegSetValueEx(hKey, szName, 0, REG_DWORD, reinterpret_cast<const BYTE *>(&dwNumber),
                         sizeof dwNumber);
}

LONG SetText(HKEY hKey, const char *szName, const char *lpszText, std::size_t dwCapacity) noexcept {
    const std::size_t dwLength = strnlen(lpszText, dwCapacity);
    if (dwLength == dwCapacity) {
        TRACE(TRACE_FAILURE, "The text for %s has no end.", szName);
        return ERROR_INVALID_PARAMETER;
    }
    return RegSetValueEx(hKey, szName, 0, REG_SZ, reinterpret_cast<const BYTE *>(lpszText),
                         static_cast<DWORD>(dwLength + 1));
}
