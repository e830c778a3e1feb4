// The import driver: the key disk, then the registry steps that finish the set-up.
#include <amcrtcpy.h>
#include <ntwin32/registry.h>
#include <ntwin32/system.h>

#include <cstring>

#include "keyfd/keyfd.h"
#include "registry/keys.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "velox/registry_access.h"

static constexpr char TRACE_SOURCE[] = "keyfd";

// Steps of GetOpenMsgfromFD; their records name it.
#define TRACE_DRIVER(nLevel, ...) TRACE_AS("GetOpenMsgfromFD", (nLevel), __VA_ARGS__)

// The readers of HBINTERVAL spell the key so.
static constexpr char KEY_HEARTBEAT[] = "SOFTWARE\\XEV\\VLXService\\HeartBeat";
static constexpr DWORD SETUP_TEXT_SIZE = 128;
static constexpr DWORD KEY_DISK_DRIVE = 'A';

LONG GetosDescri(char *lpszDescription) noexcept {
    static constexpr struct {
        const char *lpszPart;
        const char *lpszDescription;
    } DISTRIBUTIONS[] = {{"Red", "LINUX(RH)"}, {"Turbo", "LINUX(TB)"}, {"Miracle", "LINUX(ML)"}};

    TRACE(TRACE_NOTE, ">os=%p", static_cast<void *>(lpszDescription));
    char szDistribution[600 + 1] = {};
    (void)getOSDistribution(szDistribution, sizeof szDistribution - 1);
    const char *lpszFound = "LINUX";
    for (const auto &distribution : DISTRIBUTIONS) {
        if (std::strstr(szDistribution, distribution.lpszPart) != nullptr) {
            lpszFound = distribution.lpszDescription;
            break;
        }
    }
    if (lpszDescription != nullptr) {
        (void)CopyText(lpszDescription, OS_DESCRIPTION_CAPACITY, lpszFound);
    }
    TRACE(TRACE_NOTE, "<os=%s", TextOrNull(lpszDescription));
    return TRUE;
}

static LONG StoreComputerName() noexcept {
    static constexpr DWORD NAME_CAPACITY = 257;
    char szName[NAME_CAPACITY + 1] = {};
    DWORD dwSize = NAME_CAPACITY;
    if (GetComputerName(szName, &dwSize) == FALSE) {
        TRACE_AS("SetRealComputerName", TRACE_FAILURE, "GetComputerName2() Failed! ");
        return 0;
    }
    if (AMACRERegCreateKey(HKEY_LOCAL_MACHINE, VLX_KEY_SETTING) == FALSE) {
        TRACE_AS("SetRealComputerName", TRACE_FAILURE, "CreateKey " VLX_KEY_SETTING " Error9!");
        return 0;
    }
    if (AMACRERegWriteSz(HKEY_LOCAL_MACHINE, VLX_KEY_SETTING, "SYSNMN", szName) == FALSE) {
        TRACE_AS("SetRealComputerName", TRACE_FAILURE, "WriteSz SYSNMN Error6!");
        return 0;
    }
    return 1;
}

LONG SetRealComputerName() noexcept {
    TRACE(TRACE_NOTE, ">");
    const LONG nResult = StoreComputerName();
    TRACE(TRACE_NOTE, "<return %d.", nResult);
    return nResult;
}

// A value of the set-up key. One byte more than can be read, so that a text without terminator
// ends.
struct SETUP_TEXT {
    DWORD dwType;
    char szText[SETUP_TEXT_SIZE + 1];
};

static bool ReadSetupText(const char *lpszValue, SETUP_TEXT *lpText) noexcept {
    *lpText = {REG_SZ, {}};
    DWORD dwSize = SETUP_TEXT_SIZE;
    return AMAMRegReadEx(HKEY_LOCAL_MACHINE, VLX_KEY_SETUP, lpszValue, &lpText->dwType, &dwSize,
                         reinterpret_cast<BYTE *>(lpText->szText)) != FALSE;
}

static bool WriteText(const char *lpszKey, const char *lpszValue, DWORD dwType,
                      const char *lpszText) noexcept {
    return AMAMRegWrite(HKEY_LOCAL_MACHINE, lpszKey, lpszValue, dwType, lpszText,
                        static_cast<LONG>(std::strlen(lpszText) + 1)) != FALSE;
}

// The mail address of the disk becomes the Velox report's destination.
static bool CopyMailAddress() noexcept {
    SETUP_TEXT address;
    if (!ReadSetupText("MAILADRS", &address)) {
        TRACE_DRIVER(TRACE_FAILURE, "<AMAMRegReadEx (MAILADRS) Failed");
        return false;
    }
    if (!WriteText(AM_KEY_VELOXREPORT "\\Address", "ETo", REG_SZ, address.szText)) {
        TRACE_DRIVER(TRACE_FAILURE, "<AMAMRegWrite(REG_SZ) Failed");
        return false;
    }
    return true;
}

// Appends the description on every run, whatever the version already ends in. A version that has no
// room for it is refused, not cut.
static bool StampVersion(const char *lpszDescription) noexcept {
    SETUP_TEXT version;
    if (!ReadSetupText("VERSION", &version)) {
        TRACE_DRIVER(TRACE_FAILURE, "<AMAMRegReadEx (AM_REG_VLXVER) Failed");
        return false;
    }
    char szStamped[SETUP_TEXT_SIZE];
    if (!FormatText(szStamped, sizeof szStamped, "%s/%s", version.szText, lpszDescription) ||
        !WriteText(VLX_KEY_SETUP, "VERSION", version.dwType, szStamped)) {
        TRACE_DRIVER(TRACE_FAILURE, "<AMAMRegWrite %s Failed", "VERSION");
        return false;
    }
    return true;
}

// A heart-beat interval of 0 becomes 1; a missing one counts as 1 and stays missing.
static bool RaiseHeartbeatInterval() noexcept {
    DWORD dwInterval = 0;
    DWORD dwType = REG_DWORD;
    DWORD dwSize = sizeof dwInterval;
    if (AMAMRegReadEx(HKEY_LOCAL_MACHINE, KEY_HEARTBEAT, "HBINTERVAL", &dwType, &dwSize,
                      reinterpret_cast<BYTE *>(&dwInterval)) == FALSE) {
        TRACE_DRIVER(TRACE_FAILURE, "AMAMRegReadEx (HBINTERVAL) Failed");
        return true;
    }
    if (dwInterval != 0) {
        return true;
    }
    dwInterval = 1;
    if (AMAMRegWrite(HKEY_LOCAL_MACHINE, KEY_HEARTBEAT, "HBINTERVAL", dwType, &dwInterval,
                     static_cast<LONG>(dwSize)) == FALSE) {
        TRACE_DRIVER(TRACE_FAILURE, "<AMAMRegWrite (HBINTERVAL) Failed");
        return false;
    }
    return true;
}

LONG GetOpenMsgfromFD() noexcept {
    TRACE(TRACE_NOTE, ">");
    char szDescription[OS_DESCRIPTION_CAPACITY] = {};
    if (GetosDescri(szDescription) == 0) {
        (void)CopyText(szDescription, "LINUX");
    }

    const DWORD dwResult = CheckKeyFD(KEY_DISK_DRIVE);
    TRACE(TRACE_RESULT, "CheckKeyFD():dwResult = %d", static_cast<int>(dwResult));
    if (dwResult == KEYFD_NOT_MOUNTED) {
        TRACE(TRACE_NOTE, "<return 100.");
        return SETUP_NOT_MOUNTED;
    }
    if (dwResult != KEYFD_IMPORTED) {
        TRACE(TRACE_NOTE, "<return 200.");
        return SETUP_IMPORT_FAILED;
    }

    if (!CopyMailAddress() || !StampVersion(szDescription) || !RaiseHeartbeatInterval()) {
        return SETUP_REGISTRY_FAILED;
    }
    if (SetRealComputerName() == 0) {
        TRACE(TRACE_FAILURE, "SetRealComputerName() Failed!");
    }
    TRACE(TRACE_NOTE, "<return %d", SETUP_DONE);
    return SETUP_DONE;
}
