#include "fakes/platform.h"

#include <algorithm>

#include "fakes/registry.h"
#include "state.h"

namespace fakes {

namespace {

struct Fault {
    std::string function;  // empty: any
    bool every_call = false;
    int calls_left = 0;  // until it comes
    LONG error = 0;
    bool came = false;
    bool spent = false;
};

struct Log {
    std::vector<TraceRecord> trace;
    std::vector<Call> calls;
    std::vector<Fault> faults;
};

Log &TheLog() {
    static Log log;
    return log;
}

}  // namespace

System &TheSystem() {
    static System system;
    return system;
}

void Reset() {
    TheLog() = {};
    TheSystem() = {};
    internal::ResetRegistry();
    internal::ResetFiles();
    internal::ResetModules();
    internal::ResetMemory();
    internal::ResetAgent();
    internal::ResetLibc();
}

const std::vector<TraceRecord> &Trace() {
    return TheLog().trace;
}

void ClearTrace() {
    TheLog().trace.clear();
}

std::vector<std::string> TraceLines(int lowest_level) {
    std::vector<std::string> lines;
    for (const TraceRecord &record : TheLog().trace) {
        if (record.level >= lowest_level) {
            lines.push_back(std::to_string(record.level) + " " + record.text);
        }
    }
    return lines;
}

std::vector<std::string> TraceLinesOf(std::string_view function) {
    std::vector<std::string> lines;
    for (const TraceRecord &record : TheLog().trace) {
        if (record.function == function) {
            lines.push_back(std::to_string(record.level) + " " + record.text);
        }
    }
    return lines;
}

bool HasTrace(int level, std::string_view text) {
    return std::any_of(
        TheLog().trace.begin(), TheLog().trace.end(),
        [&](const TraceRecord &record) { return record.level == level && record.text == text; });
}

const std::vector<Call> &Calls() {
    return TheLog().calls;
}

int CallCount(std::string_view function) {
    return static_cast<int>(
        std::count_if(TheLog().calls.begin(), TheLog().calls.end(),
                      [&](const Call &call) { return call.function == function; }));
}

void FailCall(std::string_view function, int nth, LONG error) {
    TheLog().faults.push_back({std::string(function), false, nth, error});
}

void FailEveryCall(std::string_view function, LONG error) {
    TheLog().faults.push_back({std::string(function), true, 0, error});
}

void FailAnyCall(int nth) {
    TheLog().faults.push_back({{}, false, nth, 1016});
}

int UnusedFaults() {
    return static_cast<int>(std::count_if(TheLog().faults.begin(), TheLog().faults.end(),
                                          [](const Fault &fault) { return !fault.came; }));
}

LONG Enter(std::string_view function, std::string detail) {
    TheLog().calls.push_back({std::string(function), std::move(detail)});
    LONG error = 0;
    for (Fault &fault : TheLog().faults) {
        const bool concerned = fault.function.empty() || fault.function == function;
        if (!concerned || fault.spent) {
            continue;
        }
        if (fault.every_call || --fault.calls_left == 0) {
            fault.came = true;
            fault.spent = !fault.every_call;
            error = fault.error;
        }
    }
    return error;
}

void PlatformTest::SetUp() {
    Reset();
}

void PlatformTest::TearDown() {
    EXPECT_EQ(OpenKeys(), expected_open_keys_) << "registry handles left open";
    EXPECT_EQ(ClosedHandleCalls(), expected_closed_handle_calls_) << "calls on closed handles";
    EXPECT_EQ(OpenFiles(), 0) << "files left open";
    EXPECT_EQ(OpenEvents(), 0) << "events left open";
    EXPECT_EQ(LoadedModules(), 0) << "modules left loaded";
    EXPECT_EQ(GlobalBlocks(), 0) << "GlobalAlloc blocks left";
    EXPECT_EQ(UnusedFaults(), 0) << "a planned fault never came";
    Reset();
}

namespace internal {

void Record(TraceRecord record) {
    TheLog().trace.push_back(std::move(record));
}

}  // namespace internal

}  // namespace fakes
