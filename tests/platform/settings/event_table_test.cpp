// Both event tables in a real registry.
#include <velox/agent_setting.h>
#include <velox/syslog_setting.h>

#include <array>
#include <memory>

#include "settings_fixture.h"

namespace settings_test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

struct Agent {
    using Data = AGNT_DATA;
    static constexpr bool kSyslog = false;
    static const std::string &Sources() { return kAgentSources; }
    static constexpr auto kSet = SetAgntSetting;
    static constexpr auto kSetForSource = SetAgntDataForSN;
    static constexpr auto kGet = GetAgntSetting;
    static constexpr auto kGetAll = GetAllAgntSetting;
    static constexpr auto kFree = FreeAgntSettings;
};

struct Syslog {
    using Data = SYSLOG_DATA;
    static constexpr bool kSyslog = true;
    static const std::string &Sources() { return kSyslogSources; }
    static constexpr auto kSet = SetSyslogSetting;
    static constexpr auto kSetForSource = SetSyslogDataForSN;
    static constexpr auto kGet = GetSyslogSetting;
    static constexpr auto kGetAll = GetAllSyslogSetting;
    static constexpr auto kFree = FreeSyslogSettings;
};

template <typename Table>
struct Record {
    explicit Record(const std::string &event, const std::string &destination = "ID1") {
        Fill(data.szSourceName, "SRC");
        Fill(data.szEventID, event);
        for (std::size_t i = 0; i < buffers.size(); ++i) {
            data.lplpszDestID[i] = buffers[i].data();
        }
        std::memcpy(buffers[0].data(), destination.c_str(), destination.size() + 1);
        data.nAction = 1;
        data.ObstacleKind = 4;
        data.AliveLevel = 5;
        data.nDestAction = EVENT_DEST_LINK;
    }
    std::vector<std::string> Links() const {
        return {data.lplpszDestID, data.lplpszDestID + data.nDestIDCount};
    }

    typename Table::Data data{};
    std::array<std::array<char, EVENT_DEST_CAPACITY>, EVENT_MAX_DEST> buffers{};
};

template <typename Table>
class EventTables : public SettingsTest {
  protected:
    static std::string Event(const std::string &event, const std::string &source = "SRC") {
        return Table::Sources() + "\\" + source + "\\" + event;
    }
    static std::string Links(const std::string &event) {
        return Event(event) + "\\DESTINATIONSETTING\\ID_LIST";
    }
    static void StoreEvent(const std::string &event, const std::string &source = "SRC") {
        const std::string key = Event(event, source);
        CreateKey(key + "\\DESTINATIONSETTING\\ID_LIST");
        StoreNumber(key + "\\EVENTSETTING", "ACTION", 2);
        StoreText(key + "\\EVENTSETTING", "TRAPNAME", "Trap");
        StoreText(key + "\\EVENTSETTING", "RECOVERYACTION", "Recover");
        if (Table::kSyslog) {
            StoreText(key + "\\WATCHSETTING", "KEYWORD", "panic");
        }
    }
    void SetUp() override {
        SettingsTest::SetUp();
        CreateKey(kDestinations + "\\ID1");
        CreateKey(kDestinations + "\\ID2");
        StoreEvent("E1");
        StoreEvent("E2");
    }
};

using Tables = testing::Types<Agent, Syslog>;
struct TableName {
    template <typename Table>
    static std::string GetName(int) {
        return Table::kSyslog ? "Syslog" : "Agent";
    }
};
TYPED_TEST_SUITE(EventTables, Tables, TableName);

TYPED_TEST(EventTables, AnEventIsWrittenLinkedAndReadBack) {
    Record<TypeParam> record("E1");
    ASSERT_EQ(TypeParam::kSet(&record.data, 0), 0);
    EXPECT_THAT(Lines(this->Links("E1")), ElementsAre("ID1"));
    Record<TypeParam> read("e1", "");
    ASSERT_EQ(TypeParam::kGet(&read.data), 0);
    EXPECT_EQ(read.data.nAction, 1U);
    EXPECT_EQ(read.data.ObstacleKind, 4U);
    EXPECT_EQ(read.data.AliveLevel, 5U);
    EXPECT_STREQ(read.data.szTrapName, "Trap");
    EXPECT_STREQ(read.data.szRecoveryAction, "Recover");
    EXPECT_THAT(read.Links(), ElementsAre("ID1"));

    record.data.nDestAction = EVENT_DEST_UNLINK;
    Fill(record.data.szRecoveryAction, "Call");
    ASSERT_EQ(TypeParam::kSet(&record.data, 1), 0);
    EXPECT_THAT(Lines(this->Links("E1")), ElementsAre());
    ASSERT_EQ(TypeParam::kGet(&read.data), 0);
    EXPECT_STREQ(read.data.szRecoveryAction, "Call");
}

TYPED_TEST(EventTables, WithoutEventOrDestinationNothingIsChanged) {
    const std::vector<std::string> before = Lines(kAlertManager);
    Record<TypeParam> missing("E9");
    EXPECT_EQ(TypeParam::kSet(&missing.data, 1), -1);
    Record<TypeParam> nowhere("E1", "ID9");
    EXPECT_EQ(TypeParam::kSet(&nowhere.data, 1), -2);
    EXPECT_THAT(Lines(kAlertManager), ElementsAreArray(before));
}

TYPED_TEST(EventTables, EveryEventOfASourceIsLinkedAndUnlinked) {
    Record<TypeParam> record("", "ID2");
    ASSERT_EQ(TypeParam::kSetForSource(&record.data), 0);
    EXPECT_THAT(Lines(this->Links("E1")), ElementsAre("ID2"));
    EXPECT_THAT(Lines(this->Links("E2")), ElementsAre("ID2"));
    EXPECT_STREQ(record.data.szEventID, "E2");
    record.data.nDestAction = 2;
    ASSERT_EQ(TypeParam::kSetForSource(&record.data), 0);
    EXPECT_THAT(Lines(this->Links("E1")), ElementsAre());
    EXPECT_THAT(Lines(this->Links("E2")), ElementsAre());
}

TYPED_TEST(EventTables, FiftyLinksAreListedAndTheOthersStay) {
    for (int i = 0; i < 60; ++i) {
        CreateKey(this->Links("E1") + "\\D" + std::to_string(100 + i));
    }
    Record<TypeParam> read("E1", "");
    ASSERT_EQ(TypeParam::kGet(&read.data), 0);
    EXPECT_EQ(read.data.nDestIDCount, 50U);
    EXPECT_STREQ(read.data.lplpszDestID[49], "D149");
    EXPECT_EQ(Lines(this->Links("E1")).size(), 60U);
}

TYPED_TEST(EventTables, TheWholeTableIsRead) {
    for (const char *event : {"1", "2", "3", "4", "5"}) {
        this->StoreEvent(event, "OTHER");
    }
    typename TypeParam::Data **list = nullptr;
    DWORD count = 0;
    DWORD sources = 0;
    DWORD most = 0;
    ASSERT_EQ(TypeParam::kGetAll(&list, &count, &sources, &most), 0);
    ASSERT_EQ(count, 7U);
    EXPECT_EQ(sources, 2U);
    EXPECT_EQ(most, 5U);
    EXPECT_STREQ(list[0]->szSourceName, "OTHER");
    EXPECT_STREQ(list[6]->szEventID, "E2");
    EXPECT_EQ(list[6]->nAction, 2U);
    EXPECT_EQ(list[7], nullptr);
    TypeParam::kFree(list);
}

}  // namespace
}  // namespace settings_test
