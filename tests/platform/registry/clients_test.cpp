// Clients in their circumstances: forked, with threads, without rights, while the server is away.
#include <grp.h>
#include <ntwin32/registry.h>
#include <ntwin32/system.h>
#include <sys/stat.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "registry_support.h"

namespace {

using namespace registry_test;
using test_support::Server;

constexpr uid_t kNobody = 65534;

std::string Text(const char *text) {
    return {text, std::strlen(text) + 1};
}

class ClientsTest : public BothWays {};
INSTANTIATE_TEST_SUITE_P(Registry, ClientsTest, BothWaysToRead(), WayName());

TEST_P(ClientsTest, AChildGoesOnByItself) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "FORK");
        SetText(key, "V", "parent");
        for (int round = 0; round < 3; ++round) {
            InChild([&] {
                EXPECT_EQ(ReadBytes(key, "V"), Text("parent"));
                SetText(key, "CHILD", "child");
                InChild([&] { EXPECT_EQ(ReadBytes(key, "CHILD"), Text("child")); });
                SetText(key, "CHILD", "again");
            });
            // Neither its connection nor its place among the readers went with the child.
            EXPECT_EQ(ReadBytes(key, "CHILD"), Text("again"));
            SetText(key, "V", "parent");
        }
    });
}

TEST_P(ClientsTest, AChildForkedInTheMiddleOfThreadsGoesOn) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "THREADS");
        SetText(key, "V", "text");
        std::atomic<bool> ending{false};
        std::atomic<int> bad{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 3; ++i)
            threads.emplace_back([&] {
                while (!ending)
                    bad += ReadBytes(key, "V") == Text("text") ? 0 : 1;
            });
        for (int round = 0; round < 10; ++round)
            InChild([&] { EXPECT_EQ(ReadBytes(key, "V"), Text("text")); });
        ending = true;
        for (std::thread &thread : threads)
            thread.join();
        EXPECT_EQ(bad, 0);
    });
}

// Each thread has its own connection and reader, and gives both back.
TEST_P(ClientsTest, ThreadsWriteAndReadAtOnce) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "PARALLEL");
        std::vector<std::thread> threads;
        std::atomic<int> good{0};
        for (int i = 0; i < 8; ++i)
            threads.emplace_back([&, name = "V" + std::to_string(i)] {
                for (int round = 0; round < 5; ++round) {
                    const std::string data = name + std::to_string(round);
                    good += SetBytes(key, name.c_str(), REG_SZ, data) == ERROR_SUCCESS &&
                                    ReadBytes(key, name.c_str()) == data
                                ? 1
                                : 0;
                }
            });
        for (std::thread &thread : threads)
            thread.join();
        EXPECT_EQ(good, 40);
        EXPECT_EQ(Values(key).size(), 8U);
        for (int i = 0; i < 200; ++i)
            std::thread([&] { EXPECT_TRUE(ReadBytes(key, "V0").has_value()); }).join();
    });
}

class AwayTest : public testing::TestWithParam<Way> {
  protected:
    Server server_{Server::Begin::kNotStarted};
};
INSTANTIATE_TEST_SUITE_P(Registry, AwayTest, BothWaysToRead(), WayName());

// The other end of a step: the parent acts on the server while the child that reads waits.
class Steps {
  public:
    Steps() {
        if (::pipe(to_child_) != 0 || ::pipe(to_parent_) != 0)
            throw std::runtime_error("no pipe");
    }
    Steps(const Steps &) = delete;
    Steps &operator=(const Steps &) = delete;
    ~Steps() {
        for (const int end : {to_child_[0], to_child_[1], to_parent_[0], to_parent_[1]})
            ::close(end);
    }
    // In the child: has the parent take its next step.
    void Next() const {
        char byte = 0;
        (void)!::write(to_parent_[1], &byte, 1);
        (void)!::read(to_child_[0], &byte, 1);
    }
    // In the parent: waits until the child asks; answers when the step is taken.
    void Wait() const {
        char byte = 0;
        (void)!::read(to_parent_[0], &byte, 1);
    }
    void Done() const {
        const char byte = 0;
        (void)!::write(to_child_[1], &byte, 1);
    }

  private:
    int to_child_[2] = {-1, -1};
    int to_parent_[2] = {-1, -1};
};

TEST_P(AwayTest, AClientFollowsTheServersLife) {
    const Steps steps;
    const pid_t client = ::fork();
    if (client == 0) {
        InWay(GetParam(), [&] {
            const bool maps = GetParam() == Way::kMaps;
            HKEY key = 0;
            // Before the server's first start.
            EXPECT_EQ(OpenResult(kRoot, "SOFTWARE"), ERROR_SERVICE_NOT_ACTIVE);
            EXPECT_EQ(RegCreateKey(kRoot, "AWAY", &key), ERROR_SERVICE_NOT_ACTIVE);
            EXPECT_EQ(KesRegQueryServer(nullptr), ERROR_INVALID_PARAMETER);
            KES_REG_SERVER_INFO info = {};
            EXPECT_EQ(KesRegQueryServer(&info), ERROR_SERVICE_NOT_ACTIVE);
            EXPECT_NE(CheckNTserverReady(), 0);
            steps.Next();  // started
            EXPECT_EQ(CheckNTserverReady(), 0);
            key = CreateKey(kRoot, "AWAY");
            SetText(key, "V", "kept");
            EXPECT_EQ(ReadBytes(key, "V"), Text("kept"));
            steps.Next();  // ended
            EXPECT_NE(CheckNTserverReady(), 0);
            EXPECT_EQ(ReadBytes(key, "V").has_value(), maps) << "what is mapped can be read";
            EXPECT_EQ(SetBytes(key, "V", REG_SZ, "x"), ERROR_SERVICE_NOT_ACTIVE);
            EXPECT_EQ(RegDeleteKey(kRoot, "AWAY"), ERROR_SERVICE_NOT_ACTIVE);
            const KES_REG_CHANGE change = {KES_REG_CREATE_KEY, 0, "X", nullptr, nullptr, 0, 0};
            DWORD failed = 99;
            EXPECT_EQ(KesRegApplyBatch(key, &change, 1, &failed), ERROR_SERVICE_NOT_ACTIVE);
            EXPECT_EQ(failed, 1U);
            EXPECT_EQ(KesRegVerify(nullptr, 0), ERROR_SERVICE_NOT_ACTIVE);
            steps.Next();  // started again
            EXPECT_EQ(ReadBytes(key, "V"), Text("kept")) << "handles outlive the server";
            SetText(key, "V", "changed");
            EXPECT_EQ(ReadBytes(key, "V"), Text("changed"));
            steps.Next();  // killed and started
            SetText(key, "V", "after the crash");
            EXPECT_EQ(ReadBytes(key, "V"), Text("after the crash"));
            steps.Next();  // started with another store
            // Seen with the next hello, which a mapping client says a few times a second.
            const auto deadline = std::chrono::steady_clock::now() + Server::kPatience;
            while (OpenResult(kRoot, "AWAY") == ERROR_SUCCESS &&
                   std::chrono::steady_clock::now() < deadline)
                ::usleep(10000);
            EXPECT_EQ(OpenResult(kRoot, "AWAY"), ERROR_FILE_NOT_FOUND);
            EXPECT_EQ(RegQueryValueEx(key, "V", nullptr, nullptr, nullptr, nullptr),
                      ERROR_INVALID_HANDLE);
        });
        ::_exit(HasFailure() ? 1 : 0);
    }
    steps.Wait();
    server_.Start();
    steps.Done();
    steps.Wait();
    EXPECT_EQ(server_.Stop(), 0);
    steps.Done();
    steps.Wait();
    server_.Start();
    steps.Done();
    steps.Wait();
    server_.Kill();
    server_.Start();
    steps.Done();
    steps.Wait();
    EXPECT_EQ(server_.Stop(), 0);
    std::filesystem::rename(server_.StoreFolder(), server_.StoreFolder() + ".old");
    server_.Start();
    steps.Done();
    int status = -1;
    ::waitpid(client, &status, 0);
    EXPECT_EQ(status, 0);
}

// A process that is not root: it reads by asking, if the socket lets it, and changes nothing.
class OtherUserTest : public testing::Test {
  protected:
    // In a child without rights.
    template <typename Body>
    void AsNobody(const Body &body) {
        const std::string above = std::filesystem::path(server_.RunFolder()).parent_path();
        ASSERT_EQ(::chmod(above.c_str(), 0755), 0);
        InChild([&] {
            ASSERT_EQ(::setgroups(0, nullptr), 0);
            ASSERT_EQ(::setresgid(kNobody, kNobody, kNobody), 0);
            ASSERT_EQ(::setresuid(kNobody, kNobody, kNobody), 0);
            body();
        });
    }
    void LetIn() { ASSERT_EQ(::chown(server_.SocketPath().c_str(), 0, kNobody), 0); }

    Server server_;
};

TEST_F(OtherUserTest, WithoutTheGroupNothingIsServed) {
    AsNobody([] {
        EXPECT_EQ(OpenResult(kRoot, "SOFTWARE"), ERROR_ACCESS_DENIED);
        EXPECT_EQ(CheckNTserverReady(), 0) << "it runs, whoever asks";
    });
}

TEST_F(OtherUserTest, TheGroupReadsAndDoesNotWrite) {
    // In a child, because what a parent has mapped its children see mapped.
    InChild([] {
        const HKEY key = CreateKey(kRoot, "RIGHTS");
        CreateKey(key, "SUB");
        SetText(key, "V", "text");
    });
    LetIn();
    AsNobody([] {
        const HKEY key = OpenKey(kRoot, "RIGHTS");
        EXPECT_EQ(ReadBytes(key, "V"), Text("text"));
        EXPECT_EQ(SubKeys(key), std::vector<std::string>{"SUB"});
        EXPECT_EQ(Values(key), std::vector<std::string>{"V"});
        EXPECT_FALSE(HasMappedStore());
        KES_REG_SERVER_INFO info = {};
        EXPECT_EQ(KesRegQueryServer(&info), ERROR_SUCCESS);
        HKEY made = 0;
        EXPECT_EQ(RegCreateKey(key, "NEW", &made), ERROR_ACCESS_DENIED);
        EXPECT_EQ(RegCreateKey(key, "SUB", &made), ERROR_SUCCESS)
            << "it exists: nothing is written";
        EXPECT_EQ(SetBytes(key, "V", REG_SZ, "x"), ERROR_ACCESS_DENIED);
        EXPECT_EQ(RegDeleteValue(key, "V"), ERROR_ACCESS_DENIED);
        EXPECT_EQ(RegDeleteKey(key, "SUB"), ERROR_ACCESS_DENIED);
        const KES_REG_CHANGE change = {KES_REG_DELETE_TREE, 0, "RIGHTS", nullptr, nullptr, 0, 0};
        EXPECT_EQ(KesRegApplyBatch(kRoot, &change, 1, nullptr), ERROR_ACCESS_DENIED);
    });
    const HKEY key = OpenKey(kRoot, "RIGHTS");
    EXPECT_EQ(ReadBytes(key, "V"), Text("text"));
    EXPECT_EQ(SubKeys(key), std::vector<std::string>{"SUB"});
}

TEST_F(OtherUserTest, WhatTheServerTellsOfItself) {
    KES_REG_SERVER_INFO info = {};
    ASSERT_EQ(KesRegQueryServer(&info), ERROR_SUCCESS);
    EXPECT_EQ(info.dwProcessId, static_cast<DWORD>(server_.Process()));
    EXPECT_EQ(info.szStore, server_.StoreFolder());
    EXPECT_EQ(info.qwStoreBytes, std::filesystem::file_size(server_.StoreFolder() + "/data.mdb"));
    EXPECT_STREQ(info.szVersion, VELOX_VERSION);
    EXPECT_GE(info.dwClients, 1U);
    EXPECT_EQ(info.qwFormat, 2U);
    CreateKey(kRoot, "ONE\\TWO");
    KES_REG_SERVER_INFO later = {};
    ASSERT_EQ(KesRegQueryServer(&later), ERROR_SUCCESS);
    EXPECT_EQ(later.qwKeys, info.qwKeys + 2);
    EXPECT_EQ(later.qwValues, info.qwValues);
}

// Damage that happens under a running server is found when it is asked to look, and clients are
// then served by the server alone.
TEST_F(OtherUserTest, VerificationFindsDamage) {
    // In a child, for the same reason.
    InChild([this] {
        const HKEY key = CreateKey(kRoot, "DAMAGED");
        SetText(key, "V", "a text that can be found in the file");
        char message[256] = "untouched";
        EXPECT_EQ(KesRegVerify(message, 0), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(KesRegVerify(message, sizeof message), ERROR_SUCCESS);
        EXPECT_STREQ(message, "untouched");
        const std::string file = server_.StoreFolder() + "/data.mdb";
        std::string bytes = test_support::ReadWholeFile(file);
        for (std::size_t at = bytes.find("can be found"); at != std::string::npos;
             at = bytes.find("can be found", at + 1)) {
            std::fstream damaged(file, std::ios::in | std::ios::out | std::ios::binary);
            damaged.seekp(static_cast<std::streamoff>(at));
            damaged.put('C');
        }
        EXPECT_EQ(KesRegVerify(message, sizeof message), ERROR_INVALID_DATA);
        EXPECT_GT(std::strlen(message), 10U);
        char cut[4] = "xxx";
        EXPECT_EQ(KesRegVerify(cut, sizeof cut), ERROR_INVALID_DATA);
        EXPECT_EQ(cut, std::string(message).substr(0, 3));
    });
    InChild([] {
        EXPECT_EQ(OpenResult(kRoot, "SOFTWARE"), ERROR_SUCCESS);
        EXPECT_FALSE(HasMappedStore());
    });
}

}  // namespace
