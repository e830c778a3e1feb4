// The test report through the queue: the item slot by slot, and every way to fail.
#include "velox/queue_report.h"

#include <gmock/gmock.h>
#include <ntwin32/module.h>
#include <ntwin32/registry.h>
#include <records/queue_item.h>

#include <array>
#include <cstring>
#include <map>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"

extern "C" int TestFatalReportFromC(void);

// What LoadLibrary gives instead of its own result.
static HMODULE load_result = nullptr;

extern "C" HMODULE __real_LoadLibrary(const char *path);
extern "C" HMODULE __wrap_LoadLibrary(const char *path) {
    return load_result != nullptr ? load_result : __real_LoadLibrary(path);
}

namespace {

using ::testing::ElementsAre;

constexpr char kDestination[] = "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VeloxReport";
constexpr char kModule[] = "/opt/xev/kestro_sa/lib/amvmque.dll";

// The item as the module sees it: 23 slots of 64 bits.
using Slots = std::array<std::uint64_t, 23>;

struct Received {
    int items = 0;
    Slots slots = {};
    std::map<int, std::string> texts;  // by slot, counted from 1
    std::string block;                 // of slot 12
    BOOL answer = TRUE;
};

Received &TheReceived() {
    static Received received;
    return received;
}

BOOL FakeAMQueNewAdd(const AMQUE_ITEM *item) noexcept {
    Received &received = TheReceived();
    ++received.items;
    std::memcpy(received.slots.data(), item, sizeof received.slots);
    for (const int slot : {2, 3, 6, 8, 9, 10, 16, 17, 18, 19, 23}) {
        received.texts[slot] =
            reinterpret_cast<const char *>(received.slots[static_cast<std::size_t>(slot) - 1]);
    }
    received.block.assign(reinterpret_cast<const char *>(received.slots[11]), 16);
    EXPECT_EQ(fakes::LoadedModules(), 1);
    return received.answer;
}

void Prepare() {
    TheReceived() = {};
    load_result = nullptr;
    fakes::CreateKey(kDestination);
    fakes::AddModule(kModule, {{"AMQueNewAdd", reinterpret_cast<void (*)()>(FakeAMQueNewAdd)}});
}

class QueueReportTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        Prepare();
    }
    // The report fails with this trace, after the entry's, and nothing is queued.
    static void ExpectFailure(const std::string &trace) {
        EXPECT_EQ(TestFatalReport(), 0);
        EXPECT_THAT(fakes::TraceLines(), ElementsAre("0 >", "1 " + trace));
        EXPECT_EQ(TheReceived().items, 0);
    }
};

TEST_F(QueueReportTest, FillsEachSlot) {
    fakes::TheLibc().now = 0x165E66D80;  // more than 32 bits
    EXPECT_EQ(TestFatalReport(), 1);
    const Received &received = TheReceived();
    EXPECT_EQ(received.items, 1);
    const std::map<int, std::string> texts = {{2, "SYSTEM"},
                                              {3, "KESHeartBeatDll"},
                                              {6, kDestination},
                                              {8, "HOST01"},
                                              {9, "TEST - AlertManager"},
                                              {10, "KESHeartBeatDll"},
                                              {16, ""},
                                              {17, ""},
                                              {18, ""},
                                              {19, ""},
                                              {23, ""}};
    EXPECT_EQ(received.texts, texts);
    const std::map<std::size_t, std::uint64_t> numbers = {
        {1, 4},          {4, 2},  {5, HKEY_LOCAL_MACHINE},
        {7, 0x65E66D80}, {11, 2}, {13, 0},
        {15, 0},         {20, 1}, {21, 0},
        {22, 0}};
    for (const auto &[slot, number] : numbers) {
        EXPECT_EQ(received.slots[slot - 1], number) << "slot " << slot;
    }
    EXPECT_EQ(received.block, std::string(16, '\0'));
    EXPECT_EQ(received.slots[11], received.slots[13]);
}

TEST_F(QueueReportTest, TracesEntryAndResult) {
    EXPECT_EQ(TestFatalReportFromC(), 1);
    EXPECT_THAT(fakes::TraceLines(), ElementsAre("0 >", "0 <return TRUE"));
    EXPECT_EQ(fakes::Trace()[0].source, "amstexml");
    EXPECT_EQ(fakes::Trace()[1].source, "amstexml");
    EXPECT_EQ(fakes::Trace()[1].function, "TestFatalReport");
}

TEST_F(QueueReportTest, AsksInItsOrder) {
    EXPECT_EQ(TestFatalReport(), 1);
    std::vector<std::string> calls;
    for (const fakes::Call &call : fakes::Calls()) {
        calls.push_back(call.function + " " + call.detail);
    }
    EXPECT_THAT(calls,
                ElementsAre("AMACEXSetRegistryNumber 0", "AMACDSGetIDRegistryPath VeloxReport",
                            "time ", "GetComputerName 257", "GetKesRootPath 4096",
                            "LoadLibrary /opt/xev/kestro_sa/lib/amvmque.dll",
                            "GetProcAddress AMQueNewAdd", "FreeLibrary "));
}

TEST_F(QueueReportTest, FailsWithoutTheRegistryNumber) {
    fakes::FailCall("AMACEXSetRegistryNumber");
    ExpectFailure("<AMACEXSetRegistryNumber failed.return FALSE.");
}

TEST_F(QueueReportTest, FailsWithoutTheDestination) {
    fakes::DeleteTree(kDestination);
    ExpectFailure("<AMACDSGetIDRegistryPath return FALSE.");
}

TEST_F(QueueReportTest, TakesAComputerNameOf256Bytes) {
    fakes::TheSystem().computer_name = std::string(256, 'h');
    EXPECT_EQ(TestFatalReport(), 1);
    EXPECT_EQ(TheReceived().texts[8], std::string(256, 'h'));
}

TEST_F(QueueReportTest, FailsForALongerComputerName) {
    fakes::TheSystem().computer_name = std::string(257, 'h');
    ExpectFailure("<GetComputerName() failed.return FALSE.");
}

TEST_F(QueueReportTest, FailsWithoutTheProductsFolder) {
    fakes::FailCall("GetKesRootPath");
    ExpectFailure("<GetKesRootPath() failed.return FALSE.");
    EXPECT_EQ(fakes::CallCount("LoadLibrary"), 0);
}

TEST_F(QueueReportTest, FailsWithoutTheModuleAndLoadsNoOther) {
    fakes::TheSystem().root_path = "/elsewhere";
    ExpectFailure("<LoadLibrary /elsewhere/lib/amvmque.dll failed.return FALSE.");
    EXPECT_EQ(fakes::CallCount("LoadLibrary"), 1);
}

TEST_F(QueueReportTest, TheInvalidHandleIsNoModule) {
    load_result = reinterpret_cast<HMODULE>(INVALID_HANDLE_VALUE);
    ExpectFailure("<LoadLibrary /opt/xev/kestro_sa/lib/amvmque.dll failed.return FALSE.");
    EXPECT_EQ(fakes::CallCount("FreeLibrary"), 0);
}

TEST_F(QueueReportTest, FailsForAModuleWithoutTheFunction) {
    fakes::AddModule(kModule, {});
    ExpectFailure("<GetProcAddress(AMQueNewAdd) failed.");
    EXPECT_EQ(fakes::CallCount("FreeLibrary"), 1);
}

TEST_F(QueueReportTest, FailsWhenTheQueueRefuses) {
    TheReceived().answer = FALSE;
    EXPECT_EQ(TestFatalReport(), 0);
    EXPECT_EQ(TheReceived().items, 1);
    EXPECT_THAT(fakes::TraceLines(), ElementsAre("0 >", "1 <pAMQueNewAdd() falied.return FALSE."));
}

TEST_F(QueueReportTest, EachFailedCallFailsOrIsHarmless) {
    EXPECT_EQ(TestFatalReport(), 1);
    const auto calls = std::vector<fakes::Call>(fakes::Calls());
    for (std::size_t i = 0; i < calls.size(); ++i) {
        SCOPED_TRACE(calls[i].function);
        fakes::Reset();
        Prepare();
        fakes::FailAnyCall(static_cast<int>(i) + 1);
        const bool harmless = calls[i].function == "time" || calls[i].function == "FreeLibrary";
        EXPECT_EQ(TestFatalReport(), harmless ? 1 : 0);
        EXPECT_EQ(TheReceived().items, harmless ? 1 : 0);
        EXPECT_EQ(fakes::TraceLines(1).size(), harmless ? 0U : 1U);
        EXPECT_EQ(fakes::LoadedModules(), 0);
        EXPECT_EQ(fakes::UnusedFaults(), 0);
    }
}

}  // namespace
