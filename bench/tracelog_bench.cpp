// A written trace record against what no logger can avoid, formatting the line and writing it, to a
// file of the same folder; and a record that nobody takes.
#include <fcntl.h>
#include <support/environment.h>
#include <support/temp_folder.h>
#include <tracelog.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>

#include "support/ratios.h"

namespace {

using test_support::EnvironmentVariable;
using test_support::TempFolder;

// Neither side may grow a file without bound; the limit is that of the programs.
constexpr int kRecordsAFile = 10000;

void BareFormatAndWrite(benchmark::State &state) {
    const TempFolder folder;
    const std::string path = folder / "bare.log";
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    int records = 0;
    while (state.KeepRunning()) {
        timespec now;
        ::clock_gettime(CLOCK_REALTIME, &now);
        char line[256];
        const int length =
            std::snprintf(line, sizeof line,
                          "2026-01-02T03:04:05.%06ldZ %d %d %s %s %d <return %d, position %u\n",
                          now.tv_nsec / 1000, 4711, 0, "keyfd", "GetFileChar", 120, 1, 4242u);
        benchmark::DoNotOptimize(::write(file, line, static_cast<std::size_t>(length)));
        if (++records % kRecordsAFile == 0 && ::ftruncate(file, 0) != 0) {
            state.SkipWithError("cannot empty the file");
        }
    }
    ::close(file);
}
BENCHMARK(BareFormatAndWrite);

void WrittenRecord(benchmark::State &state) {
    const TempFolder folder;
    const EnvironmentVariable variable("KES_STATE", folder.Path());
    if (TraceLogInit(0, "bench", 0, 5, 0) == 0) {
        state.SkipWithError("cannot open the log");
    }
    while (state.KeepRunning()) {
        TraceLog(0, "keyfd", "GetFileChar", 120, "<return %d, position %u", 1, 4242u);
    }
    TraceLogClose();
}
BENCHMARK(WrittenRecord);

void UntakenRecord(benchmark::State &state) {
    while (state.KeepRunning()) {
        TraceLog(0, "keyfd", "GetFileChar", 120, "<return %d, position %u", 1, 4242u);
    }
}
BENCHMARK(UntakenRecord);

}  // namespace

int main(int argc, char **argv) {
    return bench::Run(argc, argv,
                      {{"a written record, in bare snprintf and write", "WrittenRecord",
                        "BareFormatAndWrite", 2.0},
                       {"a record that nobody takes, in bare snprintf and write", "UntakenRecord",
                        "BareFormatAndWrite", 0.02}});
}
