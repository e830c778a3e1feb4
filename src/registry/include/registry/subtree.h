// Deleting a key with everything below it. The registry itself deletes only keys without sub-keys.
#ifndef REGISTRY_SUBTREE_H
#define REGISTRY_SUBTREE_H

#include <ntwin32/registry.h>

// Deletes the key lpszPath below hRoot bottom-up and gives the first error, or ERROR_SUCCESS. What
// was deleted before an error stays deleted. A null or empty path, which would name hRoot itself,
// is ERROR_INVALID_PARAMETER and deletes nothing; the caller sees to it that no name that comes
// from outside makes another key of the path than it means.
[[nodiscard]] LONG DeleteSubtree(HKEY hRoot, const char *lpszPath) noexcept;

#endif  // REGISTRY_SUBTREE_H
