// amrsmtp.dll and a real SMTP server: what it takes and refuses, and the mail that is delivered.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include <mail_support/certificates.h>
#include <mail_support/sending.h>
#include <mail_support/server.h>
#include <mail_support/trace_recorder.h>
#include <support/title.h>

#include "mail_fixture.h"
#include "mailbox.h"
#include "servers.h"

namespace {

using namespace mail_support;
using testing::HasSubstr;
using testing::MatchesRegex;

struct Case {
    const char *title;
    DWORD option;
    unsigned port;
    bool with_tls;
    const char *protocol;  // as the server writes it into the mail
};

class RealSmtpTest : public MailTest {
  protected:
    const Certificate *ServerCertificate(bool wanted) { return wanted ? &certificate_ : nullptr; }

    Sending Report(unsigned port, DWORD option) {
        return {.server = OwnLoopbackAddress(),
                .port = port,
                .option = option,
                .body = Encode("line one\r\nline two\r\n")};
    }
};

class RealSmtpProtectionTest : public RealSmtpTest, public testing::WithParamInterface<Case> {};

TEST_P(RealSmtpProtectionTest, DeliversTheMail) {
    const Case &row = GetParam();
    const Exim exim({.certificate = ServerCertificate(row.with_tls)});
    const Sent sent = Send(Report(row.port, row.option));
    ASSERT_EQ(sent.status, MAIL_STATUS_SENT) << trace_.AllText() << exim.Log();
    const auto mails = ReadMailbox(exim.Mailbox(1));
    ASSERT_EQ(mails.size(), 1U);
    EXPECT_EQ(Decode(mails[0]), "line one\r\nline two\r\n");
    EXPECT_THAT(mails[0].headers.at("received"), HasSubstr(row.protocol));
}

INSTANTIATE_TEST_SUITE_P(
    Each, RealSmtpProtectionTest,
    testing::Values(
        Case{"Plain", MAIL_OPTION_PLAIN, Exim::kPort, true, "with esmtp "},
        Case{"TlsFromTheFirstByte", MAIL_OPTION_TLS, Exim::kTlsPort, true, "with esmtps "},
        Case{"StarttlsRequired", MAIL_OPTION_STARTTLS_REQUIRED, Exim::kPort, true, "with esmtps "},
        Case{"StarttlsOffered", MAIL_OPTION_STARTTLS_OFFERED, Exim::kPort, true, "with esmtps "},
        Case{"StarttlsNotOffered", MAIL_OPTION_STARTTLS_OFFERED, Exim::kPort, false,
             "with esmtp "}),
    test_support::Title());

TEST_F(RealSmtpTest, StarttlsRequiredAndNotOffered) {
    const Exim exim({});
    const Sent sent = Send(Report(Exim::kPort, MAIL_OPTION_STARTTLS_REQUIRED));
    EXPECT_EQ(sent.status, MAIL_STATUS_CONNECTION);
    EXPECT_THAT(sent.answer, HasSubstr("STARTTLS not supported"));
}

TEST_F(RealSmtpTest, HeadersAndEnvelope) {
    const Exim exim({});
    Sending report = Report(Exim::kPort, MAIL_OPTION_PLAIN);
    report.error_reply = "errors@server.example";
    report.to = {"centre@maintenance.example", "second@maintenance.example"};
    report.subject = "\xC6\xFC\xCB\xDC";  // 日本
    ASSERT_EQ(Send(report).status, MAIL_STATUS_SENT) << trace_.AllText();
    const auto mails = ReadMailbox(exim.Mailbox(1));
    ASSERT_EQ(mails.size(), 1U);
    const auto &headers = mails[0].headers;
    EXPECT_EQ(headers.at("return-path"), "<errors@server.example>");
    EXPECT_EQ(headers.at("envelope-to"), "centre@maintenance.example, second@maintenance.example");
    EXPECT_EQ(headers.at("from"), "agent@server.example");
    EXPECT_EQ(headers.at("to"), "centre@maintenance.example, second@maintenance.example");
    EXPECT_EQ(headers.at("subject"), "=?UTF-8?B?5pel5pys?=");
    EXPECT_THAT(headers.at("message-id"), MatchesRegex("<.*@server\\.example>"));
    EXPECT_THAT(headers.at("date"), HasSubstr(", "));
    EXPECT_EQ(headers.at("mime-version"), "1.0");
    EXPECT_EQ(headers.at("content-type"), "text/plain; charset=us-ascii");
    EXPECT_EQ(headers.at("content-transfer-encoding"), "7bit");
}

TEST_F(RealSmtpTest, SameMessageIdOnEveryTry) {
    const Exim exim({});
    Sending report = Report(Exim::kPort, MAIL_OPTION_PLAIN);
    report.message_id = "<item-1@server.example>";
    for (int times = 0; times < 2; ++times)
        ASSERT_EQ(Send(report).status, MAIL_STATUS_SENT) << trace_.AllText();
    for (const DeliveredMail &mail : ReadMailbox(exim.Mailbox(2)))
        EXPECT_EQ(mail.headers.at("message-id"), "<item-1@server.example>");
}

// A body of every kind of line that transports are known to change.
TEST_F(RealSmtpTest, LargeBodyArrivesUnchanged) {
    const Exim exim({});
    std::string text;
    for (int number = 0; number < 20'000; ++number)
        text += static_cast<char>(number % 256);
    Sending report = Report(Exim::kPort, MAIL_OPTION_PLAIN);
    report.body = Encode(text);
    ASSERT_EQ(Send(report).status, MAIL_STATUS_SENT) << trace_.AllText();
    EXPECT_EQ(Decode(ReadMailbox(exim.Mailbox(1)).at(0)), text);
}

struct Refusal {
    const char *title;
    Sending changes;
    DWORD status;
    const char *words;
};

class RealSmtpRefusalTest : public RealSmtpTest, public testing::WithParamInterface<Refusal> {};

TEST_P(RealSmtpRefusalTest, GivesStatusAndTheServersWords) {
    const Exim exim({});
    Sending report = GetParam().changes;
    report.server = OwnLoopbackAddress();
    report.port = Exim::kPort;
    const Sent sent = Send(report);
    EXPECT_EQ(sent.status, GetParam().status);
    EXPECT_THAT(sent.answer, HasSubstr(GetParam().words));
    EXPECT_TRUE(trace_.Has(1, GetParam().words)) << trace_.AllText();
    // Nobody received anything: the mail that follows is the only one.
    ASSERT_EQ(Send(Report(Exim::kPort, MAIL_OPTION_PLAIN)).status, MAIL_STATUS_SENT);
    EXPECT_EQ(ReadMailbox(exim.Mailbox(1)).size(), 1U) << exim.Log();
}

INSTANTIATE_TEST_SUITE_P(
    Each, RealSmtpRefusalTest,
    testing::Values(
        Refusal{"Sender",
                {.sender = "refused@server.example"},
                MAIL_STATUS_ENVELOPE,
                "550 this sender is refused"},
        Refusal{"ErrorReplyAsSender",
                {.error_reply = "refused@server.example"},
                MAIL_STATUS_ENVELOPE,
                "550 this sender is refused"},
        Refusal{"OneOfThreeRecipients",
                {.to = {"a@maintenance.example", "refused@maintenance.example",
                        "b@maintenance.example"}},
                MAIL_STATUS_ENVELOPE,
                "550 this recipient is refused"},
        Refusal{"Data", {.subject = "Refused"}, MAIL_STATUS_DATA, "550 this text is refused"}),
    test_support::Title());

TEST_F(RealSmtpTest, CertificateOfAnUnknownAuthority) {
    const Authority unknown;
    const Certificate certificate = unknown.Issue("IP:" + OwnLoopbackAddress());
    const Exim exim({.certificate = &certificate});
    EXPECT_EQ(Send(Report(Exim::kTlsPort, MAIL_OPTION_TLS)).status, MAIL_STATUS_CONNECTION);
    EXPECT_TRUE(trace_.Has(1, "SSL certificate problem")) << trace_.AllText();
    EXPECT_EQ(Send(Report(Exim::kTlsPort, MAIL_OPTION_TLS | MAIL_OPTION_NO_VERIFICATION)).status,
              MAIL_STATUS_SENT)
        << trace_.AllText();
    EXPECT_EQ(Send(Report(Exim::kPort, MAIL_OPTION_STARTTLS_OFFERED)).status, MAIL_STATUS_SENT);
    EXPECT_TRUE(trace_.Has(1, "going on without verification"));
}

}  // namespace
