#include "velox/alert_mail.h"

#include "registry/catalogue.h"
#include "registry/trace.h"
#include "report_steps.h"

namespace {

constexpr char TRACE_SOURCE[] = "amstexml";

}  // namespace

int KesSendAlertByMail(const char *lpszMessageId, const char *lpszETo, const char *lpszLines,
                       char *lpszAnswer) noexcept {
    TRACE(TRACE_NOTE, ">lpszMessageId=%s", lpszMessageId);
    lpszAnswer[0] = '\0';
    UseCatalogue("en_US", CATALOGUE_VELOX);
    REPORT report;
    int nResult = PrepareReport(
        __func__,
        {CATALOGUE_MESSAGE("A"), lpszLines, CatalogueText("Velox Alert Notification"), lpszETo},
        report);
    if (nResult != VX_REPORT_SENT) {
        return nResult;
    }
    nResult = LogInBeforeMail(__func__);
    if (nResult == VX_REPORT_SENT) {
        MAIL_MODULE module;
        nResult = LoadMailModule(__func__, true, module);
        if (nResult != VX_REPORT_SENT) {
            return nResult;
        }
        const MAIL mail = {report.settings, report.destinations, report.szSubject, report.encoded,
                           lpszMessageId};
        nResult = SendMail(__func__, module, mail, lpszAnswer);
    }
    TRACE(TRACE_NOTE, "<return %d.", nResult);
    return nResult;
}
