// The heart-beat file through CheckKeyFD.
#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

#include "key_disk_fixture.h"
#include "support/title.h"

namespace {

using test_support::ToEuc;
using test_support::ToSjis;
using ::testing::ElementsAre;

class HeartbeatImportTest : public KeyDiskTest {
  protected:
    static std::optional<DWORD> Interval() { return fakes::Number(kHeartbeat, "HBINTERVAL"); }
};

struct Accepted {
    std::string title;
    std::string text;
    DWORD interval = 1;
};

class HeartbeatAccepted : public HeartbeatImportTest,
                          public ::testing::WithParamInterface<Accepted> {};

TEST_P(HeartbeatAccepted, IsStored) {
    Heartbeat(GetParam().text);
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_EQ(Interval(), GetParam().interval);
    EXPECT_EQ(LastTrace(1), std::vector<std::string>{"0 <return 0."});
    EXPECT_EQ(Writes().back(), "HBINTERVAL=" + std::to_string(GetParam().interval));
}

using namespace std::string_literals;

INSTANTIATE_TEST_SUITE_P(
    HeartbeatImport, HeartbeatAccepted,
    ::testing::Values(Accepted{"Plain", "[HEART-BEAT-INT]\r\n10\r\n", 10},
                      Accepted{"LfLineEnds", "[HEART-BEAT-INT]\n10\n", 10},
                      Accepted{"NoLastLineEnd", "[HEART-BEAT-INT]\r\n10", 10},
                      Accepted{"ItemLineOnly", "[HEART-BEAT-INT]\r\n", 1},
                      Accepted{"ItemLineWithoutEnd", "[HEART-BEAT-INT]", 1},
                      Accepted{"EmptyFile", "", 1},
                      Accepted{"BeginsWithAnEmptyLfLine", "\n[HEART-BEAT-INT]\n5\n", 1},
                      Accepted{"BeginsWithAZeroByte", "\0garbage"s, 1},
                      Accepted{"OnlyBlankLines", "\r\n \t\r\n\r\n", 1},
                      Accepted{"EmptyCrLfLinesAreIgnored",
                               "\r\n[HEART-BEAT-INT]\r\n\r\n \r\n7\r\n\r\n\t\r\n", 7},
                      Accepted{"AnEmptyLfLineEndsTheFile", "[HEART-BEAT-INT]\n\n7\n", 1},
                      Accepted{"BlanksBeforeTheValue", "[HEART-BEAT-INT]\r\n \t10\r\n", 10},
                      Accepted{"BlanksAfterTheValue", "[HEART-BEAT-INT]\r\n10 \t \r\n", 10},
                      Accepted{"Zero", "[HEART-BEAT-INT]\r\n0\r\n", 0},
                      Accepted{"LeadingZeros", "[HEART-BEAT-INT]\r\n0010\r\n", 10},
                      Accepted{"Largest", "[HEART-BEAT-INT]\r\n4294967295\r\n", 4294967295U},
                      Accepted{"WrapsAround", "[HEART-BEAT-INT]\r\n4294967297\r\n", 1},
                      Accepted{"ALoneCrAndAnEndMark", "[HEART-BEAT-INT]\r10\r\x1A", 10},
                      Accepted{"AZeroByteEndsItsLine", "[HEART-BEAT-INT]\r\n10\0x\r\n"s, 10}),
    test_support::Title());

struct Refused {
    std::string title;
    std::string text;
    std::vector<std::string> trace;  // without the leaving trace
};

class HeartbeatRefused : public HeartbeatImportTest,
                         public ::testing::WithParamInterface<Refused> {};

TEST_P(HeartbeatRefused, FailsWithoutStatusRows) {
    fakes::StoreNumber(kHeartbeat, "HBINTERVAL", 77);
    Heartbeat(GetParam().text);
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(Interval(), 77U);
    std::vector<std::string> expected = GetParam().trace;
    expected.emplace_back("0 <return 1.");
    EXPECT_EQ(LastTrace(expected.size()), expected);
    EXPECT_EQ(fakes::Text(kSetup, "MailAdrs"), "a@b.example");
}

INSTANTIATE_TEST_SUITE_P(
    HeartbeatImport, HeartbeatRefused,
    ::testing::Values(
        Refused{"OtherItem", "[HEARTBEAT]\r\n", {"1 Item name error : AMVLXHBI : [HEARTBEAT]"}},
        Refused{"NoItem", "10\r\n", {"1 Item name error : AMVLXHBI : 10"}},
        Refused{"ABlankBeforeTheItem",
                " [HEART-BEAT-INT]\r\n",
                {"1 Item name error : AMVLXHBI :  [HEART-BEAT-INT]"}},
        Refused{"ABlankAfterTheItem",
                "[HEART-BEAT-INT] \r\n",
                {"1 Item name error : AMVLXHBI : [HEART-BEAT-INT] "}},
        Refused{"TheFirstLineIsConverted",
                ToSjis("[例]\r\n"),
                {"1 Item name error : AMVLXHBI : " + ToEuc("[例]")}},
        Refused{"ALaterLineIsNotConverted",
                ToSjis("\r\n[例]\r\n"),
                {"1 Item name error : AMVLXHBI : " + ToSjis("[例]")}},
        Refused{"AFirstLineThatDoesNotConvert",
                "\x81\x20\r\n",
                {"1 Item name error : AMVLXHBI : \x81\x20"}},
        Refused{"NoDigits",
                "[HEART-BEAT-INT]\r\nx\r\n",
                {"1 Value ? : AMVLXHBI : 78", "1 Value error : AMVLXHBI : x"}},
        Refused{"ALetterAfterDigits",
                "[HEART-BEAT-INT]\r\n 1x\r\n",
                {"1 Value ? : AMVLXHBI : 31", "1 Value ? : AMVLXHBI : 78",
                 "1 Value error : AMVLXHBI :  1x"}},
        Refused{"ASign",
                "[HEART-BEAT-INT]\r\n-1\r\n",
                {"1 Value ? : AMVLXHBI : 2D", "1 Value error : AMVLXHBI : -1"}},
        Refused{"AByteAbove7F",
                "[HEART-BEAT-INT]\r\n\xB1\r\n",
                {"1 Value ? : AMVLXHBI : B1", "1 Value error : AMVLXHBI : \xB1"}},
        Refused{"AnotherNumber",
                "[HEART-BEAT-INT]\r\n1 0\r\n",
                {"1 Value ? : AMVLXHBI : 31", "1 Value ? : AMVLXHBI : 20",
                 "1 Value terminate error : AMVLXHBI : 1 0(30)"}},
        Refused{"AByteAbove7FAfterTheNumber",
                "[HEART-BEAT-INT]\r\n1\t\xB1\r\n",
                {"1 Value ? : AMVLXHBI : 31", "1 Value ? : AMVLXHBI : 09",
                 "1 Value terminate error : AMVLXHBI : 1\t\xB1(B1)"}},
        Refused{"AThirdLine",
                "[HEART-BEAT-INT]\r\n1\r\n2\r\n",
                {"1 Value ? : AMVLXHBI : 31", "1 Value Line error : AMVLXHBI"}},
        Refused{"AnEndMarkAfterCrLfIsAThirdLine",
                "[HEART-BEAT-INT]\r\n1\r\n\x1A",
                {"1 Value ? : AMVLXHBI : 31", "1 Value Line error : AMVLXHBI"}},
        Refused{"AnEndMarkAfterTheItemLineIsAValue",
                "[HEART-BEAT-INT]\r\n\x1A",
                {"1 Value ? : AMVLXHBI : 1A", "1 Value error : AMVLXHBI : \x1A"}}),
    test_support::Title());

TEST_F(HeartbeatImportTest, TheItemLineIsTheCatalogues) {
    fakes::TheLibc().catalogue = {{"velox:[HEART-BEAT-INT]", ToEuc("[間隔]")}};
    Heartbeat(ToSjis("[間隔]\r\n5\r\n"));
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_EQ(Interval(), 5U);

    Heartbeat("[HEART-BEAT-INT]\r\n6\r\n");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(Interval(), 5U);
}

// Bytes that are no Shift-JIS never equal the catalogue's text, even when they are its bytes.
TEST_F(HeartbeatImportTest, AFirstLineThatDoesNotConvertIsNoItemLine) {
    fakes::TheLibc().catalogue = {{"velox:[HEART-BEAT-INT]", "\x81\x20"}};
    Heartbeat("\x81\x20\r\n5\r\n");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_TRUE(fakes::HasTrace(1, "Item name error : AMVLXHBI : \x81\x20"));
}

TEST_F(HeartbeatImportTest, WithoutTheFileTheIntervalStays) {
    fakes::StoreNumber(kHeartbeat, "HBINTERVAL", 77);
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_EQ(Interval(), 77U);
    EXPECT_THAT(LastTrace(2), ElementsAre("1 CreateFile AMVLXHBI Error!", "0 <return 0."));
}

TEST_F(HeartbeatImportTest, WithoutTheFileNothingIsCreated) {
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_FALSE(fakes::KeyExists(kHeartbeat));
}

// A first line of half-width katakana becomes twice as long.
TEST_F(HeartbeatImportTest, TheLongestFirstLine) {
    Heartbeat(std::string(2000, '\xB1') + "\r\n");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(LastTrace(2)[0].size(), std::string("1 Item name error : AMVLXHBI : ").size() + 2048);
}

TEST_F(HeartbeatImportTest, PiecesOfABlankLineAreIgnored) {
    Heartbeat("[HEART-BEAT-INT]\r\n" + std::string(3000, ' ') + "12\r\n");
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_EQ(Interval(), 12U);
}

struct Fault {
    std::string title;
    std::string call;
    int nth = 1;
    std::string message;
};

class HeartbeatFaults : public HeartbeatImportTest, public ::testing::WithParamInterface<Fault> {};

TEST_P(HeartbeatFaults, Fail) {
    Heartbeat("[HEART-BEAT-INT]\r\n5\r\n");
    fakes::FailCall(GetParam().call, GetParam().nth);
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_THAT(LastTrace(2), ElementsAre("1 " + GetParam().message, "0 <return 1."));
    EXPECT_EQ(Interval(), std::nullopt);
}

// Reads and key creations of the files before come first.
INSTANTIATE_TEST_SUITE_P(
    HeartbeatImport, HeartbeatFaults,
    ::testing::Values(Fault{"FirstRead", "ReadFile", 3, "GetFileLine AMVLXHBI Error2!"},
                      Fault{"LaterRead", "ReadFile", 4, "GetFileLine AMVLXHBI Error3!"},
                      Fault{"Key", "AMACRERegCreateKey", 3,
                            "CreateKey SOFTWARE\\XEV\\VLXService\\HEARTBEAT Error7!"},
                      Fault{"Number", "AMACRERegWriteDword", 1, "WriteDword HBINTERVAL Error4!\n"}),
    test_support::Title());

}  // namespace
