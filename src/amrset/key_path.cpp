#include "key_path.h"

#include <algorithm>
#include <cstring>

#include "registry/subtree.h"
#include "velox/sub_key.h"

namespace {

bool IsKeyName(const char *lpszName) noexcept {
    if (lpszName == nullptr) {
        return false;
    }
    const std::size_t dwLength = strnlen(lpszName, KES_REG_MAX_KEY_NAME + 1);
    return dwLength > 0 && dwLength <= KES_REG_MAX_KEY_NAME &&
           std::memchr(lpszName, '\\', dwLength) == nullptr;
}

// For an unusable path what fits is kept, because the trace shows it.
void Append(KEYPATH *lpPath, const char *lpszText, std::size_t dwMaximum) noexcept {
    const std::size_t dwEnd = std::strlen(lpPath->szText);
    const std::size_t dwRoom = sizeof lpPath->szText - dwEnd - 1;
    const std::size_t dwLength = strnlen(lpszText, dwMaximum);
    const std::size_t dwKept = std::min(dwLength, dwRoom);
    lpPath->bUsable = lpPath->bUsable && dwKept == dwLength;
    std::memcpy(lpPath->szText + dwEnd, lpszText, dwKept);
    lpPath->szText[dwEnd + dwKept] = '\0';
}

}  // namespace

KEYPATH RootPath(const char *szRoot) noexcept {
    KEYPATH path = {"", true};
    Append(&path, szRoot, sizeof path.szText);
    return path;
}

KEYPATH NamePath(const KEYPATH &path, const char *lpszName) noexcept {
    KEYPATH below = path;
    below.bUsable = below.bUsable && IsKeyName(lpszName);
    Append(&below, "\\", 1);
    Append(&below, lpszName == nullptr ? "" : lpszName, KES_REG_MAX_KEY_NAME);
    return below;
}

KEYPATH SubPath(const KEYPATH &path, const char *szKey) noexcept {
    KEYPATH below = path;
    Append(&below, "\\", 1);
    Append(&below, szKey, sizeof below.szText);
    return below;
}

LONG OpenPath(const KEYPATH &path, REGSAM samDesired, AutoRegKey *lpKey) noexcept {
    if (!path.bUsable) {
        return ERROR_BAD_PATHNAME;
    }
    return RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.szText, 0, samDesired, lpKey->Put());
}

LONG CreatePath(const KEYPATH &path, AutoRegKey *lpKey, DWORD *lpdwDisposition) noexcept {
    if (!path.bUsable) {
        return ERROR_BAD_PATHNAME;
    }
    DWORD dwDisposition = 0;
    return RegCreateKeyEx(HKEY_LOCAL_MACHINE, path.szText, 0, "", REG_OPTION_NON_VOLATILE,
                          KEY_ALL_ACCESS, nullptr, lpKey->Put(),
                          lpdwDisposition == nullptr ? &dwDisposition : lpdwDisposition);
}

LONG DeletePath(const KEYPATH &path) noexcept {
    return path.bUsable ? RegDeleteKey(HKEY_LOCAL_MACHINE, path.szText) : ERROR_BAD_PATHNAME;
}

LONG DeletePathTree(const KEYPATH &path) noexcept {
    return path.bUsable ? DeleteSubtree(HKEY_LOCAL_MACHINE, path.szText) : ERROR_BAD_PATHNAME;
}

LONG CountSubKeys(const KEYPATH &path) noexcept {
    return path.bUsable ? CalculateSubKey(path.szText) : -1;
}

LONG ListSubKeys(const KEYPATH &path, char **lplpszSubKey, DWORD dwCapacity, DWORD *num) noexcept {
    return path.bUsable ? SearchSubKeyBounded(path.szText, lplpszSubKey, dwCapacity, num) : -1;
}
