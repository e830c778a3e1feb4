// Durable writes: one client against a bare durable LMDB commit and one round trip over a socket;
// eight clients against one; a batch of 100,000 values against the same records put bare.
#include <ntwin32/registry.h>
#include <support/server.h>
#include <sys/socket.h>

#include <thread>

#include "support/ratios.h"
#include "support/registry_load.h"
#include "support/worker.h"

namespace {

constexpr int kClients = 8;
constexpr long kImportValues = 100000;

test_support::Server &TheServer() {
    static test_support::Server server;
    return server;
}

HKEY ProbeKey() {
    TheServer();
    HKEY key = 0;
    if (RegCreateKey(HKEY_LOCAL_MACHINE, bench::kProbeKey, &key) != ERROR_SUCCESS)
        throw std::runtime_error("no probe key");
    return key;
}

LONG WriteNumber(HKEY key, const char *name, long number) {
    const std::string text = std::string(bench::kText) + std::to_string(number % 10);
    return RegSetValueEx(key, name, 0, REG_SZ, reinterpret_cast<const BYTE *>(text.c_str()),
                         static_cast<DWORD>(text.size() + 1));
}

// Answers every frame of a socket with one of the same size.
class Echo {
  public:
    static constexpr std::size_t kFrame = 80;

    Echo() {
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends_) != 0)
            throw std::runtime_error("no socket");
        process_ = ::fork();
        if (process_ == 0) {
            ::close(ends_[0]);
            char frame[kFrame];
            while (::read(ends_[1], frame, sizeof frame) > 0)
                (void)!::write(ends_[1], frame, sizeof frame);
            ::_exit(0);
        }
        ::close(ends_[1]);
    }
    Echo(const Echo &) = delete;
    Echo &operator=(const Echo &) = delete;
    ~Echo() {
        ::close(ends_[0]);
        ::waitpid(process_, nullptr, 0);
    }

    void RoundTrip() {
        char frame[kFrame] = {};
        (void)!::write(ends_[0], frame, sizeof frame);
        (void)!::read(ends_[0], frame, sizeof frame);
    }

  private:
    int ends_[2];
    pid_t process_;
};

void BareCommitAndRoundTrip(benchmark::State &state) {
    bench::BareStore store;
    Echo echo;
    for (auto _ : state) {
        echo.RoundTrip();
        store.Fill(0, 1);
    }
}

void DurableSetValue(benchmark::State &state) {
    const HKEY key = ProbeKey();
    long number = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(WriteNumber(key, bench::kProbeValue, ++number));
}

void CreateExistingKey(benchmark::State &state) {
    ProbeKey();
    for (auto _ : state) {
        HKEY key = 0;
        benchmark::DoNotOptimize(RegCreateKey(HKEY_LOCAL_MACHINE, bench::kProbeKey, &key));
    }
}

// A client process that writes values of its own.
bench::Work ClientWork(int client) {
    const std::string name = "CLIENT" + std::to_string(client);
    return [name, key = ProbeKey()](long times) {
        for (long i = 0; i < times; ++i)
            if (WriteNumber(key, name.c_str(), i) != ERROR_SUCCESS)
                throw std::runtime_error("a write failed");
    };
}

// Time of one write when so many clients write at once.
void ManyClients(benchmark::State &state) {
    constexpr long kWrites = 50;
    ProbeKey();
    const int clients = static_cast<int>(state.range(0));
    std::vector<std::unique_ptr<bench::Worker>> workers;
    for (int client = 0; client < clients; ++client)
        workers.push_back(std::make_unique<bench::Worker>([client] { return ClientWork(client); }));
    for (auto &worker : workers)
        worker->Run(1);
    for (auto _ : state) {
        const auto all = [&](long) {
            std::vector<std::thread> threads;
            for (auto &worker : workers)
                threads.emplace_back([&worker] { worker->Run(kWrites); });
            for (std::thread &thread : threads)
                thread.join();
        };
        state.SetIterationTime(bench::Measure(all, 1) / static_cast<double>(kWrites * clients));
    }
}

void BarePuts(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto store = std::make_unique<bench::BareStore>();
        state.ResumeTiming();
        store->Fill(0, kImportValues);
        state.PauseTiming();
        store.reset();
        state.ResumeTiming();
    }
}

// All values of one import, in one transaction.
class ImportBatch {
  public:
    ImportBatch() {
        texts_.reserve(2 * kImportValues);
        for (long index = 0; index < kImportValues; ++index) {
            texts_.push_back("IMPORT\\" + bench::FillerKey(index));
            texts_.push_back(bench::FillerValue(index));
            changes_.push_back({KES_REG_SET_VALUE, REG_SZ, texts_[texts_.size() - 2].c_str(),
                                texts_.back().c_str(), reinterpret_cast<const BYTE *>(bench::kText),
                                sizeof bench::kText, 0});
        }
    }
    LONG Apply() const {
        return KesRegApplyBatch(HKEY_LOCAL_MACHINE, changes_.data(),
                                static_cast<DWORD>(changes_.size()), nullptr);
    }

  private:
    std::vector<std::string> texts_;
    std::vector<KES_REG_CHANGE> changes_;
};

void ApplyBatch(benchmark::State &state) {
    ProbeKey();
    const ImportBatch batch;
    const KES_REG_CHANGE remove = {KES_REG_DELETE_TREE, 0, "IMPORT", nullptr, nullptr, 0, 0};
    for (auto _ : state) {
        if (batch.Apply() != ERROR_SUCCESS)
            state.SkipWithError("the batch was refused");
        state.PauseTiming();
        if (KesRegApplyBatch(HKEY_LOCAL_MACHINE, &remove, 1, nullptr) != ERROR_SUCCESS)
            state.SkipWithError("the batch was not removed");
        state.ResumeTiming();
    }
}

BENCHMARK(BareCommitAndRoundTrip)->UseRealTime();
BENCHMARK(DurableSetValue)->UseRealTime();
BENCHMARK(CreateExistingKey)->UseRealTime();
// An iteration is many writes and tells the time of one.
BENCHMARK(ManyClients)->Arg(1)->Arg(kClients)->Iterations(4)->UseManualTime();
BENCHMARK(BarePuts)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ApplyBatch)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
    return bench::Run(argc, argv,
                      {{"durable write, in bare commits with a round trip", "DurableSetValue",
                        "BareCommitAndRoundTrip", 1.3},
                       {"writes a second of 8 clients, in those of one", "ManyClients/1",
                        "ManyClients/8", 2.0, true},
                       {"creating a key that exists, in durable writes", "CreateExistingKey",
                        "DurableSetValue", 0.5},
                       {"batch of 100,000 values, in bare puts", "ApplyBatch", "BarePuts", 3.0}});
}
