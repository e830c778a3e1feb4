// Reading the alert manager's tables whole: how time and memory grow with them, and what they take
// over a loop of the registry calls that they make (the same keys, values and buffers). The trace
// is not initialised, and root reads through the map.
#include <malloc.h>
#include <ntwin32/registry.h>
#include <registry/keys.h>
#include <support/server.h>
#include <velox/agent_setting.h>
#include <velox/base_setting.h>
#include <velox/destination_setting.h>
#include <velox/syslog_setting.h>

#include <cstdio>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/ratios.h"

namespace {

constexpr long kSources = 20;
constexpr double kGrowth = 12.0;
constexpr double kOverCalls = 3.0;
// Many short repetitions: the speed of the machine changes from one moment to the next, and what is
// compared is to meet the same moments.
constexpr int kManyRepetitions = 25;
constexpr double kShortTime = 0.1;

// ---- Filling ------------------------------------------------------------------------------------

class Batch {
  public:
    void Number(const std::string &path, const char *name) {
        static constexpr DWORD kNumber = 1;
        Add(KES_REG_SET_VALUE, path, name, REG_DWORD, &kNumber, sizeof kNumber);
    }
    void Text(const std::string &path, const std::string &name) {
        static constexpr char kText[] = "a text of some length";
        Add(KES_REG_SET_VALUE, path, name, REG_SZ, kText, sizeof kText);
    }
    void Method(const std::string &path, const char *method, DWORD size) {
        Add(KES_REG_SET_VALUE, path, "METHOD", REG_SZ, method, size);
    }
    void Key(const std::string &path) { Add(KES_REG_CREATE_KEY, path, "", 0, nullptr, 0); }
    void DeleteTree(const std::string &path) { Add(KES_REG_DELETE_TREE, path, "", 0, nullptr, 0); }
    void Apply() const {
        std::vector<KES_REG_CHANGE> changes;
        for (const Change &change : changes_) {
            changes.push_back({change.operation, change.type, change.path.c_str(),
                               change.name.c_str(), static_cast<const BYTE *>(change.data),
                               change.size, 0});
        }
        if (KesRegApplyBatch(HKEY_LOCAL_MACHINE, changes.data(), static_cast<DWORD>(changes.size()),
                             nullptr) != ERROR_SUCCESS) {
            throw std::runtime_error("the table cannot be stored");
        }
    }

  private:
    struct Change {
        DWORD operation;
        DWORD type;
        std::string path;
        std::string name;
        const void *data;
        DWORD size;
    };
    void Add(DWORD operation, const std::string &path, const std::string &name, DWORD type,
             const void *data, DWORD size) {
        changes_.push_back({operation, type, path, name, data, size});
    }
    std::vector<Change> changes_;
};

std::string SourcePath(const char *root, long source) {
    return std::string(root) + "\\SOURCE" + std::to_string(source);
}

std::string EventPath(const char *root, long event) {
    return SourcePath(root, event % kSources) + "\\EVENT" + std::to_string(event / kSources);
}

// Every table once for the whole run; one that has another size is stored anew.
void Provide(const char *root, long *present, long wanted, void (*add)(Batch *batch, long index)) {
    static const test_support::Server server;
    static const test_support::EnvironmentVariable language("KES_LANG", "en_US");
    if (*present == wanted) {
        return;
    }
    Batch batch;
    batch.DeleteTree(root);
    batch.Key(root);
    for (long index = 0; index < wanted; ++index) {
        add(&batch, index);
    }
    batch.Apply();
    *present = wanted;
}

void AddEvent(Batch *batch, const std::string &event) {
    for (const char *name : {"ACTION", "OBSTACLEKIND", "ALIVELEVEL"}) {
        batch->Number(event + "\\EVENTSETTING", name);
    }
    batch->Text(event + "\\EVENTSETTING", "TRAPNAME");
    batch->Text(event + "\\EVENTSETTING", "RECOVERYACTION");
    batch->Key(event + "\\" AM_KEY_EVENT_LINKS "\\ID1");
    batch->Key(event + "\\" AM_KEY_EVENT_LINKS "\\ID2");
}

void ProvideAgent(long events) {
    static long present = -1;
    Provide(AM_KEY_AGENT_SOURCES, &present, events, [](Batch *batch, long index) {
        AddEvent(batch, EventPath(AM_KEY_AGENT_SOURCES, index));
    });
}

void ProvideSyslog(long events) {
    static long present = -1;
    Provide(AM_KEY_SYSLOG_SOURCES, &present, events, [](Batch *batch, long index) {
        const std::string event = EventPath(AM_KEY_SYSLOG_SOURCES, index);
        AddEvent(batch, event);
        batch->Number(event + "\\EVENTSETTING", "SYSTEMDEFINED");
        batch->Text(event + "\\WATCHSETTING", "KeyWord");
        batch->Number(event + "\\WATCHSETTING", "WatchTime");
        batch->Number(event + "\\WATCHSETTING", "ReportCount");
    });
}

std::string DestinationPath(long index) {
    return std::string(AM_KEY_ID_LIST "\\DEST") + std::to_string(index);
}

void ProvideDestinations(long destinations) {
    static long present = -1;
    Provide(AM_KEY_ID_LIST, &present, destinations, [](Batch *batch, long index) {
        static constexpr char kMethod[] = "MANAGER (TCP_IP IN-BAND)";
        const std::string path = DestinationPath(index);
        batch->Text(path + "\\Address", "MANAGERIP");
        batch->Number(path + "\\Address", "PORTNUMBER");
        for (const char *name : {"PARAM0", "RETRYCOUNT", "RETRYINTERVAL"}) {
            batch->Number(path + "\\SCHEDULE", name);
        }
        batch->Method(path, kMethod, sizeof kMethod);
    });
}

void ProvideTraps(long traps) {
    static long present = -1;
    Provide(AM_KEY_TRAPS, &present, traps,
            [](Batch *batch, long index) { batch->Text(AM_KEY_TRAPS, std::to_string(index)); });
}

// ---- Measuring ----------------------------------------------------------------------------------

double ThreadSeconds() {
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The work is all the calling thread's, so that its own time is taken: other programs on the
// machine do not blur it. What the work gives is released outside of that time.
template <typename Work, typename Release>
void Measure(benchmark::State &state, const Work &work, const Release &release) {
    for (auto _ : state) {
        const double start = ThreadSeconds();
        const auto result = work();
        state.SetIterationTime(ThreadSeconds() - start);
        release(result);
    }
}

template <typename Work>
void Measure(benchmark::State &state, const Work &work) {
    const auto measured = [&] {
        work();
        return 0;
    };
    Measure(state, measured, [](int) {});
}

// ---- The functions ------------------------------------------------------------------------------

template <typename Data, auto GetAll>
Data **ReadTable(long events) {
    Data **list = nullptr;
    DWORD count = 0;
    DWORD sources = 0;
    DWORD most = 0;
    if (GetAll(&list, &count, &sources, &most) != 0 || count != static_cast<DWORD>(events)) {
        throw std::runtime_error("the table cannot be read");
    }
    return list;
}

constexpr auto kReadAgent = ReadTable<AGNT_DATA, GetAllAgntSetting>;
constexpr auto kReadSyslog = ReadTable<SYSLOG_DATA, GetAllSyslogSetting>;

void AgentTable(benchmark::State &state) {
    ProvideAgent(state.range(0));
    Measure(
        state, [&] { return kReadAgent(state.range(0)); }, FreeAgntSettings);
}
BENCHMARK(AgentTable)
    ->Arg(200)
    ->Arg(2000)
    ->UseManualTime()
    ->MinTime(kShortTime)
    ->Unit(benchmark::kMillisecond);

void SyslogTable(benchmark::State &state) {
    ProvideSyslog(state.range(0));
    Measure(
        state, [&] { return kReadSyslog(state.range(0)); }, FreeSyslogSettings);
}
BENCHMARK(SyslogTable)
    ->Arg(200)
    ->Arg(2000)
    ->UseManualTime()
    ->MinTime(kShortTime)
    ->Unit(benchmark::kMillisecond);

// The caller's records are not part of the function.
struct Records {
    explicit Records(long number) : records(static_cast<std::size_t>(number)) {
        for (DEST_DATA &record : records) {
            pointers.push_back(&record);
        }
    }
    std::vector<DEST_DATA> records;
    std::vector<DEST_DATA *> pointers;
};

void DestinationList(benchmark::State &state) {
    ProvideDestinations(state.range(0));
    Records records(state.range(0));
    Measure(state, [&] {
        DWORD count = 0;
        (void)GetAllDestSetting(records.pointers.data(), &count);
        if (count != static_cast<DWORD>(state.range(0))) {
            state.SkipWithError("not all destinations");
        }
    });
}
BENCHMARK(DestinationList)
    ->Arg(100)
    ->Arg(1000)
    ->UseManualTime()
    ->MinTime(kShortTime)
    ->Unit(benchmark::kMillisecond);

void TrapList(benchmark::State &state) {
    ProvideTraps(state.range(0));
    const auto read = [&] {
        DWORD count = 0;
        char **list = nullptr;
        if (TrapDestRead(&count, &list) == FALSE || count != static_cast<DWORD>(state.range(0))) {
            state.SkipWithError("not all traps");
        }
        return list;
    };
    Measure(state, read, FreeTrapDest);
}
BENCHMARK(TrapList)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->MinTime(kShortTime)
    ->Unit(benchmark::kMillisecond);

// ---- Their registry calls -----------------------------------------------------------------------

// The calls of one open key.
class Calls {
  public:
    explicit Calls(const std::string &path, REGSAM access = KEY_ALL_ACCESS) {
        if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, access, &key_) != ERROR_SUCCESS) {
            throw std::runtime_error("no key " + path);
        }
    }
    Calls(const Calls &) = delete;
    Calls &operator=(const Calls &) = delete;
    ~Calls() { RegCloseKey(key_); }

    void Count() {
        char name[4096];
        DWORD length = sizeof name;
        DWORD other = 0;
        FILETIME time = {};
        RegQueryInfoKey(key_, name, &length, nullptr, &keys_, &other, &other, &values_, &other,
                        &other, &other, &time);
    }
    void ListKeys() {
        for (DWORD i = 0; i < keys_; ++i) {
            char name[256];
            DWORD length = sizeof name;
            RegEnumKeyEx(key_, i, name, &length, nullptr, nullptr, nullptr, nullptr);
        }
    }
    void ListValues() {
        for (DWORD i = 0; i < values_; ++i) {
            char name[256];
            BYTE data[256];
            DWORD length = sizeof name;
            DWORD size = sizeof data;
            RegEnumValue(key_, i, name, &length, nullptr, nullptr, data, &size);
        }
    }
    void Read(std::initializer_list<const char *> names) {
        for (const char *name : names) {
            BYTE data[4096];
            DWORD size = sizeof data;
            DWORD type = 0;
            RegQueryValueEx(key_, name, nullptr, &type, data, &size);
        }
    }

  private:
    HKEY key_ = 0;
    DWORD keys_ = 0;
    DWORD values_ = 0;
};

void CountAndList(const std::string &path) {
    Calls(path).Count();
    Calls key(path);
    key.Count();
    key.ListKeys();
}

void CallsOfEvent(const std::string &event, bool syslog) {
    Calls links(event + "\\" AM_KEY_EVENT_LINKS);
    links.Count();
    links.ListKeys();
    Calls setting(event + "\\EVENTSETTING");
    setting.Read({"ACTION", "OBSTACLEKIND", "ALIVELEVEL", "TRAPNAME", "RECOVERYACTION"});
    if (syslog) {
        setting.Read({"SYSTEMDEFINED"});
        Calls(event + "\\WATCHSETTING").Read({"KeyWord", "WatchTime", "ReportCount"});
    }
}

void CallsOfTable(const char *root, long events, bool syslog) {
    CountAndList(root);
    for (long source = 0; source < kSources; ++source) {
        Calls(SourcePath(root, source)).Count();
    }
    for (long source = 0; source < kSources; ++source) {
        CountAndList(SourcePath(root, source));
    }
    for (long event = 0; event < events; ++event) {
        CallsOfEvent(EventPath(root, event), syslog);
    }
}

void AgentCalls(benchmark::State &state) {
    ProvideAgent(state.range(0));
    Measure(state, [&] { CallsOfTable(AM_KEY_AGENT_SOURCES, state.range(0), false); });
}
BENCHMARK(AgentCalls)
    ->Arg(200)
    ->Arg(2000)
    ->UseManualTime()
    ->MinTime(kShortTime)
    ->Unit(benchmark::kMillisecond);

void SyslogCalls(benchmark::State &state) {
    ProvideSyslog(state.range(0));
    Measure(state, [&] { CallsOfTable(AM_KEY_SYSLOG_SOURCES, state.range(0), true); });
}
BENCHMARK(SyslogCalls)
    ->Arg(200)
    ->Arg(2000)
    ->UseManualTime()
    ->MinTime(kShortTime)
    ->Unit(benchmark::kMillisecond);

void DestinationCalls(benchmark::State &state) {
    ProvideDestinations(state.range(0));
    Measure(state, [&] {
        Calls list(AM_KEY_ID_LIST);
        list.Count();
        list.ListKeys();
        for (long index = 0; index < state.range(0); ++index) {
            const std::string path = DestinationPath(index);
            Calls(path, KEY_READ).Read({"METHOD"});
            Calls(path + "\\Address", KEY_READ).Read({"MANAGERIP", "PORTNUMBER"});
            Calls(path + "\\Schedule", KEY_READ).Read({"PARAM0", "RETRYCOUNT", "RETRYINTERVAL"});
        }
    });
}
BENCHMARK(DestinationCalls)
    ->Arg(100)
    ->Arg(1000)
    ->UseManualTime()
    ->MinTime(kShortTime)
    ->Unit(benchmark::kMillisecond);

void TrapCalls(benchmark::State &state) {
    ProvideTraps(state.range(0));
    Measure(state, [&] {
        Calls list(AM_KEY_TRAPS);
        list.Count();
        list.ListValues();
    });
}
BENCHMARK(TrapCalls)
    ->Arg(1000)
    ->Arg(10000)
    ->UseManualTime()
    ->MinTime(kShortTime)
    ->Unit(benchmark::kMillisecond);

// ---- Memory -------------------------------------------------------------------------------------

std::size_t HeapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// The bytes that a whole table holds on the heap.
template <typename Data, auto GetAll, auto Free>
std::size_t BytesOf(void (*provide)(long), long events) {
    provide(events);
    Free(ReadTable<Data, GetAll>(events));  // what stays of a first call is not the table's
    const std::size_t before = HeapInUse();
    Data **list = nullptr;
    DWORD count = 0;
    DWORD sources = 0;
    DWORD most = 0;
    (void)GetAll(&list, &count, &sources, &most);
    const std::size_t bytes = HeapInUse() - before;
    Free(list);
    return bytes;
}

template <typename Data, auto GetAll, auto Free>
void PrintMemory(const char *name, void (*provide)(long)) {
    const std::size_t few = BytesOf<Data, GetAll, Free>(provide, 200);
    const std::size_t many = BytesOf<Data, GetAll, Free>(provide, 2000);
    const double ratio = static_cast<double>(many) / static_cast<double>(few);
    std::printf("%-60s %8.2f   (at most %.2f%s), %zu and %zu KiB\n", name, ratio, kGrowth,
                ratio <= kGrowth ? "" : ": MISSED", many / 1024, few / 1024);
}

}  // namespace

int main(int argc, char **argv) {
    // As in a program that reads a table once: what is freed goes back to the system. Otherwise the
    // allocator learns from the larger table to keep what the smaller one frees.
    (void)mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    (void)mallopt(M_TRIM_THRESHOLD, 128 * 1024);
    const int status = bench::Run(
        argc, argv,
        {{"agent table, 2,000 events over 200", "AgentTable/2000", "AgentTable/200", kGrowth},
         {"agent table, in its registry calls", "AgentTable/2000", "AgentCalls/2000", kOverCalls},
         {"syslog table, 2,000 items over 200", "SyslogTable/2000", "SyslogTable/200", kGrowth},
         {"syslog table, in its registry calls", "SyslogTable/2000", "SyslogCalls/2000",
          kOverCalls},
         {"destinations, 1,000 over 100", "DestinationList/1000", "DestinationList/100", kGrowth},
         {"destinations, in their registry calls", "DestinationList/1000", "DestinationCalls/1000",
          kOverCalls},
         {"traps, 10,000 over 1,000", "TrapList/10000", "TrapList/1000", kGrowth},
         {"traps, in their registry calls", "TrapList/10000", "TrapCalls/10000", kOverCalls}},
        kManyRepetitions);
    PrintMemory<AGNT_DATA, GetAllAgntSetting, FreeAgntSettings>(
        "agent table, memory of 2,000 events over 200", ProvideAgent);
    PrintMemory<SYSLOG_DATA, GetAllSyslogSetting, FreeSyslogSettings>(
        "syslog table, memory of 2,000 items over 200", ProvideSyslog);
    return status;
}
