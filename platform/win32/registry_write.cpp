// The registry functions that change one key or value.
#include <ntwin32/registry.h>

#include "registry_arguments.h"
#include "registry_client.h"

using namespace win32;
using ntserver::Operation;

LONG RegCreateKeyEx(HKEY hKey, const char *lpSubKey, DWORD, const char *lpClass, DWORD,
                    REGSAM samDesired, const void *, HKEY *phkResult,
                    DWORD *lpdwDisposition) NTWIN32_NOEXCEPT {
    if (phkResult == nullptr || !IsAccessMask(samDesired))
        return ERROR_INVALID_PARAMETER;
    ntserver::CreateKeyAnswer answer;
    // A key that exists is found without asking for a change, as callers mostly do.
    LONG result = RegOpenKeyEx(hKey, lpSubKey, 0, samDesired, phkResult);
    if (result == ERROR_SUCCESS) {
        HandOutNumber(REG_OPENED_EXISTING_KEY, lpdwDisposition);
        return ERROR_SUCCESS;
    }
    if (result != ERROR_FILE_NOT_FOUND)
        return result;
    result = ChangeRegistry(
        Operation::kCreateKey,
        ntserver::CreateKeyRequest{hKey, PathArgument(lpSubKey), NameArgument(lpClass)}, &answer);
    if (result != ERROR_SUCCESS)
        return result;
    *phkResult = answer.key;
    HandOutNumber(answer.created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY, lpdwDisposition);
    return ERROR_SUCCESS;
}

LONG RegCreateKey(HKEY hKey, const char *lpSubKey, HKEY *phkResult) NTWIN32_NOEXCEPT {
    return RegCreateKeyEx(hKey, lpSubKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                          nullptr, phkResult, nullptr);
}

LONG RegSetValueEx(HKEY hKey, const char *lpValueName, DWORD, DWORD dwType, const BYTE *lpData,
                   DWORD cbData) NTWIN32_NOEXCEPT {
    if ((lpData == nullptr && cbData != 0) || cbData > KES_REG_MAX_DATA)
        return ERROR_INVALID_PARAMETER;
    const std::string_view data =
        cbData == 0 ? std::string_view()
                    : std::string_view(reinterpret_cast<const char *>(lpData), cbData);
    ntserver::EmptyMessage answer;
    return ChangeRegistry(Operation::kSetValue,
                          ntserver::SetValueRequest{hKey, NameArgument(lpValueName), dwType, data},
                          &answer);
}

LONG RegDeleteKey(HKEY hKey, const char *lpSubKey) NTWIN32_NOEXCEPT {
    if (lpSubKey == nullptr)
        return ERROR_INVALID_PARAMETER;
    ntserver::EmptyMessage answer;
    return ChangeRegistry(Operation::kDeleteKey,
                          ntserver::PathRequest{hKey, PathArgument(lpSubKey)}, &answer);
}

LONG RegDeleteValue(HKEY hKey, const char *lpValueName) NTWIN32_NOEXCEPT {
    ntserver::EmptyMessage answer;
    return ChangeRegistry(Operation::kDeleteValue,
                          ntserver::NameRequest{hKey, NameArgument(lpValueName)}, &answer);
}

LONG RegCloseKey(HKEY hKey) NTWIN32_NOEXCEPT {
    return hKey == 0 ? ERROR_INVALID_HANDLE : ERROR_SUCCESS;
}
