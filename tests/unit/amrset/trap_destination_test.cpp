// The destinations of SNMP traps.
#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <array>
#include <string>
#include <vector>

#include "fakes/platform.h"
#include "fakes/registry.h"
#include "registry/text.h"
#include "sweep.h"
#include "velox/base_setting.h"

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

const std::string kSnmp = "SOFTWARE\\XEV\\KESALERTMAN\\BASESETTING\\REPORT\\MANAGER (SNMP)";
const std::string kTraps = kSnmp + "\\SETTING";
const std::string kOpenFailure = "<RegOpenKeyEx " + kTraps + " failed.return FALSE.";

// A list in memory as a caller has it.
class List {
  public:
    explicit List(const std::vector<std::string> &texts) : buffers_(texts.size()) {
        for (std::size_t i = 0; i < texts.size(); ++i) {
            EXPECT_TRUE(CopyText(buffers_[i].data(), buffers_[i].size(), texts[i].c_str()));
            pointers_.push_back(buffers_[i].data());
        }
        count = static_cast<DWORD>(texts.size());
    }

    char **Pointers() { return pointers_.data(); }
    LONG Count() const { return static_cast<LONG>(pointers_.size()); }
    std::vector<std::string> Texts(std::size_t number) const {
        return {pointers_.begin(), pointers_.begin() + static_cast<std::ptrdiff_t>(number)};
    }

    DWORD count;

  private:
    std::vector<std::array<char, TRAP_DEST_CAPACITY>> buffers_;
    std::vector<char *> pointers_;
};

// What TrapDestRead hands out.
struct ReadList {
    ReadList() = default;
    ReadList(const ReadList &) = delete;
    ReadList &operator=(const ReadList &) = delete;
    ~ReadList() { FreeTrapDest(traps); }

    DWORD Read() { return TrapDestRead(&count, &traps); }
    std::vector<std::string> Texts() const { return {traps, traps + count}; }

    char **traps = nullptr;
    DWORD count = 77;
};

std::vector<std::string> ManyTraps(int number) {
    std::vector<std::string> texts;
    for (int i = 0; i < number; ++i) {
        texts.push_back("trap" + std::to_string(number - i) + ".example");
    }
    return texts;
}

class TrapDestTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        Prepare();
    }

    static void Prepare() {
        fakes::CreateKey(kSnmp);
        fakes::StoreText(kTraps, "0", "zeta.example");
        fakes::StoreText(kTraps, "anything", "alpha.example");
        fakes::StoreText(kTraps, "1", "");
    }

    static const std::vector<std::string> &Stored() {
        static const std::vector<std::string> texts = {"zeta.example", "alpha.example", ""};
        return texts;
    }
};

// ---- TrapDestRead -------------------------------------------------------------------------------

TEST_F(TrapDestTest, ReadHandsOutEveryValueInItsOrder) {
    ReadList list;
    EXPECT_EQ(list.Read(), 1U);
    EXPECT_THAT(list.Texts(), ElementsAreArray(Stored()));
    EXPECT_EQ(list.traps[3], nullptr);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >count=0x[0-9a-f]+,lplplpTrapDest=0x[0-9a-f]+"),
                            "0 <return TRUE"));
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
    EXPECT_EQ(fakes::Trace()[0].function, "TrapDestRead");
    EXPECT_EQ(fakes::Calls()[0].detail, kTraps + " sam=0xF003F");
}

TEST_F(TrapDestTest, ReadOfAnEmptyListHandsOutAnArrayToRelease) {
    fakes::DeleteTree(kTraps);
    fakes::CreateKey(kTraps);
    ReadList list;
    EXPECT_EQ(list.Read(), 1U);
    EXPECT_EQ(list.count, 0U);
    ASSERT_NE(list.traps, nullptr);
    EXPECT_EQ(list.traps[0], nullptr);
}

TEST_F(TrapDestTest, ReadOfAMissingKeyFails) {
    fakes::DeleteTree(kTraps);
    ReadList list;
    EXPECT_EQ(list.Read(), 0U);
    EXPECT_EQ(list.count, 77U);
    EXPECT_EQ(list.traps, nullptr);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 " + kOpenFailure));
}

TEST_F(TrapDestTest, ReadHandsOutTheLongestDestination) {
    const std::string longest(TRAP_DEST_CAPACITY - 1, 't');
    fakes::StoreText(kTraps, "2", longest);
    ReadList list;
    EXPECT_EQ(list.Read(), 1U);
    EXPECT_EQ(list.Texts()[3], longest);
}

TEST_F(TrapDestTest, ReadEndsATextThatIsStoredWithoutTerminator) {
    fakes::StoreBytes(kTraps, "2", REG_SZ, "bare");
    ReadList list;
    EXPECT_EQ(list.Read(), 1U);
    EXPECT_EQ(list.Texts()[3], "bare");
}

TEST_F(TrapDestTest, AListWithATooLongDestinationCannotBeRead) {
    for (const std::string &data :
         {std::string(TRAP_DEST_CAPACITY, 't'), std::string(TRAP_DEST_CAPACITY, 't') + '\0'}) {
        fakes::ClearTrace();
        fakes::StoreBytes(kTraps, "anything", REG_SZ, data);
        ReadList list;
        EXPECT_EQ(list.Read(), 0U);
        EXPECT_EQ(list.count, 77U);
        EXPECT_THAT(fakes::TraceLines(),
                    ElementsAre(testing::_, "1 RegEnumValue(1) failed.", "0 <return FALSE"));
    }
}

TEST_F(TrapDestTest, EachRefusedAllocationOfAReadIsTraced) {
    std::vector<std::string> texts;
    DWORD result = 1;
    sweep::RefuseEachAllocation(
        Prepare,
        [&] {
            ReadList list;
            result = list.Read();
        },
        [&](int) {
            EXPECT_EQ(result, 0U);
            const auto lines = fakes::TraceLines();
            ASSERT_EQ(lines.size(), 3U);
            texts.push_back(lines[1]);
            EXPECT_EQ(lines[2], "0 <return FALSE");
        });
    EXPECT_THAT(texts, ElementsAre("2 malloc lplpTrapDest failed.", "2 malloc lplpTrapDest failed.",
                                   "2 malloc lplpTrapDest failed.", "2 malloc lplpTrapDest failed.",
                                   "2 malloc lpbPtr failed."));
}

TEST_F(TrapDestTest, EachRefusedCallOfAReadFailsIt) {
    DWORD result = 1;
    sweep::RefuseEachCall(
        Prepare,
        [&] {
            ReadList list;
            result = list.Read();
        },
        [&](const fakes::Call &refused) {
            EXPECT_EQ(result, refused.function == "RegCloseKey" ? 1U : 0U);
        });
}

TEST_F(TrapDestTest, DestinationsThatOthersRemoveMeanwhileAreNotCounted) {
    fakes::FailCall("RegEnumValue", 3, ERROR_NO_MORE_ITEMS);
    ReadList list;
    EXPECT_EQ(list.Read(), 1U);
    EXPECT_THAT(list.Texts(), ElementsAre("zeta.example", "alpha.example"));
}

// ---- GetTrapDest --------------------------------------------------------------------------------

TEST_F(TrapDestTest, GetFillsTheCallersBuffers) {
    List list({"-", "-", "-", "untouched"});
    EXPECT_EQ(GetTrapDest(&list.count, list.Pointers()), 1U);
    EXPECT_EQ(list.count, 3U);
    EXPECT_THAT(list.Texts(4), ElementsAre("zeta.example", "alpha.example", "", "untouched"));
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >count=0x[0-9a-f]+,lplpTrapDest=0x[0-9a-f]+"),
                            "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].function, "GetTrapDest");
    EXPECT_EQ(fakes::Calls()[0].detail, kTraps + " sam=0xF003F");
}

TEST_F(TrapDestTest, GetOfAMissingKeyFails) {
    fakes::DeleteTree(kTraps);
    List list({"-"});
    EXPECT_EQ(GetTrapDest(&list.count, list.Pointers()), 0U);
    EXPECT_EQ(list.count, 1U);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 " + kOpenFailure));
}

TEST_F(TrapDestTest, GetWithoutMemoryFails) {
    fakes::FailAllocation(1);
    List list({"-", "-", "-"});
    EXPECT_EQ(GetTrapDest(&list.count, list.Pointers()), 0U);
    EXPECT_EQ(fakes::Allocations(), 1);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("2 <malloc lpbPtr failed."));
}

TEST_F(TrapDestTest, TheBoundedVariantStopsAtItsCapacityAndTellsTheNeededCount) {
    List list({"-", "-", "untouched"});
    EXPECT_EQ(GetTrapDestBounded(&list.count, list.Pointers(), 2), 3);
    EXPECT_EQ(list.count, 2U);
    EXPECT_THAT(list.Texts(3), ElementsAre("zeta.example", "alpha.example", "untouched"));
    EXPECT_EQ(fakes::Trace()[0].function, "GetTrapDest");

    EXPECT_EQ(GetTrapDestBounded(&list.count, nullptr, 0), 3);
    EXPECT_EQ(list.count, 0U);
}

TEST_F(TrapDestTest, TheBoundedVariantTellsFailures) {
    List list({"-", "-", "-"});
    fakes::FailCall("RegEnumValue", 2);
    EXPECT_EQ(GetTrapDestBounded(&list.count, list.Pointers(), 3), -1);
    EXPECT_EQ(list.count, 3U);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(testing::_, "1 RegEnumValue(1) failed.", "0 <return FALSE"));
    fakes::FailCall("RegQueryInfoKey");
    EXPECT_EQ(GetTrapDestBounded(&list.count, list.Pointers(), 3), -1);
    EXPECT_TRUE(fakes::HasTrace(1, "<RegQueryInfoKey failed.return FALSE."));
}

// ---- SetTrapDest --------------------------------------------------------------------------------

TEST_F(TrapDestTest, SetReplacesTheWholeList) {
    List three({"c.example", "a.example", "b.example"});
    EXPECT_EQ(SetTrapDest(three.Count(), three.Pointers()), 1U);
    EXPECT_THAT(fakes::ValueNames(kTraps), ElementsAre("0", "1", "2"));
    EXPECT_EQ(fakes::Text(kTraps, "1"), "a.example");
    EXPECT_THAT(
        fakes::TraceLines(),
        ElementsAre(MatchesRegex("0 >nCount=3,lplpTrapDest=0x[0-9a-f]+"), "0 <return TRUE."));
    List one({"only.example"});
    EXPECT_EQ(SetTrapDest(one.Count(), one.Pointers()), 1U);
    EXPECT_THAT(fakes::ValueNames(kTraps), ElementsAre("0"));
    EXPECT_EQ(fakes::Text(kTraps, "0"), "only.example");
}

TEST_F(TrapDestTest, SetOfNoDestinationLeavesAnEmptyKey) {
    for (const LONG count : {0, -1}) {
        Prepare();
        EXPECT_EQ(SetTrapDest(count, nullptr), 1U);
        EXPECT_TRUE(fakes::KeyExists(kTraps));
        EXPECT_THAT(fakes::ValueNames(kTraps), IsEmpty());
    }
}

TEST_F(TrapDestTest, SetMakesTheKeyOfAFirstList) {
    fakes::DeleteTree(kTraps);
    List one({"only.example"});
    EXPECT_EQ(SetTrapDest(one.Count(), one.Pointers()), 1U);
    EXPECT_EQ(fakes::Text(kTraps, "0"), "only.example");
}

TEST_F(TrapDestTest, SetReplacesAListWhoseKeyCannotBeDeleted) {
    fakes::CreateKey(kTraps + "\\FOREIGN");
    List one({"only.example"});
    EXPECT_EQ(SetTrapDest(one.Count(), one.Pointers()), 1U);
    EXPECT_THAT(fakes::ValueNames(kTraps), ElementsAre("0"));
    EXPECT_TRUE(fakes::KeyExists(kTraps + "\\FOREIGN"));
}

TEST_F(TrapDestTest, AFailedCreationLeavesNoList) {
    fakes::FailCall("RegCreateKeyEx");
    List one({"only.example"});
    EXPECT_EQ(SetTrapDest(one.Count(), one.Pointers()), 0U);
    EXPECT_FALSE(fakes::KeyExists(kTraps));
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegCreateKeyEx " + kTraps + " failed.return FALSE."));
}

TEST_F(TrapDestTest, ARefusedValueEndsTheSet) {
    fakes::FailCall("RegSetValueEx", 2);
    List three({"a", "b", "c"});
    EXPECT_EQ(SetTrapDest(three.Count(), three.Pointers()), 0U);
    EXPECT_THAT(fakes::ValueNames(kTraps), ElementsAre("0"));
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <RegSetValueEx 1 failed.return FALSE."));
}

TEST_F(TrapDestTest, SetRefusesATooLongOrMissingTextBeforeItChangesAnything) {
    const auto before = fakes::Dump();
    std::string longest(TRAP_DEST_CAPACITY - 1, 't');
    std::string too_long(TRAP_DEST_CAPACITY, 't');
    char *texts[] = {longest.data(), too_long.data()};
    EXPECT_EQ(SetTrapDest(2, texts), 0U);
    texts[1] = nullptr;
    EXPECT_EQ(SetTrapDest(2, texts), 0U);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <lplpTrapDest[1] invalid.return FALSE.",
                                                  "1 <lplpTrapDest[1] invalid.return FALSE."));
    EXPECT_EQ(SetTrapDest(1, texts), 1U);
    EXPECT_EQ(fakes::Text(kTraps, "0"), longest);
}

TEST_F(TrapDestTest, TrapsComeBackInTheOrderOfTheirWriting) {
    for (const int number : {3, 300}) {
        const auto texts = ManyTraps(number);
        List list(texts);
        ASSERT_EQ(SetTrapDest(list.Count(), list.Pointers()), 1U);
        ReadList read;
        ASSERT_EQ(read.Read(), 1U);
        EXPECT_EQ(read.Texts(), texts);
    }
}

TEST_F(TrapDestTest, EachRefusedCallOfASetLeavesOnlyWholeDestinations) {
    DWORD result = 0;
    sweep::RefuseEachCall(
        Prepare,
        [&] {
            List list({"new0", "new1"});
            result = SetTrapDest(list.Count(), list.Pointers());
        },
        [&](const fakes::Call &refused) {
            const bool fails =
                refused.function == "RegCreateKeyEx" || refused.function == "RegSetValueEx";
            EXPECT_EQ(result, fails ? 0U : 1U);
            for (const std::string &name : fakes::ValueNames(kTraps)) {
                EXPECT_EQ(fakes::Text(kTraps, name), "new" + name);
            }
        });
}

// ---- DelDest ------------------------------------------------------------------------------------

TEST_F(TrapDestTest, DelDestDropsEveryEqualEntryInAnyCase) {
    List list({"A.example", "b.example", "a.EXAMPLE", "c.example"});
    char *const first = list.Pointers()[0];
    EXPECT_EQ(DelDest(&list.count, "a.example", list.Pointers()), 1U);
    EXPECT_EQ(list.count, 2U);
    EXPECT_THAT(list.Texts(2), ElementsAre("b.example", "c.example"));
    EXPECT_EQ(list.Pointers()[0], first);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 > nCount=0x[0-9a-f]+,lpTrapDest=a.example,"
                                         "lplpTrapDest=0x[0-9a-f]+"),
                            "0 <return TRUE"));
    EXPECT_EQ(fakes::Trace()[0].function, "DelDest");
    EXPECT_THAT(fakes::Calls(), IsEmpty());
}

TEST_F(TrapDestTest, DelDestOfAnUnknownEntryKeepsTheList) {
    List list({"a", "b"});
    EXPECT_EQ(DelDest(&list.count, "c", list.Pointers()), 1U);
    EXPECT_EQ(DelDest(&list.count, nullptr, list.Pointers()), 1U);
    EXPECT_EQ(list.count, 2U);
    EXPECT_THAT(list.Texts(2), ElementsAre("a", "b"));
}

TEST_F(TrapDestTest, DelDestOfAnEmptyListAndOfTheOnlyEntry) {
    List list({"a"});
    EXPECT_EQ(DelDest(&list.count, "A", list.Pointers()), 1U);
    EXPECT_EQ(list.count, 0U);
    EXPECT_EQ(DelDest(&list.count, "A", list.Pointers()), 1U);
    EXPECT_EQ(list.count, 0U);
}

TEST_F(TrapDestTest, AShortenedListIsWrittenBackAndReleasedWhole) {
    ReadList list;
    ASSERT_EQ(list.Read(), 1U);
    ASSERT_EQ(DelDest(&list.count, "ALPHA.example", list.traps), 1U);
    ASSERT_EQ(SetTrapDest(static_cast<LONG>(list.count), list.traps), 1U);
    EXPECT_EQ(fakes::Text(kTraps, "0"), "zeta.example");
    EXPECT_EQ(fakes::Text(kTraps, "1"), "");
    EXPECT_THAT(fakes::ValueNames(kTraps), ElementsAre("0", "1"));
}

}  // namespace
