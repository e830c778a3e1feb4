#include "setup/setup.h"

#include <keyfd/keyfd.h>
#include <ntwin32/system.h>
#include <syslog.h>

#include <cstdio>

#include "registry/trace.h"

static constexpr char TRACE_SOURCE[] = "setup";

int RunSetup() noexcept {
    // A log that cannot be opened does not stop the set-up.
    (void)TraceLogInit(0, "vlxfd", 0, 5, 0);
    TRACE_AS("main", TRACE_NOTE, ">");
    if (CheckNTserverReady() == -1) {
        (void)std::puts("Please confirm KESntserver is running!");
        syslog(LOG_INFO, "KESntserver is not active! So vlxfd exit\n");
        TRACE_AS("main", TRACE_FAILURE, "<KESntserver is not active!");
        return 0;
    }
    const LONG nResult = GetOpenMsgfromFD();
    TRACE_AS("main", TRACE_NOTE, "<return %d", nResult);
    return nResult;
}
