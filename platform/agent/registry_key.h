// An open registry key that closes itself.
#ifndef AGENT_REGISTRY_KEY_H
#define AGENT_REGISTRY_KEY_H

#include <ntwin32/registry.h>

namespace agent {

class RegistryKey {
  public:
    RegistryKey() = default;
    ~RegistryKey() {
        if (handle_ != 0) {
            RegCloseKey(handle_);
        }
    }
    RegistryKey(const RegistryKey &) = delete;
    RegistryKey &operator=(const RegistryKey &) = delete;

    bool Open(HKEY root, const char *path, REGSAM access) noexcept {
        return RegOpenKeyEx(root, path, 0, access, &handle_) == ERROR_SUCCESS;
    }
    bool Create(HKEY root, const char *path) noexcept {
        return RegCreateKey(root, path, &handle_) == ERROR_SUCCESS;
    }
    bool Set(const char *name, DWORD type, const void *data, DWORD size) noexcept {
        return RegSetValueEx(handle_, name, 0, type, static_cast<const BYTE *>(data), size) ==
               ERROR_SUCCESS;
    }

  private:
    HKEY handle_ = 0;
};

}  // namespace agent

#endif  // AGENT_REGISTRY_KEY_H
