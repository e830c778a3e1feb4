// "veloxctl report queue-test".
#include <velox/queue_report.h>

#include "failure.h"
#include "report/commands.h"
#include "terminal.h"
#include "trace.h"

namespace veloxctl::report {

int RunQueueTest(const Arguments &) {
    KeepFailuresOf({"amvmque"});
    if (TestFatalReport() == FALSE) {
        const std::string reason = StoredToTerminal(KeptFailure());
        Fail(EX_CANTCREAT, "the test alert was not queued; " +
                               (reason.empty() ? "-v shows the step that failed" : reason));
    }
    Print("A test alert is in the queue; \"veloxctl queue list\" shows it until it is sent.\n");
    return EX_OK;
}

}  // namespace veloxctl::report
