/* The headers alone, as C, and a call through one. */
#include "velox/queue_report.h"

#include <records/queue_item.h>

int TestFatalReportFromC(void);

int TestFatalReportFromC(void) {
    return sizeof(AMQUE_ITEM) == 184 ? TestFatalReport() : -1;
}
