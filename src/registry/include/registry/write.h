// Typed writes of values below HKEY_LOCAL_MACHINE through AMAMRegWrite, whose trace they share.
#ifndef REGISTRY_WRITE_H
#define REGISTRY_WRITE_H

#include <ntwin32/registry.h>

#include <cstddef>
#include <cstring>

#include "velox/registry_access.h"

// Stores a text with its terminator.
[[nodiscard]] inline bool WriteText(const char *lpszPath, const char *lpszValue,
                                    const char *lpszText) noexcept {
    return AMAMRegWrite(HKEY_LOCAL_MACHINE, lpszPath, lpszValue, REG_SZ, lpszText,
                        static_cast<LONG>(std::strlen(lpszText) + 1)) != FALSE;
}

[[nodiscard]] inline bool WriteNumber(const char *lpszPath, const char *lpszValue,
                                      DWORD dwNumber) noexcept {
    return AMAMRegWrite(HKEY_LOCAL_MACHINE, lpszPath, lpszValue, REG_DWORD, &dwNumber,
                        sizeof dwNumber) != FALSE;
}

// True when the text ends inside its field; others must not be written.
template <std::size_t N>
[[nodiscard]] bool IsTerminated(const char (&szField)[N]) noexcept {
    return strnlen(szField, N) < N;
}

#endif  // REGISTRY_WRITE_H
