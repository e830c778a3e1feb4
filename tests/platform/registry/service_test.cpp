// KESntserver as a service: its folders, its socket, its only one, its signals, and what it tells
// the init system.
#include <grp.h>
#include <ntwin32/registry.h>
#include <regfile/regfile.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sysexits.h>

#include <cstring>

#include "registry_support.h"

namespace {

using namespace registry_test;
using test_support::EnvironmentVariable;
using test_support::ReadWholeFile;
using test_support::Server;
using test_support::TempFolder;

mode_t ModeOf(const std::string &path) {
    struct stat about = {};
    EXPECT_EQ(::lstat(path.c_str(), &about), 0) << path;
    return about.st_mode & 07777;
}

// Runs the server until it ends by itself; gives its exit status and what it said.
struct Ended {
    int status;
    std::string log;
};
Ended RunToEnd(const std::string &arguments = "") {
    const TempFolder folder;
    const std::string log = folder / "log";
    const std::string command = "exec timeout 60 " + test_support::ProductRoot() +
                                "/bin/KESntserver " + arguments + " >" + log + " 2>&1";
    const int status = std::system(command.c_str());  // NOLINT(bugprone-command-processor)
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadWholeFile(log)};
}

// A Unix socket of the test.
class Socket {
  public:
    Socket(int type, const std::string &path) : descriptor_(::socket(AF_UNIX, type, 0)) {
        struct sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        if (::bind(descriptor_, reinterpret_cast<struct sockaddr *>(&address), sizeof address) != 0)
            throw std::runtime_error("cannot bind " + path);
    }
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;
    ~Socket() { ::close(descriptor_); }
    int Get() const { return descriptor_; }

  private:
    int descriptor_;
};

TEST(ServiceTest, FoldersAndFilesHaveTheirModes) {
    const mode_t before = ::umask(0);
    const Server server;
    ::umask(before);
    EXPECT_EQ(ModeOf(server.StoreFolder()), 0700U);
    EXPECT_EQ(ModeOf(server.StateFolder()), 0755U);
    EXPECT_EQ(ModeOf(server.RunFolder()), 0755U);
    EXPECT_EQ(ModeOf(server.SocketPath()), 0660U);
    for (const char *file : {"/data.mdb", "/lock.mdb", "/server.lock", "/generation"})
        EXPECT_EQ(ModeOf(server.StoreFolder() + file), 0600U) << file;
    struct stat socket = {};
    ASSERT_EQ(::stat(server.SocketPath().c_str(), &socket), 0);
    EXPECT_EQ(socket.st_uid, 0U);
    const struct group *const kes = ::getgrnam("kes");
    EXPECT_EQ(socket.st_gid, kes == nullptr ? 0U : kes->gr_gid);
}

TEST(ServiceTest, AStoresFolderThatIsTooOpenIsClosed) {
    Server server(Server::Begin::kNotStarted);
    std::filesystem::create_directories(server.StoreFolder());
    ASSERT_EQ(::chmod(server.StoreFolder().c_str(), 0777), 0);
    const mode_t before = ::umask(0777);
    server.Start();
    ::umask(before);
    EXPECT_EQ(ModeOf(server.StoreFolder()), 0700U);
    EXPECT_EQ(ModeOf(server.RunFolder()), 0755U);
}

TEST(ServiceTest, AStoresFolderOfAnotherUserIsRefused) {
    const Server server(Server::Begin::kNotStarted);
    std::filesystem::create_directories(server.StoreFolder());
    ASSERT_EQ(::chown(server.StoreFolder().c_str(), 65534, 65534), 0);
    const Ended ended = RunToEnd();
    EXPECT_EQ(ended.status, EX_UNAVAILABLE);
    EXPECT_NE(ended.log.find(server.StoreFolder() + ": the folder belongs to another user"),
              std::string::npos)
        << ended.log;
}

TEST(ServiceTest, AnEmptyStoreGetsTheDefaultRegistry) {
    const Server server;
    std::vector<regfile::Change> changes;
    regfile::Problem problem;
    ASSERT_TRUE(regfile::Parse(ReadWholeFile(test_support::ProductRoot() + "/data/defaults.reg"),
                               &changes, &problem));
    std::size_t values = 0;
    for (const regfile::Change &change : changes) {
        const HKEY key = OpenKey(kRoot, *change.path);
        if (change.kind != regfile::Change::Kind::kSetValue)
            continue;
        const std::string data(change.data.begin(), change.data.end());
        EXPECT_EQ(ReadBytes(key, change.name.c_str()), data) << *change.path << " " << change.name;
        ++values;
    }
    KES_REG_SERVER_INFO info = {};
    EXPECT_EQ(KesRegQueryServer(&info), ERROR_SUCCESS);
    EXPECT_EQ(info.qwValues, values);
    EXPECT_GT(values, 30U);
    EXPECT_NE(server.Log().find("made from"), std::string::npos) << server.Log();
}

TEST(ServiceTest, AStoreThatIsThereIsNotFilledAgain) {
    Server server;
    ASSERT_EQ(RegDeleteKey(kRoot, "SOFTWARE\\XEV\\VLXService\\HEARTBEAT"), ERROR_SUCCESS);
    EXPECT_EQ(server.Stop(), 0);
    server.Start();
    EXPECT_EQ(OpenResult(kRoot, "SOFTWARE\\XEV\\VLXService\\HEARTBEAT"), ERROR_FILE_NOT_FOUND);
}

TEST(ServiceTest, AFirstStartThatWasCutShortIsDoneAgain) {
    Server server(Server::Begin::kNotStarted);
    std::filesystem::create_directories(server.StoreFolder() + "/creating");
    std::ofstream(server.StoreFolder() + "/creating/data.mdb") << "half a store";
    server.Start();
    EXPECT_EQ(OpenResult(kRoot, "SOFTWARE\\XEV"), ERROR_SUCCESS);
    EXPECT_FALSE(std::filesystem::exists(server.StoreFolder() + "/creating"));
}

// Defaults that cannot be read are named with file, line and column, and make no store.
TEST(ServiceTest, BadDefaultsAreNamed) {
    const TempFolder root;
    std::filesystem::create_directories(root / "data");
    const std::string defaults =
        root.Write("data/defaults.reg",
                   "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\A]\n?\n");
    const Server server(Server::Begin::kNotStarted);
    const std::string program = test_support::ProductRoot();
    std::filesystem::create_directory_symlink(program + "/bin", root / "bin");
    const EnvironmentVariable variable("KES_ROOT", root.Path());
    Ended ended = RunToEnd();
    EXPECT_EQ(ended.status, EX_UNAVAILABLE);
    EXPECT_NE(ended.log.find(defaults + ":4:1: "), std::string::npos) << ended.log;
    ::unlink(defaults.c_str());
    ended = RunToEnd();
    EXPECT_EQ(ended.status, EX_UNAVAILABLE);
    EXPECT_NE(ended.log.find(defaults + ": No such file"), std::string::npos) << ended.log;
    EXPECT_FALSE(std::filesystem::exists(server.StoreFolder() + "/data.mdb"));
}

TEST(ServiceTest, ASecondServerOnTheStoreIsRefused) {
    const Server server;
    const EnvironmentVariable elsewhere("KES_RUN", server.StateFolder() + "/run2");
    const Ended ended = RunToEnd();
    EXPECT_EQ(ended.status, EX_UNAVAILABLE);
    EXPECT_NE(ended.log.find("another KESntserver keeps this store"), std::string::npos)
        << ended.log;
}

TEST(ServiceTest, ASecondServerOnTheSocketIsRefused) {
    const Server server;
    {
        const EnvironmentVariable elsewhere("KES_STATE", server.StateFolder() + "/second");
        const Ended ended = RunToEnd();
        EXPECT_EQ(ended.status, EX_UNAVAILABLE);
        EXPECT_NE(ended.log.find("another KESntserver serves in this folder"), std::string::npos)
            << ended.log;
    }
    EXPECT_EQ(OpenResult(kRoot, "SOFTWARE"), ERROR_SUCCESS);
    EXPECT_EQ(CheckNTserverReady(), 0) << "its socket is still there";
}

TEST(ServiceTest, AStaleSocketIsReplaced) {
    Server server;
    server.Kill();
    ASSERT_TRUE(std::filesystem::exists(server.SocketPath()));
    server.Start();
    EXPECT_NE(server.Log().find("removed a socket that nobody served"), std::string::npos);
    EXPECT_EQ(ModeOf(server.SocketPath()), 0660U);
}

TEST(ServiceTest, WhatStandsInTheSocketsPlaceIsLeft) {
    const Server server(Server::Begin::kNotStarted);
    std::filesystem::create_directories(server.RunFolder());
    {
        const Socket other(SOCK_STREAM, server.SocketPath());
        ASSERT_EQ(::listen(other.Get(), 1), 0);
        const Ended ended = RunToEnd();
        EXPECT_EQ(ended.status, EX_UNAVAILABLE);
        EXPECT_NE(ended.log.find("another server answers on this socket"), std::string::npos)
            << ended.log;
        EXPECT_TRUE(std::filesystem::is_socket(server.SocketPath()));
    }
    ::unlink(server.SocketPath().c_str());
    std::ofstream(server.SocketPath()) << "a file";
    const Ended ended = RunToEnd();
    EXPECT_EQ(ended.status, EX_UNAVAILABLE);
    EXPECT_NE(ended.log.find("something that is no socket"), std::string::npos) << ended.log;
    EXPECT_EQ(ReadWholeFile(server.SocketPath()), "a file");
}

TEST(ServiceTest, PathsThatAreNotAbsoluteAreRefused) {
    const Server server(Server::Begin::kNotStarted);
    for (const char *name : {"KES_STATE", "KES_RUN"}) {
        const EnvironmentVariable relative(name, "relative");
        const Ended ended = RunToEnd();
        EXPECT_EQ(ended.status, EX_UNAVAILABLE);
        EXPECT_NE(ended.log.find(std::string(name) + " must hold an absolute path"),
                  std::string::npos)
            << ended.log;
    }
}

TEST(ServiceTest, Options) {
    EXPECT_EQ(RunToEnd("--version").log, "KESntserver " VELOX_VERSION "\n");
    const Ended help = RunToEnd("--help");
    EXPECT_EQ(help.status, EX_OK);
    EXPECT_EQ(help.log.rfind("Usage: KESntserver", 0), 0U);
    EXPECT_EQ(RunToEnd("--unknown").status, EX_USAGE);
    EXPECT_EQ(RunToEnd("operand").status, EX_USAGE);
}

// Clients that are writing at that moment lose nothing that they were promised.
TEST(ServiceTest, EndsCleanlyOnSigterm) {
    Server server;
    const HKEY key = CreateKey(kRoot, "ENDING");
    int promises[2];
    ASSERT_EQ(::pipe(promises), 0);
    const pid_t writer = ::fork();
    if (writer == 0) {
        for (DWORD number = 1;; ++number) {
            const std::string_view data(reinterpret_cast<const char *>(&number), sizeof number);
            if (SetBytes(key, "V", REG_DWORD, data) != ERROR_SUCCESS)
                ::_exit(0);
            (void)!::write(promises[1], &number, sizeof number);
        }
    }
    DWORD promised = 0;
    for (int i = 0; i < 5; ++i)
        ASSERT_EQ(::read(promises[0], &promised, sizeof promised), ssize_t{sizeof promised});
    EXPECT_EQ(server.Stop(), 0) << server.Log();
    EXPECT_FALSE(std::filesystem::exists(server.SocketPath()));
    ::waitpid(writer, nullptr, 0);
    ::close(promises[1]);
    while (::read(promises[0], &promised, sizeof promised) > 0) {
    }
    ::close(promises[0]);
    server.Start();
    const auto stored = ReadBytes(key, "V");
    ASSERT_TRUE(stored && stored->size() == sizeof(DWORD));
    DWORD number = 0;
    std::memcpy(&number, stored->data(), sizeof number);
    EXPECT_GE(number, promised);
    EXPECT_LE(number, promised + 1);
}

// The datagrams of the sd_notify protocol.
class NotifyTest : public testing::Test {
  protected:
    // The next datagram; empty when none comes.
    std::string Receive() {
        char bytes[4096];
        struct timeval patience = {60, 0};
        ::setsockopt(socket_.Get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        const ssize_t size = ::recv(socket_.Get(), bytes, sizeof bytes, 0);
        return size > 0 ? std::string(bytes, static_cast<std::size_t>(size)) : std::string();
    }
    // The next one that is no sign of life during the verification.
    std::string ReceiveNews() {
        std::string datagram = Receive();
        while (datagram.rfind("EXTEND_TIMEOUT_USEC=", 0) == 0)
            datagram = Receive();
        return datagram;
    }

    Server server_{Server::Begin::kNotStarted};
    TempFolder folder_;
    EnvironmentVariable variable_{"NOTIFY_SOCKET", folder_ / "notify"};
    Socket socket_{SOCK_DGRAM, folder_ / "notify"};
};

TEST_F(NotifyTest, ReadinessIsToldOnceItServes) {
    server_.Spawn();
    EXPECT_EQ(ReceiveNews(), "STATUS=Verifying the store");
    EXPECT_EQ(ReceiveNews(), "READY=1\nSTATUS=Serving " + server_.StoreFolder());
    EXPECT_EQ(CheckNTserverReady(), 0) << "ready means ready";
    EXPECT_EQ(server_.Stop(), 0);
    EXPECT_EQ(ReceiveNews(), "STOPPING=1\nSTATUS=Ending") << "no watchdog was asked for";
}

TEST_F(NotifyTest, TheWatchdogIsFed) {
    const EnvironmentVariable interval("WATCHDOG_USEC", "300000");
    server_.Spawn();
    while (ReceiveNews().rfind("READY=1", 0) != 0) {
    }
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(Receive(), "WATCHDOG=1");
    EXPECT_EQ(server_.Stop(), 0);
}

TEST_F(NotifyTest, AWatchdogOfAnotherProcessIsNotFed) {
    const EnvironmentVariable interval("WATCHDOG_USEC", "300000");
    const EnvironmentVariable process("WATCHDOG_PID", "1");
    server_.Start();
    ::usleep(400000);  // longer than the interval
    EXPECT_EQ(server_.Stop(), 0);
    std::string all;
    do
        all = ReceiveNews();
    while (!all.empty() && all != "WATCHDOG=1" && all.rfind("STOPPING", 0) != 0);
    EXPECT_EQ(all, "STOPPING=1\nSTATUS=Ending");
}

TEST_F(NotifyTest, ARefusalIsTold) {
    std::filesystem::create_directories(server_.StoreFolder());
    std::ofstream(server_.StoreFolder() + "/data.mdb") << "no store";
    EXPECT_EQ(RunToEnd().status, EX_UNAVAILABLE);
    EXPECT_EQ(ReceiveNews(), "STATUS=Verifying the store");
    EXPECT_EQ(ReceiveNews().rfind("STATUS=" + server_.StoreFolder() + "/data.mdb: ", 0), 0U);
}

}  // namespace
