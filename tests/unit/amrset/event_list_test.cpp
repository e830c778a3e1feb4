// Reading a whole event table.
#include "event_tables.h"

namespace {

using namespace event_tables;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::MatchesRegex;

template <typename Table>
struct List {
    List() = default;
    List(const List &) = delete;
    List &operator=(const List &) = delete;
    ~List() { Table::Free(records); }

    int Read() { return Table::GetAll(&records, &count, &sources, &most); }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (DWORD i = 0; i < count; ++i) {
            names.push_back(std::string(records[i]->szSourceName) + "/" + records[i]->szEventID);
        }
        return names;
    }

    typename Table::Data **records = nullptr;
    DWORD count = 77;
    DWORD sources = 77;
    DWORD most = 77;
};

template <typename Table>
class EventListTest : public EventTest<Table> {
  protected:
    static void Prepare() {
        for (const char *event : {"E1", "E2", "E3"}) {
            EventTest<Table>::StoreEvent(event, "SRC");
        }
        for (const char *event : {"1", "2", "3", "4", "5"}) {
            EventTest<Table>::StoreEvent(event, "ALPHA");
        }
        fakes::CreateKey(EventTest<Table>::Link("E2", "ID1"));
    }
    void SetUp() override {
        EventTest<Table>::SetUp();
        fakes::Reset();
        Prepare();
    }
};
TYPED_TEST_SUITE(EventListTest, Tables, TableName);

TYPED_TEST(EventListTest, ReadsEveryEventOfEverySource) {
    List<TypeParam> list;
    ASSERT_EQ(list.Read(), 0);
    EXPECT_THAT(list.Names(), ElementsAre("ALPHA/1", "ALPHA/2", "ALPHA/3", "ALPHA/4", "ALPHA/5",
                                          "SRC/E1", "SRC/E2", "SRC/E3"));
    EXPECT_EQ(list.sources, 2U);
    EXPECT_EQ(list.most, 5U);
    EXPECT_EQ(list.records[8], nullptr);
    EXPECT_EQ(list.records[6]->nDestIDCount, 1U);
    EXPECT_STREQ(list.records[6]->lplpszDestID[0], "ID1");
    EXPECT_EQ(list.records[7]->AliveLevel, 8U);
    EXPECT_STREQ(list.records[7]->szTrapName, "Trap");
    EXPECT_THAT(fakes::TraceLinesOf(TypeParam::kGetAll),
                ElementsAre(MatchesRegex(TypeParam::kGetAllEntry), "0 <return 0."));
    EXPECT_EQ(fakes::TraceLinesOf(TypeParam::kGet).size(), 16U);
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
    EXPECT_EQ(fakes::Calls()[0].detail, std::string(TypeParam::kRoot) + " sam=0xF003F");
}

TYPED_TEST(EventListTest, EveryRecordHas50BuffersOf512Bytes) {
    List<TypeParam> list;
    ASSERT_EQ(list.Read(), 0);
    for (char *buffer : list.records[7]->lplpszDestID) {
        std::memset(buffer, 'x', EVENT_DEST_CAPACITY);
    }
}

TYPED_TEST(EventListTest, WithoutEventsTheArrayCanBeReleased) {
    fakes::DeleteTree(TypeParam::kRoot);
    for (const char *source : {"", "\\EMPTY"}) {
        fakes::CreateKey(std::string(TypeParam::kRoot) + source);
        List<TypeParam> list;
        ASSERT_EQ(list.Read(), 0);
        EXPECT_EQ(list.count, 0U);
        EXPECT_EQ(list.sources, source[0] == '\0' ? 0U : 1U);
        EXPECT_EQ(list.most, 0U);
        ASSERT_NE(list.records, nullptr);
        EXPECT_EQ(list.records[0], nullptr);
    }
}

TYPED_TEST(EventListTest, WithoutTheTableItFails) {
    fakes::DeleteTree(TypeParam::kRoot);
    List<TypeParam> list;
    EXPECT_EQ(list.Read(), -1);
    EXPECT_EQ(list.records, nullptr);
    EXPECT_EQ(list.count, 0U);
    EXPECT_EQ(list.sources, 77U);
    EXPECT_THAT(fakes::TraceLinesOf(TypeParam::kGetAll),
                ElementsAre(testing::_, "1 <CalculateSubKey failed.return -1."));
}

TYPED_TEST(EventListTest, AnEventThatCannotBeReadStaysWithItsDefaults) {
    fakes::DeleteTree(this->Event("E2") + "\\EVENTSETTING");
    List<TypeParam> list;
    ASSERT_EQ(list.Read(), 0);
    EXPECT_EQ(list.count, 8U);
    EXPECT_STREQ(list.records[6]->szEventID, "E2");
    EXPECT_EQ(list.records[6]->nAction, 3U);
    EXPECT_EQ(list.records[6]->ObstacleKind, 2U);
    EXPECT_EQ(list.records[6]->AliveLevel, 3U);
    EXPECT_STREQ(list.records[6]->szTrapName, TypeParam::kNoTrapName);
    EXPECT_EQ(list.records[7]->nAction, 2U);
}

TYPED_TEST(EventListTest, ASourceThatCannotBeCountedHasNoEvents) {
    // Counting: the root, then ALPHA and SRC; the listing of the root comes in between.
    fakes::FailCall("RegQueryInfoKey", 3);
    List<TypeParam> list;
    ASSERT_EQ(list.Read(), 0);
    // Three records were allocated for SRC; the second pass finds ALPHA first and stops at them.
    EXPECT_THAT(list.Names(), ElementsAre("ALPHA/1", "ALPHA/2", "ALPHA/3"));
    EXPECT_EQ(list.most, 5U);
    EXPECT_EQ(list.records[3], nullptr);
}

TYPED_TEST(EventListTest, EventsThatAreGoneInTheSecondPassAreNotCounted) {
    // Root counted and listed, ALPHA and SRC counted; then ALPHA is counted again in vain.
    fakes::FailCall("RegQueryInfoKey", 5);
    List<TypeParam> list;
    ASSERT_EQ(list.Read(), 0);
    EXPECT_THAT(list.Names(), ElementsAre("SRC/E1", "SRC/E2", "SRC/E3"));
    EXPECT_EQ(list.most, 3U);
    EXPECT_EQ(list.sources, 2U);
    EXPECT_EQ(list.records[3], nullptr);
}

TYPED_TEST(EventListTest, OnAJapaneseSystemTheCatalogueIsChosenOnce) {
    fakes::TheSystem().language_id = 1041;
    fakes::TheLibc().catalogue = {{"reprttbl:Trap", "translated"}};
    List<TypeParam> list;
    ASSERT_EQ(list.Read(), 0);
    EXPECT_STREQ(list.records[0]->szTrapName, "translated");
    EXPECT_STREQ(list.records[7]->szTrapName, "translated");
    EXPECT_EQ(fakes::CallCount("setlocale"), 1);
}

// The registry calls a table costs are those that its parts cost: nothing is asked twice per event.
TYPED_TEST(EventListTest, TheNumberOfCallsGrowsWithTheEvents) {
    List<TypeParam> eight;
    ASSERT_EQ(eight.Read(), 0);
    const std::size_t calls = fakes::Calls().size();
    for (int i = 0; i < 72; ++i) {
        this->StoreEvent("N" + std::to_string(i));
    }
    List<TypeParam> eighty;
    ASSERT_EQ(eighty.Read(), 0);
    EXPECT_EQ(eighty.count, 80U);
    EXPECT_LE(fakes::Calls().size() - calls, calls * 10);
}

// The texts of the 50 destination buffers of the first record.
std::vector<std::string> BufferTexts(const std::string &array) {
    std::vector<std::string> texts(EVENT_MAX_DEST, "2 malloc " + array + "[0]->lplpszDestID[");
    for (std::size_t i = 0; i < texts.size(); ++i) {
        texts[i] += std::to_string(i) + "] failed.";
    }
    return texts;
}

void Append(std::vector<std::string> *texts, const std::vector<std::string> &more) {
    texts->insert(texts->end(), more.begin(), more.end());
}

// The texts of every allocation in its order, for a table with a source of one event.
std::vector<std::string> AgentTexts() {
    std::vector<std::string> texts = {"2 <malloc lpszSubKey failed.return -1.",
                                      "2 malloc SrcName failed.", "2 malloc SrcName[0] failed.",
                                      "2 malloc lplpAgntData failed.",
                                      "2 malloc lplpAgntData[0] failed."};
    Append(&texts, BufferTexts("lplpAgntData"));
    Append(&texts, {"2 malloc lpszSubKey failed", "2 malloc lpszSubKey[0] failed",
                    "2 malloc EventID failed.", "2 malloc EventID[0] failed.",
                    "2 malloc TrapName failed.", "2 malloc TrapName[0] failed."});
    return texts;
}

std::vector<std::string> SyslogTexts() {
    std::vector<std::string> texts = {
        "2 malloc lpszSubKey failed.",     "2 malloc lpszSubKey[0] failed.",
        "2 malloc SrcName failed.",        "2 malloc SrcName[0] failed.",
        "2 malloc lplpSyslogData failed.", "2 malloc lplpSyslogData[0] failed."};
    Append(&texts, BufferTexts("lplpSyslogData"));
    Append(&texts, {"2 malloc EventID failed.", "2 malloc EventID[0] failed."});
    return texts;
}

TYPED_TEST(EventListTest, EachRefusedAllocationIsTracedAndReleasesEverything) {
    std::vector<std::string> texts;
    int result = 0;
    DWORD count = 0;
    sweep::RefuseEachAllocation([&] { this->StoreEvent(); },
                                [&] {
                                    List<TypeParam> list;
                                    result = list.Read();
                                    count = list.count;
                                    EXPECT_EQ(list.records == nullptr, result == -1);
                                },
                                [&](int) {
                                    EXPECT_EQ(result, -1);
                                    EXPECT_EQ(count, 0U);
                                    const auto lines = fakes::TraceLinesOf(TypeParam::kGetAll);
                                    ASSERT_EQ(lines.size(), 3U);
                                    texts.push_back(lines[1]);
                                    EXPECT_EQ(lines[2], "0 <return -1.");
                                });
    EXPECT_THAT(texts, ElementsAreArray(TypeParam::kSyslog ? SyslogTexts() : AgentTexts()));
}

TYPED_TEST(EventListTest, EachRefusedCallGivesADocumentedResult) {
    int result = 0;
    DWORD count = 0;
    sweep::RefuseEachCall(
        this->Prepare,
        [&] {
            List<TypeParam> list;
            result = list.Read();
            count = list.count;
        },
        [&](const fakes::Call &) {
            const bool uncounted = fakes::HasTrace(1, "<CalculateSubKey failed.return -1.");
            EXPECT_EQ(result, uncounted ? -1 : 0);
            // A source whose name cannot be read is listed under the name before it.
            EXPECT_LE(count, 10U);
        });
}

TEST(FreeEventsTest, AcceptsNull) {
    FreeAgntSettings(nullptr);
    FreeSyslogSettings(nullptr);
}

}  // namespace
