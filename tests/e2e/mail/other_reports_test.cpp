// The reports that are no test or opening report of the mail itself take the same way: the security
// opening report and the queued alerts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sysexits.h>

#include <string>

#include <support/encoding.h>

#include "mailbox.h"
#include "report_fixture.h"
#include "servers.h"

namespace {

using mail_support::OwnLoopbackAddress;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using veloxctl_test::Result;
using veloxctl_test::Veloxctl;

using OtherReportsTest = ReportTest;

TEST_F(OtherReportsTest, SecurityOpeningReportGoesOutByMail) {
    const Exim exim({});
    UseServer(OwnLoopbackAddress(), Exim::kPort);
    MustSucceed({"method", "set", "mail"});
    EXPECT_THAT(MustSucceed({"report", "security-open", "N8100-0001"}), HasSubstr("Sent"));
    const auto mails = ReadMailbox(exim.Mailbox(1));
    ASSERT_EQ(mails.size(), 1U);
    EXPECT_EQ(mails[0].headers.at("subject"), "Velox Alert Notification");
    EXPECT_EQ(mails[0].headers.at("to"), "centre@maintenance.example, second@maintenance.example");
    EXPECT_EQ(Decode(mails[0]), test_support::ToEuc(ExpectedReport(false, "A")));
    EXPECT_EQ(Opening(), 0U) << "it is no opening report of the mail destination";
}

TEST_F(OtherReportsTest, QueuedAlertGoesOutAfterTheLogIn) {
    constexpr char kPassword[] = "Marked 77d2 password";
    const Dovecot dovecot("monitor", kPassword, nullptr);
    const Exim exim({.certificate = nullptr, .gate = dovecot.LogInMark()});
    UseServer(OwnLoopbackAddress(), Exim::kPort);
    MustSucceed({"report", "queue-test"});
    const Result before = Veloxctl({"queue", "deliver"});
    EXPECT_EQ(before.status, EX_TEMPFAIL);
    EXPECT_THAT(before.errors, AllOf(HasSubstr("(-15)"), HasSubstr("550 log in by POP first")));

    UsePop(OwnLoopbackAddress(), Dovecot::kPort, "monitor", "a wrong one");
    const Result refused = Veloxctl({"queue", "deliver", "--now"});
    EXPECT_EQ(refused.status, EX_TEMPFAIL);
    EXPECT_THAT(refused.errors, AllOf(HasSubstr("(-18)"), HasSubstr("-ERR [AUTH]")));

    UsePop(OwnLoopbackAddress(), Dovecot::kPort, "monitor", kPassword);
    EXPECT_THAT(MustSucceed({"queue", "deliver", "--now"}), HasSubstr(": delivered\n"));
    EXPECT_EQ(MustSucceed({"queue", "list"}), "");
    const auto mails = ReadMailbox(exim.Mailbox(1));
    ASSERT_EQ(mails.size(), 1U);
    EXPECT_THAT(Decode(mails[0]), StartsWith(test_support::ToEuc(ExpectedReport(false, "A")) +
                                             "[ALERT]\r\nTEST - AlertManager\r\n"));
}

}  // namespace
