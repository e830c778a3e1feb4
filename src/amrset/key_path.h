// Key paths that hold names from outside: ids, kinds, sources, event ids. Only these functions hand
// such a path to the registry, and none of them does so with an unusable one.
#ifndef AMRSET_KEY_PATH_H
#define AMRSET_KEY_PATH_H

#include <ntwin32/registry.h>

#include "registry/handles.h"

struct KEYPATH {
    char szText[1024];
    // False when one of its names is null, empty, too long or holds a backslash, which would make
    // it the path of another key. The text is then for traces only.
    bool bUsable;
};

// A path below HKEY_LOCAL_MACHINE that the system itself defines.
[[nodiscard]] KEYPATH RootPath(const char *szRoot) noexcept;
// The key below it that bears a name from outside.
[[nodiscard]] KEYPATH NamePath(const KEYPATH &path, const char *lpszName) noexcept;
// The key below it that the system itself names; szKey may have several components.
[[nodiscard]] KEYPATH SubPath(const KEYPATH &path, const char *szKey) noexcept;

// Win32 error codes; ERROR_BAD_PATHNAME for an unusable path.
[[nodiscard]] LONG OpenPath(const KEYPATH &path, REGSAM samDesired, AutoRegKey *lpKey) noexcept;
[[nodiscard]] LONG CreatePath(const KEYPATH &path, AutoRegKey *lpKey,
                              DWORD *lpdwDisposition = nullptr) noexcept;
// Refused by the registry when the key has sub-keys.
LONG DeletePath(const KEYPATH &path) noexcept;
LONG DeletePathTree(const KEYPATH &path) noexcept;

// CalculateSubKey and SearchSubKeyBounded.
[[nodiscard]] LONG CountSubKeys(const KEYPATH &path) noexcept;
LONG ListSubKeys(const KEYPATH &path, char **lplpszSubKey, DWORD dwCapacity, DWORD *num) noexcept;

#endif  // AMRSET_KEY_PATH_H
