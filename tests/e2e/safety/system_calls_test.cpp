// A warm read in a mapping process makes no system call: each one would end in a trap that is
// counted.
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <ntwin32/registry.h>
#include <support/server.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>

namespace {

constexpr int kReads = 1000;
constexpr int kManyCalls = 100;  // exit status for "as many or more"

volatile std::sig_atomic_t traps = 0;

void CountTrap(int) {
    traps = traps + 1;
}

// From here on every system call but those that end the process or a signal handler is a trap.
bool TrapSystemCalls() {
    struct sigaction action = {};
    action.sa_handler = CountTrap;
    sigaction(SIGSYS, &action, nullptr);
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 2, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_rt_sigreturn, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program = {sizeof filter / sizeof filter[0], filter};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

// How many system calls `body` makes, in a child process; -1 when they could not be counted.
template <typename Body>
int CountSystemCalls(const Body &body) {
    const pid_t child = ::fork();
    if (child == 0) {
        body();  // warm
        if (!TrapSystemCalls())
            ::_exit(255);
        body();
        // Not _exit: before that the address sanitizer makes a system call of its own.
        ::syscall(SYS_exit_group, traps < kManyCalls ? static_cast<int>(traps) : kManyCalls);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) != 255 ? WEXITSTATUS(status) : -1;
}

class SystemCallsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        HKEY key = 0;
        ASSERT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, kPath, &key), ERROR_SUCCESS);
        ASSERT_EQ(RegSetValueEx(key, "VALUE", 0, REG_SZ, reinterpret_cast<const BYTE *>("text"), 5),
                  ERROR_SUCCESS);
    }

    static constexpr char kPath[] = "A\\B\\C\\D\\E";
    test_support::Server server_;
};

TEST_F(SystemCallsTest, ReadingAValueMakesNone) {
    EXPECT_EQ(CountSystemCalls([] {
                  HKEY key = 0;
                  (void)RegOpenKeyEx(HKEY_LOCAL_MACHINE, kPath, 0, KEY_READ, &key);
                  for (int read = 0; read < kReads; ++read) {
                      BYTE data[16];
                      DWORD size = sizeof data;
                      (void)RegQueryValueEx(key, "VALUE", nullptr, nullptr, data, &size);
                  }
                  (void)RegCloseKey(key);
              }),
              0);
}

TEST_F(SystemCallsTest, ListingMakesNone) {
    EXPECT_EQ(CountSystemCalls([] {
                  char name[256];
                  DWORD size = sizeof name;
                  for (DWORD index = 0;
                       RegEnumKeyEx(HKEY_LOCAL_MACHINE, index, name, &size, nullptr, nullptr,
                                    nullptr, nullptr) == ERROR_SUCCESS;
                       ++index)
                      size = sizeof name;
              }),
              0);
}

// The counter itself counts: a write goes to the server.
TEST_F(SystemCallsTest, WritingMakesSome) {
    EXPECT_GT(CountSystemCalls([] {
                  HKEY key = 0;
                  (void)RegOpenKeyEx(HKEY_LOCAL_MACHINE, kPath, 0, KEY_READ, &key);
                  (void)RegSetValueEx(key, "VALUE", 0, REG_SZ,
                                      reinterpret_cast<const BYTE *>("text"), 5);
              }),
              0);
}

}  // namespace
