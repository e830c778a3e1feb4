#include <cstring>

#include "registry/folder.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "report_steps.h"
#include "velox/pop_connect.h"

namespace {

constexpr char TRACE_SOURCE[] = "amstexml";

void TraceMail(const char *lpszFunction, const MAIL &mail) noexcept {
    TRACE_AS(lpszFunction, TRACE_NOTE, "g_szIP_reg:%s", mail.settings.szIP);
    TRACE_AS(lpszFunction, TRACE_NOTE, "g_szAddress_reg:%s", mail.settings.szAddress);
    TRACE_AS(lpszFunction, TRACE_NOTE, "g_dwSMTPPort:%d",
             static_cast<int>(mail.settings.dwSMTPPort));
    TRACE_AS(lpszFunction, TRACE_NOTE, "lpszTo[0]:%s", mail.destinations.lpszTo[0]);
    TRACE_AS(lpszFunction, TRACE_NOTE, "szSubject_d:%s", mail.lpszSubject);
}

// The module's status word. What its function returns does not count.
DWORD CallModule(const MAIL_MODULE &module, const MAIL &mail, char *lpszAnswer) noexcept {
    const MAIL_SETTINGS &settings = mail.settings;
    const DESTINATIONS &to = mail.destinations;
    const DWORD dwSize =
        to.dwLength + static_cast<DWORD>(std::strlen(mail.lpszSubject)) + mail.encoded.dwSize;
    DWORD dwStatus = MAIL_STATUS_SENT;
    if (module.pfnSend != nullptr) {
        (void)module.pfnSend(settings.szIP, settings.szAddress, settings.dwSMTPPort,
                             settings.szErrorReply, settings.szErrorCopy, settings.dwOption,
                             MAIL_BODY_ENCODED, to.lpszTo, to.dwCount, mail.lpszSubject,
                             mail.encoded.text.Get(), dwSize, lpszAnswer, &dwStatus);
    } else {
        (void)module.pfnSendWithId(settings.szIP, settings.szAddress, settings.dwSMTPPort,
                                   settings.szErrorReply, settings.szErrorCopy, settings.dwOption,
                                   MAIL_BODY_ENCODED, to.lpszTo, to.dwCount, mail.lpszSubject,
                                   mail.encoded.text.Get(), dwSize, lpszAnswer, &dwStatus,
                                   mail.lpszMessageId);
    }
    return dwStatus;
}

int ResultOfStatus(DWORD dwStatus) noexcept {
    switch (dwStatus) {
        case MAIL_STATUS_SENT:
            return VX_REPORT_SENT;
        case MAIL_STATUS_CONNECTION:
            return VX_REPORT_CONNECTION_FAILED;
        case MAIL_STATUS_ENVELOPE:
            return VX_REPORT_ENVELOPE_REFUSED;
        case MAIL_STATUS_DATA:
            return VX_REPORT_DATA_REFUSED;
        default:
            return VX_REPORT_SEND_FAILED;
    }
}

}  // namespace

void CopySubject(const char *lpszFunction, const char *lpszSource,
                 MAIL_SUBJECT &szSubject) noexcept {
    if (!CutText(szSubject, lpszSource != nullptr ? lpszSource : "")) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "the subject has more than %d bytes and is cut.",
                 VX_SUBJECT_LENGTH);
    }
    TRACE_AS(lpszFunction, TRACE_NOTE, "szSubject_d:%s", szSubject);
}

int PrepareReport(const char *lpszFunction, const REPORT_CONTENT &content,
                  REPORT &report) noexcept {
    MAIL_BODY body;
    int nResult = SplitDestinations(lpszFunction, content.lpszETo, report.destinations);
    if (nResult == VX_REPORT_SENT) {
        nResult = ReadMailSettings(lpszFunction, report.settings);
    }
    if (nResult == VX_REPORT_SENT) {
        nResult = ComposeBody(lpszFunction, content.lpszIdentifier, content.lpszLines, body);
    }
    if (nResult == VX_REPORT_SENT) {
        CopySubject(lpszFunction, content.lpszSubject, report.szSubject);
        nResult = EncodeBody(lpszFunction, body, report.encoded);
    }
    return nResult;
}

int LogInBeforeMail(const char *lpszFunction) noexcept {
    if (AMPBSConnect() == 0) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "Err: POP before SMTP get authentication");
        return VX_REPORT_POP_FAILED;
    }
    return VX_REPORT_SENT;
}

int LoadMailModule(const char *lpszFunction, bool bWithId, MAIL_MODULE &module) noexcept {
    char szFolder[4096];
    if (!ExpandProductFolder(szFolder)) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<ExpandEnvironmentStrings() failed.return -20.");
        return VX_REPORT_NO_PRODUCT_FOLDER;
    }
    char szLibrary[sizeof szFolder + sizeof "/lib/" + sizeof AMRSMTP_MODULE];
    if (FormatText(szLibrary, sizeof szLibrary, "%s/lib/%s", szFolder, AMRSMTP_MODULE)) {
        module.module.Reset(LoadLibrary(szLibrary));
    }
    if (!module.module.IsValid()) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<LoadLibrary %s failed.return -12.", AMRSMTP_MODULE);
        return VX_REPORT_NO_MODULE;
    }
    const char *lpszName = bWithId ? KESSENDMAILWITHID_NAME : SENDMAILWITHSMTP_NAME;
    const FARPROC pfnFound = GetProcAddress(module.module.Get(), lpszName);
    if (pfnFound == nullptr) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<GetProcAddress(%s) failed.return -13.", lpszName);
        module.module.Reset();
        return VX_REPORT_NO_FUNCTION;
    }
    if (bWithId) {
        module.pfnSendWithId = reinterpret_cast<KESSENDMAILWITHID *>(pfnFound);
    } else {
        module.pfnSend = reinterpret_cast<SENDMAILWITHSMTP *>(pfnFound);
    }
    return VX_REPORT_SENT;
}

int SendMail(const char *lpszFunction, const MAIL_MODULE &module, const MAIL &mail,
             char *lpszAnswer) noexcept {
    lpszAnswer[0] = '\0';
    TraceMail(lpszFunction, mail);
    return ResultOfStatus(CallModule(module, mail, lpszAnswer));
}
