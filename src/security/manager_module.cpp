#include "manager_module.h"

#include <ntwin32/system.h>

#include "records/manager.h"
#include "registry/text.h"
#include "registry/trace.h"

static constexpr char TRACE_SOURCE[] = "security";

namespace {

constexpr std::size_t PATH_CAPACITY = 513;
constexpr DWORD ROOT_SIZE = 512;

}  // namespace

FARPROC LoadManagerModule(const char *lpszFunction, const char *lpszEntry,
                          AutoModule *module) noexcept {
    char szRoot[PATH_CAPACITY] = {};
    char szLibrary[PATH_CAPACITY] = {};
    // Without a root folder the path is one that does not exist.
    if (!GetKesRootPath(szRoot, ROOT_SIZE)) {
        szRoot[0] = '\0';
    }
    if (FormatText(szLibrary, sizeof szLibrary, "%s/lib/%s", szRoot, AMRVXMN_MODULE)) {
        *module->Put() = LoadLibrary(szLibrary);
    }
    if (!module->IsValid()) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "LoadLibrary(%s) failed.", szLibrary);
        return nullptr;
    }
    const FARPROC pfnEntry = GetProcAddress(module->Get(), lpszEntry);
    if (pfnEntry == nullptr) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "GetProcAddress() failed.");
    }
    return pfnEntry;
}
