// Clients that keep no rule: each loses its connection, and the others are served meanwhile.
#include <ntserver/channel.h>
#include <ntserver/wire.h>
#include <ntwin32/registry.h>
#include <poll.h>
#include <support/title.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <utility>

#include "ntserver/messages.h"
#include "registry_support.h"

namespace {

using namespace registry_test;
using ntserver::Operation;
using test_support::Server;

template <typename Message>
std::string Frame(Operation operation, const Message &message) {
    std::string bytes;
    ntserver::FrameBuilder frame(&bytes, operation, 1);
    frame.Payload().PutMessage(message);
    frame.Finish();
    return bytes;
}
std::string RawFrame(Operation operation, const std::string &payload) {
    std::string bytes;
    ntserver::FrameBuilder frame(&bytes, operation, 1);
    frame.Finish();
    bytes += payload;
    const auto size = static_cast<std::uint32_t>(payload.size());
    bytes.replace(0, sizeof size, reinterpret_cast<const char *>(&size), sizeof size);
    return bytes;
}
std::string Hello(std::uint32_t magic = ntserver::kMagic,
                  std::uint32_t version = ntserver::kProtocolVersion) {
    return Frame(Operation::kHello, ntserver::HelloRequest{magic, version});
}
// A header alone, which claims so many bytes.
std::string Claim(std::uint32_t size) {
    std::string bytes(ntserver::kHeaderSize, '\0');
    bytes.replace(0, sizeof size, reinterpret_cast<const char *>(&size), sizeof size);
    bytes[sizeof size] = static_cast<char>(Operation::kSetValue);
    return bytes;
}

// A connection that sends what it likes.
class RawClient {
  public:
    explicit RawClient(const Server &server)
        : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        struct sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, server.SocketPath().c_str(), sizeof address.sun_path - 1);
        if (::connect(socket_, reinterpret_cast<struct sockaddr *>(&address), sizeof address) != 0)
            throw std::runtime_error("cannot connect");
    }
    RawClient(RawClient &&other) noexcept : socket_(std::exchange(other.socket_, -1)) {}
    RawClient &operator=(RawClient &&) = delete;
    ~RawClient() { ::close(socket_); }

    // Sends as much as the server takes now; false when nothing more goes.
    bool Send(const std::string &bytes) const {
        return ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT) ==
               static_cast<ssize_t>(bytes.size());
    }
    // Everything that comes until the server ends the connection, or nothing more in a minute.
    bool IsEnded(std::string *received = nullptr) const {
        char bytes[4096];
        struct timeval patience = {60, 0};
        ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        ssize_t got = 0;
        while ((got = ::recv(socket_, bytes, sizeof bytes, 0)) > 0)
            if (received != nullptr)
                received->append(bytes, static_cast<std::size_t>(got));
        return got == 0 || errno == ECONNRESET || errno == EPIPE;
    }
    // Without taking what came: whether the other end is gone.
    bool HasHungUp() const {
        struct pollfd state = {socket_, 0, 0};
        return ::poll(&state, 1, 0) == 1 && (state.revents & (POLLHUP | POLLERR)) != 0;
    }

  private:
    int socket_;
};

void ExpectServed() {
    static DWORD number = 0;
    ++number;
    EXPECT_EQ(CheckNTserverReady(), 0);
    const HKEY key = CreateKey(kRoot, "SERVED");
    const std::string_view data(reinterpret_cast<const char *>(&number), sizeof number);
    EXPECT_EQ(SetBytes(key, "V", REG_DWORD, data), ERROR_SUCCESS);
    EXPECT_EQ(ReadBytes(key, "V"), data);
}

// What loses the connection at once.
struct BadRow {
    const char *title;
    std::string bytes;
};
class MalformedTest : public testing::TestWithParam<BadRow> {};

ntserver::BatchChange Change(std::uint8_t operation, bool same_path, std::string_view name = {}) {
    ntserver::BatchChange change;
    change.operation = operation;
    change.same_path = same_path;
    change.path = same_path ? "" : "BAD";
    change.name = name;
    return change;
}
std::string Batch(const ntserver::BatchChange &change) {
    return Frame(Operation::kBatchChanges, change);
}
std::string Commit(std::uint32_t changes) {
    return Frame(Operation::kBatchCommit, ntserver::BatchCommitRequest{kRoot, changes});
}
const ntserver::PathRequest kOpenSoftware = {kRoot, "SOFTWARE"};

INSTANTIATE_TEST_SUITE_P(
    Registry, MalformedTest,
    testing::Values(
        BadRow{"NoHello", Frame(Operation::kOpenKey, kOpenSoftware)},
        BadRow{"WrongMagic", Hello(0x12345678)},
        BadRow{"HelloTooShort", RawFrame(Operation::kHello, "KESR")},
        BadRow{"HelloTooLong", RawFrame(Operation::kHello, std::string(9, 'x'))},
        BadRow{"TextProtocol", "GET / HTTP/1.0\r\n\r\n"}, BadRow{"SecondHello", Hello() + Hello()},
        BadRow{"OperationZero", Hello() + RawFrame(Operation{0}, "")},
        BadRow{"UnknownOperation", Hello() + RawFrame(Operation{15}, "")},
        BadRow{"LargestOperation", Hello() + RawFrame(Operation{0xFFFF}, "")},
        BadRow{"TooLarge", Hello() + Claim(ntserver::kMaxPayload + 1)},
        BadRow{"MuchTooLarge", Hello() + Claim(0xFFFFFFFFU)},
        BadRow{"EmptyPayload", Hello() + RawFrame(Operation::kOpenKey, "")},
        BadRow{"TextBeyondThePayload",
               Hello() + RawFrame(Operation::kOpenKey, std::string(8, '\0') + "\xFF\xFF\xFF\xFFx")},
        BadRow{"BytesBehindTheMessage", Hello() + RawFrame(Operation::kQueryServer, "x")},
        BadRow{"TruthOfTwo",
               Hello() + RawFrame(Operation::kQueryKey, std::string(8, '\0') + "\x02")},
        BadRow{"BatchOfNoOperation", Hello() + Batch(Change(0, false))},
        BadRow{"BatchOfUnknownOperation", Hello() + Batch(Change(5, false))},
        BadRow{"BatchBeginsWithTheSamePath", Hello() + Batch(Change(1, true))},
        BadRow{"BatchCreatesWithAName", Hello() + Batch(Change(1, false, "NAME"))},
        BadRow{"BatchIsCutShort",
               Hello() + RawFrame(Operation::kBatchChanges, std::string("\x01\x00", 2))},
        BadRow{"BatchOfAnotherCount", Hello() + Batch(Change(1, false)) + Commit(2)},
        BadRow{"CommitOfNothingSent", Hello() + Commit(1)},
        BadRow{"AnotherRequestInsideABatch",
               Hello() + Batch(Change(1, false)) + Frame(Operation::kOpenKey, kOpenSoftware)}),
    test_support::Title());

TEST_P(MalformedTest, LosesTheConnectionAlone) {
    const Server server;
    const RawClient before(server);
    EXPECT_TRUE(before.Send(Hello()));
    const RawClient client(server);
    EXPECT_TRUE(client.Send(GetParam().bytes));
    EXPECT_TRUE(client.IsEnded());
    ExpectServed();
    EXPECT_FALSE(before.HasHungUp()) << "another client lost its connection";
    EXPECT_EQ(OpenResult(kRoot, "BAD"), ERROR_FILE_NOT_FOUND) << "nothing of a bad batch is made";
}

TEST(BadClientsTest, AnUnknownVersionIsAnswered) {
    const Server server;
    const RawClient client(server);
    EXPECT_TRUE(client.Send(Hello(ntserver::kMagic, 2)));
    std::string answer;
    EXPECT_TRUE(client.IsEnded(&answer));
    ASSERT_EQ(answer.size(), ntserver::kHeaderSize + 4);
    EXPECT_EQ(answer[ntserver::kHeaderSize], static_cast<char>(ERROR_INVALID_PARAMETER));
    EXPECT_NE(server.Log().find("version 2"), std::string::npos);
}

// Names that no function of the library can send: they are refused and leave the store sound.
TEST(BadClientsTest, NamesWithAZeroByteAreRefused) {
    Server server;
    const std::string_view zero("a\0b", 3);
    ntserver::BatchChange change = Change(KES_REG_SET_VALUE, false, zero);
    change.path = "BATCH";
    const std::string requests[] = {
        Frame(Operation::kSetValue, ntserver::SetValueRequest{kRoot, zero, REG_SZ, "x"}),
        Frame(Operation::kCreateKey, ntserver::CreateKeyRequest{kRoot, zero, ""}),
        Frame(Operation::kCreateKey, ntserver::CreateKeyRequest{kRoot, "CLASS", zero}),
        Batch(change) + Commit(1)};
    for (const std::string &request : requests) {
        const RawClient client(server);
        std::string answers;
        EXPECT_TRUE(client.Send(Hello() + request + Claim(0xFFFFFFFFU)));
        EXPECT_TRUE(client.IsEnded(&answers));
        const std::string last = answers.substr(answers.find(server.StoreFolder()));
        EXPECT_EQ(last.substr(server.StoreFolder().size() + ntserver::kHeaderSize, 1),
                  std::string(1, static_cast<char>(ERROR_INVALID_PARAMETER)));
    }
    EXPECT_EQ(OpenResult(kRoot, "CLASS"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(OpenResult(kRoot, "BATCH"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(KesRegVerify(nullptr, 0), ERROR_SUCCESS);
    EXPECT_EQ(server.Stop(), 0);
    server.Start();
    ExpectServed();
}

// Frames that arrive byte by byte are frames, as long as they arrive in time.
TEST(BadClientsTest, SmallPiecesAreTaken) {
    const Server server;
    const RawClient client(server);
    std::string bytes = Hello() + Frame(Operation::kOpenKey, kOpenSoftware) + Claim(0xFFFFFFFFU);
    for (const char byte : bytes) {
        EXPECT_TRUE(client.Send(std::string(1, byte)));
        ::usleep(100);
    }
    std::string answers;
    EXPECT_TRUE(client.IsEnded(&answers));
    EXPECT_NE(answers.find(server.StoreFolder()), std::string::npos) << "the hello's answer";
    EXPECT_EQ(answers.substr(answers.size() - 12, 4), std::string(4, '\0')) << "the key's answer";
}

// Those who only waste time, all at once.
TEST(BadClientsTest, TheSlowLoseTheirConnectionsInTheEnd) {
    const Server server;
    const RawClient silent(server);
    const RawClient half_hello(server);
    const RawClient half_frame(server);
    const RawClient deaf(server);
    const RawClient dripping(server);
    EXPECT_TRUE(half_hello.Send(Hello().substr(0, 5)));
    EXPECT_TRUE(half_frame.Send(Hello() + Claim(1000) + "less"));
    EXPECT_TRUE(deaf.Send(Hello()));
    const std::string request = Frame(Operation::kOpenKey, kOpenSoftware);
    while (deaf.Send(request)) {
    }
    EXPECT_TRUE(dripping.Send(Hello() + Claim(100000)));
    const auto deadline = std::chrono::steady_clock::now() + Server::kPatience;
    const auto all_ended = [&] {
        return silent.HasHungUp() && half_hello.HasHungUp() && half_frame.HasHungUp() &&
               deaf.HasHungUp() && dripping.HasHungUp();
    };
    while (!all_ended() && std::chrono::steady_clock::now() < deadline) {
        (void)dripping.Send("x");
        (void)deaf.Send(request);
        ExpectServed();
        ::usleep(50000);
    }
    EXPECT_TRUE(silent.HasHungUp());
    EXPECT_TRUE(half_hello.HasHungUp());
    EXPECT_TRUE(half_frame.HasHungUp());
    EXPECT_TRUE(deaf.HasHungUp());
    EXPECT_TRUE(dripping.HasHungUp());
}

// Runs a body in a child with so few descriptors, which the server that it starts has, too: it
// takes 32 clients then.
template <typename Body>
void WithFewDescriptors(const Body &body) {
    InChild([&] {
        const struct rlimit low = {64, 64};
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &low), 0);
        body();
    });
}

void ExpectServedBeside(const Server &server, int silent_clients) {
    ExpectServed();
    std::vector<RawClient> silent;
    for (int i = 0; i < silent_clients; ++i) {
        silent.emplace_back(server);
        if (i % 10 == 0)
            ExpectServed();
    }
    ExpectServed();
    for (const RawClient &client : silent)
        EXPECT_TRUE(client.IsEnded());
    ExpectServed();
}

TEST(BadClientsTest, MoreClientsThanTheServerTakes) {
    WithFewDescriptors([] {
        const Server server;
        ExpectServedBeside(server, 45);
    });
}

// Fewer descriptors than the server counted on when it started.
TEST(BadClientsTest, NoMoreDescriptors) {
    const Server server;
    const struct rlimit low = {30, 30};
    ASSERT_EQ(::prlimit(server.Process(), RLIMIT_NOFILE, &low, nullptr), 0);
    ExpectServedBeside(server, 100);
}

// A client that rests loses its place when others need it, and notices nothing.
TEST(BadClientsTest, ARestingClientComesBack) {
    WithFewDescriptors([] {
        const Server server;
        const HKEY key = CreateKey(kRoot, "RESTING");
        std::vector<RawClient> crowd;
        for (int i = 0; i < 45; ++i) {
            crowd.emplace_back(server);
            (void)crowd.back().Send(Hello());  // in vain, if its place was taken, too
        }
        SetText(key, "V", "written on a new connection");
        EXPECT_TRUE(ReadBytes(key, "V").has_value());
    });
}

}  // namespace
