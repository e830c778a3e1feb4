// What the machine, the product's folders and the system's language are called.
#include <ntwin32/system.h>
#include <sys/utsname.h>

#include <base/folders.h>
#include <algorithm>
#include <climits>
#include <cstring>
#include <string>
#include <string_view>

#include "environment_text.h"
#include "last_error.h"
#include "operating_system.h"

namespace {

using win32::AtBoundary;
using win32::Fail;

// Stores a text whole or not at all.
BOOL Store(std::string_view text, char *buffer, DWORD capacity) {
    if (text.size() >= capacity) {
        return Fail(ERROR_INSUFFICIENT_BUFFER, FALSE);
    }
    std::memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
    return TRUE;
}

BOOL StoreFolder(const base::Folder &folder, char *buffer, DWORD capacity) {
    char path[PATH_MAX];
    if (buffer == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    if (!base::FolderPath(folder, path, sizeof path)) {
        return Fail(ERROR_BAD_PATHNAME, FALSE);
    }
    return Store(path, buffer, capacity);
}

BOOL StoreComputerName(char *buffer, DWORD *size) {
    utsname names;
    if (::uname(&names) != 0) {
        return Fail(ERROR_ACCESS_DENIED, FALSE);
    }
    const auto length = static_cast<DWORD>(std::strlen(names.nodename));
    const BOOL stored = Store(names.nodename, buffer, *size);
    *size = stored != FALSE ? length : length + 1;
    return stored;
}

DWORD StoreExpanded(const char *text, char *buffer, DWORD capacity) {
    const auto expanded = win32::ExpandEnvironment(text);
    if (!expanded) {
        return Fail(ERROR_BAD_PATHNAME, DWORD{0});
    }
    if (expanded->size() >= UINT32_MAX) {
        return Fail(ERROR_NOT_ENOUGH_MEMORY, DWORD{0});
    }
    if (Store(*expanded, buffer, capacity) == FALSE && capacity != 0) {
        *buffer = '\0';
    }
    return static_cast<DWORD>(expanded->size() + 1);
}

std::string Language() {
    return win32::LanguageSetting(::secure_getenv("KES_LANG"), "");
}

BOOL StoreDistribution(char *buffer, DWORD capacity) {
    const std::string line = win32::DistributionLine("");
    const std::size_t length = std::min<std::size_t>(line.size(), capacity - 1);
    std::memcpy(buffer, line.data(), length);
    buffer[length] = '\0';
    return line.empty() ? Fail(ERROR_FILE_NOT_FOUND, FALSE) : TRUE;
}

}  // namespace

extern "C" {

BOOL GetComputerName(char *lpBuffer, DWORD *nSize) noexcept {
    if (nSize == nullptr || (lpBuffer == nullptr && *nSize != 0)) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    return StoreComputerName(lpBuffer, nSize);
}

DWORD ExpandEnvironmentStrings(const char *lpSrc, char *lpDst, DWORD nSize) noexcept {
    if (lpSrc == nullptr || (lpDst == nullptr && nSize != 0)) {
        return Fail(ERROR_INVALID_PARAMETER, DWORD{0});
    }
    return AtBoundary(DWORD{0}, [&] { return StoreExpanded(lpSrc, lpDst, nSize); });
}

LANGID GetSystemDefaultLangID(void) noexcept {
    return AtBoundary(LANGID{LANGID_ENGLISH_US}, [] { return win32::LanguageIdOf(Language()); });
}

BOOL GetSystemDefaultLANG(char *lpBuffer, DWORD cbBuffer) noexcept {
    if (lpBuffer == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    return AtBoundary(BOOL{FALSE},
                      [&] { return Store(win32::LocaleNameOf(Language()), lpBuffer, cbBuffer); });
}

BOOL IsDBCSLeadByte(BYTE TestChar) noexcept {
    const bool lead =
        (TestChar >= 0x81 && TestChar <= 0x9F) || (TestChar >= 0xE0 && TestChar <= 0xFC);
    return lead ? TRUE : FALSE;
}

BOOL GetKesRootPath(char *lpBuffer, DWORD cbBuffer) noexcept {
    return StoreFolder(base::kProductRoot, lpBuffer, cbBuffer);
}

BOOL GetKesStatePath(char *lpBuffer, DWORD cbBuffer) noexcept {
    return StoreFolder(base::kStateFolder, lpBuffer, cbBuffer);
}

BOOL getOSDistribution(char *lpBuffer, DWORD cbBuffer) noexcept {
    if (lpBuffer == nullptr || cbBuffer == 0) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    return AtBoundary(BOOL{FALSE}, [&] { return StoreDistribution(lpBuffer, cbBuffer); });
}

}  // extern "C"
