#include <arpa/inet.h>
#include <netdb.h>
#include <ntwin32/registry.h>

#include <cstring>

#include "registry/read.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "registry/write.h"
#include "velox/mail_base.h"

namespace {

constexpr char TRACE_SOURCE[] = "amstexml";

template <std::size_t N>
bool ReadSetting(const char *lpszPath, const char *lpszValue, char (&szField)[N]) noexcept {
    if (ReadField(lpszPath, lpszValue, szField)) {
        return true;
    }
    TRACE_AS("GetAMBIBaseSetting", TRACE_FAILURE, "<AMAMRegReadEx %s failed.", lpszValue);
    return false;
}

// The first address of a host in dotted form.
template <std::size_t N>
bool ResolveHost(const char *lpszHost, char (&szIP)[N]) noexcept {
    const hostent *lpHost = gethostbyname(lpszHost);
    return lpHost != nullptr && lpHost->h_addrtype == AF_INET &&
           lpHost->h_addr_list[0] != nullptr &&
           inet_ntop(AF_INET, lpHost->h_addr_list[0], szIP, N) != nullptr;
}

// Resolves a server that is a host name, and stores its address.
int StoreResolvedAddress(VXML_BASE_DATA &data, const char *lpszPath) noexcept {
    static constexpr char FUNCTION[] = "SetAMBIBaseSetting";
    if (!ResolveHost(data.szServer, data.szIP)) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<gethostbyname() failed.return 2.");
        return AMBI_SET_INVALID_SERVER;
    }
    TRACE_AS(FUNCTION, TRACE_NOTE, "szIP: %s", data.szIP);
    if (!WriteText(lpszPath, "IP", data.szIP)) {
        TRACE_AS(FUNCTION, TRACE_FAILURE, "<AMAMRegWrite() %s failed.", "IP");
        return AMBI_SET_WRITE_FAILED;
    }
    return AMBI_SET_STORED;
}

// The name of the first value that cannot be written; null when all were.
const char *WriteSettings(const VXML_BASE_DATA &data, const char *lpszPath,
                          bool bServerIsAddress) noexcept {
    if (!WriteText(lpszPath, "Server", data.szServer)) {
        return "Server";
    }
    if (bServerIsAddress && !WriteText(lpszPath, "IP", data.szServer)) {
        return "IP";
    }
    if (!WriteText(lpszPath, "Address", data.szAddress)) {
        return "Address";
    }
    if (!WriteNumber(lpszPath, "SMTPPort", data.dwSMTPPort)) {
        return "SMTPPort";
    }
    if (!WriteNumber(lpszPath, "Option", data.dwOption)) {
        return "Option";
    }
    return nullptr;
}

}  // namespace

BOOL GetAMBIBaseSetting(VXML_BASE_DATA *lpVxmlBaseData, const char *g_szAMBaseRegPath) noexcept {
    TRACE(TRACE_NOTE, ">lpVxmlBaseData=%p,g_szAMBaseRegPath=%s",
          static_cast<void *>(lpVxmlBaseData), TextOrNull(g_szAMBaseRegPath));
    *lpVxmlBaseData = {};
    lpVxmlBaseData->dwSMTPPort = AMAM_DEFAULT_SMTP_PORT;
    if (!ReadSetting(g_szAMBaseRegPath, "Server", lpVxmlBaseData->szServer) ||
        !ReadSetting(g_szAMBaseRegPath, "IP", lpVxmlBaseData->szIP) ||
        !ReadSetting(g_szAMBaseRegPath, "Address", lpVxmlBaseData->szAddress)) {
        return FALSE;
    }
    if (!ReadNumber(g_szAMBaseRegPath, "SMTPPort", &lpVxmlBaseData->dwSMTPPort)) {
        lpVxmlBaseData->dwSMTPPort = AMAM_DEFAULT_SMTP_PORT;
    }
    if (!ReadNumber(g_szAMBaseRegPath, "Option", &lpVxmlBaseData->dwOption)) {
        lpVxmlBaseData->dwOption = AMAM_DEFAULT_OPTION;
    }
    TRACE(TRACE_NOTE, "<return TRUE.");
    return TRUE;
}

int SetAMBIBaseSetting(VXML_BASE_DATA *lpVxmlBaseData, const char *g_szAMBaseRegPath) noexcept {
    TRACE(TRACE_NOTE, ">lpVxmlBaseData=%p,g_szAMBaseRegPath=%s",
          static_cast<void *>(lpVxmlBaseData), TextOrNull(g_szAMBaseRegPath));
    if (!IsTerminated(lpVxmlBaseData->szServer)) {
        TRACE(TRACE_FAILURE, "<szServer does not end inside its field.return 2.");
        return AMBI_SET_INVALID_SERVER;
    }
    if (!IsTerminated(lpVxmlBaseData->szAddress)) {
        TRACE(TRACE_FAILURE, "<szAddress does not end inside its field.return 0.");
        return AMBI_SET_WRITE_FAILED;
    }
    const int nCheck = AMBIMyIPCheck(lpVxmlBaseData->szServer);
    TRACE(TRACE_NOTE, "AMBIMyIPCheck() return %d", nCheck);
    if (nCheck == AMBI_IP_INVALID) {
        TRACE(TRACE_FAILURE, "<AMBIMyIPCheck() error!return 2.");
        return AMBI_SET_INVALID_SERVER;
    }
    TRACE(TRACE_NOTE, "szServer: %s", lpVxmlBaseData->szServer);
    if (nCheck == AMBI_IP_HOST_NAME) {
        const int nResolved = StoreResolvedAddress(*lpVxmlBaseData, g_szAMBaseRegPath);
        if (nResolved != AMBI_SET_STORED) {
            return nResolved;
        }
    }
    const char *lpszFailed =
        WriteSettings(*lpVxmlBaseData, g_szAMBaseRegPath, nCheck == AMBI_IP_ADDRESS);
    if (lpszFailed != nullptr) {
        TRACE(TRACE_FAILURE, "<AMAMRegWrite() %s failed.return 0.", lpszFailed);
        return AMBI_SET_WRITE_FAILED;
    }
    TRACE(TRACE_NOTE, "<return 1.");
    return AMBI_SET_STORED;
}
