// The destination list: how it is cut, and what each fault in it gives.
#include <gmock/gmock.h>

#include "mailer.h"
#include "support/title.h"

namespace {

using mailer::OwnTrace;
using mailer::TheModule;
using Addresses = std::vector<std::string>;

std::string Repeat(const std::string &piece, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) {
        text += piece;
    }
    return text;
}

struct Row {
    const char *title;
    std::string list;
    int result;
    Addresses to;       // of a success
    std::string trace;  // of a failure
};

constexpr char kEmpty[] = "1 <ETO invalid.return -4.";
constexpr char kNone[] = "1 <Invalid ETO address.return -4.";
constexpr char kLong[] = "1 <ETO is too long.return -5.";
constexpr char kBlank[] = "1 <Invalid Email address.return -6.";

class DestinationTest : public fakes::PlatformTest, public ::testing::WithParamInterface<Row> {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        mailer::StoreSettings();
        mailer::Add();
    }
};

TEST_P(DestinationTest, IsCutIntoAddresses) {
    EXPECT_EQ(AMAMVeloxTestReport(nullptr, 2, "S", GetParam().list.c_str(), nullptr),
              GetParam().result);
    if (GetParam().result != 0) {
        EXPECT_TRUE(TheModule().mails.empty());
        EXPECT_EQ(OwnTrace().back(), GetParam().trace);
        return;
    }
    ASSERT_EQ(TheModule().mails.size(), 1U);
    const mailer::Mail &mail = TheModule().mails[0];
    EXPECT_EQ(mail.to, GetParam().to);
    EXPECT_EQ(OwnTrace()[1], "0 VX_REG_TO:" + GetParam().list);
    EXPECT_THAT(OwnTrace(), ::testing::Contains("0 lpszTo[0]:" + GetParam().to[0]));
    // Argument 12 is what the module finds the body's length with.
    EXPECT_EQ(mail.body, fakes::FakeEncode(mailer::Body("A")));
}

const std::string k80(80, 'x');

INSTANTIATE_TEST_SUITE_P(
    Lists, DestinationTest,
    ::testing::Values(
        Row{"One", "a@b.example", 0, {"a@b.example"}, {}},
        Row{"Two", "a@b.example,c@d.example", 0, {"a@b.example", "c@d.example"}, {}},
        Row{"BlanksAround", "  a@b  ,  c@d  ", 0, {"a@b", "c@d"}, {}},
        Row{"EmptyEntries", ",,a@b,,", 0, {"a@b"}, {}},
        Row{"EntriesOfBlanks", " , a@b , , ", 0, {"a@b"}, {}},
        Row{"BlankBeforeACommaDoesNotReachTheNextAddress", "a@b ,c", 0, {"a@b", "c"}, {}},
        Row{"TabsAreCharacters", "a\tb", 0, {"a\tb"}, {}}, Row{"OneCharacter", "a", 0, {"a"}, {}},
        Row{"Empty", "", -4, {}, kEmpty}, Row{"OnlyBlanks", "   ", -4, {}, kNone},
        Row{"OnlyCommas", ",,,", -4, {}, kNone}, Row{"CommasAndBlanks", " , ,", -4, {}, kNone},
        Row{"BlankInside", "a b", -6, {}, kBlank},
        Row{"BlankInsideTheSecond", "a,b c", -6, {}, kBlank},
        Row{"SeveralBlanksInside", "a   b", -6, {}, kBlank},
        Row{"Exactly80Characters", k80, 0, {k80}, {}},
        Row{"Exactly80CharactersAndBlanks", " " + k80 + " ", 0, {k80}, {}},
        Row{"81Characters", k80 + "x", -5, {}, kLong},
        Row{"81CharactersInTheSecond", "a," + k80 + "x", -5, {}, kLong},
        Row{"TheEightyFirstCountsBeforeABlank", k80 + " x", -5, {}, kLong},
        Row{"512Characters",
            Repeat(k80 + ",", 6) + std::string(26, 'y'),
            0,
            Addresses{k80, k80, k80, k80, k80, k80, std::string(26, 'y')},
            {}},
        Row{"512CharactersEndingInACommaCloseNothing",
            Repeat(k80 + ",", 6) + std::string(25, 'y') + ",",
            0,
            Addresses{k80, k80, k80, k80, k80, k80, std::string(25, 'y')},
            {}},
        Row{"512Blanks", std::string(512, ' '), -4, {}, kNone},
        Row{"513Characters", Repeat(k80 + ",", 6) + std::string(27, 'y'), -5, {}, kLong},
        Row{"513Commas", std::string(513, ','), -5, {}, kLong},
        Row{"100Addresses", Repeat("a,", 100), 0, Addresses(100, "a"), {}},
        Row{"100AddressesWithoutTheLastComma", Repeat("a,", 99) + "a", 0, Addresses(100, "a"), {}},
        Row{"101Addresses", Repeat("a,", 100) + "b", -5, {}, kLong},
        Row{"256Addresses", Repeat("a,", 256), -5, {}, kLong}),
    test_support::Title());

TEST_F(DestinationTest, ANullListIsAnEmptyOne) {
    EXPECT_EQ(AMAMVeloxTestReport(nullptr, 2, "S", nullptr, nullptr), -4);
    EXPECT_THAT(OwnTrace(), ::testing::ElementsAre("0 >", "0 VX_REG_TO:", kEmpty));
}

TEST_F(DestinationTest, AListThatIsTooLongIsNotTraced) {
    EXPECT_EQ(AMAMVeloxTestReport(nullptr, 2, "S", std::string(100000, 'a').c_str(), nullptr), -5);
    EXPECT_THAT(OwnTrace(), ::testing::ElementsAre("0 >", kLong));
}

}  // namespace
