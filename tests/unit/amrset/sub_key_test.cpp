// Counting and listing sub-keys, and cutting colon-separated lists.
#include "velox/sub_key.h"

#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "fakes/platform.h"
#include "fakes/registry.h"
#include "support/title.h"

namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

constexpr char kPath[] = "SOFTWARE\\XEV\\KESALERTMAN\\BASESETTING\\REPORT";

class SubKeyTest : public fakes::PlatformTest {
  protected:
    static constexpr std::size_t kNames = 4;

    void SetUp() override {
        PlatformTest::SetUp();
        for (std::size_t i = 0; i < kNames; ++i) {
            std::memcpy(buffers_[i].data(), "untouched", sizeof "untouched");
            names_[i] = buffers_[i].data();
        }
    }

    std::array<std::array<char, 256>, kNames> buffers_{};
    char *names_[kNames] = {};
    DWORD count_ = 77;
};

TEST_F(SubKeyTest, CalculateSubKeyCountsDirectSubKeysOnly) {
    fakes::CreateKey(std::string(kPath) + "\\A\\DEEP");
    fakes::CreateKey(std::string(kPath) + "\\B");
    EXPECT_EQ(CalculateSubKey(kPath), 2);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre("0 >lpszKeyName=SOFTWARE\\XEV\\KESALERTMAN\\BASESETTING\\REPORT",
                            "0 <return 2"));
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
    EXPECT_EQ(fakes::Trace()[0].function, "CalculateSubKey");
    EXPECT_EQ(fakes::Calls()[0].detail, std::string(kPath) + " sam=0xF003F");
}

TEST_F(SubKeyTest, CalculateSubKeyOfAKeyWithoutSubKeysIs0) {
    fakes::CreateKey(kPath);
    EXPECT_EQ(CalculateSubKey(kPath), 0);
    EXPECT_TRUE(fakes::HasTrace(0, "<return 0"));
}

TEST_F(SubKeyTest, CalculateSubKeyOfAMissingKeyFails) {
    EXPECT_EQ(CalculateSubKey(kPath), -1);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx SOFTWARE\\XEV\\KESALERTMAN\\BASESETTING\\REPORT "
                            "failed.return -1."));
}

TEST_F(SubKeyTest, CalculateSubKeyReportsARefusedQueryAndClosesTheKey) {
    fakes::CreateKey(kPath);
    fakes::FailCall("RegQueryInfoKey");
    EXPECT_EQ(CalculateSubKey(kPath), -1);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <RegQueryInfoKey failed.return -1."));
}

TEST_F(SubKeyTest, ANullPathIsTracedAndPassedOn) {
    fakes::CreateKey("A");
    EXPECT_EQ(CalculateSubKey(nullptr), 1);
    EXPECT_EQ(fakes::TraceLines()[0], "0 >lpszKeyName=NULL");
    SearchSubKey(nullptr, names_, &count_);
    EXPECT_EQ(count_, 1U);
    EXPECT_STREQ(names_[0], "A");
    EXPECT_THAT(fakes::TraceLinesOf("SearchSubKey")[0],
                ::testing::StartsWith("0 >lpszKeyName=NULL,lplpszSubKey=0x"));
}

TEST_F(SubKeyTest, SearchSubKeyListsTheNamesInTheRegistrysOrder) {
    fakes::CreateKey(std::string(kPath) + "\\b");
    fakes::CreateKey(std::string(kPath) + "\\A");
    SearchSubKey(kPath, names_, &count_);
    EXPECT_EQ(count_, 2U);
    EXPECT_STREQ(names_[0], "A");
    EXPECT_STREQ(names_[1], "b");
    EXPECT_STREQ(names_[2], "untouched");
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >lpszKeyName=.*REPORT,lplpszSubKey=0x[0-9a-f]+,"
                                         "num=0x[0-9a-f]+"),
                            "0 *num=2", "0 <"));
    EXPECT_EQ(fakes::Trace()[0].function, "SearchSubKey");
    EXPECT_EQ(fakes::Calls()[0].detail, std::string(kPath) + " sam=0xF003F");
}

TEST_F(SubKeyTest, SearchSubKeyOfAKeyWithoutSubKeysStores0) {
    fakes::CreateKey(kPath);
    SearchSubKey(kPath, names_, &count_);
    EXPECT_EQ(count_, 0U);
    EXPECT_STREQ(names_[0], "untouched");
}

TEST_F(SubKeyTest, SearchSubKeyOfAMissingKeyTouchesNothing) {
    SearchSubKey(kPath, names_, &count_);
    EXPECT_EQ(count_, 77U);
    EXPECT_STREQ(names_[0], "untouched");
    EXPECT_THAT(fakes::TraceLines(), ElementsAre(::testing::_, "0 <"));
}

TEST_F(SubKeyTest, SearchSubKeyDoesNotTestTheQuery) {
    fakes::CreateKey(std::string(kPath) + "\\A");
    fakes::FailCall("RegQueryInfoKey");
    SearchSubKey(kPath, names_, &count_);
    EXPECT_EQ(count_, 0U);
    EXPECT_TRUE(fakes::HasTrace(0, "*num=0"));
}

TEST_F(SubKeyTest, SearchSubKeyCopiesTheLastNameForOneThatCannotBeRead) {
    fakes::CreateKey(std::string(kPath) + "\\A");
    fakes::CreateKey(std::string(kPath) + "\\B");
    fakes::CreateKey(std::string(kPath) + "\\C");
    fakes::FailCall("RegEnumKeyEx", 1);
    fakes::FailCall("RegEnumKeyEx", 3);
    SearchSubKey(kPath, names_, &count_);
    EXPECT_EQ(count_, 3U);
    EXPECT_STREQ(names_[0], "");
    EXPECT_STREQ(names_[1], "B");
    EXPECT_STREQ(names_[2], "B");
}

TEST_F(SubKeyTest, SearchSubKeyHandsOutTheLongestName) {
    const std::string longest(KES_REG_MAX_KEY_NAME, 'n');
    fakes::CreateKey(std::string(kPath) + "\\" + longest);
    SearchSubKey(kPath, names_, &count_);
    EXPECT_EQ(names_[0], longest);
}

TEST_F(SubKeyTest, TheBoundedVariantStopsAtItsCapacityAndTellsTheNeededCount) {
    for (const char *name : {"\\A", "\\B", "\\C"}) {
        fakes::CreateKey(std::string(kPath) + name);
    }
    EXPECT_EQ(SearchSubKeyBounded(kPath, names_, 2, &count_), 3);
    EXPECT_EQ(count_, 2U);
    EXPECT_STREQ(names_[1], "B");
    EXPECT_STREQ(names_[2], "untouched");
    EXPECT_THAT(fakes::TraceLinesOf("SearchSubKey"), ElementsAre(::testing::_, "0 *num=2", "0 <"));

    EXPECT_EQ(SearchSubKeyBounded(kPath, nullptr, 0, &count_), 3);
    EXPECT_EQ(count_, 0U);
}

TEST_F(SubKeyTest, TheBoundedVariantTellsAMissingKey) {
    EXPECT_EQ(SearchSubKeyBounded(kPath, names_, kNames, &count_), -1);
    EXPECT_EQ(count_, 77U);
}

struct ListRow {
    const char *title;
    std::string list;
    std::vector<std::string> fields;
};

class SeperateStringTest : public fakes::PlatformTest,
                           public ::testing::WithParamInterface<ListRow> {};

TEST_P(SeperateStringTest, CutsInPlace) {
    std::string list = GetParam().list;
    char unused[] = "unused";
    std::array<char *, 5> fields;
    fields.fill(unused);
    SeperateString(list.data(), fields.data());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        EXPECT_STREQ(fields[i],
                     i < GetParam().fields.size() ? GetParam().fields[i].c_str() : unused)
            << i;
    }
    EXPECT_THAT(fakes::TraceLines(), ElementsAre(MatchesRegex("0 >lpInString=" + GetParam().list +
                                                              ",lplpOutString=0x[0-9a-f]+"),
                                                 "0 <"));
    EXPECT_EQ(fakes::Trace()[0].function, "SeperateString");
}

INSTANTIATE_TEST_SUITE_P(Rows, SeperateStringTest,
                         ::testing::Values(ListRow{"ThreeFields", "a:b:c", {"a", "b", "c"}},
                                           ListRow{"NoColon", "abc", {"abc"}},
                                           ListRow{"Empty", "", {}},
                                           ListRow{"TrailingColon", "a:", {"a", ""}},
                                           ListRow{"LeadingColon", ":a", {"", "a"}},
                                           ListRow{"OneColon", ":", {"", ""}},
                                           ListRow{"TwoColons", "::", {"", "", ""}}),
                         test_support::Title());

TEST(SeperateStringTextTest, TheInputHoldsZerosInPlaceOfColons) {
    char list[] = "a:b:c";
    char *fields[3] = {};
    SeperateString(list, fields);
    EXPECT_EQ(std::string(list, sizeof list), std::string("a\0b\0c\0", 6));
}

TEST(SeperateStringTextTest, ANullListIsTracedAndHasNoField) {
    fakes::Reset();
    SeperateString(nullptr, nullptr);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(::testing::StartsWith("0 >lpInString=NULL,"), "0 <"));
}

}  // namespace
