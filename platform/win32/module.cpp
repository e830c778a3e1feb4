// Run-time modules.
//
// State model
//   A module that was loaded stands in one table with the number of its uses, so that a handle that
//   is none is known without being followed. One lock; loading and unloading run outside it,
//   because a module's own start-up code may load another.
#include <dlfcn.h>
#include <ntwin32/module.h>
#include <sys/stat.h>
#include <unistd.h>

#include <base/folders.h>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include "last_error.h"

namespace {

using win32::AtBoundary;
using win32::Fail;

class ModuleTable {
  public:
    void AddUse(HMODULE module) {
        const std::lock_guard lock(mutex_);
        ++uses_[module];
    }
    bool EndUse(HMODULE module) {
        const std::lock_guard lock(mutex_);
        const auto found = uses_.find(module);
        if (found == uses_.end()) {
            return false;
        }
        if (--found->second == 0) {
            uses_.erase(found);
        }
        return true;
    }
    bool IsLoaded(HMODULE module) {
        const std::lock_guard lock(mutex_);
        return uses_.count(module) != 0;
    }

  private:
    std::mutex mutex_;
    std::map<HMODULE, unsigned> uses_;
};

// Lives as long as the process: destructors that run at its end may still unload modules.
ModuleTable &Modules() {
    static auto *table = new ModuleTable;
    return *table;
}

// The path without links and "..", empty when there is no such file.
std::string RealPath(const std::string &path) {
    char real[PATH_MAX];
    return ::realpath(path.c_str(), real) != nullptr ? real : "";
}

std::string ModuleFolder() {
    char root[PATH_MAX];
    if (!base::FolderPath(base::kProductRoot, root, sizeof root)) {
        return {};
    }
    return RealPath(std::string(root) + "/lib");
}

// Root alone may be able to change what root is about to run.
bool IsSafeForRoot(const struct stat &status) {
    const bool group_may_write = (status.st_mode & S_IWGRP) != 0 && status.st_gid != 0;
    return status.st_uid == 0 && !group_may_write && (status.st_mode & S_IWOTH) == 0;
}

bool IsTrustworthy(const std::string &module, const std::string &folder) {
    struct stat file;
    struct stat parent;
    if (::stat(module.c_str(), &file) != 0 || ::stat(folder.c_str(), &parent) != 0 ||
        !S_ISREG(file.st_mode)) {
        return false;
    }
    return ::geteuid() != 0 || (IsSafeForRoot(file) && IsSafeForRoot(parent));
}

// Where the module is, after links; sets the last error when there is none or it may not be loaded.
std::string FindModule(const std::string &name) {
    const std::string folder = ModuleFolder();
    const bool bare = name.find('/') == std::string::npos;
    if (folder.empty() || (!bare && name.front() != '/')) {
        return Fail(ERROR_MOD_NOT_FOUND, std::string());
    }
    std::string module = RealPath(bare ? folder + "/" + name : name);
    if (module.empty()) {
        return Fail(ERROR_MOD_NOT_FOUND, std::string());
    }
    const std::size_t slash = module.rfind('/');
    const bool below = module.compare(0, folder.size() + 1, folder + "/") == 0;
    if (!below || !IsTrustworthy(module, module.substr(0, slash))) {
        return Fail(ERROR_ACCESS_DENIED, std::string());
    }
    return module;
}

HMODULE Load(const char *name) {
    const std::string path = FindModule(name);
    if (path.empty()) {
        return nullptr;
    }
    HMODULE module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
        return Fail(ERROR_MOD_NOT_FOUND, module);
    }
    try {
        Modules().AddUse(module);
    } catch (...) {
        ::dlclose(module);
        throw;
    }
    return module;
}

}  // namespace

extern "C" {

HMODULE LoadLibrary(const char *lpLibFileName) noexcept {
    if (lpLibFileName == nullptr || *lpLibFileName == '\0') {
        return Fail(ERROR_MOD_NOT_FOUND, HMODULE{});
    }
    return AtBoundary(HMODULE{}, [&] { return Load(lpLibFileName); });
}

FARPROC GetProcAddress(HMODULE hModule, const char *lpProcName) noexcept {
    return AtBoundary(FARPROC{}, [&] {
        if (lpProcName == nullptr || !Modules().IsLoaded(hModule)) {
            return Fail(ERROR_INVALID_HANDLE, FARPROC{});
        }
        void *address = ::dlsym(hModule, lpProcName);
        return address != nullptr ? reinterpret_cast<FARPROC>(address)
                                  : Fail(ERROR_PROC_NOT_FOUND, FARPROC{});
    });
}

BOOL FreeLibrary(HMODULE hLibModule) noexcept {
    return AtBoundary(BOOL{FALSE}, [&] {
        if (!Modules().EndUse(hLibModule)) {
            return Fail(ERROR_INVALID_HANDLE, FALSE);
        }
        return ::dlclose(hLibModule) == 0 ? TRUE : Fail(ERROR_INVALID_HANDLE, FALSE);
    });
}

}  // extern "C"
