// A full disk: the writer gets an error, nothing that is stored is lost, and writing works again
// when there is room, without a restart. On a small file system of its own, in a private mount
// namespace.
#include <sched.h>
#include <support/server.h>
#include <sys/mount.h>

#include "load.h"

namespace {

using test_support::Server;

constexpr char kKey[] = "FULL";
constexpr std::size_t kDataSize = 8192;

void RunShell(const std::string &command) {
    ASSERT_EQ(std::system(command.c_str()), 0) << command;  // NOLINT(bugprone-command-processor)
}

class FullDiskTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(::unshare(CLONE_NEWNS), 0) << "root is needed";
        ASSERT_EQ(::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr), 0);
        const std::string image = folder_ / "disk.img";
        RunShell("truncate -s 16M " + image + " && mkfs.ext4 -q -m 0 " + image);
        std::filesystem::create_directories(server_.StateFolder());
        RunShell("mount -o loop " + image + " " + server_.StateFolder());
        RunShell("head -c 4M /dev/zero > " + Filler());
        server_.Start();
    }
    void TearDown() override {
        server_.Kill();
        ::umount2(server_.StateFolder().c_str(), MNT_DETACH);
    }

    std::string Filler() const { return server_.StateFolder() + "/filler"; }

    static LONG Store(int number) {
        HKEY key = 0;
        const LONG created = RegCreateKey(HKEY_LOCAL_MACHINE, kKey, &key);
        if (created != ERROR_SUCCESS)
            return created;
        const std::vector<BYTE> data(kDataSize, static_cast<BYTE>(number));
        return RegSetValueEx(key, std::to_string(number).c_str(), 0, REG_BINARY, data.data(),
                             static_cast<DWORD>(data.size()));
    }
    static bool IsStored(int number) {
        HKEY key = 0;
        std::vector<BYTE> data(kDataSize);
        auto size = static_cast<DWORD>(data.size());
        return RegOpenKeyEx(HKEY_LOCAL_MACHINE, kKey, 0, KEY_READ, &key) == ERROR_SUCCESS &&
               RegQueryValueEx(key, std::to_string(number).c_str(), nullptr, nullptr, data.data(),
                               &size) == ERROR_SUCCESS &&
               data == std::vector<BYTE>(kDataSize, static_cast<BYTE>(number));
    }
    static void ExpectAllStored(int count) {
        for (int number = 0; number < count; ++number)
            ASSERT_TRUE(IsStored(number)) << number;
    }

    test_support::TempFolder folder_;
    Server server_{Server::Begin::kNotStarted};
};

TEST_F(FullDiskTest, RefusesTheWriterLosesNothingAndGoesOn) {
    constexpr int kMost = 4000;  // more than the disk holds
    LONG error = ERROR_SUCCESS;
    int stored = 0;
    while (stored < kMost && (error = Store(stored)) == ERROR_SUCCESS)
        ++stored;
    EXPECT_EQ(error, ERROR_DISK_FULL);
    EXPECT_GT(stored, 100);
    EXPECT_FALSE(IsStored(stored));
    ExpectAllStored(stored);
    EXPECT_NE(Store(stored), ERROR_SUCCESS) << "there is still no room";

    ASSERT_EQ(::unlink(Filler().c_str()), 0);
    EXPECT_EQ(Store(stored), ERROR_SUCCESS) << server_.Log();
    ExpectAllStored(stored + 1);
    EXPECT_EQ(KesRegVerify(nullptr, 0), ERROR_SUCCESS);

    EXPECT_EQ(server_.Stop(), 0);
    server_.Start();
    ExpectAllStored(stored + 1);
}

}  // namespace
