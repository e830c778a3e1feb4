// Arguments that no mail can be made of: status 4, the reason named, no connection.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>

#include <mail_support/module.h>
#include <mail_support/sending.h>
#include <mail_support/smtp_server.h>
#include <mail_support/trace_recorder.h>
#include <support/title.h>

#include "module_fixture.h"

namespace {

using namespace mail_support;

struct Case {
    const char *title;
    Sending sending;
    const char *reason;
};

class SmtpArgumentsTest : public ModuleTest, public testing::WithParamInterface<Case> {};

TEST_P(SmtpArgumentsTest, GiveStatus4) {
    SmtpServer server({});
    Sending sending = GetParam().sending;
    if (sending.port == 0)
        sending.port = server.Port();
    else if (sending.port == 1)
        sending.port = 0;
    const TraceRecorder trace;
    const Sent sent = Send(sending);
    EXPECT_EQ(sent.status, MAIL_STATUS_ARGUMENT);
    EXPECT_EQ(sent.result, MAIL_STATUS_ARGUMENT);
    EXPECT_EQ(sent.answer, std::string("bad argument: ") + GetParam().reason);
    EXPECT_TRUE(trace.Has(1, GetParam().reason)) << trace.AllText();
    EXPECT_EQ(server.Connections(), 0);
}

const std::string kLongAddress = std::string(243, 'x') + "@some.example";  // 256 bytes

INSTANTIATE_TEST_SUITE_P(
    Server, SmtpArgumentsTest,
    testing::Values(
        Case{"Empty", {.server = ""}, "the server is neither an address nor a host name"},
        Case{"WithPath",
             {.server = "127.0.0.1/x"},
             "the server is neither an address nor a host name"},
        Case{"WithAccount",
             {.server = "a@127.0.0.1"},
             "the server is neither an address nor a host name"},
        Case{"LineFeed",
             {.server = "127.0.0.1\n"},
             "the server is neither an address nor a host name"},
        Case{"NumberTooLarge",
             {.server = "127.0.0.256"},
             "the server is neither an address nor a host name"},
        Case{"PortNought", {.port = 1}, "port 0 does not exist"},
        Case{"PortTooLarge", {.port = 65536}, "port 65536 does not exist"}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Addresses, SmtpArgumentsTest,
    testing::Values(
        Case{"NoSender", {.sender = ""}, "the sender is empty"},
        Case{"BlankInSender", {.sender = "a b@c"}, "the sender holds the byte 20 at position 2"},
        Case{"LineFeedInSender",
             {.sender = "a@b\nRCPT"},
             "the sender holds the byte 0A at position 4"},
        Case{"JapaneseSender",
             {.sender = "\xC6\xFC@b"},
             "the sender holds the byte C6 at position 1"},
        Case{"DeleteInSender", {.sender = "a\x7F@b"}, "the sender holds the byte 7F at position 2"},
        Case{"BracketInSender", {.sender = "<a@b>"}, "the sender holds the byte 3C at position 1"},
        Case{"LongSender", {.sender = kLongAddress}, "the sender is longer than 254 bytes"},
        Case{"BracketInErrorReply",
             {.error_reply = "a@b>"},
             "the error-reply address holds the byte 3E at position 4"},
        Case{"NoRecipient", {.to = {}}, "no recipient"},
        Case{"EmptyRecipient", {.to = {"a@b", ""}}, "recipient 2 is empty"},
        Case{"LineFeedInRecipient",
             {.to = {"a@b\r\nRCPT TO:<x@y>"}},
             "recipient 1 holds the byte 0D at position 4"},
        Case{"TooManyRecipients",
             {.to = std::vector<std::string>(101, "a@b")},
             "more than 100 recipients"}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Text, SmtpArgumentsTest,
    testing::Values(
        Case{"LineFeedInSubject", {.subject = "a\nBcc: x@y"}, "the subject holds a control byte"},
        Case{"TabInSubject", {.subject = "a\tb"}, "the subject holds a control byte"},
        Case{"DeleteInSubject", {.subject = "a\x7F"}, "the subject holds a control byte"},
        Case{"SubjectInUtf8", {.subject = "\xE6\x97\xA5"}, "the subject is no EUC-JP text"},
        Case{"SubjectCutInACharacter", {.subject = "ab\xC6"}, "the subject is no EUC-JP text"},
        Case{"LongSubject",
             {.subject = std::string(256, 'x')},
             "the subject is longer than 255 bytes"},
        Case{"AnotherForm", {.form = 1}, "the body's form is 1, not 2"},
        Case{"EightBitBody",
             {.body = "ab\xE9"},
             "the body holds the byte E9 at position 3, which is no 7-bit text"},
        Case{"ZeroInBody",
             {.body = std::string("a\0b", 3)},
             "the body holds the byte 00 at position 2, which is no 7-bit text"},
        Case{"LongLine",
             {.body = "\n" + std::string(999, 'x')},
             "the body has a line longer than 998 bytes"}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    SizeAndId, SmtpArgumentsTest,
    testing::Values(
        // 26 + 2 of the address, 6 of the subject
        Case{"SizeTooSmallByOne",
             {.size = 33},
             "the size 33 is less than the 34 bytes of addresses and subject"},
        Case{"SizeNought",
             {.size = 0},
             "the size 0 is less than the 34 bytes of addresses and subject"},
        Case{"IdWithoutBrackets",
             {.message_id = "a@b"},
             "the Message-ID is not of the form <...> with at most 250 bytes"},
        Case{"IdWithBlank",
             {.message_id = "<a b@c>"},
             "the Message-ID holds the byte 20 at position 2"},
        Case{"IdWithLineFeed",
             {.message_id = "<a@b\n>"},
             "the Message-ID holds the byte 0A at position 4"},
        Case{"IdWithoutAt", {.message_id = "<ab>"}, "the Message-ID has not exactly one @ inside"},
        Case{"IdTooLong",
             {.message_id = "<" + std::string(247, 'x') + "@y>"},
             "the Message-ID is not of the form <...> with at most 250 bytes"}),
    test_support::Title());

using SmtpNullTest = ModuleTest;

// Calls with null pointers, one after the other.
TEST_F(SmtpNullTest, NullPointersGiveStatus4) {
    const Module module(AMRSMTP_MODULE);
    auto *send = module.Get<SENDMAILWITHSMTP>(SENDMAILWITHSMTP_NAME);
    const std::array<const char *, 1> to = {"a@b"};
    const std::array<const char *, 1> nobody = {nullptr};
    std::array<char, MAIL_ANSWER_CAPACITY> answer{};
    struct Row {
        const char *server, *sender;
        const char *const *to;
        const char *subject;
        const void *body;
        const char *reason;
    };
    const Row rows[] = {
        {nullptr, "a@b", to.data(), "", "x", "the server is missing"},
        {"127.0.0.1", nullptr, to.data(), "", "x", "the sender is missing"},
        {"127.0.0.1", "a@b", nullptr, "", "x", "no recipient"},
        {"127.0.0.1", "a@b", nobody.data(), "", "x", "recipient 1 is missing"},
        {"127.0.0.1", "a@b", to.data(), nullptr, "x", "the subject is missing"},
        {"127.0.0.1", "a@b", to.data(), "", nullptr, "the body is missing"},
    };
    for (const Row &row : rows) {
        DWORD status = 99;
        EXPECT_EQ(send(row.server, row.sender, 25, nullptr, nullptr, 0, MAIL_BODY_ENCODED, row.to,
                       1, row.subject, row.body, 6, answer.data(), &status),
                  MAIL_STATUS_ARGUMENT);
        EXPECT_EQ(status, MAIL_STATUS_ARGUMENT);
        EXPECT_EQ(std::string(answer.data()), std::string("bad argument: ") + row.reason);
    }
}

// Without error-reply address, answer and status word a mail still goes out.
TEST_F(SmtpNullTest, OptionalPointers) {
    SmtpServer server({});
    const Module module(AMRSMTP_MODULE);
    const std::array<const char *, 1> to = {"a@b"};
    EXPECT_EQ(module.Get<SENDMAILWITHSMTP>(SENDMAILWITHSMTP_NAME)(
                  "127.0.0.1", "c@d", server.Port(), nullptr, nullptr, 0, MAIL_BODY_ENCODED,
                  to.data(), 1, "", "x", 6, nullptr, nullptr),
              MAIL_STATUS_SENT);
    ASSERT_EQ(server.Mails().size(), 1U);
    EXPECT_THAT(server.Mails()[0].sender, testing::StartsWith("<c@d>"));
}

// A long reason fills the caller's buffer and no more.
TEST_F(SmtpNullTest, AnswerFitsItsBuffer) {
    SmtpServer server(
        {.misdeeds = {{"MAIL", {"550 \x1B[31m" + std::string(3000, 'x') + "\xE9\r\n"}}}});
    const Sent sent = Send({.port = server.Port()});
    EXPECT_EQ(sent.status, MAIL_STATUS_ENVELOPE);
    EXPECT_LT(sent.answer.size(), std::size_t{MAIL_ANSWER_CAPACITY});
    EXPECT_THAT(sent.answer, testing::HasSubstr("550 ?[31mxxxx"));
}

}  // namespace
