#include "contract_key.h"

#include <ntwin32/registry.h>
#include <registry/keys.h>
#include <registry/text.h>
#include <registry/trace.h>

#include <cstring>

static constexpr char TRACE_SOURCE[] = "amrset";

void OpenContractKey(AutoRegKey *lpKey) noexcept {
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, VLX_KEY_SETTING, 0, KEY_READ | KEY_SET_VALUE,
                     lpKey->Put()) != ERROR_SUCCESS) {
        (void)RegCreateKey(HKEY_LOCAL_MACHINE, VLX_KEY_SETTING, lpKey->Put());
    }
}

bool QueryContractText(HKEY hKey, const CONTRACT_FIELD &field,
                       char (&szText)[VLX_FIELD_SIZE]) noexcept {
    std::memset(szText, 0, sizeof szText);
    DWORD dwType = REG_SZ;
    DWORD dwSize = field.dwReadSize;
    return RegQueryValueEx(hKey, field.lpszValue, nullptr, &dwType,
                           reinterpret_cast<BYTE *>(szText), &dwSize) == ERROR_SUCCESS &&
           dwSize >= field.dwLeastSize;
}

void ReadContractField(HKEY hKey, const CONTRACT_FIELD &field, void *lpRecord) noexcept {
    char szText[VLX_FIELD_SIZE];
    if (QueryContractText(hKey, field, szText)) {
        std::memcpy(static_cast<char *>(lpRecord) + field.dwOffset, szText, sizeof szText);
    }
}

void WriteContractField(HKEY hKey, const CONTRACT_FIELD &field, const void *lpRecord,
                        const char *szFunction) noexcept {
    char szText[VLX_FIELD_SIZE];
    if (!CopyText(szText, static_cast<const char *>(lpRecord) + field.dwOffset)) {
        TRACE_AS(szFunction, TRACE_FAILURE, "%s has no end within %d bytes.", field.lpszValue,
                 VLX_FIELD_SIZE);
        return;
    }
    (void)RegSetValueEx(hKey, field.lpszValue, 0, REG_SZ, reinterpret_cast<const BYTE *>(szText),
                        static_cast<DWORD>(std::strlen(szText) + 1));
}
