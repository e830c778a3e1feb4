#include "registry/text.h"
#include "registry/trace.h"
#include "report_steps.h"

namespace {

constexpr char TRACE_SOURCE[] = "amstexml";

// The state of the scan: the address that grows in the slot after the counted ones.
struct SCAN {
    DESTINATIONS &destinations;
    std::size_t dwLength = 0;
    bool bBlankSeen = false;
    bool bAtStart = true;
};

void CloseAddress(SCAN &scan) noexcept {
    DESTINATIONS &destinations = scan.destinations;
    if (scan.dwLength > 0) {
        destinations.lpszTo[destinations.dwCount] = destinations.szAddress[destinations.dwCount];
        destinations.dwLength += static_cast<DWORD>(scan.dwLength + 2);
        ++destinations.dwCount;
    }
    scan.dwLength = 0;
    scan.bBlankSeen = false;
    scan.bAtStart = true;
}

int AppendCharacter(const char *lpszFunction, SCAN &scan, char cCharacter) noexcept {
    DESTINATIONS &destinations = scan.destinations;
    if (scan.dwLength == VX_DESTINATION_LENGTH || destinations.dwCount == VX_DESTINATION_COUNT) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<ETO is too long.return -5.");
        return VX_REPORT_DESTINATION_TOO_LONG;
    }
    if (scan.bBlankSeen && !scan.bAtStart) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<Invalid Email address.return -6.");
        return VX_REPORT_DESTINATION_INVALID;
    }
    scan.bBlankSeen = false;
    scan.bAtStart = false;
    destinations.szAddress[destinations.dwCount][scan.dwLength++] = cCharacter;
    return VX_REPORT_SENT;
}

int ScanList(const char *lpszFunction, const char *lpszList, DESTINATIONS &destinations) noexcept {
    SCAN scan = {destinations};
    for (; *lpszList != '\0'; ++lpszList) {
        if (*lpszList == ' ') {
            scan.bBlankSeen = true;
        } else if (*lpszList == ',') {
            CloseAddress(scan);
        } else {
            const int nResult = AppendCharacter(lpszFunction, scan, *lpszList);
            if (nResult != VX_REPORT_SENT) {
                return nResult;
            }
        }
    }
    CloseAddress(scan);
    return VX_REPORT_SENT;
}

}  // namespace

int SplitDestinations(const char *lpszFunction, const char *lpszETo,
                      DESTINATIONS &destinations) noexcept {
    char szList[VX_DESTINATION_LIST_LENGTH + 1];
    if (!CopyText(szList, lpszETo != nullptr ? lpszETo : "")) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<ETO is too long.return -5.");
        return VX_REPORT_DESTINATION_TOO_LONG;
    }
    TRACE_AS(lpszFunction, TRACE_NOTE, "VX_REG_TO:%s", szList);
    if (szList[0] == '\0') {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<ETO invalid.return -4.");
        return VX_REPORT_NO_DESTINATION;
    }
    const int nResult = ScanList(lpszFunction, szList, destinations);
    if (nResult == VX_REPORT_SENT && destinations.dwCount == 0) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<Invalid ETO address.return -4.");
        return VX_REPORT_NO_DESTINATION;
    }
    return nResult;
}
