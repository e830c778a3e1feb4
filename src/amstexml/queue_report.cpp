#include "velox/queue_report.h"

#include <amcregac.h>
#include <ntwin32/module.h>
#include <ntwin32/system.h>
#include <records/queue_item.h>

#include <cstdint>
#include <ctime>

#include "registry/handles.h"
#include "registry/text.h"
#include "registry/trace.h"

namespace {

constexpr char TRACE_SOURCE[] = "amstexml";
constexpr char FUNCTION[] = "TestFatalReport";

constexpr char DESTINATION_ID[513] = "VeloxReport";
constexpr char HEARTBEAT_SOURCE[] = "KESHeartBeatDll";
constexpr DWORD LEVEL_ERROR = 2;

// What the item's pointers point to.
struct QUEUE_TEXTS {
    char szDestination[512];
    char szComputer[257];
    BYTE byData[16];  // no event data: two empty blocks point here
};

// Fills the item; false when destination or computer are not known.
bool FillItem(AMQUE_ITEM *lpItem, QUEUE_TEXTS *lpTexts) noexcept {
    lpItem->qwKind = AMQUE_KIND_ALERT;
    lpItem->lpszLog = "SYSTEM";
    lpItem->lpszSource = HEARTBEAT_SOURCE;
    lpItem->qwLevel = LEVEL_ERROR;
    HKEY hRoot = 0;
    DWORD dwSize = sizeof lpTexts->szDestination;
    if (AMACDSGetIDRegistryPath(DESTINATION_ID, &hRoot, lpTexts->szDestination, &dwSize) == FALSE) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<AMACDSGetIDRegistryPath return FALSE.");
        return false;
    }
    lpItem->qwRoot = hRoot;
    lpItem->lpszDestination = lpTexts->szDestination;
    lpItem->qwTime = static_cast<std::uint32_t>(std::time(nullptr));
    dwSize = sizeof lpTexts->szComputer;
    if (GetComputerName(lpTexts->szComputer, &dwSize) == FALSE) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<GetComputerName() failed.return FALSE.");
        return false;
    }
    lpItem->lpszComputer = lpTexts->szComputer;
    lpItem->lpszMessage = "TEST - AlertManager";
    lpItem->lpszReporter = HEARTBEAT_SOURCE;
    lpItem->qwReportLevel = LEVEL_ERROR;
    lpItem->lpData = lpTexts->byData;
    lpItem->lpExtra = lpTexts->byData;
    for (const char *&lpszText : lpItem->lpszText) {
        lpszText = "";
    }
    lpItem->qwCount = 1;
    lpItem->lpszNote = "";
    return true;
}

// Loads the queue module; the platform's invalid handle counts as a failure like null.
AutoModule LoadQueue() noexcept {
    char szRoot[4096] = {};
    char szPath[sizeof szRoot + sizeof "/lib/" AMVMQUE_MODULE];
    if (GetKesRootPath(szRoot, sizeof szRoot) == FALSE) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<GetKesRootPath() failed.return FALSE.");
        return AutoModule();
    }
    (void)FormatText(szPath, sizeof szPath, "%s/lib/%s", szRoot, AMVMQUE_MODULE);
    AutoModule module(LoadLibrary(szPath));
    if (module.Get() == reinterpret_cast<HMODULE>(INVALID_HANDLE_VALUE)) {
        (void)module.Release();
    }
    if (!module.IsValid()) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<LoadLibrary %s failed.return FALSE.", szPath);
    }
    return module;
}

BOOL AddItem(const AMQUE_ITEM &item) noexcept {
    AutoModule module = LoadQueue();
    if (!module.IsValid()) {
        return FALSE;
    }
    auto *pAMQueNewAdd =
        reinterpret_cast<AMQUENEWADD *>(GetProcAddress(module.Get(), AMQUENEWADD_NAME));
    if (pAMQueNewAdd == nullptr) {
        module.Reset();
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<GetProcAddress(AMQueNewAdd) failed.");
        return FALSE;
    }
    const BOOL bAdded = pAMQueNewAdd(&item);
    module.Reset();
    if (bAdded == FALSE) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<pAMQueNewAdd() falied.return FALSE.");
        return FALSE;
    }
    TRACE_AS(FUNCTION, TRACE_NOTE, "<return TRUE");
    return TRUE;
}

}  // namespace

BOOL TestFatalReport() noexcept {
    TRACE(TRACE_NOTE, ">");
    if (AMACEXSetRegistryNumber(0) == FALSE) {
        TRACE(TRACE_FAILURE, "<AMACEXSetRegistryNumber failed.return FALSE.");
        return FALSE;
    }
    AMQUE_ITEM item = {};
    QUEUE_TEXTS texts = {};
    return FillItem(&item, &texts) ? AddItem(item) : FALSE;
}
