// Listing all sub-keys or values of a key by index: 100,000 against 10,000; once in a process, as a
// command does, and again and again in the same one. Names of one length were made in their order;
// counted names were not, since "9" stands behind "10".
#include <ntwin32/registry.h>
#include <support/server.h>

#include "support/ratios.h"
#include "support/registry_load.h"
#include "support/worker.h"

namespace {

// Many short repetitions: the speed of the machine changes from one moment to the next, and what is
// compared is to meet the same moments.
constexpr int kManyRepetitions = 25;
constexpr double kShortTime = 0.1;

enum class Names { kOneLength, kCounted };

std::string Name(Names names, long index) {
    constexpr std::size_t kDigits = 6;
    const std::string number = std::to_string(index);
    return "ENTRY" + (names == Names::kCounted ? "" : std::string(kDigits - number.size(), '0')) +
           number;
}

std::string ListKey(Names names, long count) {
    return (names == Names::kCounted ? "COUNTED" : "LIST") + std::to_string(count);
}

// A key with so many sub-keys and values, made once for the program.
HKEY FilledKey(Names kind, long count) {
    static test_support::Server server;
    HKEY key = 0;
    const std::string path = ListKey(kind, count);
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS)
        return key;
    std::vector<std::string> names;
    std::vector<std::string> paths;
    std::vector<KES_REG_CHANGE> changes;
    for (long index = 0; index < count; ++index) {
        names.push_back(Name(kind, index));
        paths.push_back(path + "\\" + names.back());
    }
    for (long index = 0; index < count; ++index) {
        const auto at = static_cast<std::size_t>(index);
        changes.push_back({KES_REG_CREATE_KEY, 0, paths[at].c_str(), nullptr, nullptr, 0, 0});
        changes.push_back({KES_REG_SET_VALUE, REG_SZ, path.c_str(), names[at].c_str(),
                           reinterpret_cast<const BYTE *>(bench::kText), sizeof bench::kText, 0});
    }
    if (KesRegApplyBatch(HKEY_LOCAL_MACHINE, changes.data(), static_cast<DWORD>(changes.size()),
                         nullptr) != ERROR_SUCCESS ||
        RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        throw std::runtime_error("the registry cannot be filled");
    return key;
}

// Each lists a whole key and gives how many there were.
long ListSubKeys(HKEY key) {
    char name[256];
    DWORD index = 0;
    for (DWORD size = sizeof name;
         RegEnumKeyEx(key, index, name, &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++index)
        size = sizeof name;
    return index;
}

long ListValues(HKEY key) {
    char name[256];
    BYTE data[256];
    DWORD index = 0;
    for (;; ++index) {
        DWORD size = sizeof name;
        DWORD data_size = sizeof data;
        if (RegEnumValue(key, index, name, &size, nullptr, nullptr, data, &data_size) !=
            ERROR_SUCCESS)
            return index;
    }
}

// Again and again in one process.
void ListAgain(benchmark::State &state, Names names, long (*list)(HKEY)) {
    const HKEY key = FilledKey(names, state.range(0));
    for (auto _ : state)
        if (list(key) != state.range(0))
            state.SkipWithError("not everything was listed");
}

// Once in a process, as a command does: each time in a new one, which has just opened the key.
void ListOnce(benchmark::State &state, Names names, long (*list)(HKEY)) {
    const long count = state.range(0);
    (void)FilledKey(names, count);
    for (auto _ : state) {
        bench::Worker worker([&]() -> bench::Work {
            const HKEY key = FilledKey(names, count);
            return [=](long) {
                if (list(key) != count)
                    std::abort();
            };
        });
        state.SetIterationTime(worker.Run(1));
    }
}

void Register(const char *name, Names names, long (*list)(HKEY)) {
    const std::string title = name;
    benchmark::RegisterBenchmark((title + "Again").c_str(), ListAgain, names, list)
        ->Arg(10000)
        ->Arg(100000)
        ->MinTime(kShortTime)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((title + "Once").c_str(), ListOnce, names, list)
        ->Arg(10000)
        ->Arg(100000)
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

bench::Ratio Growth(const std::string &what, const std::string &name) {
    constexpr double kGoal = 11;
    return {"100,000 " + what + ", in times of 10,000", name + "/100000", name + "/10000", kGoal};
}

}  // namespace

int main(int argc, char **argv) {
    Register("SubKeys", Names::kOneLength, ListSubKeys);
    Register("Values", Names::kOneLength, ListValues);
    Register("CountedValues", Names::kCounted, ListValues);
    return bench::Run(
        argc, argv,
        {Growth("sub-keys once", "SubKeysOnce"), Growth("sub-keys again and again", "SubKeysAgain"),
         Growth("values once", "ValuesOnce"), Growth("values again and again", "ValuesAgain"),
         Growth("values of counted names once", "CountedValuesOnce"),
         Growth("values of counted names again and again", "CountedValuesAgain")},
        kManyRepetitions);
}
