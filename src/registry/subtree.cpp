#include "registry/subtree.h"

#include "registry/handles.h"

namespace {

// Always the first sub-key, because each deletion moves the others up.
LONG DeleteSubKeys(HKEY hKey) noexcept {
    while (true) {
        char szName[KES_REG_MAX_KEY_NAME + 1];
        DWORD dwLength = sizeof szName;
        LONG lResult = RegEnumKeyEx(hKey, 0, szName, &dwLength, nullptr, nullptr, nullptr, nullptr);
        if (lResult == ERROR_NO_MORE_ITEMS) {
            return ERROR_SUCCESS;
        }
        if (lResult == ERROR_SUCCESS) {
            lResult = DeleteSubtree(hKey, szName);
        }
        if (lResult != ERROR_SUCCESS) {
            return lResult;
        }
    }
}

}  // namespace

LONG DeleteSubtree(HKEY hRoot, const char *lpszPath) noexcept {
    if (lpszPath == nullptr || lpszPath[0] == '\0') {
        return ERROR_INVALID_PARAMETER;
    }
    AutoRegKey key;
    LONG lResult = RegOpenKeyEx(hRoot, lpszPath, 0, KEY_ALL_ACCESS, key.Put());
    if (lResult == ERROR_SUCCESS) {
        lResult = DeleteSubKeys(key.Get());
        key.Reset();
    }
    return lResult == ERROR_SUCCESS ? RegDeleteKey(hRoot, lpszPath) : lResult;
}
