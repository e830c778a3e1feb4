// amrsmtp.dll against a server that misbehaves at one stage: the right status, in time, and nothing
// left behind.
#include <gtest/gtest.h>

#include <mail_support/census.h>
#include <mail_support/sending.h>
#include <mail_support/smtp_server.h>
#include <mail_support/trace_recorder.h>
#include <support/environment.h>
#include <support/title.h>

#include "module_fixture.h"

namespace {

using namespace mail_support;

const std::string kGarbage = std::string("\x01\xff\0 what?", 9) + "\r\n";

struct Case {
    const char *title;
    const char *stage;
    Misdeed misdeed;
    DWORD status;
    const char *reason;  // part of the failure's description
    std::size_t recipients = 1;
};

std::vector<std::string> Recipients(std::size_t count) {
    std::vector<std::string> to = {"a@maintenance.example", "b@maintenance.example",
                                   "c@maintenance.example"};
    to.resize(count);
    return to;
}

class SmtpStagesTest : public ModuleTest, public testing::WithParamInterface<Case> {};

TEST_P(SmtpStagesTest, GivesTheStatusOfTheStage) {
    const Case &row = GetParam();
    // The goodbye has a limit of its own, which a long deadline does not stretch.
    SetDeadline(row.status == MAIL_STATUS_SENT ? kAmple : kDeadline);
    const TraceRecorder trace;
    const Census before;
    SmtpServer server({.misdeeds = {{row.stage, row.misdeed}}});
    const Sent sent = InTime(
        kDeadline, [&] { return Send({.port = server.Port(), .to = Recipients(row.recipients)}); });
    server.Stop();
    EXPECT_TRUE(NothingLeftSince(before));
    EXPECT_EQ(sent.status, row.status) << trace.AllText();
    EXPECT_EQ(sent.result, row.status);
    EXPECT_THAT(sent.answer, testing::HasSubstr(row.reason));
    EXPECT_EQ(sent.answer.empty(), row.status == MAIL_STATUS_SENT);
    EXPECT_LT(sent.elapsed, LongestCall(kDeadline)) << trace.AllText();
    EXPECT_EQ(server.Mails().empty(), row.status != MAIL_STATUS_SENT);
    EXPECT_EQ(trace.Has(1, row.reason), row.status != MAIL_STATUS_SENT) << trace.AllText();
}

const Misdeed kStall = {"", Then::kStall};
const Misdeed kClose = {"", Then::kClose};
const Misdeed kNonsense = {kGarbage, Then::kStall};
const Misdeed kFlood = {"250-and more\r\n", Then::kRepeat};
const Misdeed kEndlessLine = {"250 and more", Then::kRepeat};
const Misdeed kDrip = {"2", Then::kDrip};

INSTANTIATE_TEST_SUITE_P(
    Stall, SmtpStagesTest,
    testing::Values(Case{"Banner", "banner", kStall, 1, "greeting: not finished within"},
                    Case{"Ehlo", "EHLO", kStall, 1, "EHLO: not finished within"},
                    Case{"Mail", "MAIL", kStall, 2, "MAIL: not finished within"},
                    Case{"Rcpt", "RCPT", kStall, 2, "RCPT: not finished within"},
                    Case{"Data", "DATA", kStall, 3, "DATA: not finished within"},
                    Case{"EndOfData", "end of data", kStall, 3, "DATA: not finished within"},
                    Case{"Quit", "QUIT", kStall, 0, ""}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(Close, SmtpStagesTest,
                         testing::Values(Case{"Banner", "banner", kClose, 1, "greeting: "},
                                         Case{"Ehlo", "EHLO", kClose, 1, "EHLO: "},
                                         Case{"Mail", "MAIL", kClose, 2, "MAIL: "},
                                         Case{"Rcpt", "RCPT", kClose, 2, "RCPT: "},
                                         Case{"Data", "DATA", kClose, 3, "DATA: "},
                                         Case{"EndOfData", "end of data", kClose, 3, "DATA: "},
                                         Case{"Quit", "QUIT", kClose, 0, ""}),
                         test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Nonsense, SmtpStagesTest,
    testing::Values(Case{"Banner", "banner", kNonsense, 1, "greeting: not finished within"},
                    Case{"Ehlo", "EHLO", kNonsense, 1, "EHLO: not finished within"},
                    Case{"Mail", "MAIL", kNonsense, 2, "MAIL: not finished within"},
                    Case{"Rcpt", "RCPT", kNonsense, 2, "RCPT: not finished within"},
                    Case{"Data", "DATA", kNonsense, 3, "DATA: not finished within"},
                    Case{"EndOfData", "end of data", kNonsense, 3, "DATA: not finished within"},
                    Case{"Quit", "QUIT", kNonsense, 0, ""}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    NeverStopsTalking, SmtpStagesTest,
    testing::Values(Case{"FloodAtBanner", "banner", kFlood, 1, "greeting: "},
                    Case{"FloodAtEhlo", "EHLO", kFlood, 1, "EHLO: "},
                    Case{"FloodAtMail", "MAIL", kFlood, 2, "MAIL: "},
                    Case{"FloodAtRcpt", "RCPT", kFlood, 2, "RCPT: "},
                    Case{"FloodAtData", "DATA", kFlood, 3, "DATA: "},
                    Case{"FloodAtEndOfData", "end of data", kFlood, 3, "DATA: "},
                    Case{"FloodAtQuit", "QUIT", kFlood, 0, ""},
                    Case{"EndlessLineAtBanner", "banner", kEndlessLine, 1, "greeting: "},
                    Case{"EndlessLineAtRcpt", "RCPT", kEndlessLine, 2, "RCPT: "},
                    Case{"EndlessLineAtQuit", "QUIT", kEndlessLine, 0, ""},
                    Case{"DripAtMail", "MAIL", kDrip, 2, "MAIL: not finished within"},
                    Case{"DripAtQuit", "QUIT", kDrip, 0, ""}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Refusal, SmtpStagesTest,
    testing::Values(
        Case{"Banner", "banner", {"554 no service\r\n"}, 1, "the server said \"554 no service\""},
        Case{"Mail", "MAIL", {"550 bad sender\r\n"}, 2, "MAIL: the server said \"550 bad sender\""},
        Case{"MailSeveralLines",
             "MAIL",
             {"550-bad sender\r\n550 really\r\n"},
             2,
             "\"550-bad sender / 550 really\""},
        Case{"OnlyRecipient", "RCPT", {"550 no such user\r\n"}, 2, "\"550 no such user\""},
        Case{"OneOfThreeRecipients", "RCPT 2", {"452 too many\r\n"}, 2, "\"452 too many\"", 3},
        Case{"Data", "DATA", {"451 not now\r\n"}, 3, "\"451 not now\""},
        Case{"DataAcceptedTooEarly", "DATA", {"250 taken\r\n"}, 3, "\"250 taken\""},
        Case{"Content", "end of data", {"552 too large\r\n"}, 3, "\"552 too large\""},
        Case{"ContentWithAnotherCode", "end of data", {"251 taken?\r\n"}, 3, "\"251 taken?\""},
        Case{"Quit", "QUIT", {"500 I stay\r\n"}, 0, ""}),
    test_support::Title());

using SmtpConnectionTest = ShortDeadlineTest;

TEST_F(SmtpConnectionTest, ConnectStalls) {
    const DeafPort port;
    const Census before;
    const Sent sent = InTime(kDeadline, [&] { return Send({.port = port.Port()}); });
    EXPECT_TRUE(NothingLeftSince(before));
    EXPECT_EQ(sent.status, MAIL_STATUS_CONNECTION);
    EXPECT_EQ(sent.answer, "connect: not finished within the deadline");
    EXPECT_LT(sent.elapsed, LongestCall(kDeadline));
}

TEST_F(SmtpConnectionTest, ConnectIsRefused) {
    const ClosedPort port;
    const Sent sent = Send({.port = port.Port()});
    EXPECT_EQ(sent.status, MAIL_STATUS_CONNECTION);
    EXPECT_THAT(sent.answer, testing::StartsWith("connect: Failed to connect to 127.0.0.1"));
}

// The text is larger than all buffers on its way. A busy machine may take long to compose it, which
// the deadline bounds too; so a longer one is tried until the server is reached.
TEST_F(SmtpConnectionTest, ServerThatStopsReadingTheText) {
    const Census before;
    SmtpServer server({.slow_reader_milliseconds = 120'000});
    std::string body;
    while (body.size() < 8'000'000)
        body += std::string(76, 'x') + "\n";
    const TraceRecorder trace;
    Sent sent;
    std::chrono::seconds deadline(3);
    for (;; deadline *= 3) {
        SetDeadline(deadline);
        sent = InTime(deadline, [&] { return Send({.port = server.Port(), .body = body}); });
        if (sent.status != MAIL_STATUS_CONNECTION || deadline > std::chrono::seconds(20))
            break;
    }
    server.Stop();
    EXPECT_TRUE(NothingLeftSince(before));
    EXPECT_EQ(sent.status, MAIL_STATUS_DATA) << trace.AllText();
    EXPECT_LT(sent.elapsed, LongestCall(deadline));
}

// A server without EHLO is an old one, not a broken one.
TEST_F(SmtpConnectionTest, ServerThatKnowsOnlyHelo) {
    SmtpServer server({.misdeeds = {{"EHLO", {"500 what?\r\n"}}}});
    EXPECT_EQ(Send({.port = server.Port()}).status, MAIL_STATUS_SENT);
    EXPECT_EQ(server.Mails().size(), 1U);
}

TEST_F(SmtpConnectionTest, ServerThatKnowsNeitherEhloNorHelo) {
    SmtpServer server({.misdeeds = {{"EHLO", {"500 what?\r\n"}}, {"HELO", {"550 go away\r\n"}}}});
    const Sent sent = Send({.port = server.Port()});
    EXPECT_EQ(sent.status, MAIL_STATUS_CONNECTION);
    EXPECT_EQ(sent.answer, "HELO: the server said \"550 go away\"");
}

// After a refused recipient the goodbye is still said, and limited too.
TEST_F(SmtpConnectionTest, GoodbyeAfterARefusalIsLimited) {
    SmtpServer server({.misdeeds = {{"RCPT", {"550 no\r\n"}}, {"QUIT", kStall}}});
    const Sent sent = InTime(kDeadline, [&] { return Send({.port = server.Port()}); });
    EXPECT_EQ(sent.status, MAIL_STATUS_ENVELOPE);
    EXPECT_THAT(sent.answer, testing::HasSubstr("\"550 no\""));
    EXPECT_LT(sent.elapsed, LongestCall(kDeadline));
    EXPECT_EQ(server.Commands().back(), "QUIT");
}

}  // namespace
