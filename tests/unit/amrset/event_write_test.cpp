// Writing one event of either table, and linking all events of a source.
#include "event_tables.h"

namespace {

using namespace event_tables;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

template <typename Table>
class EventWriteTest : public EventTest<Table> {};
TYPED_TEST_SUITE(EventWriteTest, Tables, TableName);

// ---- One event ----------------------------------------------------------------------------------

TYPED_TEST(EventWriteTest, WritesTheNumbersAndLeavesTheTexts) {
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Set(&record.data, 0), 0);
    const std::string key = this->Event() + "\\EVENTSETTING";
    EXPECT_EQ(fakes::Number(key, "ACTION"), 1U);
    EXPECT_EQ(fakes::Number(key, "OBSTACLEKIND"), 4U);
    EXPECT_EQ(fakes::Number(key, "ALIVELEVEL"), 5U);
    EXPECT_EQ(fakes::Text(key, "TRAPNAME"), "Trap");
    EXPECT_EQ(fakes::Text(key, "RECOVERYACTION"), "Recover");
    EXPECT_THAT(fakes::SubKeys(this->Event() + "\\DESTINATIONSETTING\\ID_LIST"), IsEmpty());
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex(TypeParam::kSetEntry), TypeParam::kSetExit));
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
    EXPECT_EQ(fakes::Trace()[0].function, TypeParam::kSet);
    EXPECT_EQ(fakes::Calls()[0].detail, kDestinations + "\\ID1 sam=0x20019");
}

TYPED_TEST(EventWriteTest, WritesTheRecoveryActionWhenTold) {
    for (const LONG flag : {1, -1}) {
        Record<TypeParam> record;
        ASSERT_TRUE(CopyText(record.data.szRecoveryAction, flag == 1 ? "one" : "minus one"));
        EXPECT_EQ(TypeParam::Set(&record.data, flag), 0);
        EXPECT_EQ(fakes::Text(this->Event() + "\\EVENTSETTING", "RECOVERYACTION"),
                  record.data.szRecoveryAction);
    }
}

TYPED_TEST(EventWriteTest, ARecoveryActionWithoutEndIsNotStored) {
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Set(&record.data, 1), 0);
    EXPECT_EQ(fakes::Text(this->Event() + "\\EVENTSETTING", "RECOVERYACTION"), "Recover");
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 The text for RECOVERYACTION has no end."));
}

TYPED_TEST(EventWriteTest, LinksAndUnlinks) {
    Record<TypeParam> record;
    record.data.nDestAction = EVENT_DEST_LINK;
    EXPECT_EQ(TypeParam::Set(&record.data, 0), 0);
    EXPECT_TRUE(fakes::KeyExists(this->Link()));
    EXPECT_EQ(TypeParam::Set(&record.data, 0), 0);  // again: nothing to do

    record.data.nDestAction = 2;
    EXPECT_EQ(TypeParam::Set(&record.data, 0), 0);
    EXPECT_TRUE(fakes::KeyExists(this->Link()));

    fakes::CreateKey(this->Link("E1", "ID2"));
    record.data.nDestAction = EVENT_DEST_UNLINK;
    EXPECT_EQ(TypeParam::Set(&record.data, 0), 0);
    EXPECT_FALSE(fakes::KeyExists(this->Link()));
    EXPECT_TRUE(fakes::KeyExists(this->Link("E1", "ID2")));
    EXPECT_EQ(TypeParam::Set(&record.data, 0), 0);
    EXPECT_THAT(fakes::TraceLines(1), IsEmpty());
}

TYPED_TEST(EventWriteTest, TheFirstLinkMakesTheListOfLinks) {
    fakes::DeleteTree(this->Event() + "\\DESTINATIONSETTING");
    Record<TypeParam> record;
    record.data.nDestAction = EVENT_DEST_LINK;
    EXPECT_EQ(TypeParam::Set(&record.data, 0), 0);
    EXPECT_TRUE(fakes::KeyExists(this->Link()));
}

TYPED_TEST(EventWriteTest, AnEventThatDoesNotExistIsNotCreated) {
    const auto before = fakes::Dump();
    for (const char *event : {"NONE", "E1\\X"}) {
        fakes::ClearTrace();
        Record<TypeParam> record("SRC", event);
        record.data.nDestAction = EVENT_DEST_LINK;
        EXPECT_EQ(TypeParam::Set(&record.data, 1), -1);
        EXPECT_EQ(fakes::Dump(), before);
        EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <RegOpenKeyEx " + this->Event(event) +
                                                      "\\EVENTSETTING failed.return -1."));
    }
}

TYPED_TEST(EventWriteTest, ADestinationThatDoesNotExistChangesNothing) {
    const auto before = fakes::Dump();
    Record<TypeParam> record("SRC", "E1", "NONE");
    record.data.nDestAction = EVENT_DEST_LINK;
    EXPECT_EQ(TypeParam::Set(&record.data, 1), -2);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex(TypeParam::kSetEntry),
                            "1 <RegOpenKeyEx " + kDestinations + "\\NONE failed.return -2."));
}

TYPED_TEST(EventWriteTest, NamesThatAreNoKeyNamesNeverReachTheRegistry) {
    fakes::CreateKey(this->Link("E1", "DEEP\\ER"));
    fakes::CreateKey(kDestinations + "\\DEEP\\ER");
    const auto before = fakes::Dump();
    for (const char *id : {"", "DEEP\\ER", "\\ID1"}) {
        Record<TypeParam> record("SRC", "E1", id);
        record.data.nDestAction = EVENT_DEST_UNLINK;
        EXPECT_EQ(TypeParam::Set(&record.data, 1), -2);
        EXPECT_EQ(TypeParam::SetForSource(&record.data), -1);
    }
    EXPECT_THAT(fakes::Calls(), IsEmpty());
    for (const char *name : {"", "SRC\\E1"}) {
        Record<TypeParam> by_source(name, "E1");
        by_source.data.nDestAction = EVENT_DEST_LINK;
        EXPECT_EQ(TypeParam::Set(&by_source.data, 1), -1);
        EXPECT_EQ(TypeParam::SetForSource(&by_source.data), -2);
        Record<TypeParam> by_event("SRC", name);
        by_event.data.nDestAction = EVENT_DEST_UNLINK;
        EXPECT_EQ(TypeParam::Set(&by_event.data, 1), -1);
    }
    EXPECT_EQ(fakes::Dump(), before);
}

TYPED_TEST(EventWriteTest, ARecordWithoutDestinationBufferNamesNoDestination) {
    Record<TypeParam> record;
    record.data.lplpszDestID[0] = nullptr;
    EXPECT_EQ(TypeParam::Set(&record.data, 0), -2);
    EXPECT_EQ(TypeParam::SetForSource(&record.data), -1);
    EXPECT_THAT(fakes::Calls(), IsEmpty());
}

TYPED_TEST(EventWriteTest, RangesOfTheFields) {
    struct Row {
        DWORD action, kind, level;
        const char *trace;  // null: accepted
    };
    constexpr const char *kAction = TypeParam::kBadAction;
    constexpr const char *kKind = TypeParam::kBadKind;
    constexpr const char *kLevel = TypeParam::kBadLevel;
    const Row rows[] = {
        {0, 1, 0, nullptr}, {2, 2, 8, nullptr}, {1, 3, 1, nullptr},          {1, 4, 1, nullptr},
        {1, 6, 1, nullptr}, {3, 1, 0, kAction}, {0xFFFFFFFF, 1, 0, kAction}, {0, 0, 0, kKind},
        {0, 5, 0, kKind},   {0, 7, 0, kKind},   {0, 0xFFFFFFFF, 0, kKind},   {0, 1, 9, kLevel},
        {3, 5, 9, kAction}, {2, 5, 9, kKind}};
    for (const Row &row : rows) {
        fakes::ClearTrace();
        const auto before = fakes::Dump(this->Event() + "\\EVENTSETTING");
        Record<TypeParam> record;
        record.data.nAction = row.action;
        record.data.ObstacleKind = row.kind;
        record.data.AliveLevel = row.level;
        EXPECT_EQ(TypeParam::Set(&record.data, 1), row.trace == nullptr ? 0 : -1);
        if (row.trace != nullptr) {
            EXPECT_THAT(fakes::TraceLines(1), ElementsAre(row.trace));
            EXPECT_EQ(fakes::Dump(this->Event() + "\\EVENTSETTING"), before);
        } else {
            EXPECT_EQ(fakes::Number(this->Event() + "\\EVENTSETTING", "ACTION"), row.action);
        }
    }
}

TYPED_TEST(EventWriteTest, ARefusedFieldLeavesTheLinkChanged) {
    Record<TypeParam> record;
    record.data.nDestAction = EVENT_DEST_LINK;
    record.data.AliveLevel = 9;
    EXPECT_EQ(TypeParam::Set(&record.data, 0), -1);
    EXPECT_TRUE(fakes::KeyExists(this->Link()));
    record.data.nDestAction = EVENT_DEST_UNLINK;
    EXPECT_EQ(TypeParam::Set(&record.data, 0), -1);
    EXPECT_FALSE(fakes::KeyExists(this->Link()));
}

TYPED_TEST(EventWriteTest, EachRefusedCallOfASetLeavesWholeValues) {
    int result = 0;
    Record<TypeParam> record;
    record.data.nDestAction = EVENT_DEST_LINK;
    sweep::RefuseEachCall(
        this->Prepare, [&] { result = TypeParam::Set(&record.data, 0); },
        [&](const fakes::Call &refused) {
            const bool setting = refused.detail.find("SETTING sam=") != std::string::npos;
            const bool destination = refused.detail.starts_with(kDestinations);
            const bool open = refused.function == "RegOpenKeyEx";
            EXPECT_EQ(result, open && destination ? -2 : open && setting ? -1 : 0);
            const DWORD action = *fakes::Number(this->Event() + "\\EVENTSETTING", "ACTION");
            EXPECT_TRUE(action == 1 || action == 2);
        });
}

// ---- All events of a source ---------------------------------------------------------------------

template <typename Table>
class SourceTest : public EventTest<Table> {
  protected:
    static void Prepare() {
        EventTest<Table>::Prepare();
        EventTest<Table>::StoreEvent("E2");
        EventTest<Table>::StoreEvent("E3");
        EventTest<Table>::StoreEvent("E1", "OTHER");
    }
    void SetUp() override {
        EventTest<Table>::SetUp();
        fakes::Reset();
        Prepare();
    }
};
TYPED_TEST_SUITE(SourceTest, Tables, TableName);

TYPED_TEST(SourceTest, LinksEveryEvent) {
    Record<TypeParam> record;
    record.data.nDestAction = EVENT_DEST_LINK;
    EXPECT_EQ(TypeParam::SetForSource(&record.data), 0);
    for (const char *event : {"E1", "E2", "E3"}) {
        EXPECT_TRUE(fakes::KeyExists(this->Link(event)));
    }
    EXPECT_THAT(fakes::SubKeys(this->Event("E1", "OTHER") + "\\DESTINATIONSETTING\\ID_LIST"),
                IsEmpty());
    EXPECT_STREQ(record.data.szEventID, "E3");
    EXPECT_THAT(fakes::TraceLinesOf(TypeParam::kForSource),
                ElementsAre(MatchesRegex(TypeParam::kForSourceEntry), TypeParam::kForSourceDone));
    EXPECT_EQ(fakes::Calls()[0].detail, kDestinations + "\\ID1 sam=0x20019");
}

TYPED_TEST(SourceTest, AnyOtherActionUnlinks) {
    for (const DWORD action : {0U, 2U, 99U}) {
        for (const char *event : {"E1", "E2", "E3"}) {
            fakes::CreateKey(this->Link(event));
        }
        fakes::CreateKey(this->Link("E2", "ID2"));
        Record<TypeParam> record("SRC", "untouched");
        record.data.nDestAction = action;
        EXPECT_EQ(TypeParam::SetForSource(&record.data), 0);
        for (const char *event : {"E1", "E2", "E3"}) {
            EXPECT_FALSE(fakes::KeyExists(this->Link(event)));
        }
        EXPECT_TRUE(fakes::KeyExists(this->Link("E2", "ID2")));
        EXPECT_STREQ(record.data.szEventID, "untouched");
    }
}

TYPED_TEST(SourceTest, AnEventWithoutListOfLinksFailsTheResultOnly) {
    fakes::DeleteTree(this->Event("E2") + "\\DESTINATIONSETTING");
    Record<TypeParam> record;
    record.data.nDestAction = EVENT_DEST_LINK;
    EXPECT_EQ(TypeParam::SetForSource(&record.data), -1);
    EXPECT_TRUE(fakes::KeyExists(this->Link("E1")));
    EXPECT_FALSE(fakes::KeyExists(this->Event("E2") + "\\DESTINATIONSETTING"));
    EXPECT_TRUE(fakes::KeyExists(this->Link("E3")));
    EXPECT_THAT(fakes::TraceLinesOf(TypeParam::kForSource),
                ElementsAre(testing::_, TypeParam::kForSourcePartly));
}

TYPED_TEST(SourceTest, ARefusedLinkFailsTheResult) {
    fakes::FailCall("RegCreateKeyEx", 2);
    Record<TypeParam> record;
    record.data.nDestAction = EVENT_DEST_LINK;
    EXPECT_EQ(TypeParam::SetForSource(&record.data), -1);
    EXPECT_TRUE(fakes::KeyExists(this->Link("E1")));
    EXPECT_FALSE(fakes::KeyExists(this->Link("E2")));
    EXPECT_TRUE(fakes::KeyExists(this->Link("E3")));
}

TYPED_TEST(SourceTest, ASourceWithoutEventsSucceeds) {
    fakes::CreateKey(this->Source("EMPTY"));
    Record<TypeParam> record("EMPTY");
    record.data.nDestAction = EVENT_DEST_LINK;
    EXPECT_EQ(TypeParam::SetForSource(&record.data), 0);
}

TYPED_TEST(SourceTest, ADestinationThatDoesNotExistIsNamed) {
    Record<TypeParam> record("SRC", "E1", "NONE");
    record.data.nDestAction = EVENT_DEST_LINK;
    EXPECT_EQ(TypeParam::SetForSource(&record.data), -1);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre(TypeParam::kForSourceNoDest + kDestinations +
                                                  "\\NONE failed.return -1."));
}

TYPED_TEST(SourceTest, ASourceThatDoesNotExistIsNotRead) {
    Record<TypeParam> record("NONE");
    EXPECT_EQ(TypeParam::SetForSource(&record.data), -2);
    EXPECT_THAT(fakes::TraceLinesOf(TypeParam::kForSource),
                ElementsAre(testing::_, TypeParam::kForSourceNoSource));
}

TYPED_TEST(SourceTest, EachRefusedAllocationIsTracedAndChangesNothing) {
    std::vector<std::string> texts;
    int result = 0;
    Record<TypeParam> record;
    record.data.nDestAction = EVENT_DEST_LINK;
    sweep::RefuseEachAllocation(
        this->Prepare, [&] { result = TypeParam::SetForSource(&record.data); },
        [&](int) {
            EXPECT_EQ(result, -1);
            EXPECT_FALSE(fakes::KeyExists(this->Link()));
            ASSERT_EQ(fakes::TraceLinesOf(TypeParam::kForSource).size(), 2U);
            texts.push_back(fakes::TraceLinesOf(TypeParam::kForSource)[1]);
        });
    EXPECT_THAT(texts, ElementsAre(TypeParam::kForSourceNoArray, "2 malloc IDresult[ 0 ] error!",
                                   "2 malloc IDresult[ 1 ] error!", "2 malloc IDresult[ 2 ] error!",
                                   "2 malloc IDresult[ 3 ] error!"));
}

TYPED_TEST(SourceTest, EachRefusedCallGivesADocumentedResult) {
    for (const DWORD action : {EVENT_DEST_LINK, EVENT_DEST_UNLINK}) {
        int result = 0;
        Record<TypeParam> record;
        record.data.nDestAction = action;
        sweep::RefuseEachCall(
            this->Prepare, [&] { result = TypeParam::SetForSource(&record.data); },
            [&](const fakes::Call &refused) {
                if (refused.detail.starts_with(kDestinations) &&
                    refused.function == "RegOpenKeyEx") {
                    EXPECT_EQ(result, -1);
                } else if (fakes::HasTrace(1, "<RegQueryInfoKey failed.return -1.") ||
                           fakes::HasTrace(
                               1, "<RegOpenKeyEx " + this->Source() + " failed.return -1.")) {
                    EXPECT_EQ(result, -2);
                } else {
                    EXPECT_THAT(result, testing::AnyOf(0, -1));
                }
                EXPECT_TRUE(fakes::KeyExists(this->Event("E1", "OTHER")));
            });
    }
}

// ---- The system log's own -----------------------------------------------------------------------

class SyslogWriteTest : public EventTest<Syslog> {};

TEST_F(SyslogWriteTest, RewritesReportCountAndWatchTimeOnly) {
    Record<Syslog> record;
    EXPECT_EQ(SetSyslogSetting(&record.data, 0), 0);
    const std::string key = Event() + "\\WATCHSETTING";
    EXPECT_THAT(fakes::Dump(key),
                ElementsAre(key, key + " KEYWORD=REG_SZ:panic", key + " WATCHTIME=REG_DWORD:0xC",
                            key + " REPORTCOUNT=REG_DWORD:0xB", key + " THRESHOLD=REG_DWORD:0x9"));
    EXPECT_EQ(fakes::Number(Event() + "\\EVENTSETTING", "SYSTEMDEFINED"), 1U);
    std::vector<std::string> written;
    for (const fakes::Call &call : fakes::Calls()) {
        if (call.function == "RegSetValueEx") {
            written.push_back(call.detail.substr(Event().size() + 1));
        }
    }
    EXPECT_THAT(written, ElementsAre("EVENTSETTING ACTION", "EVENTSETTING OBSTACLEKIND",
                                     "EVENTSETTING ALIVELEVEL", "WATCHSETTING ReportCount",
                                     "WATCHSETTING WatchTime"));
}

TEST_F(SyslogWriteTest, AnItemWithoutWatchSettingFailsAfterItsEventSetting) {
    fakes::DeleteTree(Event() + "\\WATCHSETTING");
    Record<Syslog> record;
    EXPECT_EQ(SetSyslogSetting(&record.data, 0), -1);
    EXPECT_EQ(fakes::Number(Event() + "\\EVENTSETTING", "ACTION"), 1U);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx " + Event() + "\\WATCHSETTING failed.return -1."));
}

TEST_F(SyslogWriteTest, TheAgentsTableHasNoWatchSetting) {
    fakes::Reset();
    fakes::CreateKey(kDestinations + "\\ID1");
    fakes::StoreNumber(std::string(Agent::kRoot) + "\\SRC\\E1\\EVENTSETTING", "ACTION", 0);
    Record<Agent> record;
    EXPECT_EQ(SetAgntSetting(&record.data, 0), 0);
    EXPECT_THAT(fakes::SubKeys(std::string(Agent::kRoot) + "\\SRC\\E1"),
                ElementsAre("EVENTSETTING"));
}

}  // namespace
