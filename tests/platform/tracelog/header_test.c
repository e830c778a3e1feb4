// The header alone in C, and calls through it.
#include <tracelog.h>

int CallTraceLogFromC(void);

int CallTraceLogFromC(void) {
    const int opened = TraceLogInit(0, "c-program", TRACELOG_MAX_TEXT - 4096, 1, 0);
    TraceLog(0, "header", __func__, __LINE__, "%s %d", "from C", 17);
    TraceLogClose();
    return opened;
}
