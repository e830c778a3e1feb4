// The address, host and port of the manager to which reports are handed.
#include <ntwin32/registry.h>
#include <strings.h>

#include <cstring>

#include "registry/handles.h"
#include "registry/keys.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "velox/registry_access.h"
#include "velox/report_method.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr char ADDRESS_KEY[] = AM_KEY_VELOXREPORT "\\Address";
// GetManagerIP spells the key in another way than the others.
constexpr char ADDRESS_KEY_OF_IP[] = AM_KEY_VELOXREPORT "\\ADDRESS";

// Reads a text into a zeroed buffer of dwSize + 1 bytes; the default when it cannot be read.
void ReadText(const char *lpszKey, const char *lpszValue, char *lpszText, DWORD dwSize,
              const char *lpszDefault) noexcept {
    DWORD dwType = REG_SZ;
    DWORD dwRead = dwSize;
    if (RegReadEx(HKEY_LOCAL_MACHINE, lpszKey, lpszValue, &dwType, &dwRead,
                  reinterpret_cast<BYTE *>(lpszText)) == FALSE) {
        (void)CopyText(lpszText, dwSize, lpszDefault);
    }
}

// A block for one text of the record, filled from the registry; null when there is no memory.
char *ReadTextBlock(const char *lpszValue, const char *lpszDefault) noexcept {
    auto *lpsWork = static_cast<char *>(std::calloc(VLX_MANAGER_TEXT_CAPACITY + 1, 1));
    if (lpsWork != nullptr) {
        ReadText(ADDRESS_KEY, lpszValue, lpsWork, VLX_MANAGER_TEXT_CAPACITY, lpszDefault);
    }
    return lpsWork;
}

DWORD ReadPort() noexcept {
    DWORD dwType = REG_DWORD;
    DWORD dwPort = 0;
    DWORD dwSize = sizeof dwPort;
    const DWORD dwRead = RegReadEx(HKEY_LOCAL_MACHINE, ADDRESS_KEY, "PortNumber", &dwType, &dwSize,
                                   reinterpret_cast<BYTE *>(&dwPort));
    return dwRead == FALSE ? VLX_MANAGER_DEFAULT_PORT : dwPort;
}

DWORD WriteText(const char *lpszValue, const char *lpszText) noexcept {
    return AMAMRegWrite(HKEY_LOCAL_MACHINE, ADDRESS_KEY, lpszValue, REG_SZ, lpszText,
                        static_cast<LONG>(std::strlen(lpszText) + 1));
}

DWORD WritePort(DWORD dwPort) noexcept {
    return AMAMRegWrite(HKEY_LOCAL_MACHINE, ADDRESS_KEY, "PortNumber", REG_DWORD, &dwPort,
                        sizeof dwPort);
}

void FreeText(char **lplpszText) noexcept {
    std::free(*lplpszText);
    *lplpszText = nullptr;
}

}  // namespace

LONG GetManagerIP(char *buffer) noexcept {
    TRACE(TRACE_NOTE, ">buffer=%p", static_cast<void *>(buffer));
    if (buffer == nullptr) {
        TRACE(TRACE_FAILURE, "<ManagerIP == NULL.return %d.", -1);
        return -1;
    }
    char szManagerIP[VLX_MANAGER_IP_CAPACITY + 1] = {};
    ReadText(ADDRESS_KEY_OF_IP, "ManagerIP", szManagerIP, VLX_MANAGER_IP_CAPACITY,
             VLX_MANAGER_NO_ADDRESS);
    if (!CopyText(buffer, VLX_MANAGER_IP_CAPACITY, szManagerIP)) {
        TRACE(TRACE_FAILURE, "ManagerIP is longer than %d bytes.", VLX_MANAGER_IP_CAPACITY - 1);
        (void)CopyText(buffer, VLX_MANAGER_IP_CAPACITY, VLX_MANAGER_NO_ADDRESS);
    }
    TRACE(TRACE_NOTE, "<ManagerIP = %s", buffer);
    return 0;
}

LONG GetManagerParam(VLX_MANAGER_PARAM *lpManagerParam) noexcept {
    TRACE(TRACE_NOTE, ">lpManagerParam=%p", static_cast<void *>(lpManagerParam));
    *lpManagerParam = {};
    lpManagerParam->lpszManagerIP = ReadTextBlock("ManagerIP", VLX_MANAGER_NO_ADDRESS);
    if (lpManagerParam->lpszManagerIP != nullptr) {
        lpManagerParam->lpszHost = ReadTextBlock("IPorHost", "");
    }
    if (lpManagerParam->lpszHost == nullptr) {
        TRACE(TRACE_MEMORY, "malloc lpsWork failed.");
        FreeManagerParam(lpManagerParam);
        TRACE(TRACE_NOTE, "<return %d", FALSE);
        return FALSE;
    }
    if (strcasecmp(lpManagerParam->lpszManagerIP, VLX_MANAGER_NO_ADDRESS) == 0) {
        lpManagerParam->lpszHost[0] = '\0';
    }
    lpManagerParam->dwPort = ReadPort();
    TRACE(TRACE_NOTE, "<return %d", TRUE);
    return TRUE;
}

LONG PutManagerParam(const VLX_MANAGER_PARAM *lpManagerParam) noexcept {
    TRACE(TRACE_NOTE, ">lpManagerParam=%p", static_cast<const void *>(lpManagerParam));
    if (lpManagerParam == nullptr || lpManagerParam->lpszManagerIP == nullptr ||
        lpManagerParam->lpszHost == nullptr) {
        TRACE(TRACE_FAILURE, "<Manager Parameter is NULL.return %d.", FALSE);
        return FALSE;
    }
    // The comment is the host, not a text of its own.
    const LONG lResult = WriteText("ManagerIP", lpManagerParam->lpszManagerIP) != FALSE &&
                                 WriteText("IPorHost", lpManagerParam->lpszHost) != FALSE &&
                                 WritePort(lpManagerParam->dwPort) != FALSE &&
                                 WriteText("Comment", lpManagerParam->lpszHost) != FALSE
                             ? TRUE
                             : FALSE;
    TRACE(lResult == TRUE ? TRACE_NOTE : TRACE_FAILURE, "<return %d", lResult);
    return lResult;
}

void FreeManagerParam(VLX_MANAGER_PARAM *lpManagerParam) noexcept {
    TRACE(TRACE_NOTE, ">lpManagerParam=%p", static_cast<void *>(lpManagerParam));
    FreeText(&lpManagerParam->lpszManagerIP);
    FreeText(&lpManagerParam->lpszHost);
    for (char *&lpszText : lpManagerParam->lpszText) {
        FreeText(&lpszText);
    }
    *lpManagerParam = {};
    TRACE(TRACE_NOTE, "<");
}
