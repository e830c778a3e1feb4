#include "velox/security.h"

#include <libintl.h>

#include <clocale>
#include <cstring>

#include <ntwin32/system.h>

#include "manager_module.h"
#include "records/manager.h"
#include "registry/keys.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "velox/mail_report.h"
#include "velox/report_method.h"

static constexpr char TRACE_SOURCE[] = "security";

namespace {

constexpr char FUNCTION[] = "SecurityOpenReport";
constexpr char REPORT_PRODUCT[] = "ReportProduct";
constexpr DWORD QUERY_AND_SET = KEY_QUERY_VALUE | KEY_SET_VALUE;
constexpr DWORD REPORT_KIND_ALERT = 2;
constexpr std::size_t TO_CAPACITY = 513;
constexpr std::size_t ERROR_CAPACITY = 512;
constexpr std::size_t PATH_CAPACITY = 513;

// Opens the key of the reporting product, stores the name there and closes the key again. *lphKey
// keeps the handle: the value is deleted through it when the report is over.
bool StoreProduct(const char *SecName, HKEY *lphKey) noexcept {
    AutoRegKey key;
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, AM_KEY_ALERTREPORT, 0, QUERY_AND_SET, key.Put()) !=
        ERROR_SUCCESS) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "%s key doesn't exist", AM_KEY_ALERTREPORT);
        return false;
    }
    *lphKey = key.Get();
    const LONG lResult =
        RegSetValueEx(key.Get(), REPORT_PRODUCT, 0, REG_SZ, reinterpret_cast<const BYTE *>(SecName),
                      static_cast<DWORD>(std::strlen(SecName) + 1));
    key.Reset();
    if (lResult != ERROR_SUCCESS) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "RegSetValueEx(%s) failed.", REPORT_PRODUCT);
        return false;
    }
    return true;
}

// Each way to report gives false when there was no attempt, otherwise *lpnResult is the attempt's.
bool ReportByMail(int *lpnResult) noexcept {
    char szMailTo[TO_CAPACITY] = {};
    if (GetVlxTo(szMailTo) == FALSE) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "GetVlxTo failed.");
        return false;
    }
    char szError[ERROR_CAPACITY] = {};
    *lpnResult = AMAMVeloxTestReport(szError, REPORT_KIND_ALERT,
                                     dcgettext(nullptr, "Velox Alert Notification", LC_MESSAGES),
                                     szMailTo, nullptr);
    return true;
}

// Builds the alert record in *event and *error, which the caller releases, and calls the module.
void CallManagerReport(AMVLXMANREPORT_OPEN *pfnOpen, VLX_MANAGER_PARAM *lpManagerParam,
                       AutoEvent *event, AutoMemory<char> *error, int *lpnResult) noexcept {
    char szDestinationKey[PATH_CAPACITY] = AM_KEY_VELOXREPORT;
    VLX_ALERT_DATA AlertData = {};
    AlertData.lpszDestinationKey = szDestinationKey;
    *event->Put() = CreateEvent(nullptr, FALSE, FALSE, nullptr);
    AlertData.hEvent = event->Get();
    *error->Put() = static_cast<char *>(std::calloc(VLX_ALERT_ERROR_CAPACITY, 1));
    AlertData.lpszErrorMessage = error->Get();
    if (!error->IsValid()) {
        TRACE_AS(FUNCTION, TRACE_MEMORY, "AlertData.lpszErrorMessage malloc failed.");
        return;
    }
    *lpnResult = pfnOpen(&AlertData, lpManagerParam);
}

bool ReportToManager(int *lpnResult) noexcept {
    VLX_MANAGER_PARAM ManagerParam = {};
    if (GetManagerParam(&ManagerParam) == FALSE) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "GetManagerParam failed.");
        return false;
    }
    // Released in the order error text, module, event, after the parameters.
    AutoEvent event;
    AutoModule module;
    AutoMemory<char> error;
    auto *pfnOpen = reinterpret_cast<AMVLXMANREPORT_OPEN *>(
        LoadManagerModule(FUNCTION, AMVLXMANREPORT_OPEN_NAME, &module));
    if (pfnOpen != nullptr) {
        CallManagerReport(pfnOpen, &ManagerParam, &event, &error, lpnResult);
    }
    FreeManagerParam(&ManagerParam);
    return true;
}

bool ReportByMethod(DWORD dwMethod, int *lpnResult) noexcept {
    switch (dwMethod) {
        case VLX_METHOD_INTERNET_MAIL:
            return ReportByMail(lpnResult);
        case VLX_METHOD_TRANS_TO_MANAGER:
            return ReportToManager(lpnResult);
        default:
            TRACE_AS(FUNCTION, TRACE_FAILURE,
                     "method %d unable to send open report."
                     "[0:internet mail|1:dial up|2:transtomanager]",
                     static_cast<int>(dwMethod));
            return false;
    }
}

void Report(int *lpnResult) noexcept {
    DWORD dwMethod = 0;
    if (AMGetVlxMethod(&dwMethod) != 0) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "AMGetVlxMethod () failed.");
        return;
    }
    if (!ReportByMethod(dwMethod, lpnResult)) {
        return;
    }
    if (*lpnResult == 0) {
        TRACE_AS(FUNCTION, TRACE_NOTE, "Send Security open report ok.");
    } else {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "Send Security Opening report failed.");
    }
}

}  // namespace

int SecurityOpenReport(const char *SecName) noexcept {
    TRACE(TRACE_NOTE, ">");
    if (SecName == nullptr || SecName[0] == '\0') {
        TRACE(TRACE_FAILURE, "<SecName=%p", static_cast<const void *>(SecName));
        return -1;
    }
    int nResult = -1;
    HKEY hKey = 0;
    if (StoreProduct(SecName, &hKey)) {
        Report(&nResult);
    }
    // The handle is closed by now, or was never opened: a handle is a key's id, so that the call
    // reaches the key in the first case and fails in the second.
    (void)RegDeleteValue(hKey, REPORT_PRODUCT);
    TRACE(TRACE_NOTE, "<");
    return nResult;
}
