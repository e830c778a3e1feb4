// Reports from the registry to the mailbox: the command, the library, the modules and real servers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include <support/encoding.h>
#include <support/title.h>
#include <velox/mail_report.h>

#include "mailbox.h"
#include "report_fixture.h"
#include "servers.h"

namespace {

using mail_support::OwnLoopbackAddress;
using testing::HasSubstr;
using veloxctl_test::Result;
using veloxctl_test::Veloxctl;

struct Language {
    const char *title;
    const char *name;
    bool japanese;
};

class ReportLanguageTest : public ReportTest, public testing::WithParamInterface<Language> {
  protected:
    ReportLanguageTest() { language_.Set(GetParam().name); }

    // The mail as the receiver reads it: by uudecode, and by the command.
    void ExpectText(const DeliveredMail &mail, const std::string &utf8) {
        EXPECT_EQ(Decode(mail), test_support::ToEuc(utf8));
        EXPECT_EQ(MustSucceed({"report", "decode"}, mail.body), Shown(utf8));
    }
};

// Every kind in turn, so that each finds what the one before recorded.
TEST_P(ReportLanguageTest, ArrivesAsTheRegistryCallsForIt) {
    const bool japanese = GetParam().japanese;
    const Exim exim({});
    UseServer(OwnLoopbackAddress(), Exim::kPort);
    const std::string message = folder_.Write("message", "設置しました\nsecond line\n");
    struct Step {
        std::vector<std::string> words;
        std::string identifier;
        std::string message;
        std::uint32_t opening;
        std::uint32_t set_up;
    };
    const std::string stored_message = "設置しました\r\nsecond line\r\n";
    const Step steps[] = {
        {{"report", "test", "--kind", "2"}, "A", "", 0, 0},
        {{"report", "opening", "--message", message}, "X", stored_message, 1, 0},
        {{"report", "test"}, "C", "", 2, 1},
        {{"report", "opening", "--message", message}, "X", stored_message, 2, 1},
    };
    std::size_t sent = 0;
    for (const Step &step : steps) {
        EXPECT_THAT(MustSucceed(step.words), HasSubstr("Sent: the server accepted the report.\n"));
        EXPECT_EQ(Opening(), step.opening) << step.identifier;
        EXPECT_EQ(Registered(), step.set_up) << step.identifier;
        const auto mails = ReadMailbox(exim.Mailbox(++sent));
        ASSERT_EQ(mails.size(), sent);
        ExpectText(mails.back(), ExpectedReport(japanese, step.identifier, step.message));
    }
}

INSTANTIATE_TEST_SUITE_P(Each, ReportLanguageTest,
                         testing::Values(Language{"English", "en_US", false},
                                         Language{"Japanese", "ja_JP", true}),
                         test_support::Title());

using ReportDeliveryTest = ReportTest;

TEST_F(ReportDeliveryTest, HeadersAndEnvelopeComeFromTheRegistry) {
    const Exim exim({});
    UseServer(OwnLoopbackAddress(), Exim::kPort);
    MustSucceed({"report", "test"});
    const auto mails = ReadMailbox(exim.Mailbox(1));
    ASSERT_EQ(mails.size(), 1U);
    const auto &headers = mails[0].headers;
    constexpr char kBoth[] = "centre@maintenance.example, second@maintenance.example";
    EXPECT_EQ(headers.at("return-path"), "<errors@server.example>");
    EXPECT_EQ(headers.at("envelope-to"), kBoth);
    EXPECT_EQ(headers.at("to"), kBoth);
    EXPECT_EQ(headers.at("from"), "agent@server.example");
    EXPECT_EQ(headers.at("subject"), "Velox Test Report");
}

struct Protection {
    const char *title;
    const char *option;
    unsigned port;
    const char *protocol;
};

class ReportProtectionTest : public ReportTest, public testing::WithParamInterface<Protection> {};

TEST_P(ReportProtectionTest, GoesOutAsSet) {
    const Exim exim({.certificate = &certificate_});
    UseServer(OwnLoopbackAddress(), GetParam().port, GetParam().option);
    MustSucceed({"report", "test"});
    const auto mails = ReadMailbox(exim.Mailbox(1));
    ASSERT_EQ(mails.size(), 1U);
    EXPECT_THAT(mails[0].headers.at("received"), HasSubstr(GetParam().protocol));
    EXPECT_EQ(Decode(mails[0]), test_support::ToEuc(ExpectedReport(false, "C")));
}

INSTANTIATE_TEST_SUITE_P(
    Each, ReportProtectionTest,
    testing::Values(Protection{"Plain", "plain", Exim::kPort, "with esmtp "},
                    Protection{"Tls", "tls", Exim::kTlsPort, "with esmtps "},
                    Protection{"Starttls", "starttls", Exim::kPort, "with esmtps "},
                    Protection{"Offered", "offered", Exim::kPort, "with esmtps "}),
    test_support::Title());

TEST_F(ReportDeliveryTest, WithoutOptionItGoesOutPlain) {
    const Exim exim({.certificate = &certificate_});
    UseServer(OwnLoopbackAddress(), Exim::kPort, "starttls");
    Remove(kMailKey, "Option");
    EXPECT_THAT(MustSucceed({"report", "test"}),
                HasSubstr("Option is missing: this report goes out plain.\n"));
    EXPECT_THAT(ReadMailbox(exim.Mailbox(1)).at(0).headers.at("received"),
                HasSubstr("with esmtp "));
}

struct Refusal {
    const char *title;
    const char *sender;
    const char *to;
    const char *subject;
    int code;
};

class ReportRefusalTest : public ReportTest, public testing::WithParamInterface<Refusal> {};

TEST_P(ReportRefusalTest, GivesTheCodeAndRecordsNothing) {
    const Exim exim({});
    UseServer(OwnLoopbackAddress(), Exim::kPort);
    StoreText(kSetupKey, "ERRORREPLY", GetParam().sender);
    EXPECT_EQ(AMAMVeloxTestReport(nullptr, VX_REPORT_TEST, GetParam().subject, GetParam().to, ""),
              GetParam().code);
    EXPECT_EQ(Opening(), 0U);
    EXPECT_EQ(Registered(), 0U);
    // Nobody received anything: the mail that follows is the only one.
    StoreText(kSetupKey, "ERRORREPLY", "");
    ASSERT_EQ(AMAMVeloxTestReport(nullptr, VX_REPORT_TEST, "Report", "a@maintenance.example", ""),
              VX_REPORT_SENT);
    EXPECT_EQ(ReadMailbox(exim.Mailbox(1)).size(), 1U) << exim.Log();
    EXPECT_EQ(Opening(), 2U);
}

INSTANTIATE_TEST_SUITE_P(
    Each, ReportRefusalTest,
    testing::Values(Refusal{"Sender", "refused@server.example", "a@maintenance.example", "Report",
                            VX_REPORT_ENVELOPE_REFUSED},
                    Refusal{"OneRecipient", "", "a@maintenance.example,refused@maintenance.example",
                            "Report", VX_REPORT_ENVELOPE_REFUSED},
                    Refusal{"Data", "", "a@maintenance.example", "Refused",
                            VX_REPORT_DATA_REFUSED}),
    test_support::Title());

constexpr char kPassword[] = "Marked 51c0 password";

struct PopServerCase {
    const char *title;
    bool with_tls;
    unsigned port;
};

class ReportAfterLogInTest : public ReportTest, public testing::WithParamInterface<PopServerCase> {
  protected:
    const mail_support::Certificate *Shown() const {
        return GetParam().with_tls ? &certificate_ : nullptr;
    }
};

TEST_P(ReportAfterLogInTest, IsTakenOnlyThen) {
    const Dovecot dovecot("monitor", kPassword, Shown());
    const Exim exim({.certificate = nullptr, .gate = dovecot.LogInMark()});
    UseServer(OwnLoopbackAddress(), Exim::kPort);
    const Result before = Veloxctl({"report", "test"});
    EXPECT_THAT(before.errors, HasSubstr("(-15); "));
    EXPECT_THAT(before.errors, HasSubstr("550 log in by POP first"));
    EXPECT_EQ(Opening(), 0U);
    UsePop(OwnLoopbackAddress(), GetParam().port, "monitor", kPassword);
    MustSucceed({"report", "test"});
    EXPECT_EQ(Decode(ReadMailbox(exim.Mailbox(1)).at(0)),
              test_support::ToEuc(ExpectedReport(false, "C")));
    EXPECT_EQ(Opening(), 2U);
}

TEST_P(ReportAfterLogInTest, IsNotSentAfterAWrongPassword) {
    const Dovecot dovecot("monitor", "another", Shown());
    const Exim exim({});
    UseServer(OwnLoopbackAddress(), Exim::kPort);
    UsePop(OwnLoopbackAddress(), GetParam().port, "monitor", kPassword);
    const Result refused = Veloxctl({"report", "test"});
    EXPECT_THAT(refused.errors, HasSubstr("the log-in to the POP server failed (-18); "));
    EXPECT_THAT(refused.errors, HasSubstr("-ERR [AUTH]"));
    EXPECT_EQ(Opening(), 0U);
    EXPECT_EQ(Registered(), 0U);
    EXPECT_THAT(exim.Log(), testing::Not(HasSubstr("<=")));
}

INSTANTIATE_TEST_SUITE_P(Each, ReportAfterLogInTest,
                         testing::Values(PopServerCase{"Plain", false, Dovecot::kPort},
                                         PopServerCase{"Stls", true, Dovecot::kPort},
                                         PopServerCase{"Tls", true, Dovecot::kTlsPort}),
                         test_support::Title());

}  // namespace
