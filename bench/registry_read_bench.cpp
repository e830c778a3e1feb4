// Reading in a mapping process: a warm value on an open key, and opening a key of five levels, in
// stores of a thousand and of a million values; against a renewed snapshot, a look-up and a reset
// in a bare LMDB environment of as many records (unit B).
#include <ntwin32/registry.h>
#include <support/server.h>

#include <map>

#include "support/ratios.h"
#include "support/registry_load.h"
#include "support/worker.h"

namespace {

using bench::Work;
using bench::Worker;

constexpr long kSmall = 1000;
constexpr long kLarge = 1000000;
constexpr long kTimes = 20000;
// An iteration is many reads and tells the time of one, of which the library would never have
// enough.
constexpr int kIterations = 50;

// Each worker is made once and lives as long as the program.
Worker &WorkerOf(const std::string &name, const std::function<Work()> &prepare) {
    static std::map<std::string, std::unique_ptr<Worker>> workers;
    std::unique_ptr<Worker> &worker = workers[name];
    if (!worker)
        worker = std::make_unique<Worker>(prepare);
    return *worker;
}

void RunWorker(benchmark::State &state, Worker &worker) {
    worker.Run(kTimes);  // warm
    for (auto _ : state)
        state.SetIterationTime(worker.Run(kTimes) / kTimes);
}

Work BareGetWork(long records) {
    auto store = std::make_shared<bench::BareStore>();
    store->Fill(0, records);
    MDB_txn *transaction = nullptr;
    bench::BareStore::Check(mdb_txn_begin(store->Environment(), nullptr, MDB_RDONLY, &transaction));
    mdb_txn_reset(transaction);
    return [store, transaction, key = bench::BareStore::Key(records / 2)](long times) {
        for (long i = 0; i < times; ++i) {
            MDB_val name = {key.size(), const_cast<char *>(key.data())};
            MDB_val data;
            mdb_txn_renew(transaction);
            benchmark::DoNotOptimize(mdb_get(transaction, store->Database(), &name, &data));
            mdb_txn_reset(transaction);
        }
    };
}

std::shared_ptr<test_support::Server> FilledServer(long values) {
    auto server = std::make_shared<test_support::Server>();
    bench::FillRegistry(values);
    return server;
}

Work QueryWork(long values) {
    auto server = FilledServer(values);
    HKEY key = 0;
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, bench::kProbeKey, 0, KEY_READ, &key) != ERROR_SUCCESS)
        throw std::runtime_error("no probe key");
    return [server, key](long times) {
        for (long i = 0; i < times; ++i) {
            BYTE data[sizeof bench::kText];
            DWORD size = sizeof data;
            DWORD type = 0;
            benchmark::DoNotOptimize(
                RegQueryValueEx(key, bench::kProbeValue, nullptr, &type, data, &size));
        }
    };
}

Work OpenWork(long values) {
    auto server = FilledServer(values);
    return [server](long times) {
        for (long i = 0; i < times; ++i) {
            HKEY key = 0;
            benchmark::DoNotOptimize(
                RegOpenKeyEx(HKEY_LOCAL_MACHINE, bench::kProbeKey, 0, KEY_READ, &key));
            RegCloseKey(key);
        }
    };
}

void Run(benchmark::State &state, const char *name, Work (*prepare)(long)) {
    const long size = state.range(0);
    RunWorker(state, WorkerOf(name + std::to_string(size), [=] { return prepare(size); }));
}

void BareGet(benchmark::State &state) {
    Run(state, "bare", BareGetWork);
}
void QueryValue(benchmark::State &state) {
    Run(state, "query", QueryWork);
}
void OpenFiveLevels(benchmark::State &state) {
    Run(state, "open", OpenWork);
}
BENCHMARK(BareGet)->Arg(kSmall)->Arg(kLarge)->Iterations(kIterations)->UseManualTime();
BENCHMARK(QueryValue)->Arg(kSmall)->Arg(kLarge)->Iterations(kIterations)->UseManualTime();
BENCHMARK(OpenFiveLevels)->Arg(kSmall)->Arg(kLarge)->Iterations(kIterations)->UseManualTime();

}  // namespace

int main(int argc, char **argv) {
    return bench::Run(
        argc, argv,
        {{"value on an open key, in B, of 1,000", "QueryValue/1000", "BareGet/1000", 2.0},
         {"value on an open key, in B, of 1,000,000", "QueryValue/1000000", "BareGet/1000000", 2.0},
         {"key of five levels, in B, of 1,000", "OpenFiveLevels/1000", "BareGet/1000", 6.0},
         {"key of five levels, in B, of 1,000,000", "OpenFiveLevels/1000000", "BareGet/1000000",
          6.0},
         {"growth of the value's read, in growths of B", "QueryValue/1000000", "BareGet/1000000",
          1.2, false, "QueryValue/1000", "BareGet/1000"},
         {"growth of the key's opening, in growths of B", "OpenFiveLevels/1000000",
          "BareGet/1000000", 1.2, false, "OpenFiveLevels/1000", "BareGet/1000"}});
}
