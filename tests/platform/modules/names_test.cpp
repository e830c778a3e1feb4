// Server names: how they are read, and that looking them up is bounded as everything else is.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include <mail_support/census.h>
#include <mail_support/certificates.h>
#include <mail_support/logging_in.h>
#include <mail_support/pop_server.h>
#include <mail_support/resolver.h>
#include <mail_support/sending.h>
#include <mail_support/smtp_server.h>
#include <mail_support/trace_recorder.h>
#include <session/host.h>
#include <support/title.h>

#include "module_fixture.h"

namespace {

using namespace mail_support;

struct HostCase {
    const char *title;
    std::string text;
    std::string read;  // empty: refused
    bool is_address;
};

class HostTest : public testing::TestWithParam<HostCase> {};

TEST_P(HostTest, IsReadAsDocumented) {
    const HostCase &row = GetParam();
    const auto host = session::ParseHost(row.text);
    ASSERT_EQ(host.has_value(), !row.read.empty());
    if (host) {
        EXPECT_EQ(host->text, row.read);
        EXPECT_EQ(host->is_address, row.is_address);
    }
}

const std::string kLabel63(63, 'a');
const std::string kName253 =
    kLabel63 + "." + kLabel63 + "." + kLabel63 + "." + std::string(61, 'b');

INSTANTIATE_TEST_SUITE_P(Addresses, HostTest,
                         testing::Values(HostCase{"IPv4", "192.0.2.1", "192.0.2.1", true},
                                         // never octal
                                         HostCase{"LeadingZeros", "010.001.000.255", "10.1.0.255",
                                                  true},
                                         HostCase{"NumberOf256", "256.0.0.1", "", false},
                                         HostCase{"NumberOfFourDigits", "0001.0.0.1", "", false},
                                         HostCase{"ThreeNumbers", "1.2.3", "", false},
                                         HostCase{"FiveNumbers", "1.2.3.4.5", "", false},
                                         HostCase{"EmptyNumber", "1..2.3", "", false},
                                         HostCase{"FinalDot", "1.2.3.4.", "", false},
                                         HostCase{"Blank", "1.2.3.4 ", "", false},
                                         HostCase{"Hexadecimal", "0x7f.0.0.1", "", false},
                                         HostCase{"HexadecimalAlone", "0x7f000001", "", false},
                                         HostCase{"NumberAlone", "2130706433", "", false},
                                         HostCase{"IPv6", "2001:DB8:0:0::1", "2001:db8::1", true},
                                         HostCase{"IPv6InBrackets", "[::1]", "", false}),
                         test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Names, HostTest,
    testing::Values(HostCase{"Name", "mail.test.example", "mail.test.example", false},
                    HostCase{"OneLabel", "mailhost", "mailhost", false},
                    HostCase{"FinalDot", "mail.test.example.", "mail.test.example", false},
                    HostCase{"Underscore", "mail_1.test", "mail_1.test", false},
                    HostCase{"NumberFirst", "1.mail.test", "1.mail.test", false},
                    HostCase{"LabelWithDigits", "3com", "3com", false},
                    HostCase{"NumberLast", "mail.1", "", false}, HostCase{"Empty", "", "", false},
                    HostCase{"DotAlone", ".", "", false}, HostCase{"TwoDots", "a..b", "", false},
                    HostCase{"HyphenFirst", "-a.b", "", false},
                    HostCase{"HyphenLast", "a-.b", "", false},
                    HostCase{"Zero", std::string("a\0b", 3), "", false},
                    HostCase{"Slash", "a/b", "", false}, HostCase{"At", "a@b", "", false},
                    HostCase{"HighByte", "\xC6\xFC.test", "", false},
                    HostCase{"LongestName", kName253, kName253, false},
                    HostCase{"LongerName", kName253 + "b", "", false},
                    HostCase{"LongerLabel", kLabel63 + "a.b", "", false}),
    test_support::Title());

class LookUpTest : public ModuleTest {
  protected:
    Resolver resolver_;
    TraceRecorder trace_;
};

TEST_F(LookUpTest, SmtpServerByName) {
    resolver_.Know("mail.test.example", {"127.0.0.1"});
    SmtpServer server({});
    EXPECT_EQ(Send({.server = "mail.test.example", .port = server.Port()}).status,
              MAIL_STATUS_SENT);
}

TEST_F(LookUpTest, CertificateIsForTheNameLookedUp) {
    resolver_.Know("mail.test.example", {"127.0.0.1"});
    const Authority known;
    authority_.Set(known.File());
    const Certificate certificate = known.Issue("DNS:mail.test.example");
    SmtpServer server({.certificate = &certificate});
    EXPECT_EQ(Send({.server = "mail.test.example",
                    .port = server.Port(),
                    .option = MAIL_OPTION_STARTTLS_REQUIRED})
                  .status,
              MAIL_STATUS_SENT)
        << trace_.AllText();
}

TEST_F(LookUpTest, AllAddressesOfASmtpServer) {
    const std::string other = OwnLoopbackAddress();
    resolver_.Know("mail.test.example", {other, "127.0.0.1"});
    SmtpServer server({});
    EXPECT_EQ(Send({.server = "mail.test.example", .port = server.Port()}).status, MAIL_STATUS_SENT)
        << trace_.AllText();
}

TEST_F(LookUpTest, AllAddressesOfAPopServer) {
    const std::string other = OwnLoopbackAddress();
    resolver_.Know("pop.test.example", {other, other, "127.0.0.1"});
    PopServer server({});
    EXPECT_TRUE(LogIn({.server = "pop.test.example", .port = server.Port()}).disconnect)
        << trace_.AllText();
}

TEST_F(LookUpTest, UnknownSmtpServer) {
    const Sent sent = Send({.server = "unknown.test.example", .port = 25});
    EXPECT_EQ(sent.status, MAIL_STATUS_CONNECTION);
    EXPECT_EQ(sent.answer, "name look-up: Could not resolve host: unknown.test.example");
}

TEST_F(LookUpTest, UnknownPopServer) {
    EXPECT_FALSE(LogIn({.server = "unknown.test.example", .port = 110}).connect);
    EXPECT_TRUE(trace_.Has(1,
                           "log-in failed, name look-up: Could not resolve host: "
                           "unknown.test.example"));
}

// The look-up itself cannot be ended; the call ends without it, and its thread goes when it is
// done.
TEST_F(ShortDeadlineTest, StallingLookUpOfASmtpServer) {
    const Census before;
    {
        Resolver resolver;
        resolver.StallAt("mail.test.example");
        const Sent sent =
            InTime(kDeadline, [] { return Send({.server = "mail.test.example", .port = 25}); });
        EXPECT_EQ(sent.status, MAIL_STATUS_CONNECTION);
        EXPECT_EQ(sent.answer, "name look-up: not finished within the deadline");
        EXPECT_LT(sent.elapsed, LongestCall(kDeadline));
    }
    EXPECT_TRUE(NothingLeftSince(before));
}

TEST_F(ShortDeadlineTest, StallingLookUpOfAPopServer) {
    const Census before;
    {
        Resolver resolver;
        resolver.StallAt("pop.test.example");
        const LoggedIn result =
            InTime(kDeadline, [] { return LogIn({.server = "pop.test.example", .port = 110}); });
        EXPECT_FALSE(result.connect);
        EXPECT_TRUE(result.release);
        EXPECT_LT(result.elapsed, LongestCall(kDeadline));
    }
    EXPECT_TRUE(NothingLeftSince(before));
}

}  // namespace
