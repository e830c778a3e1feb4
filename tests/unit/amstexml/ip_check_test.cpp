// What a server text counts as, with the trace record that says why.
#include <gmock/gmock.h>

#include "fakes/platform.h"
#include "support/title.h"
#include "velox/mail_base.h"

extern "C" int IpCheckedFromC(const char *text);

namespace {

using ::testing::ElementsAre;

constexpr char kAddress[] = "0 <return 1.";
constexpr char kHost[] = "1 <invalid IP.return 0.";
constexpr char kInvalid[] = "1 <invalid IP.return 2.";
constexpr char kCharacter[] = "1 <invalid char.return 2.";
constexpr char kNumber[] = "1 <invalid number.return 2.";

struct Row {
    const char *title;
    const char *text;
    int result;
    const char *trace;
};

class IpCheckTest : public fakes::PlatformTest, public ::testing::WithParamInterface<Row> {};

TEST_P(IpCheckTest, ClassifiesTheText) {
    EXPECT_EQ(AMBIMyIPCheck(GetParam().text), GetParam().result);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(std::string("0 >szMyIPString=") + GetParam().text, GetParam().trace));
    for (const auto &record : fakes::Trace()) {
        EXPECT_EQ(record.source, "amstexml");
        EXPECT_EQ(record.function, "AMBIMyIPCheck");
    }
    EXPECT_EQ(IpCheckedFromC(GetParam().text), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, IpCheckTest,
    ::testing::Values(
        Row{"Plain", "192.168.1.10", 1, kAddress}, Row{"Zeros", "0.0.0.0", 1, kAddress},
        Row{"Highest", "255.255.255.255", 1, kAddress},
        Row{"LeadingZeros", "001.2.3.255", 1, kAddress},
        Row{"FirstTooHigh", "256.1.1.1", 2, kNumber}, Row{"LastTooHigh", "1.1.1.256", 2, kNumber},
        Row{"AllNines", "999.999.999.999", 2, kNumber}, Row{"EmptySecondField", "1..2.3", 0, kHost},
        Row{"EmptyFirstField", ".1.2.3", 0, kHost}, Row{"OnlyADot", ".", 0, kHost},
        Row{"EmptyFieldAtTheEnd", "1.2.3..", 0, kHost}, Row{"ThreeFields", "1.2.3", 2, kInvalid},
        Row{"OneField", "1", 2, kInvalid}, Row{"FiveFields", "1.2.3.4.5", 2, kInvalid},
        Row{"NoFourthField", "1.2.3.", 2, kInvalid},
        Row{"DotBehindTheFourthField", "1.2.3.4.", 2, kInvalid},
        Row{"NothingBehindTheFourthFieldCounts", "1.2.3.4.mail.example", 2, kInvalid},
        Row{"Empty", "", 2, kInvalid}, Row{"HostName", "mail.example", 0, kHost},
        Row{"ShortHostName", "mx", 2, kInvalid}, Row{"ShortLabels", "ab.cd", 2, kInvalid},
        Row{"ThreeShortLabels", "mx1.foo.com", 2, kInvalid},
        Row{"FourShortLabels", "a.b.c.d", 2, kCharacter},
        Row{"FourCharactersWithoutDot", "abcd", 0, kHost},
        Row{"FourDigitField", "1.2.3.1234", 0, kHost}, Row{"ShortIpVersion6", "::1", 2, kInvalid},
        Row{"IpVersion6", "fe80::1", 0, kHost}, Row{"BlankAtTheEnd", "1.2.3.4 ", 2, kCharacter},
        Row{"BlankAtTheStart", " 1.2.3.4", 2, kCharacter}, Row{"Sign", "1.2.3.-4", 2, kCharacter},
        Row{"HighByte", "1.2.3.\xB1", 2, kCharacter},
        Row{"CharacterBeforeTooHighNumber", "999.1.1.x", 2, kCharacter}),
    test_support::Title());

}  // namespace
