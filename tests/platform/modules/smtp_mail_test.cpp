// What amrsmtp.dll hands to the server: the envelope, the headers and the text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include <mail_support/base64.h>
#include <mail_support/sending.h>
#include <mail_support/smtp_server.h>
#include <mail_support/trace_recorder.h>
#include <support/title.h>

#include "module_fixture.h"

namespace {

using namespace mail_support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

class SmtpMailTest : public ModuleTest {
  protected:
    // Sends and gives what the server received.
    ReceivedMail Exchange(Sending sending) {
        SmtpServer server({});
        sending.port = server.Port();
        const Sent sent = Send(sending);
        EXPECT_EQ(sent.status, MAIL_STATUS_SENT) << sent.answer;
        const auto mails = server.Mails();
        EXPECT_EQ(mails.size(), 1U);
        return mails.empty() ? ReceivedMail() : mails.front();
    }
};

// The value of a header, folded lines joined.
std::string Header(const ReceivedMail &mail, const std::string &name) {
    std::string headers = mail.text.substr(0, mail.text.find("\r\n\r\n") + 2);
    headers = std::regex_replace(headers, std::regex("\r\n[ \t]"), " ");
    std::smatch match;
    if (!std::regex_search(headers, match, std::regex("(^|\n)" + name + ": ([^\r]*)\r\n")))
        return "(no " + name + ")";
    return match[2];
}

std::string Body(const ReceivedMail &mail) {
    return mail.text.substr(mail.text.find("\r\n\r\n") + 4);
}

TEST_F(SmtpMailTest, Envelope) {
    const ReceivedMail mail =
        Exchange({.to = {"centre@maintenance.example", "second@maintenance.example"}});
    EXPECT_THAT(mail.sender, MatchesRegex("<agent@server.example> SIZE=[0-9]+"));
    EXPECT_THAT(mail.recipients,
                ElementsAre("<centre@maintenance.example>", "<second@maintenance.example>"));
}

TEST_F(SmtpMailTest, ErrorReplyAddressIsTheEnvelopeSenderOnly) {
    const ReceivedMail mail = Exchange({.error_reply = "errors@server.example"});
    EXPECT_THAT(mail.sender, HasSubstr("<errors@server.example>"));
    EXPECT_EQ(Header(mail, "From"), "agent@server.example");
    EXPECT_THAT(mail.text, testing::Not(HasSubstr("errors@")));
}

TEST_F(SmtpMailTest, Headers) {
    const ReceivedMail mail =
        Exchange({.to = {"centre@maintenance.example", "second@maintenance.example"}});
    EXPECT_THAT(Header(mail, "Date"),
                MatchesRegex("(Mon|Tue|Wed|Thu|Fri|Sat|Sun), [0-9][0-9] [A-Z][a-z][a-z] "
                             "[0-9][0-9][0-9][0-9] [0-9:]* [+-][0-9][0-9][0-9][0-9]"));
    EXPECT_THAT(Header(mail, "Message-Id"), MatchesRegex("<[A-Za-z0-9.]+@server\\.example>"));
    EXPECT_EQ(Header(mail, "From"), "agent@server.example");
    EXPECT_EQ(Header(mail, "To"), "centre@maintenance.example, second@maintenance.example");
    EXPECT_EQ(Header(mail, "Subject"), "Report");
    EXPECT_EQ(Header(mail, "MIME-Version"), "1.0");
    EXPECT_EQ(Header(mail, "Content-Type"), "text/plain; charset=us-ascii");
    EXPECT_EQ(Header(mail, "Content-Transfer-Encoding"), "7bit");
}

TEST_F(SmtpMailTest, EachMailHasAnIdOfItsOwn) {
    EXPECT_NE(Header(Exchange({}), "Message-Id"), Header(Exchange({}), "Message-Id"));
}

TEST_F(SmtpMailTest, IdOfASenderWithoutDomain) {
    EXPECT_THAT(Header(Exchange({.sender = "root"}), "Message-Id"),
                testing::EndsWith("@localhost>"));
}

TEST_F(SmtpMailTest, GivenId) {
    const ReceivedMail mail = Exchange({.message_id = "<item.17@server.example>"});
    EXPECT_EQ(Header(mail, "Message-Id"), "<item.17@server.example>");
}

TEST_F(SmtpMailTest, EmptyIdMeansANewOne) {
    EXPECT_THAT(Header(Exchange({.message_id = ""}), "Message-Id"),
                testing::EndsWith("@server.example>"));
}

TEST_F(SmtpMailTest, HundredRecipients) {
    std::vector<std::string> to;
    to.reserve(100);
    for (int number = 0; number < 100; ++number)
        to.push_back(std::string(60, 'x') + std::to_string(number) + "@maintenance.example");
    const ReceivedMail mail = Exchange({.to = to});
    EXPECT_EQ(mail.recipients.size(), 100U);
    std::string joined;
    for (const std::string &address : to)
        joined += (joined.empty() ? "" : ", ") + address;
    EXPECT_EQ(Header(mail, "To"), joined);
}

struct SubjectCase {
    const char *title;
    std::string subject;
    std::string header;
};

class SmtpSubjectTest : public SmtpMailTest, public testing::WithParamInterface<SubjectCase> {};

TEST_P(SmtpSubjectTest, GoesOutReadable) {
    EXPECT_EQ(Header(Exchange({.subject = GetParam().subject}), "Subject"), GetParam().header);
}

INSTANTIATE_TEST_SUITE_P(
    Each, SmtpSubjectTest,
    testing::Values(SubjectCase{"Ascii", "Opening report", "Opening report"},
                    SubjectCase{"Empty", "", ""},
                    // 日本語
                    SubjectCase{"Japanese", "\xC6\xFC\xCB\xDC\xB8\xEC", "=?UTF-8?B?5pel5pys6Kqe?="},
                    // half-width ｱ, and ① of the vendors' extensions
                    SubjectCase{"HalfWidthAndExtension", "\x8E\xB1\xAD\xA1",
                                "=?UTF-8?B?772x4pGg?="},
                    // three bytes a character: 丂 of the supplementary set
                    SubjectCase{"Supplementary", "\x8F\xB0\xA1", "=?UTF-8?B?5LiC?="}),
    test_support::Title());

struct BodyCase {
    const char *title;
    std::string body;
    std::string received;
};

class SmtpBodyTest : public SmtpMailTest, public testing::WithParamInterface<BodyCase> {};

TEST_P(SmtpBodyTest, ArrivesLineByLine) {
    EXPECT_EQ(Body(Exchange({.body = GetParam().body})), GetParam().received);
}

INSTANTIATE_TEST_SUITE_P(
    Each, SmtpBodyTest,
    testing::Values(BodyCase{"LineFeeds", "one\ntwo\n", "one\r\ntwo\r\n"},
                    BodyCase{"CarriageReturnsToo", "one\r\ntwo\r\n", "one\r\ntwo\r\n"},
                    BodyCase{"LoneCarriageReturn", "one\rtwo\r", "one\r\ntwo\r\n"},
                    BodyCase{"NoLastLineEnd", "one\ntwo", "one\r\ntwo\r\n"},
                    BodyCase{"Dots", ".\n..\n.x\n", ".\r\n..\r\n.x\r\n"},
                    BodyCase{"EmptyLines", "\n\n", "\r\n\r\n"},
                    BodyCase{"TrailingBlanks", "M  \n", "M  \r\n"},
                    BodyCase{"LongestLine", std::string(998, 'x') + "\n",
                             std::string(998, 'x') + "\r\n"},
                    BodyCase{"FromLine", "From here\n", "From here\r\n"},
                    BodyCase{"LikeAHeader", "Subject: x\n\ny\n", "Subject: x\r\n\r\ny\r\n"}),
    test_support::Title());

TEST_F(SmtpMailTest, EmptyBody) {
    EXPECT_EQ(Body(Exchange({.body = ""})), "");
}

// The body is the first part of the buffer only, as long as the size says.
TEST_F(SmtpMailTest, BodyEndsWhereTheSizeSays) {
    Sending sending = {.body = "one\ntwo\nnot this\n"};
    sending.size = RightSize(sending) - 9;
    EXPECT_EQ(Body(Exchange(sending)), "one\r\ntwo\r\n");
}

TEST_F(SmtpMailTest, TraceTellsTheConversation) {
    const TraceRecorder trace;
    Exchange({});
    const std::string told = trace.AllText();
    for (const char *line :
         {"client: EHLO ", "client: MAIL FROM:<agent@server.example>",
          "note: the connection is clear text", "client: RCPT TO:<centre@maintenance.example>",
          "server: 250 recipient accepted", "client: DATA", "note: sending the mail's text, ",
          "server: 250 taken", "client: QUIT", "server: 221 goodbye",
          "0 amrsmtp SendMailWithSMTP sent"})
        EXPECT_THAT(told, HasSubstr(line));
    EXPECT_FALSE(trace.Has(1, ""));
}

}  // namespace
