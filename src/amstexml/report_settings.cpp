#include "registry/keys.h"
#include "registry/read.h"
#include "registry/text.h"
#include "registry/trace.h"
#include "report_steps.h"
#include "velox/mail_base.h"

namespace {

constexpr char TRACE_SOURCE[] = "amstexml";

// A setting without which nothing goes out: missing and empty are the same.
template <std::size_t N>
int ReadNeeded(const char *lpszFunction, const char *lpszPath, const char *lpszValue,
               char (&szText)[N], int nCode) noexcept {
    if (!ReadText(lpszPath, lpszValue, szText) || szText[0] == '\0') {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<AMAMRegReadEx %s failed.return %d.", lpszValue,
                 nCode);
        return nCode;
    }
    return VX_REPORT_SENT;
}

int ReadServer(const char *lpszFunction, const char *lpszPath, MAIL_SETTINGS &settings) noexcept {
    int nResult = ReadNeeded(lpszFunction, lpszPath, "IP", settings.szIP, VX_REPORT_NO_SERVER);
    if (nResult == VX_REPORT_SENT) {
        nResult =
            ReadNeeded(lpszFunction, lpszPath, "Address", settings.szAddress, VX_REPORT_NO_SENDER);
    }
    settings.dwSMTPPort = AMAM_DEFAULT_SMTP_PORT;
    if (nResult == VX_REPORT_SENT) {
        (void)ReadNumber(lpszPath, "SMTPPort", &settings.dwSMTPPort);
    }
    return nResult;
}

void ReadErrorReply(const char *lpszFunction, MAIL_SETTINGS &settings) noexcept {
    settings.szErrorCopy[0] = '\0';
    if (!ReadText(VLX_KEY_SETUP, "ERRORREPLY", settings.szErrorReply)) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "AMAMRegReadEx %s failed.", "ERRORREPLY");
    } else if (settings.szErrorReply[0] != '\0') {
        (void)CopyText(settings.szErrorCopy, settings.szErrorReply);  // the same size
    }
}

// Missing, it is 0 here and not the default of the settings record: mail goes out in clear text.
void ReadOption(const char *lpszFunction, const char *lpszPath, MAIL_SETTINGS &settings) noexcept {
    settings.dwOption = 0;
    if (!ReadNumber(lpszPath, "Option", &settings.dwOption)) {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "AMAMRegReadEx %s failed.", "Option");
    }
}

int CheckCustomerMail(const char *lpszFunction) noexcept {
    char szMail[261 + 1];
    if (!ReadText(VLX_KEY_SETTING, "MAIL", szMail) || szMail[0] == '\0') {
        TRACE_AS(lpszFunction, TRACE_FAILURE, "<%s is invalid.", "MAIL");
        return VX_REPORT_NO_CUSTOMER_MAIL;
    }
    return VX_REPORT_SENT;
}

}  // namespace

int ReadMailSettings(const char *lpszFunction, MAIL_SETTINGS &settings) noexcept {
    char szPath[AMAM_BASE_PATH_CAPACITY];
    (void)AMAMGetBaseRegPath(szPath);
    const int nResult = ReadServer(lpszFunction, szPath, settings);
    if (nResult != VX_REPORT_SENT) {
        return nResult;
    }
    ReadErrorReply(lpszFunction, settings);
    ReadOption(lpszFunction, szPath, settings);
    return CheckCustomerMail(lpszFunction);
}
