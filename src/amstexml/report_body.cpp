#include <amcrtcpy.h>

#include <cstdlib>
#include <cstring>

#include "registry/catalogue.h"
#include "registry/keys.h"
#include "registry/read.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "report_steps.h"
#include "velox/service_info.h"

namespace {

constexpr char TRACE_SOURCE[] = "amstexml";

// The longest body in bytes: encoded, it and the addresses still fit the module's 32-bit size.
constexpr std::size_t BODY_LIMIT = 0x40000000;

using REPORT_HEADER = char[89];

int ComposeHeader(const char *lpszFunction, const char *lpszIdentifier,
                  REPORT_HEADER &szHeader) noexcept {
    char szVersion[20 + 1];
    if (!ReadText(VLX_KEY_SETUP, "VERSION", szVersion)) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<AMAMRegReadEx %s failed.return -10.", "VERSION");
        return VX_REPORT_NOT_COMPOSED;
    }
    // An empty text stands for a catalogue's own header.
    const char *lpszMessageId = lpszIdentifier[0] != '\0' ? CatalogueText(lpszIdentifier) : "";
    if (!FormatText(szHeader, sizeof szHeader, "%s\r\n%s\r\n%s\r\n%s\r\n%s\r\n",
                    CatalogueText("*****START*****"), CatalogueText("[REVISION]"), szVersion,
                    CatalogueText("[MESSAGE-ID]"), lpszMessageId)) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<the header has more than %d bytes.return -10.",
                 static_cast<int>(sizeof szHeader - 1));
        return VX_REPORT_NOT_COMPOSED;
    }
    return VX_REPORT_SENT;
}

// The three parts in one block, with a zero byte behind them.
int JoinParts(const char *lpszFunction, const char *(&lpszParts)[3], MAIL_BODY &body) noexcept {
    std::size_t dwSize = 0;
    for (const char *lpszPart : lpszParts) {
        dwSize += std::strlen(lpszPart);
    }
    if (dwSize > BODY_LIMIT) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "the body has more than %zu bytes.", BODY_LIMIT);
    } else {
        body.text.Reset(static_cast<char *>(std::malloc(dwSize + 1)));
    }
    if (!body.text.IsValid()) {
        TRACE_AS(lpszFunction, TRACE_MEMORY, "<malloc hTotalMem failed.return -10.");
        return VX_REPORT_NOT_COMPOSED;
    }
    char *lpszEnd = body.text.Get();
    for (const char *lpszPart : lpszParts) {
        const std::size_t dwPart = std::strlen(lpszPart);
        std::memcpy(lpszEnd, lpszPart, dwPart);
        lpszEnd += dwPart;
    }
    *lpszEnd = '\0';
    body.dwSize = static_cast<DWORD>(dwSize);
    return VX_REPORT_SENT;
}

}  // namespace

int ComposeBody(const char *lpszFunction, const char *lpszIdentifier, const char *lpszLines,
                MAIL_BODY &body) noexcept {
    REPORT_HEADER szHeader;
    if (const int nResult = ComposeHeader(lpszFunction, lpszIdentifier, szHeader);
        nResult != VX_REPORT_SENT) {
        return nResult;
    }
    AutoMemory<char> information;
    DWORD dwLength = 0;
    if (GetVlxServiceInfo_Mail(information.Put(), &dwLength) == FALSE) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<GetVlxServiceInfo_Mail() failed.return -10.");
        return VX_REPORT_NOT_COMPOSED;
    }
    const char *lpszParts[] = {szHeader, information.Get(), lpszLines != nullptr ? lpszLines : ""};
    return JoinParts(lpszFunction, lpszParts, body);
}

int EncodeBody(const char *lpszFunction, const MAIL_BODY &body, MAIL_BODY &encoded) noexcept {
    void *lpEncoded = nullptr;
    if (UUCdEnCodingToMemory(body.text.Get(), body.dwSize, &lpEncoded, &encoded.dwSize) == FALSE) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<UUCdEnCodingToMemory() failed.return -11.");
        return VX_REPORT_NOT_ENCODED;
    }
    encoded.text.Reset(static_cast<char *>(lpEncoded));
    return VX_REPORT_SENT;
}
