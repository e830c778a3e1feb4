#include "velox/manager_alert.h"

#include <cstring>

#include "manager_module.h"
#include "registry/keys.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "velox/report_method.h"

static constexpr char TRACE_SOURCE[] = "security";

namespace {

constexpr std::size_t PATH_CAPACITY = 513;

// Both records stay valid for the module's call only. Without the event the module gets none.
int CallModule(KESMANREPORT_ALERT *pfnAlert, VLX_MANAGER_PARAM *lpManagerParam,
               const VLX_MANAGER_ALERT *lpAlert, char *lpszErrorMessage) noexcept {
    char szDestinationKey[PATH_CAPACITY] = AM_KEY_VELOXREPORT;
    AutoEvent event(CreateEvent(nullptr, FALSE, FALSE, nullptr));
    VLX_ALERT_DATA AlertData = {};
    AlertData.lpszDestinationKey = szDestinationKey;
    AlertData.lpszErrorMessage = lpszErrorMessage;
    AlertData.hEvent = event.Get();
    const int nResult = pfnAlert(&AlertData, lpManagerParam, lpAlert);
    lpszErrorMessage[VLX_ALERT_ERROR_CAPACITY - 1] = '\0';
    return nResult;
}

}  // namespace

int KesSendAlertToManager(const VLX_MANAGER_ALERT *lpAlert, char *lpszErrorMessage) noexcept {
    TRACE(TRACE_NOTE, ">lpszEventId=%s", lpAlert->lpszEventId);
    std::memset(lpszErrorMessage, 0, VLX_ALERT_ERROR_CAPACITY);
    VLX_MANAGER_PARAM ManagerParam = {};
    if (GetManagerParam(&ManagerParam) == FALSE) {
        TRACE(TRACE_FAILURE, "<GetManagerParam failed.return %d.", KES_MANAGER_NOT_CALLED);
        return KES_MANAGER_NOT_CALLED;
    }
    int nResult = KES_MANAGER_NOT_CALLED;
    {
        AutoModule module;
        auto *pfnAlert = reinterpret_cast<KESMANREPORT_ALERT *>(
            LoadManagerModule(__func__, KESMANREPORT_ALERT_NAME, &module));
        if (pfnAlert != nullptr) {
            nResult = CallModule(pfnAlert, &ManagerParam, lpAlert, lpszErrorMessage);
        }
    }
    FreeManagerParam(&ManagerParam);
    TRACE(nResult == 0 ? TRACE_NOTE : TRACE_FAILURE, "<return %d.", nResult);
    return nResult;
}
