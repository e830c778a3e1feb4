/* The header alone, as C, and a call through it. */
#include "velox/security.h"

int SecurityOpenReportFromC(const char *SecName);

int SecurityOpenReportFromC(const char *SecName) {
    return SecurityOpenReport(SecName);
}
