#include "trace.h"

#include <tracelog.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>

#include "terminal.h"

namespace veloxctl {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kFailureLevel = 1;

// What the one listener of the process is for.
struct Listener {
    std::optional<Clock::time_point> shown_since;  // --verbose
    std::vector<std::string> kept_sources;
    std::string failure;
};
Listener listener;

void Show(const TRACELOG_RECORD &record) {
    const double elapsed =
        std::chrono::duration<double>(Clock::now() - *listener.shown_since).count();
    std::fprintf(stderr, "%10.6f %d %s %s: %s\n", elapsed, record.nLevel, record.szSource,
                 record.szFunction, StoredToTerminal(record.szText).c_str());
}

void Listen(const TRACELOG_RECORD *record, void *) {
    if (listener.shown_since) {
        Show(*record);
    }
    if (record->nLevel == kFailureLevel &&
        std::ranges::find(listener.kept_sources, record->szSource) != listener.kept_sources.end()) {
        listener.failure = record->szText;
    }
}

}  // namespace

void ShowTrace() {
    listener.shown_since = Clock::now();
    TraceLogSetListener(Listen, nullptr);
}

void KeepFailuresOf(std::vector<std::string> sources) {
    listener.kept_sources = std::move(sources);
    listener.failure.clear();
    TraceLogSetListener(Listen, nullptr);
}

std::string KeptFailure() {
    return listener.failure;
}

}  // namespace veloxctl
