// The selected report method and the opening state.
#include "velox/report_method.h"

#include <ntwin32/registry.h>
#include <strings.h>

#include <cstring>

#include "registry/keys.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "velox/mail_report.h"
#include "velox/registry_access.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr char METHOD_KEY[] =
    "SOFTWARE\\XEV\\KESAlertMan\\BaseSetting\\REPORT\\VELOXREPORT\\SETTING";
constexpr char METHOD_VALUE[] = "SelectedMethod";
constexpr char SETUP_KEY[] = "SOFTWARE\\XEV\\VLXSERVICE\\SETUP";
constexpr char ADDRESS_KEY[] = AM_KEY_VELOXREPORT "\\Address";
constexpr DWORD METHOD_SIZE = 64;

// The text of each method, by its number.
constexpr const char *METHOD_TEXT[] = {"Internet Mail", "Dial-up", "TransToManager"};
constexpr DWORD METHOD_COUNT = sizeof METHOD_TEXT / sizeof METHOD_TEXT[0];

BOOL WriteZero(const char *lpszKey, const char *lpszValue) noexcept {
    const DWORD dwZero = 0;
    return AMAMRegWrite(HKEY_LOCAL_MACHINE, lpszKey, lpszValue, REG_DWORD, &dwZero,
                        sizeof dwZero) != FALSE;
}

// The set-up state: written only when it is not 0 already.
BOOL ResetSetupState() noexcept {
    DWORD dwType = REG_DWORD;
    DWORD dwState = 0;
    DWORD dwSize = sizeof dwState;
    return RegReadEx(HKEY_LOCAL_MACHINE, SETUP_KEY, "SETTING", &dwType, &dwSize,
                     reinterpret_cast<BYTE *>(&dwState)) != FALSE &&
           (dwState == 0 || WriteZero(SETUP_KEY, "SETTING"));
}

}  // namespace

LONG AMGetVlxMethod(DWORD *selected_method) noexcept {
    TRACE(TRACE_NOTE, ">selected_method=%p", static_cast<void *>(selected_method));
    char szMethod[METHOD_SIZE + 1] = {};
    DWORD dwType = REG_SZ;
    DWORD dwSize = METHOD_SIZE;
    if (RegReadEx(HKEY_LOCAL_MACHINE, METHOD_KEY, METHOD_VALUE, &dwType, &dwSize,
                  reinterpret_cast<BYTE *>(szMethod)) == FALSE) {
        TRACE(TRACE_FAILURE, "<RegReadEx %s failed.", METHOD_VALUE);
        return -1;
    }
    for (DWORD dwMethod = 0; dwMethod < METHOD_COUNT; ++dwMethod) {
        if (strcasecmp(szMethod, METHOD_TEXT[dwMethod]) == 0) {
            *selected_method = dwMethod;
            TRACE(TRACE_NOTE, "<return %d.SelectedMethod = %s", 0, szMethod);
            return 0;
        }
    }
    TRACE(TRACE_FAILURE, "<return %d.SelectedMethod = %s", -1, szMethod);
    return -1;
}

LONG AMSetVlxMethod(DWORD selected_method) noexcept {
    TRACE(TRACE_NOTE, ">selected_method=%d", static_cast<int>(selected_method));
    if (selected_method >= METHOD_COUNT) {
        TRACE(TRACE_FAILURE, "<return %d", -1);
        return -1;
    }
    const char *lpszText = METHOD_TEXT[selected_method];
    if (AMAMRegWrite(HKEY_LOCAL_MACHINE, METHOD_KEY, METHOD_VALUE, REG_SZ, lpszText,
                     static_cast<LONG>(std::strlen(lpszText) + 1)) == FALSE) {
        TRACE(TRACE_FAILURE, "<AMAMRegWrite %s/%s failed.", METHOD_KEY, METHOD_VALUE);
        return -1;
    }
    TRACE(TRACE_NOTE, "<return %d", 0);
    return 0;
}

LONG AMResetOpenSet() noexcept {
    TRACE(TRACE_NOTE, ">");
    if (!ResetSetupState()) {
        // The text speaks of the write also when it was the read that failed.
        TRACE(TRACE_FAILURE, "<AMAMRegWrite %s/%s failed.", SETUP_KEY, "SETTING");
        return -1;
    }
    if (GetEOpening() != 0 && !WriteZero(ADDRESS_KEY, "EOpening")) {
        TRACE(TRACE_FAILURE, "<AMAMRegWrite %s failed.", "EOpening");
        return -1;
    }
    TRACE(TRACE_NOTE, "<return %d", 0);
    return 0;
}
