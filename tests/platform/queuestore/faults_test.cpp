// Each system call of the queue fails in turn: an alert that was accepted is whole in the folder,
// one that was refused has left nothing there.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <queuestore/queue.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <filesystem>

#include "samples.h"
#include "support/temp_folder.h"

namespace {

// What happens to the calls of the queue: the one with this number fails, those after it do not.
struct Plan {
    bool active = false;
    int failing = 0;
    int calls = 0;
    int error = EIO;
    std::vector<std::string> names;
    bool short_writes = false;  // each write takes one byte, after an interruption
    bool interrupted = false;
};
Plan plan;

bool Fails(const char *name) {
    if (!plan.active) {
        return false;
    }
    plan.names.emplace_back(name);
    if (++plan.calls != plan.failing) {
        return false;
    }
    errno = plan.error;
    return true;
}

}  // namespace

extern "C" {
int __real_mkdir(const char *path, mode_t mode);
int __real_open(const char *path, int flags, ...);
int __real_openat(int folder, const char *path, int flags, ...);
int __real_fstat(int file, struct stat *status);
ssize_t __real_read(int file, void *buffer, size_t size);
ssize_t __real_write(int file, const void *buffer, size_t size);
int __real_fsync(int file);
int __real_renameat(int from_folder, const char *from, int to_folder, const char *to);
int __real_unlinkat(int folder, const char *path, int flags);
int __real_flock(int file, int operation);

int __wrap_mkdir(const char *path, mode_t mode) {
    return Fails("mkdir") ? -1 : __real_mkdir(path, mode);
}
int __wrap_open(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const auto mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return Fails("open") ? -1 : __real_open(path, flags, mode);
}
int __wrap_openat(int folder, const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const auto mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return Fails("openat") ? -1 : __real_openat(folder, path, flags, mode);
}
int __wrap_fstat(int file, struct stat *status) {
    return Fails("fstat") ? -1 : __real_fstat(file, status);
}
ssize_t __wrap_read(int file, void *buffer, size_t size) {
    return Fails("read") ? -1 : __real_read(file, buffer, size);
}
ssize_t __wrap_write(int file, const void *buffer, size_t size) {
    if (plan.short_writes) {
        plan.interrupted = !plan.interrupted;
        if (plan.interrupted) {
            errno = EINTR;
            return -1;
        }
        size = 1;
    }
    return Fails("write") ? -1 : __real_write(file, buffer, size);
}
int __wrap_fsync(int file) {
    return Fails("fsync") ? -1 : __real_fsync(file);
}
int __wrap_renameat(int from_folder, const char *from, int to_folder, const char *to) {
    return Fails("renameat") ? -1 : __real_renameat(from_folder, from, to_folder, to);
}
int __wrap_unlinkat(int folder, const char *path, int flags) {
    return Fails("unlinkat") ? -1 : __real_unlinkat(folder, path, flags);
}
int __wrap_flock(int file, int operation) {
    return Fails("flock") ? -1 : __real_flock(file, operation);
}
}

namespace {

using queuestore::Entry;
using queuestore::Queue;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class QueueFaultsTest : public ::testing::Test {
  protected:
    void TearDown() override { plan = {}; }

    // Runs the work with its nth call failing; gives what it gave.
    template <typename Work>
    static bool RunFailing(int nth, Work work) {
        plan = {};
        plan.active = true;
        plan.failing = nth;
        const bool result = work();
        plan.active = false;
        return result;
    }
    std::string Folder() const { return temp_ / "queue"; }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        if (std::filesystem::exists(Folder())) {
            for (const auto &file : std::filesystem::directory_iterator(Folder())) {
                names.push_back(file.path().filename());
            }
        }
        return names;
    }
    static Entry Loaded(const std::string &folder, const std::string &id) {
        Queue queue;
        Entry entry;
        std::string problem;
        EXPECT_TRUE(queue.Open(folder, false, &problem) && queue.Load(id, &entry, &problem))
            << problem;
        return entry;
    }

    test_support::TempFolder temp_;
};

TEST_F(QueueFaultsTest, AddingGivesAWholeAlertOrNone) {
    const auto add = [this](const Entry &entry, std::string *problem) {
        Queue queue;
        return queue.Open(Folder(), true, problem) && queue.Add(entry, problem);
    };
    int calls = 0;
    for (int nth = 0; nth == 0 || nth <= calls; ++nth) {
        std::filesystem::remove_all(Folder());
        const Entry entry = samples::Alert();
        std::string problem;
        const bool added = RunFailing(nth, [&] { return add(entry, &problem); });
        calls = nth == 0 ? plan.calls : calls;
        SCOPED_TRACE(nth == 0 ? "no fault" : plan.names[static_cast<std::size_t>(nth) - 1]);
        EXPECT_EQ(added, nth == 0);
        if (added) {
            EXPECT_EQ(Loaded(Folder(), entry.id), entry);
        } else {
            EXPECT_THAT(Names(), ElementsAre());
            EXPECT_THAT(problem, HasSubstr(Folder()));
            EXPECT_THAT(problem, HasSubstr("Input/output error"));
        }
    }
    EXPECT_GE(calls, 9);
}

TEST_F(QueueFaultsTest, ReplacingLeavesTheOldOrTheNewState) {
    Queue queue;
    std::string problem;
    Entry entry = samples::Alert();
    ASSERT_TRUE(queue.Open(Folder(), true, &problem) && queue.Add(entry, &problem));
    int calls = 0;
    for (int nth = 0; nth == 0 || nth <= calls; ++nth) {
        const Entry before = entry;
        ++entry.delivery.tries;
        const bool replaced = RunFailing(nth, [&] { return queue.Replace(entry, &problem); });
        calls = nth == 0 ? plan.calls : calls;
        SCOPED_TRACE(nth == 0 ? "no fault" : plan.names[static_cast<std::size_t>(nth) - 1]);
        const Entry now = Loaded(Folder(), entry.id);
        EXPECT_TRUE(replaced ? now == entry : now == before || now == entry);
        EXPECT_THAT(Names(), ElementsAre(entry.id + ".json"));
        entry = now;
    }
    EXPECT_GE(calls, 5);
}

TEST_F(QueueFaultsTest, ReadingRemovingAndLockingReportWhatFailed) {
    Queue queue;
    std::string problem;
    const Entry entry = samples::Alert();
    ASSERT_TRUE(queue.Open(Folder(), true, &problem) && queue.Add(entry, &problem));
    Entry loaded;
    for (int nth = 1; nth <= 3; ++nth) {  // openat, fstat, read
        EXPECT_FALSE(RunFailing(nth, [&] { return queue.Load(entry.id, &loaded, &problem); }));
        EXPECT_EQ(problem, Folder() + "/" + entry.id + ".json: Input/output error");
    }
    std::vector<std::string> ids;
    EXPECT_FALSE(RunFailing(1, [&] { return queue.List(&ids, &problem); }));
    EXPECT_EQ(problem, Folder() + ": Input/output error");
    bool busy = true;
    for (int nth = 1; nth <= 2; ++nth) {  // openat, flock
        EXPECT_FALSE(RunFailing(nth, [&] { return queue.Lock(&busy, &problem); }));
        EXPECT_FALSE(busy);
        EXPECT_EQ(problem, Folder() + "/.lock: Input/output error");
    }
    RunFailing(1, [&] {
        queue.Clean();
        return true;
    });
    EXPECT_FALSE(RunFailing(1, [&] { return queue.Remove(entry.id, &problem); }));
    EXPECT_EQ(Loaded(Folder(), entry.id), entry);
    EXPECT_FALSE(RunFailing(2, [&] { return queue.Remove(entry.id, &problem); }));
    EXPECT_EQ(problem, Folder() + ": Input/output error");
}

TEST_F(QueueFaultsTest, ShortAndInterruptedWritesAreContinued) {
    Queue queue;
    std::string problem;
    const Entry entry = samples::Alert();
    ASSERT_TRUE(queue.Open(Folder(), true, &problem));
    plan.short_writes = true;
    EXPECT_TRUE(queue.Add(entry, &problem)) << problem;
    plan = {};
    EXPECT_EQ(Loaded(Folder(), entry.id), entry);
}

TEST_F(QueueFaultsTest, AFullDiskIsNamed) {
    Queue queue;
    std::string problem;
    ASSERT_TRUE(queue.Open(Folder(), true, &problem));
    plan.active = true;
    plan.failing = 2;
    plan.error = ENOSPC;
    EXPECT_FALSE(queue.Add(samples::Alert(), &problem));
    EXPECT_EQ(plan.names[1], "write");
    plan = {};
    EXPECT_THAT(problem, HasSubstr(": No space left on device"));
    EXPECT_THAT(Names(), ElementsAre());
}

}  // namespace
