#include "trace.h"

#include <tracelog.h>

#include <chrono>
#include <cstdio>

#include "terminal.h"

namespace veloxctl {

namespace {

using Clock = std::chrono::steady_clock;

void PrintRecord(const TRACELOG_RECORD *record, void *context) {
    const auto *start = static_cast<const Clock::time_point *>(context);
    const double elapsed = std::chrono::duration<double>(Clock::now() - *start).count();
    std::fprintf(stderr, "%10.6f %d %s %s: %s\n", elapsed, record->nLevel, record->szSource,
                 record->szFunction, StoredToTerminal(record->szText).c_str());
}

}  // namespace

void ShowTrace() {
    static Clock::time_point start;
    start = Clock::now();
    TraceLogSetListener(PrintRecord, &start);
}

}  // namespace veloxctl
