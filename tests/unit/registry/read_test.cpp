// Typed reads: bounds, terminators, and what a failure leaves.
#include "registry/read.h"

#include <gtest/gtest.h>

#include "fakes/platform.h"
#include "fakes/registry.h"

namespace {

constexpr char kPath[] = "SOFTWARE\\XEV\\VLXService\\SETUP";

class ReadTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        fakes::CreateKey(kPath);
    }
    char text_[5 + 1] = "zzzzz";
};

TEST_F(ReadTest, ATextThatFillsTheSizeIsRead) {
    fakes::StoreText(kPath, "VERSION", "abcd");
    EXPECT_TRUE(ReadText(kPath, "VERSION", text_));
    EXPECT_STREQ(text_, "abcd");
}

TEST_F(ReadTest, ATextWithoutTerminatorStaysInside) {
    fakes::StoreBytes(kPath, "VERSION", REG_SZ, "abcde");
    EXPECT_TRUE(ReadText(kPath, "VERSION", text_));
    EXPECT_STREQ(text_, "abcde");
}

TEST_F(ReadTest, ATextOverTheSizeFailsAndLeavesAnEmptyText) {
    fakes::StoreText(kPath, "VERSION", "abcde");
    EXPECT_FALSE(ReadText(kPath, "VERSION", text_));
    EXPECT_STREQ(text_, "");
}

TEST_F(ReadTest, AMissingTextLeavesAnEmptyText) {
    EXPECT_FALSE(ReadText(kPath, "VERSION", text_));
    EXPECT_STREQ(text_, "");
    EXPECT_TRUE(fakes::HasTrace(1, "<RegQueryValueEx(VERSION) failed."));
}

TEST_F(ReadTest, AFieldTakesATextWithItsTerminator) {
    fakes::StoreText(kPath, "VERSION", "abcde");
    EXPECT_TRUE(ReadField(kPath, "VERSION", text_));
    EXPECT_STREQ(text_, "abcde");
}

TEST_F(ReadTest, ATextThatFillsAFieldWithoutTerminatorCannotBeRead) {
    fakes::StoreBytes(kPath, "VERSION", REG_SZ, "abcdef");
    EXPECT_FALSE(ReadField(kPath, "VERSION", text_));
    EXPECT_STREQ(text_, "");
}

TEST_F(ReadTest, AMissingTextLeavesAnEmptyField) {
    EXPECT_FALSE(ReadField(kPath, "VERSION", text_));
    EXPECT_STREQ(text_, "");
}

TEST_F(ReadTest, ANumberIsRead) {
    DWORD number = 7;
    fakes::StoreNumber(kPath, "SETTING", 0x12345678);
    EXPECT_TRUE(ReadNumber(kPath, "SETTING", &number));
    EXPECT_EQ(number, 0x12345678U);
}

TEST_F(ReadTest, AMissingNumberLeavesTheOutput) {
    DWORD number = 7;
    EXPECT_FALSE(ReadNumber(kPath, "SETTING", &number));
    EXPECT_EQ(number, 7U);
}

TEST_F(ReadTest, ANumberOfMoreThanFourBytesLeavesTheOutput) {
    DWORD number = 7;
    fakes::StoreText(kPath, "SETTING", "12345");
    EXPECT_FALSE(ReadNumber(kPath, "SETTING", &number));
    EXPECT_EQ(number, 7U);
}

}  // namespace
