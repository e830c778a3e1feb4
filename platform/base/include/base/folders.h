// The product's folders: each has a default and an environment variable that overrides it.
#ifndef BASE_FOLDERS_H
#define BASE_FOLDERS_H

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace base {

struct Folder {
    const char *variable;
    const char *otherwise;
};

inline constexpr Folder kProductRoot = {"KES_ROOT", "/opt/xev/kestro_sa"};
inline constexpr Folder kStateFolder = {"KES_STATE", "/var/opt/xev/kestro_sa"};
inline constexpr Folder kRunFolder = {"KES_RUN", "/run/kestro_sa"};

// Stores the path of a folder without trailing slashes. A variable that is unset or empty counts
// for nothing; one that holds a relative path is refused, because a fall-back to the default would
// work on the wrong registry. False then, and when the path does not fit; the buffer is untouched.
inline bool FolderPath(const Folder &folder, char *buffer, std::size_t capacity) noexcept {
    const char *path = ::secure_getenv(folder.variable);
    if (path == nullptr || *path == '\0') {
        path = folder.otherwise;
    }
    if (*path != '/') {
        return false;
    }
    std::size_t length = std::strlen(path);
    while (length > 1 && path[length - 1] == '/') {
        --length;
    }
    if (length >= capacity) {
        return false;
    }
    std::memcpy(buffer, path, length);
    buffer[length] = '\0';
    return true;
}

}  // namespace base

#endif  // BASE_FOLDERS_H
