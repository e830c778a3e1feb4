// Base settings: the switch of each report kind and the delayed shutdown.
#include "velox/base_setting.h"

#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <memory>
#include <string>
#include <vector>

#include "fakes/platform.h"
#include "fakes/registry.h"
#include "registry/text.h"
#include "support/title.h"
#include "sweep.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

const std::string kBase = "SOFTWARE\\XEV\\KESALERTMAN\\BASESETTING";
const std::string kReport = kBase + "\\REPORT";
const std::string kShutdown = kBase + "\\OTHER\\SHUTDOWN DELAY";
const std::string kTraps = kReport + "\\MANAGER (SNMP)\\SETTING";

class BaseSettingTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        Prepare();
    }

    static void Prepare() {
        fakes::StoreNumber(kReport + "\\MANAGER (SNMP)", "ENABLED", 1);
        fakes::StoreText(kTraps, "0", "192.0.2.1");
        fakes::StoreText(kTraps, "1", "192.0.2.2");
        fakes::StoreNumber(kReport + "\\RUN COMMAND", "ENABLED", 0);
        fakes::StoreNumber(kReport + "\\VELOXREPORT", "ENABLED", 1);
        fakes::StoreNumber(kShutdown, "ENABLED", 1);
        fakes::StoreNumber(kShutdown + "\\SETTING", "SHUTDOWNTIME", 30);
    }

    // A record with every field set to something that no function presets.
    static std::unique_ptr<BASE_DATA> Record(const char *kind, DWORD enabled = 1) {
        auto record = std::make_unique<BASE_DATA>();
        EXPECT_TRUE(CopyText(record->szKindName, kind));
        record->dwEnabled = enabled;
        record->dwShutdownTime = 60;
        record->nTrapDestCount = 99;
        record->lplpTrapDest = nullptr;
        EXPECT_TRUE(CopyText(record->szTrapDestination, "trap text"));
        return record;
    }
};

// ---- SetBaseSetting -----------------------------------------------------------------------------

TEST_F(BaseSettingTest, SetWritesTheSwitchAndTheWholeTrapText) {
    const auto record = Record("RUN COMMAND");
    record->szTrapDestination[BASE_TEXT_CAPACITY - 1] = 'z';
    EXPECT_EQ(SetBaseSetting(record.get()), 0);
    EXPECT_EQ(fakes::Number(kReport + "\\RUN COMMAND", "ENABLED"), 1U);
    const auto stored = fakes::Bytes(kReport + "\\RUN COMMAND", "TrapDestination");
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->first, REG_SZ);
    EXPECT_EQ(stored->second, std::string(record->szTrapDestination, BASE_TEXT_CAPACITY));
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >pBaseData=0x[0-9a-f]+"), "0 <return 0."));
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
    EXPECT_EQ(fakes::Trace()[0].function, "SetBaseSetting");
    EXPECT_EQ(fakes::Calls()[0].detail, kReport + "\\RUN COMMAND sam=0x20019");
    EXPECT_THAT(fakes::ValueNames(kReport + "\\RUN COMMAND"),
                ElementsAre("ENABLED", "TrapDestination"));
}

TEST_F(BaseSettingTest, SetWritesTheShutdownDelayInAnyCase) {
    EXPECT_EQ(SetBaseSetting(Record("shutdown delay", 0).get()), 0);
    EXPECT_EQ(fakes::Number(kShutdown + "\\SETTING", "SHUTDOWNTIME"), 60U);
    EXPECT_EQ(fakes::Number(kShutdown, "ENABLED"), 0U);
    EXPECT_EQ(fakes::Bytes(kShutdown, "TrapDestination")->second.size(), 4096U);
    EXPECT_EQ(fakes::Calls()[0].detail, kShutdown + "\\SETTING sam=0x20019");
    EXPECT_FALSE(fakes::KeyExists(kReport + "\\shutdown delay"));
}

TEST_F(BaseSettingTest, SetOfAShutdownDelayWithoutSettingTracesAtLevel0) {
    fakes::DeleteTree(kShutdown + "\\SETTING");
    EXPECT_EQ(SetBaseSetting(Record("SHUTDOWN DELAY", 0).get()), -1);
    EXPECT_EQ(fakes::Number(kShutdown, "ENABLED"), 1U);
    EXPECT_THAT(fakes::TraceLines(), ElementsAre(testing::_, "0 <RegOpenKeyEx " + kShutdown +
                                                                 "\\SETTING failed.return -1."));
}

TEST_F(BaseSettingTest, SetRefusesAnyOtherSwitch) {
    const auto before = fakes::Dump();
    EXPECT_EQ(SetBaseSetting(Record("RUN COMMAND", 2).get()), -1);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <return -1."));
}

TEST_F(BaseSettingTest, ARefusedSwitchLeavesTheShutdownTimeWritten) {
    EXPECT_EQ(SetBaseSetting(Record("SHUTDOWN DELAY", 2).get()), -1);
    EXPECT_EQ(fakes::Number(kShutdown + "\\SETTING", "SHUTDOWNTIME"), 60U);
    EXPECT_EQ(fakes::Number(kShutdown, "ENABLED"), 1U);
    EXPECT_FALSE(fakes::Bytes(kShutdown, "TrapDestination").has_value());
}

TEST_F(BaseSettingTest, SetCreatesNoKind) {
    const auto before = fakes::Dump();
    EXPECT_EQ(SetBaseSetting(Record("NONE").get()), -1);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx " + kReport + "\\NONE failed.return -1."));
}

TEST_F(BaseSettingTest, SetOfAShutdownDelayWithoutItsKeyFailsAfterTheTime) {
    fakes::DeleteTree(kShutdown);
    fakes::StoreNumber(kBase + "\\OTHER\\X", "x", 0);
    EXPECT_EQ(SetBaseSetting(Record("SHUTDOWN DELAY").get()), -1);
    EXPECT_FALSE(fakes::KeyExists(kShutdown));
}

TEST_F(BaseSettingTest, SetDoesNotLookAtTheWrites) {
    fakes::FailEveryCall("RegSetValueEx");
    EXPECT_EQ(SetBaseSetting(Record("SHUTDOWN DELAY", 0).get()), 0);
    EXPECT_EQ(fakes::Number(kShutdown, "ENABLED"), 1U);
    EXPECT_TRUE(fakes::HasTrace(0, "<return 0."));
}

struct KindRow {
    const char *title;
    std::string kind;
};

class BadKindTest : public BaseSettingTest, public ::testing::WithParamInterface<KindRow> {};

// A kind that names no key directly below REPORT never reaches the registry.
TEST_P(BadKindTest, NeitherReadsNorWrites) {
    fakes::StoreNumber(kReport + "\\A\\B", "ENABLED", 1);
    fakes::StoreNumber(kReport, "ENABLED", 1);
    const auto before = fakes::Dump();
    auto record = Record("");
    std::memcpy(record->szKindName, GetParam().kind.data(), GetParam().kind.size());
    EXPECT_EQ(SetBaseSetting(record.get()), -1);
    EXPECT_EQ(GetBaseSetting(record.get()), -1);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::Calls(), IsEmpty());
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx " + kReport + "\\" + GetParam().kind.substr(0, 255) +
                                " failed.return -1.",
                            testing::_));
}

INSTANTIATE_TEST_SUITE_P(Rows, BadKindTest,
                         ::testing::Values(KindRow{"Empty", ""}, KindRow{"Backslash", "A\\B"},
                                           KindRow{"TooLong", std::string(256, 'k')},
                                           KindRow{"WithoutEnd",
                                                   std::string(BASE_TEXT_CAPACITY, 'k')}),
                         test_support::Title());

// ---- GetBaseSetting -----------------------------------------------------------------------------

TEST_F(BaseSettingTest, GetReadsTheSwitchAndLeavesTheRest) {
    const auto record = Record("run command");
    EXPECT_EQ(GetBaseSetting(record.get()), 0);
    EXPECT_EQ(record->dwEnabled, 0U);
    EXPECT_EQ(record->dwShutdownTime, 60U);
    EXPECT_EQ(record->lplpTrapDest, nullptr);
    EXPECT_EQ(record->nTrapDestCount, 99U);
    EXPECT_STREQ(record->szTrapDestination, "trap text");
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >lpBaseData=0x[0-9a-f]+"), "0 <return 0."));
    EXPECT_EQ(fakes::Calls()[0].detail, kReport + "\\run command sam=0x20019");
}

TEST_F(BaseSettingTest, GetReadsTheTrapListOfTheSnmpKindInAnyCase) {
    const auto record = Record("manager (snmp)", 0);
    EXPECT_EQ(GetBaseSetting(record.get()), 0);
    EXPECT_EQ(record->dwEnabled, 1U);
    ASSERT_EQ(record->nTrapDestCount, 2U);
    EXPECT_STREQ(record->lplpTrapDest[0], "192.0.2.1");
    EXPECT_STREQ(record->lplpTrapDest[1], "192.0.2.2");
    FreeTrapDest(record->lplpTrapDest);
}

TEST_F(BaseSettingTest, GetDoesNotLookAtTheTrapList) {
    fakes::DeleteTree(kTraps);
    const auto record = Record("Manager (SNMP)", 0);
    EXPECT_EQ(GetBaseSetting(record.get()), 0);
    EXPECT_EQ(record->dwEnabled, 1U);
    EXPECT_EQ(record->nTrapDestCount, 0U);
    EXPECT_EQ(record->lplpTrapDest, nullptr);
}

TEST_F(BaseSettingTest, GetReadsTheShutdownDelay) {
    const auto record = Record("Shutdown Delay", 0);
    EXPECT_EQ(GetBaseSetting(record.get()), 0);
    EXPECT_EQ(record->dwEnabled, 1U);
    EXPECT_EQ(record->dwShutdownTime, 30U);
    EXPECT_EQ(record->nTrapDestCount, 99U);
}

TEST_F(BaseSettingTest, MissingValuesReadAs0) {
    fakes::DeleteValue(kShutdown, "ENABLED");
    fakes::DeleteValue(kShutdown + "\\SETTING", "SHUTDOWNTIME");
    fakes::DeleteValue(kReport + "\\VELOXREPORT", "ENABLED");
    const auto shutdown = Record("SHUTDOWN DELAY");
    EXPECT_EQ(GetBaseSetting(shutdown.get()), 0);
    EXPECT_EQ(shutdown->dwEnabled, 0U);
    EXPECT_EQ(shutdown->dwShutdownTime, 0U);
    const auto kind = Record("VELOXREPORT");
    EXPECT_EQ(GetBaseSetting(kind.get()), 0);
    EXPECT_EQ(kind->dwEnabled, 0U);
}

TEST_F(BaseSettingTest, AValueOfAnotherSizeReadsAs0) {
    fakes::StoreBytes(kReport + "\\VELOXREPORT", "ENABLED", REG_BINARY, "12");
    const auto record = Record("VELOXREPORT");
    EXPECT_EQ(GetBaseSetting(record.get()), 0);
    EXPECT_EQ(record->dwEnabled, 0U);
}

TEST_F(BaseSettingTest, GetOfAMissingKindFails) {
    const auto record = Record("NONE");
    EXPECT_EQ(GetBaseSetting(record.get()), -1);
    EXPECT_EQ(record->dwEnabled, 1U);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx " + kReport + "\\NONE failed.return -1."));
}

TEST_F(BaseSettingTest, GetOfAMissingShutdownDelayFails) {
    fakes::DeleteTree(kShutdown);
    EXPECT_EQ(GetBaseSetting(Record("SHUTDOWN DELAY").get()), -1);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx SOFTWARE\\XEV\\KESALERTMAN\\BASESETTING\\OTHER\\"
                            "SHUTDOWN DELAY failed.return -1."));
}

TEST_F(BaseSettingTest, GetOfAShutdownDelayWithoutSettingFailsWithTheSwitchRead) {
    fakes::DeleteTree(kShutdown + "\\SETTING");
    const auto record = Record("SHUTDOWN DELAY", 0);
    EXPECT_EQ(GetBaseSetting(record.get()), -1);
    EXPECT_EQ(record->dwEnabled, 1U);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx SOFTWARE\\XEV\\KESALERTMAN\\BASESETTING\\OTHER\\"
                            "SHUTDOWN DELAY\\SETTING failed.return -1."));
}

// ---- GetAllBaseSetting --------------------------------------------------------------------------

struct BaseList {
    BaseList() = default;
    BaseList(const BaseList &) = delete;
    BaseList &operator=(const BaseList &) = delete;
    ~BaseList() { FreeBaseSettings(records); }

    int Read() { return GetAllBaseSetting(&records, &count); }

    BASE_DATA **records = nullptr;
    DWORD count = 77;
};

TEST_F(BaseSettingTest, GetAllReadsEveryKindAndTheShutdownDelayBehindThem) {
    BaseList list;
    ASSERT_EQ(list.Read(), 0);
    ASSERT_EQ(list.count, 3U);
    EXPECT_STREQ(list.records[0]->szKindName, "MANAGER (SNMP)");
    EXPECT_EQ(list.records[0]->dwEnabled, 1U);
    EXPECT_EQ(list.records[0]->nTrapDestCount, 2U);
    EXPECT_STREQ(list.records[1]->szKindName, "RUN COMMAND");
    EXPECT_EQ(list.records[1]->dwEnabled, 0U);
    EXPECT_EQ(list.records[1]->lplpTrapDest, nullptr);
    EXPECT_STREQ(list.records[2]->szKindName, "VELOXREPORT");
    EXPECT_EQ(list.records[2]->dwEnabled, 1U);
    EXPECT_STREQ(list.records[3]->szKindName, "SHUTDOWN DELAY");
    EXPECT_EQ(list.records[3]->dwEnabled, 1U);
    EXPECT_EQ(list.records[3]->dwShutdownTime, 30U);
    EXPECT_EQ(list.records[4], nullptr);
    EXPECT_THAT(fakes::TraceLinesOf("GetAllBaseSetting"),
                ElementsAre(MatchesRegex("0 >lplplpBaseData=0x[0-9a-f]+,len=0x[0-9a-f]+"),
                            "3 CalculateSubKey(" + kReport + ") failed.", "0 <return 0"));
}

TEST_F(BaseSettingTest, GetAllWithoutKindsHandsOutTheShutdownDelayAlone) {
    fakes::DeleteTree(kReport);
    fakes::CreateKey(kReport);
    BaseList list;
    ASSERT_EQ(list.Read(), 0);
    EXPECT_EQ(list.count, 0U);
    EXPECT_STREQ(list.records[0]->szKindName, "SHUTDOWN DELAY");
    EXPECT_EQ(list.records[1], nullptr);
}

TEST_F(BaseSettingTest, GetAllWithoutReportFails) {
    fakes::DeleteTree(kReport);
    BaseList list;
    EXPECT_EQ(list.Read(), -1);
    EXPECT_EQ(list.records, nullptr);
    EXPECT_EQ(list.count, 77U);
    EXPECT_THAT(fakes::TraceLinesOf("GetAllBaseSetting"),
                ElementsAre(testing::_, "3 CalculateSubKey(" + kReport + ") failed.",
                            "1 <CalculateSubKey failed.return -1."));
}

TEST_F(BaseSettingTest, AKindThatCannotBeReadStaysWithZeros) {
    // The first is the count's, the second the listing's, the third that of the first kind.
    fakes::FailCall("RegOpenKeyEx", 3);
    BaseList list;
    ASSERT_EQ(list.Read(), 0);
    EXPECT_EQ(list.count, 3U);
    EXPECT_STREQ(list.records[0]->szKindName, "MANAGER (SNMP)");
    EXPECT_EQ(list.records[0]->dwEnabled, 0U);
    EXPECT_EQ(list.records[0]->lplpTrapDest, nullptr);
}

TEST_F(BaseSettingTest, FewerKindsThanCountedLeaveNoRecordOver) {
    fakes::FailCall("RegQueryInfoKey", 2);
    BaseList list;
    ASSERT_EQ(list.Read(), 0);
    EXPECT_EQ(list.count, 0U);
    EXPECT_STREQ(list.records[0]->szKindName, "SHUTDOWN DELAY");
    EXPECT_EQ(list.records[1], nullptr);
}

TEST_F(BaseSettingTest, EachRefusedAllocationIsTracedAndReleasesEverything) {
    std::vector<std::string> texts;
    int result = 0;
    DWORD count = 0;
    sweep::RefuseEachAllocation(
        Prepare,
        [&] {
            BaseList list;
            result = list.Read();
            count = list.count;
        },
        [&](int) {
            const auto lines = fakes::TraceLinesOf("GetAllBaseSetting");
            if (result == 0) {  // an allocation of the trap list, whose failure is not tested
                EXPECT_THAT(fakes::TraceLinesOf("TrapDestRead"), Contains("0 <return FALSE"));
                return;
            }
            EXPECT_EQ(result, -1);
            EXPECT_EQ(count, 77U);
            ASSERT_EQ(lines.size(), 4U);
            texts.push_back(lines[2]);
            EXPECT_EQ(lines[3], "0 <return -1.");
        });
    EXPECT_THAT(texts,
                ElementsAre("2 <malloc lplpszSubKey error!", "2 malloc lplpszSubKey[0] error!",
                            "2 malloc lplpszSubKey[1] error!", "2 malloc lplpszSubKey[2] error!",
                            "2 malloc lplpszSubKey[3] error!", "2 malloc lplpBaseData error!",
                            "2 malloc lplpBaseData[0] error!", "2 malloc lplpBaseData[1] error!",
                            "2 malloc lplpBaseData[2] error!", "2 malloc lplpBaseData[3] error!"));
}

// ---- Refused calls ------------------------------------------------------------------------------

TEST_F(BaseSettingTest, EachRefusedCallOfASetLeavesOnlyWholeValues) {
    int result = 0;
    sweep::RefuseEachCall(
        Prepare, [&] { result = SetBaseSetting(Record("SHUTDOWN DELAY", 0).get()); },
        [&](const fakes::Call &refused) {
            EXPECT_EQ(result, refused.function == "RegOpenKeyEx" ? -1 : 0);
            const DWORD time = *fakes::Number(kShutdown + "\\SETTING", "SHUTDOWNTIME");
            EXPECT_TRUE(time == 30 || time == 60);
            const DWORD enabled = *fakes::Number(kShutdown, "ENABLED");
            EXPECT_EQ(enabled == 0, result == 0 && refused.detail != kShutdown + " ENABLED");
        });
}

TEST_F(BaseSettingTest, EachRefusedCallOfAGetGivesItsResult) {
    int result = 0;
    const auto record = Record("SHUTDOWN DELAY");
    sweep::RefuseEachCall(
        Prepare, [&] { result = GetBaseSetting(record.get()); },
        [&](const fakes::Call &refused) {
            EXPECT_EQ(result, refused.function == "RegOpenKeyEx" ? -1 : 0);
        });
}

TEST_F(BaseSettingTest, EachRefusedCallOfAGetAllLosesNothing) {
    int result = 0;
    sweep::RefuseEachCall(
        Prepare,
        [&] {
            BaseList list;
            result = list.Read();
            EXPECT_THAT(list.count, testing::AnyOf(0U, 3U, 77U));
            EXPECT_EQ(list.records == nullptr, result == -1);
        },
        [&](const fakes::Call &) {
            EXPECT_EQ(result == -1, fakes::HasTrace(1, "<CalculateSubKey failed.return -1."));
        });
}

TEST(FreeBaseSettingsTest, AcceptsNull) {
    FreeBaseSettings(nullptr);
    FreeTrapDest(nullptr);
}

}  // namespace
