/* The header alone, as C, and calls through it. */
#include "velox/mail_report.h"

int ReportedFromC(const char *lpszETo);

int ReportedFromC(const char *lpszETo) {
    char szMailTo[VX_DESTINATION_LIST_LENGTH + 1];
    if (lpszETo == 0) {
        if (!GetVlxTo(szMailTo)) {
            return 1;
        }
        lpszETo = szMailTo;
    }
    return AMAMVeloxTestReport(0, VX_REPORT_ALERT, "Subject", lpszETo, 0);
}
