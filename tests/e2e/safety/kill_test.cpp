// The server is killed at random moments under write load and started again as the init system
// would: what was acknowledged is there, a batch is there whole or not at all, and nothing needs
// repair.
#include <support/server.h>

#include <random>

#include "load.h"

namespace {

using safety::Children;
using safety::Ledger;

constexpr int kKills = 200;
constexpr int kLongestLifeMicroseconds = 30000;

// A client's values against what it was promised before they are read.
void CheckClient(int client, safety::Entry &entry) {
    const DWORD promised = entry.acknowledged;
    if (promised == 0)
        return;
    const auto first = safety::ReadNumber(client, 0);
    ASSERT_TRUE(first.has_value()) << "client " << client << " was promised " << promised;
    EXPECT_GE(*first, promised);
    EXPECT_LE(*first, entry.begun);
}

// The values of one batch, in a state in which nobody writes.
void CheckBatch(int client) {
    const auto first = safety::ReadNumber(client, 0);
    for (int value = 1; value < safety::kBatchValues; ++value)
        EXPECT_EQ(safety::ReadNumber(client, value), first) << "half a batch is stored";
}

TEST(KillTest, NothingThatWasAcknowledgedIsLost) {
    test_support::Server server;
    Ledger ledger;
    Children clients;
    for (int client = 0; client < safety::kClients; ++client)
        clients.Start([&, client] { safety::RunClient(client, ledger[client]); });

    std::minstd_rand random(20240305);
    for (int kill = 0; kill < kKills && !HasFailure(); ++kill) {
        ::usleep(static_cast<useconds_t>(random() % kLongestLifeMicroseconds));
        server.Kill();
        server.Start();
        for (int client = 0; client < safety::kClients; ++client)
            CheckClient(client, ledger[client]);
    }
    clients.KillAll();
    server.Kill();
    server.Start();
    DWORD writes = 0;
    for (int client = 0; client < safety::kClients; ++client) {
        CheckClient(client, ledger[client]);
        if (client % 2 != 0)
            CheckBatch(client);
        writes += ledger[client].acknowledged;
    }
    EXPECT_GT(writes, static_cast<DWORD>(kKills)) << "the load was no load";
    char damage[256] = "";
    EXPECT_EQ(KesRegVerify(damage, sizeof damage), ERROR_SUCCESS) << damage << server.Log();
    RecordProperty("acknowledged_writes", static_cast<int>(writes));
}

// The size of the store's file while so many rounds of readers are killed in mid-read.
off_t SizeAfterKilledReaders(const test_support::Server &server, int readers) {
    std::minstd_rand random(7);
    for (int reader = 0; reader < readers; ++reader) {
        Children children;
        children.Start([] {
            for (;;)
                (void)safety::ReadNumber(0, 0);
        });
        for (DWORD number = 0; number < 3; ++number)
            EXPECT_TRUE(safety::WriteNumber(0, number));
        ::usleep(static_cast<useconds_t>(random() % 5000));
    }
    struct stat status = {};
    EXPECT_EQ(::stat((server.StoreFolder() + "/data.mdb").c_str(), &status), 0);
    return status.st_size;
}

TEST(KillTest, KilledReadersDoNotMakeTheStoreGrow) {
    test_support::Server server;
    const off_t before = SizeAfterKilledReaders(server, 20);
    const off_t after = SizeAfterKilledReaders(server, 200);
    EXPECT_LE(after, 2 * before);
}

}  // namespace
