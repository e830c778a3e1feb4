// Adding and deleting items of the system log's event table.
#include "velox/syslog_item.h"

#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"
#include "registry/text.h"
#include "support/environment.h"
#include "support/title.h"
#include "sweep.h"

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

const std::string kRoot = "SOFTWARE\\XEV\\KESALERTMAN\\REPORTTABLE\\EVENTLOG\\APPLICATION";
const std::string kSource = kRoot + "\\kernel";
const std::string kItem = kSource + "\\1000";

using Record = std::unique_ptr<SYSLOG_DATA>;

Record MakeRecord(const char *source = "kernel", const char *event = "1000") {
    auto record = std::make_unique<SYSLOG_DATA>();
    EXPECT_TRUE(CopyText(record->szSourceName, source));
    EXPECT_TRUE(CopyText(record->szEventID, event));
    EXPECT_TRUE(CopyText(record->szKeyWord, "panic"));
    EXPECT_TRUE(CopyText(record->szTrapName, "Kernel panic"));
    EXPECT_TRUE(CopyText(record->szRecoveryAction, "Call the centre."));
    return record;
}

std::vector<std::string> SourceLines() {
    return {kSource,
            kSource + " CREATEDATE=REG_SZ:20240305",
            kSource + " CREATEVERSION=REG_SZ:0003,0008,0000",
            kSource + " DATE=REG_SZ:20240305",
            kSource + " FORMATVERSION=REG_SZ:1,0,0",
            kSource + " VERSION=REG_SZ:0003,0008,0000",
            kSource + " SYSTEMDEFINED=REG_DWORD:0x0"};
}

std::vector<std::string> ItemLines() {
    const std::string event = kItem + "\\EVENTSETTING";
    const std::string watch = kItem + "\\WATCHSETTING";
    return {kItem,
            kItem + "\\DESTINATIONSETTING",
            kItem + "\\DESTINATIONSETTING\\GID_LIST",
            kItem + "\\DESTINATIONSETTING\\ID_LIST",
            event,
            event + " ACTION=REG_DWORD:0x0",
            event + " ALERTTYPE=REG_SZ:kernel",
            event + " ALIVELEVEL=REG_DWORD:0x7",
            event + " CRITICALMESSAGE=REG_SZ:",
            event + " DETAIL=REG_SZ:Kernel panic",
            event + " KESKIND=REG_SZ:kernel",
            event + " FACTORCODE=REG_SZ:73",
            event + " MARKFLAG=REG_DWORD:0x0",
            event + " OBSTACLEKIND=REG_DWORD:0x3",
            event + " OID=REG_SZ:",
            event + " RECOVERYACTION=REG_SZ:Call the centre.",
            event + " SYSTEMDEFINED=REG_DWORD:0x0",
            event + " TRAPNAME=REG_SZ:Kernel panic",
            watch,
            watch + " FILTERINGMETHOD=REG_DWORD:0x0",
            watch + " KEYWORD=REG_SZ:panic",
            watch + " LASTTIME=REG_DWORD:0x0",
            watch + " REPORTCOUNT=REG_DWORD:0x1",
            watch + " SUPPRESTIME=REG_DWORD:0x0",
            watch + " THRESHOLD=REG_DWORD:0x1",
            watch + " WATCHTIME=REG_DWORD:0xFFFFFF"};
}

class SyslogItemTest : public fakes::PlatformTest {
  protected:
    SyslogItemTest() : zone_("TZ", "UTC") { ::tzset(); }

    void SetUp() override {
        PlatformTest::SetUp();
        fakes::CreateKey(kRoot);
    }

  private:
    test_support::EnvironmentVariable zone_;
};

// ---- AddSyslogItem ------------------------------------------------------------------------------

TEST_F(SyslogItemTest, AddMakesTheSourceAndTheItem) {
    EXPECT_EQ(AddSyslogItem(MakeRecord().get()), 1);
    auto lines = SourceLines();
    const auto item = ItemLines();
    lines.insert(lines.end(), item.begin(), item.end());
    EXPECT_THAT(fakes::Dump(kSource), ElementsAreArray(lines));
    EXPECT_EQ(fakes::Bytes(kItem + "\\EVENTSETTING", "OID")->second, std::string(1, '\0'));
    EXPECT_THAT(fakes::TraceLinesOf("AddSyslogItem"),
                ElementsAre(MatchesRegex("0 >pAddData=0x[0-9a-f]+"), "0 <return 1"));
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
}

TEST_F(SyslogItemTest, AddWritesInOrderAndTheRecoveryActionLast) {
    EXPECT_EQ(AddSyslogItem(MakeRecord().get()), 1);
    std::vector<std::string> created;
    std::vector<std::string> recovery;
    for (const fakes::Call &call : fakes::Calls()) {
        if (call.function == "RegCreateKeyEx") {
            created.push_back(call.detail.substr(kRoot.size()));
        } else if (call.function == "RegSetValueEx" &&
                   call.detail.starts_with(kItem + "\\EVENTSETTING")) {
            recovery.push_back(call.detail.substr(call.detail.rfind(' ') + 1));
        }
    }
    EXPECT_THAT(
        created,
        ElementsAre("\\kernel sam=0xF003F options=0", "\\kernel\\1000 sam=0xF003F options=0",
                    "\\kernel\\1000\\DESTINATIONSETTING sam=0xF003F options=0",
                    "\\kernel\\1000\\DESTINATIONSETTING\\GID_LIST sam=0xF003F options=0",
                    "\\kernel\\1000\\DESTINATIONSETTING\\ID_LIST sam=0xF003F options=0",
                    "\\kernel\\1000\\EVENTSETTING sam=0xF003F options=0",
                    "\\kernel\\1000\\WATCHSETTING sam=0xF003F options=0"));
    EXPECT_THAT(recovery,
                ElementsAre("ACTION", "ALERTTYPE", "ALIVELEVEL", "CRITICALMESSAGE", "DETAIL",
                            "KESKIND", "FACTORCODE", "MARKFLAG", "OBSTACLEKIND", "OID",
                            "RECOVERYACTION", "SYSTEMDEFINED", "TRAPNAME", "RECOVERYACTION"));
    EXPECT_EQ(fakes::Calls()[0].detail, kSource + " sam=0xF003F");
}

TEST_F(SyslogItemTest, AddToAnExistingSourceLeavesItsValues) {
    ASSERT_EQ(AddSyslogItem(MakeRecord().get()), 1);
    fakes::StoreText(kSource, "CREATEDATE", "19990101");
    const auto first = fakes::Dump(kItem);
    EXPECT_EQ(AddSyslogItem(MakeRecord("KERNEL", "1001").get()), 1);
    EXPECT_EQ(fakes::Text(kSource, "CREATEDATE"), "19990101");
    EXPECT_EQ(fakes::Dump(kItem), first);
    EXPECT_THAT(fakes::SubKeys(kSource), ElementsAre("1000", "1001"));
}

TEST_F(SyslogItemTest, ASourceThatOnlyDidNotOpenKeepsItsValues) {
    fakes::StoreText(kSource, "CREATEDATE", "19990101");
    fakes::FailCall("RegOpenKeyEx");
    EXPECT_EQ(AddSyslogItem(MakeRecord().get()), 1);
    EXPECT_THAT(fakes::ValueNames(kSource), ElementsAre("CREATEDATE"));
}

TEST_F(SyslogItemTest, AddOfAnExistingItemChangesNothing) {
    ASSERT_EQ(AddSyslogItem(MakeRecord().get()), 1);
    fakes::ClearTrace();
    const auto before = fakes::Dump();
    EXPECT_EQ(AddSyslogItem(MakeRecord().get()), -3);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(testing::_, "0 <" + kItem + " already exists!return -3."));
}

TEST_F(SyslogItemTest, ARefusedSourceIsNamed) {
    fakes::FailCall("RegCreateKeyEx");
    EXPECT_EQ(AddSyslogItem(MakeRecord().get()), -1);
    EXPECT_FALSE(fakes::KeyExists(kSource));
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegCreateKeyEx " + kSource + " failed.return -1."));
}

TEST_F(SyslogItemTest, EachRefusedCreationLeavesTheKeysBeforeIt) {
    const char *keys[] = {"",
                          "\\DESTINATIONSETTING",
                          "\\DESTINATIONSETTING\\GID_LIST",
                          "\\DESTINATIONSETTING\\ID_LIST",
                          "\\EVENTSETTING",
                          "\\WATCHSETTING"};
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(keys[i]);
        fakes::Reset();
        fakes::CreateKey(kRoot);
        fakes::FailCall("RegCreateKeyEx", 2 + i);
        EXPECT_EQ(AddSyslogItem(MakeRecord().get()), -1);
        for (int j = 0; j < 6; ++j) {
            EXPECT_EQ(fakes::KeyExists(kItem + keys[j]), j < i);
        }
        EXPECT_THAT(fakes::TraceLines(1),
                    ElementsAre("1 <RegCreateKeyEx " + kItem + keys[i] + " failed.return -1."));
        sweep::ExpectClean();
    }
}

TEST_F(SyslogItemTest, EachRefusedCallOfAnAddLeavesOnlyWholeValues) {
    int result = 0;
    const Record record = MakeRecord();
    auto whole = SourceLines();
    const auto item = ItemLines();
    whole.insert(whole.end(), item.begin(), item.end());
    whole.push_back(kItem + "\\EVENTSETTING RECOVERYACTION=REG_SZ:");
    sweep::RefuseEachCall([] { fakes::CreateKey(kRoot); },
                          [&] { result = AddSyslogItem(record.get()); },
                          [&](const fakes::Call &refused) {
                              EXPECT_EQ(result, refused.function == "RegCreateKeyEx" ? -1 : 1);
                              EXPECT_THAT(fakes::Dump(kSource), ::testing::IsSubsetOf(whole));
                          });
}

struct NameRow {
    const char *title;
    std::string source;
    std::string event;
};

class BadNameTest : public SyslogItemTest, public ::testing::WithParamInterface<NameRow> {};

TEST_P(BadNameTest, NeitherAddsNorDeletes) {
    ASSERT_EQ(AddSyslogItem(MakeRecord().get()), 1);
    fakes::CreateKey(kItem + "\\EVENTSETTING\\EVENTSETTING");
    const auto before = fakes::Dump();
    const auto calls = fakes::Calls().size();
    Record record = MakeRecord("", "");
    std::memcpy(record->szSourceName, GetParam().source.data(), GetParam().source.size());
    std::memcpy(record->szEventID, GetParam().event.data(), GetParam().event.size());
    EXPECT_EQ(AddSyslogItem(record.get()), -1);
    // An empty event id means the source to DelSyslogItem.
    if (!GetParam().event.empty()) {
        EXPECT_EQ(DelSyslogItem(GetParam().source.c_str(), GetParam().event.c_str()), -1);
    }
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_EQ(fakes::Calls().size(), calls);
    const auto failures = fakes::TraceLines(1);
    ASSERT_FALSE(failures.empty());
    EXPECT_EQ(failures[0], "1 <RegCreateKeyEx " + kRoot + "\\" + GetParam().source.substr(0, 255) +
                               "\\" + GetParam().event.substr(0, 255) + " failed.return -1.");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BadNameTest,
    ::testing::Values(NameRow{"EmptySource", "", "1000"}, NameRow{"EmptyEvent", "kernel", ""},
                      NameRow{"BackslashInSource", "kernel\\1000", "EVENTSETTING"},
                      NameRow{"BackslashInEvent", "kernel", "1000\\EVENTSETTING"},
                      NameRow{"TooLongSource", std::string(256, 's'), "1000"},
                      NameRow{"TooLongEvent", "kernel", std::string(256, 'e')},
                      NameRow{"NewSourceWithABadEvent", "new", "a\\b"}),
    test_support::Title());

// ---- DelSyslogItem: an item ---------------------------------------------------------------------

class DeleteTest : public SyslogItemTest {
  protected:
    void SetUp() override {
        SyslogItemTest::SetUp();
        Prepare();
    }
    static void Prepare() {
        EXPECT_EQ(AddSyslogItem(MakeRecord().get()), 1);
        EXPECT_EQ(AddSyslogItem(MakeRecord("kernel", "1001").get()), 1);
        EXPECT_EQ(AddSyslogItem(MakeRecord("other", "1").get()), 1);
        fakes::CreateKey(kItem + "\\DESTINATIONSETTING\\ID_LIST\\ID1");
        fakes::ClearTrace();
    }
};

TEST_F(DeleteTest, RemovesTheItemAndKeepsTheOthers) {
    const auto other = fakes::Dump(kSource + "\\1001");
    EXPECT_EQ(DelSyslogItem("kernel", "1000"), 1);
    EXPECT_THAT(fakes::SubKeys(kSource), ElementsAre("1001"));
    EXPECT_EQ(fakes::Dump(kSource + "\\1001"), other);
    EXPECT_THAT(fakes::TraceLines(), ElementsAre("0 >SrcName=kernel,EventId=1000", "0 <return 1."));
    EXPECT_EQ(fakes::Trace()[0].function, "DelSyslogItem");
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
}

TEST_F(DeleteTest, TheLastItemTakesItsSourceAlong) {
    EXPECT_EQ(DelSyslogItem("kernel", "1000"), 1);
    EXPECT_EQ(DelSyslogItem("kernel", "1001"), 1);
    EXPECT_FALSE(fakes::KeyExists(kSource));
    EXPECT_THAT(fakes::SubKeys(kRoot), ElementsAre("other"));
}

TEST_F(DeleteTest, AnItemThatTheSystemDefinedStays) {
    fakes::StoreNumber(kItem + "\\EVENTSETTING", "SYSTEMDEFINED", 1);
    const auto before = fakes::Dump();
    EXPECT_EQ(DelSyslogItem("kernel", "1000"), -2);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegQueryValueEx SYSTEMDEFINED failed.return -2."));
}

TEST_F(DeleteTest, OnlyTheValue1MarksAnItemOfTheSystem) {
    fakes::StoreNumber(kItem + "\\EVENTSETTING", "SYSTEMDEFINED", 2);
    EXPECT_EQ(DelSyslogItem("kernel", "1000"), 1);
    fakes::DeleteValue(kSource + "\\1001\\EVENTSETTING", "SYSTEMDEFINED");
    EXPECT_EQ(DelSyslogItem("kernel", "1001"), 1);
}

TEST_F(DeleteTest, AMissingItemIsNamed) {
    const auto before = fakes::Dump();
    EXPECT_EQ(DelSyslogItem("kernel", "9"), -1);
    EXPECT_EQ(DelSyslogItem(nullptr, "9"), -1);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx " + kSource + "\\9\\EVENTSETTING failed.return -1.",
                            "1 <RegOpenKeyEx " + kRoot + "\\\\9\\EVENTSETTING failed.return -1."));
    EXPECT_TRUE(fakes::HasTrace(0, ">SrcName=NULL,EventId=9"));
}

TEST_F(DeleteTest, ANullEventIdDeletesNothing) {
    const auto before = fakes::Dump();
    EXPECT_EQ(DelSyslogItem("kernel", nullptr), -1);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre("0 >SrcName=kernel,EventId=NULL", "1 <return -1."));
}

TEST_F(DeleteTest, ASourceThatCannotBeCountedStays) {
    EXPECT_EQ(DelSyslogItem("kernel", "1000"), 1);
    fakes::FailCall("RegQueryInfoKey");
    EXPECT_EQ(DelSyslogItem("kernel", "1001"), 1);
    EXPECT_THAT(fakes::SubKeys(kSource), IsEmpty());
    EXPECT_TRUE(fakes::KeyExists(kSource));
}

TEST_F(DeleteTest, ASourceThatDoesNotOpenAfterTheItemIsNamed) {
    // The opens before it: EVENTSETTING, then the item and its five keys and the link.
    EXPECT_EQ(DelSyslogItem("kernel", "1001"), 1);
    const int opens = fakes::CallCount("RegOpenKeyEx");
    fakes::ClearTrace();
    EXPECT_EQ(DelSyslogItem("other", "1"), 1);
    const int again = fakes::CallCount("RegOpenKeyEx") - opens;
    EXPECT_EQ(AddSyslogItem(MakeRecord("other", "1").get()), 1);
    fakes::ClearTrace();
    fakes::FailCall("RegOpenKeyEx", again);
    EXPECT_EQ(DelSyslogItem("other", "1"), -1);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx " + kRoot + "\\other failed.return -1."));
    EXPECT_FALSE(fakes::KeyExists(kRoot + "\\other\\1"));
}

TEST_F(DeleteTest, EachRefusedCallOfADeleteTouchesNoOtherItem) {
    int result = 0;
    std::vector<std::string> other;
    sweep::RefuseEachCall(
        [&] {
            fakes::CreateKey(kRoot);
            Prepare();
            other = fakes::Dump(kSource + "\\1001");
        },
        [&] { result = DelSyslogItem("kernel", "1000"); },
        [&](const fakes::Call &) {
            EXPECT_THAT(result, testing::AnyOf(1, -1));
            EXPECT_EQ(fakes::Dump(kSource + "\\1001"), other);
            EXPECT_TRUE(fakes::KeyExists(kRoot + "\\other\\1\\EVENTSETTING"));
        });
}

// ---- DelSyslogItem: a source --------------------------------------------------------------------

TEST_F(DeleteTest, AnEmptyEventIdRemovesTheWholeSource) {
    for (const DWORD number : {0U, 1U}) {
        fakes::ClearTrace();
        fakes::StoreNumber(kSource, "SYSTEMDEFINED", number);
        EXPECT_EQ(DelSyslogItem("kernel", ""), 1);
        EXPECT_FALSE(fakes::KeyExists(kSource));
        EXPECT_TRUE(fakes::KeyExists(kRoot + "\\other\\1"));
        EXPECT_THAT(fakes::TraceLines(),
                    ElementsAre("0 >SrcName=kernel,EventId=", "0 <return -1."));
    }
}

TEST_F(DeleteTest, AValueOfAnotherSizeCountsAsPresent) {
    fakes::StoreBytes(kSource, "SYSTEMDEFINED", REG_BINARY, "12345");
    EXPECT_EQ(DelSyslogItem("kernel", ""), 1);
    EXPECT_FALSE(fakes::KeyExists(kSource));
}

TEST_F(DeleteTest, ASourceThatWasNotAddedStays) {
    fakes::DeleteValue(kSource, "SYSTEMDEFINED");
    const auto before = fakes::Dump();
    EXPECT_EQ(DelSyslogItem("kernel", ""), -3);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegQueryValueEx SYSTEMDEFINED failed.return -3."));
}

TEST_F(DeleteTest, AnyOtherErrorOfTheQueryDeletesNothing) {
    const auto before = fakes::Dump();
    fakes::FailCall("RegQueryValueEx", 1, ERROR_REGISTRY_IO_FAILED);
    EXPECT_EQ(DelSyslogItem("kernel", ""), -1);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <return -1."));
}

TEST_F(DeleteTest, AnEmptyOrMissingSourceLeavesTheTableWhole) {
    fakes::StoreNumber(kRoot, "SYSTEMDEFINED", 0);
    const auto before = fakes::Dump();
    for (const char *source : {"", "none", "kernel\\1000"}) {
        EXPECT_EQ(DelSyslogItem(source, ""), -1);
    }
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_TRUE(fakes::HasTrace(1, "<RegOpenKeyEx " + kRoot + "\\none failed.return -1."));
}

// ---- GetCurrentFormatTime -----------------------------------------------------------------------

TEST_F(SyslogItemTest, TodayHasEightDigits) {
    char date[9];
    GetCurrentFormatTime(date);
    EXPECT_STREQ(date, "20240305");
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >timestr=0x[0-9a-f]+"), "0 <20240305"));
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
    fakes::TheLibc().now += 300 * 86400;
    GetCurrentFormatTime(date);
    EXPECT_STREQ(date, "20241230");
}

TEST_F(SyslogItemTest, TheDateIsTheLocalOne) {
    const test_support::EnvironmentVariable zone("TZ", "XXX+10");
    ::tzset();
    char date[9];
    GetCurrentFormatTime(date);
    EXPECT_STREQ(date, "20240304");
}

TEST_F(SyslogItemTest, AYearOfFiveDigitsStaysInside) {
    fakes::TheLibc().now = 253402300800;  // 10000-01-01
    char date[10] = "123456789";
    GetCurrentFormatTime(date);
    EXPECT_STREQ(date, "");
    EXPECT_EQ(date[9], '\0');
}

}  // namespace
