// Texts in fixed arrays: what does not fit is reported and never cut or overrun.
#include "registry/text.h"

#include <gtest/gtest.h>

#include <string>

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

TEST(TextOrNullTest, ShowsNull) {
    EXPECT_STREQ(TextOrNull(nullptr), "NULL");
    EXPECT_STREQ(TextOrNull(""), "");
}

}  // namespace
