// Listing all sub-keys or values of a key by index: 100,000 against 10,000. Names of one length
// were made in their order; counted names were not, since "9" stands behind "10".
#include <ntwin32/registry.h>
#include <support/server.h>

#include "support/ratios.h"
#include "support/registry_load.h"

namespace {

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

void ListSubKeys(benchmark::State &state) {
    const HKEY key = FilledKey(Names::kOneLength, state.range(0));
    for (auto _ : state) {
        char name[256];
        DWORD index = 0;
        for (DWORD size = sizeof name; RegEnumKeyEx(key, index, name, &size, nullptr, nullptr,
                                                    nullptr, nullptr) == ERROR_SUCCESS;
             ++index)
            size = sizeof name;
        if (index != state.range(0))
            state.SkipWithError("not all sub-keys were listed");
    }
}

void ListValuesOf(benchmark::State &state, Names names) {
    const HKEY key = FilledKey(names, state.range(0));
    for (auto _ : state) {
        char name[256];
        BYTE data[256];
        DWORD index = 0;
        for (;; ++index) {
            DWORD size = sizeof name;
            DWORD data_size = sizeof data;
            if (RegEnumValue(key, index, name, &size, nullptr, nullptr, data, &data_size) !=
                ERROR_SUCCESS)
                break;
        }
        if (index != state.range(0))
            state.SkipWithError("not all values were listed");
    }
}

void ListValues(benchmark::State &state) {
    ListValuesOf(state, Names::kOneLength);
}

void ListCountedValues(benchmark::State &state) {
    ListValuesOf(state, Names::kCounted);
}

BENCHMARK(ListSubKeys)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(ListValues)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(ListCountedValues)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
    return bench::Run(
        argc, argv,
        {{"100,000 sub-keys, in times of 10,000", "ListSubKeys/100000", "ListSubKeys/10000", 11},
         {"100,000 values, in times of 10,000", "ListValues/100000", "ListValues/10000", 11},
         {"100,000 values of counted names, in times of 10,000", "ListCountedValues/100000",
          "ListCountedValues/10000", 11}});
}
