// amvmque.dll as its callers use it: loaded, called, unloaded; on a real file system that fills up,
// and by processes that are killed.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <ntwin32/module.h>
#include <queuestore/queue.h>
#include <records/queue_item.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tracelog.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <set>
#include <thread>

#include "support/environment.h"
#include "support/temp_folder.h"
#include "support/title.h"

namespace {

using queuestore::Entry;
using queuestore::Queue;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr int kKillRounds = 200;

// An item with the given alert text; the high halves of its numbers hold rubbish.
AMQUE_ITEM ItemWith(const char *message) {
    constexpr std::uint64_t kRubbish = 0xABCDEF0100000000;
    AMQUE_ITEM item = {};
    item.qwKind = kRubbish | 4;
    item.lpszLog = "SYSTEM";
    item.lpszSource = "KESHeartBeatDll";
    item.qwLevel = kRubbish | 2;
    item.qwRoot = 0x80000002;
    item.lpszDestination = "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT";
    item.qwTime = kRubbish | 1709600000;
    item.lpszComputer = "host01";
    item.lpszMessage = message;
    item.lpszReporter = "KESHeartBeatDll";
    item.qwReportLevel = kRubbish | 2;
    item.lpData = "\x01\x02\x03";
    item.qwDataSize = kRubbish | 3;
    item.qwExtraSize = kRubbish;
    item.lpszText[0] = "one";
    item.lpszText[1] = "";
    item.lpszText[2] = "\xBC\xEF\xCA\xCC";
    item.lpszText[3] = "";
    item.qwCount = kRubbish | 1;
    item.qwFlags = kRubbish;
    item.qwContext = kRubbish;
    item.lpszNote = "note";
    return item;
}

BOOL Add(const AMQUE_ITEM *item) {
    const HMODULE module = LoadLibrary(AMVMQUE_MODULE);
    auto *add = reinterpret_cast<AMQUENEWADD *>(GetProcAddress(module, AMQUENEWADD_NAME));
    if (add == nullptr) {
        ADD_FAILURE() << "the module cannot be loaded";
        return FALSE;
    }
    const BOOL added = add(item);
    FreeLibrary(module);
    return added;
}

class AmvmqueTest : public ::testing::Test {
  protected:
    void TearDown() override { TraceLogSetListener(nullptr, nullptr); }

    std::string Folder() const { return state_.Path() + "/queue"; }
    // All alerts; fails the test for one that is not whole.
    std::vector<Entry> Alerts() const {
        Queue queue;
        std::string problem;
        std::vector<std::string> ids;
        std::vector<Entry> entries;
        if (!std::filesystem::exists(Folder())) {
            return entries;
        }
        EXPECT_TRUE(queue.Open(Folder(), false, &problem) && queue.List(&ids, &problem)) << problem;
        for (const std::string &id : ids) {
            EXPECT_TRUE(queue.Load(id, &entries.emplace_back(), &problem)) << problem;
        }
        return entries;
    }
    std::size_t Files() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(Folder()), {}));
    }
    void Listen() {
        TraceLogSetListener(
            [](const TRACELOG_RECORD *record, void *context) {
                static_cast<std::vector<std::string> *>(context)->push_back(
                    std::to_string(record->nLevel) + " " + record->szSource + " " +
                    record->szFunction + " " + record->szText);
            },
            &trace_);
    }

    test_support::TempFolder state_;
    test_support::EnvironmentVariable state_variable_{"KES_STATE", state_.Path()};
    std::vector<std::string> trace_;
};

TEST_F(AmvmqueTest, KeepsEachSlot) {
    const AMQUE_ITEM item = ItemWith("disk 1 failed");
    const std::time_t before = std::time(nullptr);
    ASSERT_EQ(Add(&item), 1);
    const std::vector<Entry> alerts = Alerts();
    ASSERT_EQ(alerts.size(), 1U);
    const queuestore::Item expected = {
        .kind = 4,
        .log = "SYSTEM",
        .source = "KESHeartBeatDll",
        .level = 2,
        .root = 0x80000002,
        .destination = "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT",
        .time = 1709600000,
        .computer = "host01",
        .message = "disk 1 failed",
        .reporter = "KESHeartBeatDll",
        .report_level = 2,
        .data = "\x01\x02\x03",
        .extra = "",
        .texts = {"one", "", "\xBC\xEF\xCA\xCC", ""},
        .count = 1,
        .flags = 0,
        .context = 0xABCDEF0100000000,
        .note = "note"};
    EXPECT_EQ(alerts[0].item, expected);
    EXPECT_EQ(alerts[0].message_id, "<" + alerts[0].id + "@host01>");
    EXPECT_GE(alerts[0].queued, before);
    EXPECT_EQ(alerts[0].delivery, queuestore::Delivery());
}

TEST_F(AmvmqueTest, WorksAfterBeingUnloadedThreeTimes) {
    const AMQUE_ITEM item = ItemWith("a");
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(Add(&item), 1);
    }
    EXPECT_EQ(Alerts().size(), 3U);
}

TEST_F(AmvmqueTest, TracesTheIdOfAnAcceptedItem) {
    const AMQUE_ITEM item = ItemWith("a");
    Listen();
    ASSERT_EQ(Add(&item), 1);
    ASSERT_EQ(Alerts().size(), 1U);
    EXPECT_THAT(trace_, ElementsAre(HasSubstr("0 amvmque AMQueNewAdd >lpItem=0x"),
                                    "0 amvmque AMQueNewAdd <" + Alerts()[0].id + ".return TRUE."));
}

struct Refusal {
    const char *title;
    void (*spoil)(AMQUE_ITEM *item);
    const char *trace;
};

std::string long_text;

class AmvmqueRefusalTest : public AmvmqueTest, public ::testing::WithParamInterface<Refusal> {};

TEST_P(AmvmqueRefusalTest, LeavesNothing) {
    AMQUE_ITEM item = ItemWith("a");
    long_text.assign(AMQUE_MAX_TEXT, 'x');
    GetParam().spoil(&item);
    Listen();
    EXPECT_EQ(Add(&item), 0);
    EXPECT_EQ(Alerts().size(), 0U);
    EXPECT_EQ(trace_.back(),
              std::string("1 amvmque AMQueNewAdd <") + GetParam().trace + ".return FALSE.");
}

INSTANTIATE_TEST_SUITE_P(
    Items, AmvmqueRefusalTest,
    ::testing::Values(
        Refusal{"NullMessage", [](AMQUE_ITEM *item) { item->lpszMessage = nullptr; },
                "slot 9 of the item is null"},
        Refusal{"NullFourthText", [](AMQUE_ITEM *item) { item->lpszText[3] = nullptr; },
                "slot 19 of the item is null"},
        Refusal{"LongMessage", [](AMQUE_ITEM *item) { item->lpszMessage = long_text.c_str(); },
                "slot 9 of the item has no end within 16384 bytes"},
        Refusal{"NullBlock", [](AMQUE_ITEM *item) { item->lpData = nullptr; },
                "slot 12 of the item is null"},
        Refusal{"LargeBlock", [](AMQUE_ITEM *item) { item->qwExtraSize = AMQUE_MAX_DATA + 1; },
                "slot 14 of the item has more than 65536 bytes"},
        Refusal{"FirstOfTwoFaults",
                [](AMQUE_ITEM *item) { item->lpszNote = item->lpszLog = nullptr; },
                "slot 2 of the item is null"}),
    test_support::Title());

TEST_F(AmvmqueTest, TakesTheLargestItem) {
    AMQUE_ITEM item = ItemWith("a");
    long_text.assign(AMQUE_MAX_TEXT - 1, '\xFF');  // three bytes each in the file
    const std::string block(AMQUE_MAX_DATA, 'b');
    for (const char **text :
         {&item.lpszLog, &item.lpszSource, &item.lpszDestination, &item.lpszComputer,
          &item.lpszMessage, &item.lpszReporter, &item.lpszText[0], &item.lpszText[1],
          &item.lpszText[2], &item.lpszText[3], &item.lpszNote}) {
        *text = long_text.c_str();
    }
    item.lpData = item.lpExtra = block.data();
    item.qwDataSize = item.qwExtraSize = block.size();
    ASSERT_EQ(Add(&item), 1);
    const std::vector<Entry> alerts = Alerts();
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0].item.note, long_text);
    EXPECT_EQ(alerts[0].item.extra, block);
}

TEST_F(AmvmqueTest, RefusesANullItem) {
    Listen();
    EXPECT_EQ(Add(nullptr), 0);
    EXPECT_EQ(trace_.back(), "1 amvmque AMQueNewAdd <the item is null.return FALSE.");
}

TEST_F(AmvmqueTest, RefusesWithoutAStateFolder) {
    const AMQUE_ITEM item = ItemWith("a");
    state_variable_.Set(state_ / "none");
    Listen();
    EXPECT_EQ(Add(&item), 0);
    EXPECT_EQ(trace_.back(), "1 amvmque AMQueNewAdd <" + (state_ / "none/queue") +
                                 ": No such file or directory.return FALSE.");
    state_variable_.Set("relative");
    EXPECT_EQ(Add(&item), 0);
    EXPECT_EQ(
        trace_.back(),
        "1 amvmque AMQueNewAdd <the folder of the product's state is not known.return FALSE.");
}

// A small file system on the state folder, in a mount namespace of this process alone.
class AmvmqueFullDiskTest : public AmvmqueTest {
  protected:
    void SetUp() override {
        ASSERT_EQ(unshare(CLONE_NEWNS), 0) << "root is needed";
        ASSERT_EQ(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr), 0);
        ASSERT_EQ(mount("tmpfs", state_.Path().c_str(), "tmpfs", 0, "size=256k,mode=0700"), 0);
    }
    void TearDown() override {
        AmvmqueTest::TearDown();
        umount2(state_.Path().c_str(), MNT_DETACH);
    }
};

TEST_F(AmvmqueFullDiskTest, RefusesTheItemAndGoesOnWhenThereIsRoom) {
    const AMQUE_ITEM item = ItemWith("a");
    const std::string filler = state_ / "filler";
    std::size_t accepted = 0;
    state_.Write("filler", std::string(65536, 'f'));
    while (accepted < 1000 && Add(&item) == 1) {
        ++accepted;
    }
    EXPECT_GT(accepted, 10U);
    ASSERT_LT(accepted, 1000U);
    Listen();
    EXPECT_EQ(Add(&item), 0);
    EXPECT_THAT(trace_.back(), HasSubstr(".json: No space left on device.return FALSE."));
    EXPECT_EQ(Alerts().size(), accepted);
    EXPECT_EQ(Files(), accepted) << "a refused item left something";
    ASSERT_EQ(unlink(filler.c_str()), 0);
    EXPECT_EQ(Add(&item), 1);
    EXPECT_EQ(Alerts().size(), accepted + 1);
}

// ---- Killed while queueing ----------------------------------------------------------------------

// Queues alerts "<round>.<number>" until it is killed and writes a line with the text of each that
// was accepted.
[[noreturn]] void QueueUntilKilled(int round, int report) {
    const HMODULE module = LoadLibrary(AMVMQUE_MODULE);
    auto *add = reinterpret_cast<AMQUENEWADD *>(GetProcAddress(module, AMQUENEWADD_NAME));
    for (int number = 0;; ++number) {
        const std::string message = std::to_string(round) + "." + std::to_string(number);
        const AMQUE_ITEM item = ItemWith(message.c_str());
        const std::string line = message + "\n";
        if (add == nullptr || add(&item) == FALSE ||
            write(report, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
            _exit(1);
        }
    }
}

TEST_F(AmvmqueTest, AnAcceptedItemSurvivesTheKillOfItsProcess) {
    std::mt19937 random(20240305);
    std::set<std::string> accepted;
    for (int round = 0; round < kKillRounds; ++round) {
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
        const pid_t child = fork();
        if (child == 0) {
            QueueUntilKilled(round, ends[1]);
        }
        close(ends[1]);
        // Killed somewhere within the first alerts, counted from the first one that was accepted.
        std::string lines;
        char block[4096];
        ssize_t size = read(ends[0], block, sizeof block);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 4000));
        kill(child, SIGKILL);
        for (; size > 0; size = read(ends[0], block, sizeof block)) {
            lines.append(block, static_cast<std::size_t>(size));
        }
        close(ends[0]);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the queue refused an item";
        for (std::size_t at = 0, end = 0; (end = lines.find('\n', at)) != std::string::npos;
             at = end + 1) {
            accepted.insert(lines.substr(at, end - at));
        }
    }
    EXPECT_GE(accepted.size(), static_cast<std::size_t>(kKillRounds));
    std::set<std::string> queued;
    for (const Entry &entry : Alerts()) {
        EXPECT_TRUE(queued.insert(entry.item.message).second) << entry.item.message;
    }
    for (const std::string &message : accepted) {
        EXPECT_TRUE(queued.contains(message)) << message << " was accepted and is lost";
    }
    // At most the one in work at each kill was queued and not yet reported.
    EXPECT_LE(queued.size(), accepted.size() + kKillRounds);
}

}  // namespace
