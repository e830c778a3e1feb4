// Base settings and trap destinations in a real registry.
#include <velox/base_setting.h>
#include <velox/sub_key.h>

#include <memory>

#include "settings_fixture.h"

namespace settings_test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

class BaseSettings : public SettingsTest {
  protected:
    void SetUp() override {
        SettingsTest::SetUp();
        StoreNumber(kReport + "\\MANAGER (SNMP)", "ENABLED", 1);
        StoreNumber(kReport + "\\RUN COMMAND", "ENABLED", 0);
        StoreNumber(kReport + "\\VELOXREPORT", "ENABLED", 1);
    }
};

struct Traps {
    explicit Traps(const std::vector<std::string> &texts) : texts_(texts) {
        for (std::string &text : texts_) {
            pointers_.push_back(text.data());
        }
    }
    LONG Count() const { return static_cast<LONG>(texts_.size()); }
    char **Pointers() { return pointers_.data(); }

  private:
    std::vector<std::string> texts_;
    std::vector<char *> pointers_;
};

std::vector<std::string> ReadTraps() {
    DWORD count = 0;
    char **list = nullptr;
    EXPECT_EQ(TrapDestRead(&count, &list), DWORD{TRUE});
    const std::vector<std::string> texts(list, list + count);
    FreeTrapDest(list);
    return texts;
}

TEST_F(BaseSettings, ASwitchIsWrittenAndReadBack) {
    auto record = std::make_unique<BASE_DATA>();
    Fill(record->szKindName, "run command");
    Fill(record->szTrapDestination, "text");
    record->dwEnabled = 1;
    ASSERT_EQ(SetBaseSetting(record.get()), 0);
    EXPECT_THAT(Lines(kReport + "\\RUN COMMAND"),
                ElementsAre("ENABLED=0x1", "TrapDestination=(4096 bytes)"));
    record->dwEnabled = 0;
    ASSERT_EQ(GetBaseSetting(record.get()), 0);
    EXPECT_EQ(record->dwEnabled, 1U);
}

TEST_F(BaseSettings, TheShutdownDelayIsWrittenAndReadBack) {
    auto record = std::make_unique<BASE_DATA>();
    Fill(record->szKindName, "shutdown delay");
    record->dwEnabled = 1;
    record->dwShutdownTime = 120;
    ASSERT_EQ(SetBaseSetting(record.get()), 0);
    EXPECT_THAT(Lines(kShutdown), ElementsAre("ENABLED=0x1", "TrapDestination=(4096 bytes)",
                                              "SETTING", "SETTING SHUTDOWNTIME=0x78"));
    record->dwEnabled = 2;
    EXPECT_EQ(SetBaseSetting(record.get()), -1);
    record->dwEnabled = record->dwShutdownTime = 0;
    ASSERT_EQ(GetBaseSetting(record.get()), 0);
    EXPECT_EQ(record->dwEnabled, 1U);
    EXPECT_EQ(record->dwShutdownTime, 120U);
}

TEST_F(BaseSettings, AllKindsAreReadWithTheShutdownDelayBehindThem) {
    Traps traps({"10.0.0.1", "host.example"});
    ASSERT_EQ(SetTrapDest(traps.Count(), traps.Pointers()), DWORD{TRUE});
    BASE_DATA **list = nullptr;
    DWORD count = 0;
    ASSERT_EQ(GetAllBaseSetting(&list, &count), 0);
    ASSERT_EQ(count, 3U);
    EXPECT_STREQ(list[0]->szKindName, "MANAGER (SNMP)");
    EXPECT_EQ(list[0]->nTrapDestCount, 2U);
    EXPECT_STREQ(list[0]->lplpTrapDest[1], "host.example");
    EXPECT_STREQ(list[1]->szKindName, "RUN COMMAND");
    EXPECT_EQ(list[1]->dwEnabled, 0U);
    EXPECT_STREQ(list[2]->szKindName, "VELOXREPORT");
    EXPECT_STREQ(list[3]->szKindName, "SHUTDOWN DELAY");
    EXPECT_EQ(list[4], nullptr);
    FreeBaseSettings(list);
}

TEST_F(BaseSettings, TrapsComeBackInTheOrderOfTheirWriting) {
    for (const int number : {3, 300}) {
        std::vector<std::string> written;
        for (int i = 0; i < number; ++i) {
            written.push_back("host" + std::to_string((i * 7) % number));
        }
        Traps traps(written);
        ASSERT_EQ(SetTrapDest(traps.Count(), traps.Pointers()), DWORD{TRUE});
        EXPECT_THAT(ReadTraps(), ElementsAreArray(written));
    }
}

TEST_F(BaseSettings, AShorterListLeavesNothingOfTheLongerOne) {
    Traps three({"a", "b", "c"});
    Traps one({"d"});
    ASSERT_EQ(SetTrapDest(three.Count(), three.Pointers()), DWORD{TRUE});
    ASSERT_EQ(SetTrapDest(one.Count(), one.Pointers()), DWORD{TRUE});
    EXPECT_THAT(Lines(kTraps), ElementsAre("0=d"));
    ASSERT_EQ(SetTrapDest(0, nullptr), DWORD{TRUE});
    EXPECT_TRUE(KeyExists(kTraps));
    EXPECT_THAT(ReadTraps(), ElementsAre());
}

TEST_F(BaseSettings, AListBelowWhichThereIsAKeyIsReplacedToo) {
    Traps two({"a", "b"});
    Traps one({"c"});
    ASSERT_EQ(SetTrapDest(two.Count(), two.Pointers()), DWORD{TRUE});
    CreateKey(kTraps + "\\OTHER");
    ASSERT_EQ(SetTrapDest(one.Count(), one.Pointers()), DWORD{TRUE});
    EXPECT_THAT(Lines(kTraps), ElementsAre("0=c", "OTHER"));
}

TEST_F(BaseSettings, ATrapIsRemovedThroughTheList) {
    Traps traps({"a.example", "B.example", "c.example", "b.EXAMPLE"});
    ASSERT_EQ(SetTrapDest(traps.Count(), traps.Pointers()), DWORD{TRUE});
    DWORD count = 0;
    char **list = nullptr;
    ASSERT_EQ(TrapDestRead(&count, &list), DWORD{TRUE});
    ASSERT_EQ(DelDest(&count, "b.example", list), DWORD{TRUE});
    ASSERT_EQ(SetTrapDest(static_cast<LONG>(count), list), DWORD{TRUE});
    FreeTrapDest(list);
    EXPECT_THAT(ReadTraps(), ElementsAre("a.example", "c.example"));
}

TEST_F(BaseSettings, TheLongestTrapFitsAndALongerOneChangesNothing) {
    const std::string longest(TRAP_DEST_CAPACITY - 1, 'x');
    Traps traps({longest});
    ASSERT_EQ(SetTrapDest(traps.Count(), traps.Pointers()), DWORD{TRUE});
    Traps longer({longest + "x"});
    EXPECT_EQ(SetTrapDest(longer.Count(), longer.Pointers()), DWORD{FALSE});
    EXPECT_THAT(ReadTraps(), ElementsAre(longest));
}

TEST_F(BaseSettings, BoundedReadsStopAndTellTheNeededCount) {
    Traps traps({"a", "b", "c"});
    ASSERT_EQ(SetTrapDest(traps.Count(), traps.Pointers()), DWORD{TRUE});
    char buffers[2][TRAP_DEST_CAPACITY];
    char *list[] = {buffers[0], buffers[1]};
    DWORD count = 0;
    EXPECT_EQ(GetTrapDestBounded(&count, list, 2), 3);
    EXPECT_EQ(count, 2U);
    EXPECT_STREQ(list[1], "b");
    EXPECT_EQ(SearchSubKeyBounded(kReport.c_str(), list, 2, &count), 3);
    EXPECT_EQ(count, 2U);
    EXPECT_STREQ(list[0], "MANAGER (SNMP)");
    EXPECT_EQ(CalculateSubKey(kReport.c_str()), 3);
}

}  // namespace
}  // namespace settings_test
