#include "velox/registry_access.h"

#include "registry/handles.h"
#include "registry/text.h"
#include "registry/trace.h"

// The trace identity is that of the module whose wrapper it is, not of this file.
static constexpr char SOURCE_AMRSET[] = "amrset";
static constexpr char SOURCE_AMSTEXML[] = "amstexml";

DWORD RegReadEx(HKEY hRoot, const char *lpszPath, const char *lpszValue, DWORD *lpdwType,
                DWORD *lpdwSize, BYTE *lpbyData) noexcept {
    static constexpr const char *TRACE_SOURCE = SOURCE_AMRSET;
    TRACE(TRACE_NOTE, ">RegPath=%s,RegValue=%s,", TextOrNull(lpszPath), TextOrNull(lpszValue));
    TRACE(TRACE_NOTE, "RegType=%p,RegSize=%p,RegData=%p", static_cast<void *>(lpdwType),
          static_cast<void *>(lpdwSize), static_cast<void *>(lpbyData));
    *lpdwType = 0;
    lpbyData[0] = 0;

    AutoRegKey key;
    if (RegOpenKeyEx(hRoot, lpszPath, 0, KEY_READ, key.Put()) != ERROR_SUCCESS) {
        TRACE(TRACE_FAILURE, "<RegOpenKeyEx error!return FALSE.");
        return FALSE;
    }
    const LONG lResult =
        RegQueryValueEx(key.Get(), lpszValue, nullptr, lpdwType, lpbyData, lpdwSize);
    key.Reset();
    if (lResult != ERROR_SUCCESS) {
        TRACE(TRACE_FAILURE, "<RegQueryValueEx error!return FALSE.");
        return FALSE;
    }
    TRACE(TRACE_NOTE, "<return TRUE.");
    return TRUE;
}

DWORD AMAMRegReadEx(HKEY hRoot, const char *lpszPath, const char *lpszValue, DWORD *lpdwType,
                    DWORD *lpdwSize, BYTE *lpbyData) noexcept {
    static constexpr const char *TRACE_SOURCE = SOURCE_AMSTEXML;
    TRACE(TRACE_NOTE, ">");
    TRACE(TRACE_NOTE, "RegPath=%s,RegValue=%s,RegType=%p,RegSize=%p,RegData=%p",
          TextOrNull(lpszPath), TextOrNull(lpszValue), static_cast<void *>(lpdwType),
          static_cast<void *>(lpdwSize), static_cast<void *>(lpbyData));

    AutoRegKey key;
    if (RegOpenKeyEx(hRoot, lpszPath, 0, KEY_READ, key.Put()) != ERROR_SUCCESS) {
        TRACE(TRACE_FAILURE, "<RegOpenKeyEx %s error.", TextOrNull(lpszPath));
        return FALSE;
    }
    const LONG lResult =
        RegQueryValueEx(key.Get(), lpszValue, nullptr, lpdwType, lpbyData, lpdwSize);
    key.Reset();
    if (lResult != ERROR_SUCCESS) {
        TRACE(TRACE_FAILURE, "<RegQueryValueEx(%s) failed.", TextOrNull(lpszValue));
        return FALSE;
    }
    TRACE(TRACE_NOTE, "<return TRUE.");
    return TRUE;
}

DWORD AMAMRegWrite(HKEY hRoot, const char *lpszPath, const char *lpszValue, DWORD dwType,
                   const void *lpData, LONG nSize) noexcept {
    static constexpr const char *TRACE_SOURCE = SOURCE_AMSTEXML;
    TRACE(TRACE_NOTE, ">szSubKey=%s,lpItm=%s", TextOrNull(lpszPath), TextOrNull(lpszValue));
    TRACE(TRACE_NOTE, "dwType=%d,lpData=%p,dwSize=%d", static_cast<int>(dwType), lpData, nSize);

    AutoRegKey key;
    if (RegOpenKeyEx(hRoot, lpszPath, 0, KEY_SET_VALUE, key.Put()) != ERROR_SUCCESS) {
        TRACE(TRACE_FAILURE, "<RegOpenKeyEx %s failed.", TextOrNull(lpszPath));
        return FALSE;
    }
    const LONG lResult =
        RegSetValueEx(key.Get(), lpszValue, 0, dwType, static_cast<const BYTE *>(lpData),
                      static_cast<DWORD>(nSize));
    key.Reset();
    if (lResult != ERROR_SUCCESS) {
        TRACE(TRACE_FAILURE, "<RegSetValueEx %s failed.", TextOrNull(lpszValue));
        return FALSE;
    }
    TRACE(TRACE_NOTE, "<return TRUE");
    return TRUE;
}
