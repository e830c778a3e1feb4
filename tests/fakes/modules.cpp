// The run-time modules of libNTwin32: those that AddModule gave.
#include <ntwin32/module.h>

#include <map>

#include "state.h"

namespace fakes {

namespace {

using Functions = std::map<std::string, void (*)()>;

struct Modules {
    std::map<std::string, Functions> by_path;
    std::map<HMODULE, int> loaded;
};

Modules &TheModules() {
    static Modules modules;
    return modules;
}

}  // namespace

void AddModule(const std::string &path, std::map<std::string, void (*)()> functions) {
    TheModules().by_path[path] = std::move(functions);
}

int LoadedModules() {
    int loaded = 0;
    for (const auto &[module, times] : TheModules().loaded) {
        loaded += times;
    }
    return loaded;
}

namespace internal {

void ResetModules() {
    TheModules() = {};
}

}  // namespace internal

}  // namespace fakes

using namespace fakes;

HMODULE LoadLibrary(const char *lpLibFileName) noexcept {
    if (Enter("LoadLibrary", lpLibFileName) != 0) {
        return nullptr;
    }
    const auto found = TheModules().by_path.find(lpLibFileName);
    if (found == TheModules().by_path.end()) {
        return nullptr;
    }
    const HMODULE module = &found->second;
    ++TheModules().loaded[module];
    return module;
}

FARPROC GetProcAddress(HMODULE hModule, const char *lpProcName) noexcept {
    if (Enter("GetProcAddress", lpProcName) != 0) {
        return nullptr;
    }
    EXPECT_GT(TheModules().loaded[hModule], 0) << "GetProcAddress of a module that is not loaded";
    const auto &functions = *static_cast<const Functions *>(hModule);
    const auto found = functions.find(lpProcName);
    return found == functions.end() ? nullptr : found->second;
}

BOOL FreeLibrary(HMODULE hLibModule) noexcept {
    Enter("FreeLibrary");
    const bool freed = --TheModules().loaded[hLibModule] >= 0;
    EXPECT_TRUE(freed) << "FreeLibrary of a module that is not loaded";
    return freed ? TRUE : FALSE;
}
