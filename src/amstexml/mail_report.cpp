#include <ntwin32/registry.h>

#include "registry/catalogue.h"
#include "registry/keys.h"
#include "registry/read.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "report_steps.h"

namespace {

constexpr char TRACE_SOURCE[] = "amstexml";
constexpr char KEY_ADDRESS[] = AM_KEY_VELOXREPORT "\\Address";

const char *IdentifierOfKind(DWORD dwKind) noexcept {
    switch (dwKind) {
        case VX_REPORT_OPENING:
            return CATALOGUE_MESSAGE("X");
        case VX_REPORT_TEST:
            return CATALOGUE_MESSAGE("C");
        case VX_REPORT_ALERT:
            return CATALOGUE_MESSAGE("A");
        default:
            return "";
    }
}

// Only the opening report carries its caller's message.
const char *LinesOfKind(DWORD dwKind, const char *lpszMessage) noexcept {
    return dwKind == VX_REPORT_OPENING ? lpszMessage : nullptr;
}

// Writes a number that records a success; the result of the report stands whatever becomes of it.
void RecordNumber(const char *lpszFunction, const char *lpszPath, const char *lpszValue,
                  DWORD dwNumber) noexcept {
    if (AMAMRegWrite(HKEY_LOCAL_MACHINE, lpszPath, lpszValue, REG_DWORD, &dwNumber,
                     sizeof dwNumber) == FALSE) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "AMAMRegWrite %s failed.", lpszValue);
    }
}

void RecordSuccess(const char *lpszFunction, DWORD dwKind, DWORD dwOpening) noexcept {
    if (dwKind == VX_REPORT_OPENING && dwOpening < 2) {
        RecordNumber(lpszFunction, KEY_ADDRESS, "EOpening", 1);
    } else if (dwKind == VX_REPORT_TEST) {
        RecordNumber(lpszFunction, KEY_ADDRESS, "EOpening", 2);
        DWORD dwSetting = 0;
        if (!ReadNumber(VLX_KEY_SETUP, "SETTING", &dwSetting) || dwSetting == 0) {
            RecordNumber(lpszFunction, VLX_KEY_SETUP, "SETTING", 1);
        }
    }
}

int SendReport(const char *lpszFunction, const MAIL_MODULE &module, const REPORT &report) noexcept {
    char szAnswer[MAIL_ANSWER_CAPACITY];
    const MAIL mail = {report.settings, report.destinations, report.szSubject, report.encoded,
                       nullptr};
    return SendMail(lpszFunction, module, mail, szAnswer);
}

}  // namespace

int AMAMVeloxTestReport(char *, DWORD dwKind, const char *lpszSubject, const char *lpszETo,
                        const char *lpszMessage) noexcept {
    TRACE(TRACE_NOTE, ">");
    UseCatalogue("en_US", CATALOGUE_VELOX);
    REPORT report;
    int nResult = PrepareReport(
        __func__,
        {IdentifierOfKind(dwKind), LinesOfKind(dwKind, lpszMessage), lpszSubject, lpszETo}, report);
    if (nResult != VX_REPORT_SENT) {
        return nResult;
    }
    nResult = LogInBeforeMail(__func__);
    if (nResult == VX_REPORT_SENT) {
        MAIL_MODULE module;
        nResult = LoadMailModule(__func__, false, module);
        if (nResult != VX_REPORT_SENT) {
            return nResult;
        }
        nResult = SendReport(__func__, module, report);
        module.module.Reset();
        const DWORD dwOpening = GetEOpening();
        if (nResult == VX_REPORT_SENT) {
            RecordSuccess(__func__, dwKind, dwOpening);
        }
    }
    TRACE(TRACE_NOTE, "<return %d.", nResult);
    return nResult;
}

int KesComposeReport(DWORD dwKind, const char *lpszMessage, char **lplpBody,
                     DWORD *lpdwSize) noexcept {
    TRACE(TRACE_NOTE, ">dwKind=%u", dwKind);
    UseCatalogue("en_US", CATALOGUE_VELOX);
    MAIL_BODY body;
    const int nResult =
        ComposeBody(__func__, IdentifierOfKind(dwKind), LinesOfKind(dwKind, lpszMessage), body);
    if (nResult == VX_REPORT_SENT) {
        *lpdwSize = body.dwSize;
        *lplpBody = body.text.Release();
        TRACE(TRACE_NOTE, "<return %d.", nResult);
    }
    return nResult;
}

BOOL GetVlxTo(char *szMailTo) noexcept {
    TRACE(TRACE_NOTE, ">szMailTo=%p", static_cast<void *>(szMailTo));
    char szList[VX_DESTINATION_LIST_LENGTH + 1];
    if (!ReadField(KEY_ADDRESS, "ETo", szList)) {
        TRACE(TRACE_FAILURE, "<AMAMRegReadEx %s failed.return FALSE.", "ETo");
        return FALSE;
    }
    (void)CopyText(szMailTo, sizeof szList, szList);
    TRACE(TRACE_NOTE, "<[To:]%s.return TRUE.", szMailTo);
    return TRUE;
}

DWORD GetEOpening() noexcept {
    DWORD dwOpening = 0;
    if (!ReadNumber(KEY_ADDRESS, "EOpening", &dwOpening)) {
        TRACE(TRACE_FAILURE, "AMAMRegReadEx %s failed.", "EOpening");
    }
    TRACE(TRACE_NOTE, "<return %d", static_cast<int>(dwOpening));
    return dwOpening;
}
