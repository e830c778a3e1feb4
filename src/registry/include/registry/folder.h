// The product's folder as the modules and data files are looked up in it.
#ifndef REGISTRY_FOLDER_H
#define REGISTRY_FOLDER_H

#include <ntwin32/system.h>

#include <cstddef>

// Expands "%KesDir%" into the array. False when it cannot be expanded or does not fit; the content
// is of no use then.
template <std::size_t N>
[[nodiscard]] bool ExpandProductFolder(char (&szFolder)[N]) noexcept {
    const DWORD dwSize = ExpandEnvironmentStrings("%KesDir%", szFolder, N);
    return dwSize != 0 && dwSize <= N;
}

#endif  // REGISTRY_FOLDER_H
