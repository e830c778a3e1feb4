// Values of an open key, as numbers and as texts in fixed arrays. Missing values are no failures in
// this library and most writers do not look at the result, so that nothing here traces but a text
// that has no end.
#ifndef AMRSET_KEY_VALUES_H
#define AMRSET_KEY_VALUES_H

#include <ntwin32/registry.h>

#include <cstddef>

// Reads a number of 4 bytes. False when it cannot be read: *lpdwNumber keeps its preset.
bool QueryNumber(HKEY hKey, const char *szName, DWORD *lpdwNumber) noexcept;

// Reads up to dwCapacity bytes. A value that fills them without a terminator is cut at a whole
// character. False when it cannot be read: the text keeps its preset.
bool QueryText(HKEY hKey, const char *szName, char *lpszText, std::size_t dwCapacity) noexcept;

template <std::size_t N>
bool QueryText(HKEY hKey, const char *szName, char (&szText)[N]) noexcept {
    return QueryText(hKey, szName, szText, N);
}

LONG SetNumber(HKEY hKey, const char *szName, DWORD dwNumber) noexcept;

// Stores the text with its terminator. A text that does not end within dwCapacity bytes is traced
// and not stored.
LONG SetText(HKEY hKey, const char *szName, const char *lpszText, std::size_t dwCapacity) noexcept;

template <std::size_t N>
LONG SetText(HKEY hKey, const char *szName, const char (&szText)[N]) noexcept {
    return SetText(hKey, szName, szText, N);
}

#endif  // AMRSET_KEY_VALUES_H
