// Texts in fixed arrays: what does not fit is reported and never cut or overrun.
#include "registry/text.h"

#include <gtest/gtest.h>

#include <string>

#include "support/title.h"

namespace {

TEST(CopyTextTest, FitsExactly) {
    char buffer[4] = "zzz";
    EXPECT_TRUE(CopyText(buffer, "abc"));
    EXPECT_STREQ(buffer, "abc");
}

TEST(CopyTextTest, OneByteTooLongGivesAnEmptyText) {
    char buffer[4] = "zzz";
    EXPECT_FALSE(CopyText(buffer, "abcd"));
    EXPECT_STREQ(buffer, "");
}

TEST(CopyTextTest, ReadsNoFurtherThanTheCapacity) {
    const char unterminated[4] = {'a', 'b', 'c', 'd'};
    char buffer[4] = "zzz";
    EXPECT_FALSE(CopyText(buffer, sizeof buffer, unterminated));
}

TEST(CopyTextTest, NoCapacityTouchesNothing) {
    char byte = 'z';
    EXPECT_FALSE(CopyText(&byte, 0, "a"));
    EXPECT_EQ(byte, 'z');
}

TEST(FormatTextTest, FitsExactly) {
    char buffer[4];
    EXPECT_TRUE(FormatText(buffer, sizeof buffer, "%s%d", "ab", 3));
    EXPECT_STREQ(buffer, "ab3");
}

TEST(FormatTextTest, OneByteTooLongGivesAnEmptyText) {
    char buffer[4] = "zzz";
    EXPECT_FALSE(FormatText(buffer, sizeof buffer, "%s", "abcd"));
    EXPECT_STREQ(buffer, "");
}

struct CutRow {
    const char *title;
    std::string text;
    std::size_t capacity;
    std::string kept;
    bool fits;
};

class CutTextTest : public ::testing::TestWithParam<CutRow> {};

TEST_P(CutTextTest, KeepsWholeCharacters) {
    char buffer[16];
    EXPECT_EQ(CutText(buffer, GetParam().capacity, GetParam().text.c_str()), GetParam().fits);
    EXPECT_EQ(buffer, GetParam().kept);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, CutTextTest,
    ::testing::Values(CutRow{"Empty", "", 1, "", true},
                      CutRow{"FitsExactly", "abc", 4, "abc", true},
                      CutRow{"CutsAscii", "abcd", 4, "abc", false},
                      CutRow{"KanjiFits", "\xB4\xC1\xBB\xFA", 5, "\xB4\xC1\xBB\xFA", true},
                      CutRow{"KanjiCutBeforeItsTrail", "\xB4\xC1\xBB\xFA", 4, "\xB4\xC1", false},
                      CutRow{"HalfWidthKatakana", "a\x8E\xB1\x8E\xB2", 5, "a\x8E\xB1", false},
                      CutRow{"ThreeByteCharacter", "\x8F\xB0\xA1\x8F\xB0\xA2", 6, "\x8F\xB0\xA1",
                             false},
                      CutRow{"LeadByteAtTheCut", "abc\xB4\xC1", 5, "abc", false},
                      CutRow{"NothingFits", "\x8F\xB0\xA1", 3, "", false}),
    test_support::Title());

TEST(CutTextTest, EndsAFullBufferInPlace) {
    char buffer[4] = {'a', '\xB4', '\xC1', 'b'};
    EXPECT_FALSE(CutText(buffer, buffer));
    EXPECT_STREQ(buffer, "a\xB4\xC1");
}

TEST(TextOrNullTest, ShowsNull) {
    EXPECT_STREQ(TextOrNull(nullptr), "NULL");
    EXPECT_STREQ(TextOrNull(""), "");
}

}  // namespace
