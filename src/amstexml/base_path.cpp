#include <amcregac.h>

#include <cstdlib>

#include "registry/folder.h"
#include "registry/handles.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "velox/mail_base.h"

namespace {

constexpr char TRACE_SOURCE[] = "amstexml";
constexpr char FUNCTION[] = "AMAMGetBaseRegPath";
constexpr char MODULE_NAME[] = "amcregac.dll";

using GETMETHODREGISTRYPATH = decltype(AMACBSGetMethodRegistryPath);

// Here and below lpszPath holds AMAM_BASE_PATH_CAPACITY bytes.
void SetDefaultPath(char *lpszPath) noexcept {
    static_assert(sizeof AMAM_DEFAULT_BASE_PATH <= AMAM_BASE_PATH_CAPACITY);
    (void)CopyText(lpszPath, AMAM_BASE_PATH_CAPACITY, AMAM_DEFAULT_BASE_PATH);
}

// Each of the steps below traces why it fails; the caller sets the default path then.

AutoModule LoadRegistryModule(const char *lpszFolder) noexcept {
    char szLibrary[128];
    AutoModule module;
    if (FormatText(szLibrary, sizeof szLibrary, "%s/lib/%s", lpszFolder, MODULE_NAME)) {
        module.Reset(LoadLibrary(szLibrary));
    }
    if (!module.IsValid()) {
        // A path that does not fit is empty: the name tells enough then.
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<LoadLibrary(%s) failed.",
                 szLibrary[0] != '\0' ? szLibrary : MODULE_NAME);
    }
    return module;
}

// Asks with a size of 0 for the size, or with that size for the path.
bool AskPath(GETMETHODREGISTRYPATH *pfnGetPath, char *lpszPath, DWORD *lpdwSize) noexcept {
    HKEY hKey = 0;
    if (pfnGetPath("Report", "VeloxReport(Internet Mail)", &hKey, lpszPath, lpdwSize) == FALSE) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<lpGetMethodRegistryPath failed.");
        return false;
    }
    return true;
}

bool FetchPath(GETMETHODREGISTRYPATH *pfnGetPath, char *lpszPath) noexcept {
    char cScratch = '\0';
    DWORD dwSize = 0;
    if (!AskPath(pfnGetPath, &cScratch, &dwSize)) {
        return false;
    }
    // One byte more, so that a path handed out without terminator ends.
    const AutoMemory<char> path(static_cast<char *>(std::calloc(std::size_t{dwSize} + 1, 1)));
    if (!path.IsValid()) {
        TRACE_AS(FUNCTION, TRACE_MEMORY, "<malloc lpbyBuf error!");
        return false;
    }
    if (!AskPath(pfnGetPath, path.Get(), &dwSize)) {
        return false;
    }
    if (!CopyText(lpszPath, AMAM_BASE_PATH_CAPACITY, path.Get())) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<the path has more than %d bytes.",
                 AMAM_BASE_PATH_CAPACITY - 1);
        return false;
    }
    return true;
}

bool FetchPathFromModule(const char *lpszFolder, char *lpszPath) noexcept {
    const AutoModule module = LoadRegistryModule(lpszFolder);
    if (!module.IsValid()) {
        return false;
    }
    auto *pfnGetPath = reinterpret_cast<GETMETHODREGISTRYPATH *>(
        GetProcAddress(module.Get(), "AMACBSGetMethodRegistryPath"));
    if (pfnGetPath == nullptr) {
        TRACE_AS(FUNCTION, TRACE_FAILURE,
                 "<GetProcAddress(AMACBSGetMethodRegistryPath) return TRUE.");
        return false;
    }
    return FetchPath(pfnGetPath, lpszPath);
}

}  // namespace

int AMAMGetBaseRegPath(char *g_szAMBaseRegPath) noexcept {
    TRACE(TRACE_NOTE, ">g_szAMBaseRegPath=%p", static_cast<void *>(g_szAMBaseRegPath));
    g_szAMBaseRegPath[0] = '\0';
    char szFolder[128];
    if (!ExpandProductFolder(szFolder)) {
        SetDefaultPath(g_szAMBaseRegPath);
        TRACE(TRACE_FAILURE, "<ExpandEnvironmentStrings failed.g_szAMBaseRegPath=%s.",
              g_szAMBaseRegPath);
        return 1;
    }
    if (!FetchPathFromModule(szFolder, g_szAMBaseRegPath)) {
        SetDefaultPath(g_szAMBaseRegPath);
        return 1;
    }
    TRACE(TRACE_NOTE, "<g_szAMBaseRegPath=%s", g_szAMBaseRegPath);
    return 1;
}
