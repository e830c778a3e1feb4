// Registry writes in one call each.
#include <amcrtcpy.h>

#include <cstring>

#include "boundary.h"
#include "registry_key.h"

namespace {

bool WriteValue(HKEY root, const char *path, const char *name, DWORD type, const void *data,
                std::size_t size) {
    if (path == nullptr || name == nullptr || size > KES_REG_MAX_DATA) {
        return false;
    }
    agent::RegistryKey key;
    return key.Open(root, path, KEY_SET_VALUE) &&
           key.Set(name, type, data, static_cast<DWORD>(size));
}

}  // namespace

extern "C" {

BOOL AMACRERegCreateKey(HKEY hRoot, const char *lpKey) noexcept {
    return agent::AtBoundary([&] {
        agent::RegistryKey key;
        return lpKey != nullptr && key.Create(hRoot, lpKey);
    });
}

BOOL AMACRERegWriteSz(HKEY hRoot, const char *lpKey, const char *lpValueName,
                      const char *lpText) noexcept {
    return agent::AtBoundary([&] {
        return lpText != nullptr &&
               WriteValue(hRoot, lpKey, lpValueName, REG_SZ, lpText, std::strlen(lpText) + 1);
    });
}

BOOL AMACRERegWriteDword(HKEY hRoot, const char *lpKey, const char *lpValueName,
                         DWORD dwNumber) noexcept {
    return agent::AtBoundary([&] {
        return WriteValue(hRoot, lpKey, lpValueName, REG_DWORD, &dwNumber, sizeof dwNumber);
    });
}

}  // extern "C"
