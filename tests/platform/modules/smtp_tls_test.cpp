// The option word of amrsmtp.dll: how the connection is protected, and what a certificate must be.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include <mail_support/census.h>
#include <mail_support/certificates.h>
#include <mail_support/sending.h>
#include <mail_support/smtp_server.h>
#include <mail_support/trace_recorder.h>
#include <support/title.h>

#include "module_fixture.h"

namespace {

using namespace mail_support;
using testing::HasSubstr;

constexpr DWORD kTls = MAIL_OPTION_TLS;
constexpr DWORD kRequired = MAIL_OPTION_STARTTLS_REQUIRED;
constexpr DWORD kOffered = MAIL_OPTION_STARTTLS_OFFERED;
constexpr DWORD kUnverified = MAIL_OPTION_NO_VERIFICATION;

enum class Shows { kGood, kForAnotherName, kOfUnknownAuthority, kNothing };

class SmtpTlsBase : public ModuleTest {
  protected:
    SmtpTlsBase() {
        known_.emplace();
        authority_.Set(known_->File());
    }

    const Certificate *Make(Shows shows) {
        if (shows == Shows::kNothing)
            return nullptr;
        if (shows == Shows::kOfUnknownAuthority)
            unknown_.emplace();
        const Authority &issuer = unknown_ ? *unknown_ : *known_;
        certificate_ = issuer.Issue(shows == Shows::kForAnotherName ? "DNS:other.test.example"
                                                                    : "IP:127.0.0.1");
        return &certificate_;
    }

    std::optional<Authority> known_;
    std::optional<Authority> unknown_;
    Certificate certificate_;
};

struct Case {
    const char *title;
    DWORD option;
    Shows shows;
    Misdeeds misdeeds;
    DWORD status;
    bool encrypted;
    const char *reason;  // in the answer after a failure, else in a trace record of level 1
};

class SmtpTlsTest : public SmtpTlsBase, public testing::WithParamInterface<Case> {};

TEST_P(SmtpTlsTest, FollowsTheOptionWord) {
    const Case &row = GetParam();
    const TraceRecorder trace;
    const Certificate *certificate = Make(row.shows);
    SmtpServer server({.misdeeds = row.misdeeds,
                       .certificate = certificate,
                       .tls_from_the_first_byte = (row.option & 3U) == kTls});
    const Sent sent = Send({.port = server.Port(), .option = row.option});
    EXPECT_EQ(sent.status, row.status) << trace.AllText();
    EXPECT_THAT(sent.status == MAIL_STATUS_SENT ? trace.AllText() : sent.answer,
                HasSubstr(row.reason));
    ASSERT_EQ(server.Mails().size(), row.status == MAIL_STATUS_SENT ? 1U : 0U);
    if (row.status == MAIL_STATUS_SENT) {
        EXPECT_EQ(server.Mails()[0].encrypted, row.encrypted);
        EXPECT_TRUE(trace.Has(
            0, row.encrypted ? "the connection is encrypted" : "the connection is clear text"));
    }
}

const char *const kUntrusted = "certificate problem: unable to get local issuer certificate";
const char *const kWrongName =
    "no alternative certificate subject name matches target host name "
    "'127.0.0.1'";
const Misdeeds kRefused = {{"STARTTLS", {"454 not now\r\n"}}};

INSTANTIATE_TEST_SUITE_P(
    Plain, SmtpTlsTest,
    testing::Values(Case{"NotOffered", 0, Shows::kNothing, {}, 0, false, ""},
                    Case{"OfferedAndNotUsed", 0, Shows::kGood, {}, 0, false, ""},
                    Case{"UnknownBits", 0xFFFFFFF8U, Shows::kGood, {}, 0, false, ""}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    FromTheFirstByte, SmtpTlsTest,
    testing::Values(
        Case{"Good", kTls, Shows::kGood, {}, 0, true, ""},
        Case{"AnotherName", kTls, Shows::kForAnotherName, {}, 1, false, kWrongName},
        Case{"UnknownAuthority", kTls, Shows::kOfUnknownAuthority, {}, 1, false, kUntrusted},
        Case{"Unverified", kTls | kUnverified, Shows::kOfUnknownAuthority, {}, 0, true, ""},
        Case{"UnverifiedName", kTls | kUnverified, Shows::kForAnotherName, {}, 0, true, ""}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Required, SmtpTlsTest,
    testing::Values(
        Case{"Good", kRequired, Shows::kGood, {}, 0, true, ""},
        Case{"NotOffered", kRequired, Shows::kNothing, {}, 1, false, "STARTTLS not supported"},
        Case{"Refused", kRequired, Shows::kGood, kRefused, 1, false, "\"454 not now\""},
        Case{"AnotherName", kRequired, Shows::kForAnotherName, {}, 1, false, kWrongName},
        Case{"UnknownAuthority", kRequired, Shows::kOfUnknownAuthority, {}, 1, false, kUntrusted},
        Case{"Unverified", kRequired | kUnverified, Shows::kOfUnknownAuthority, {}, 0, true, ""},
        Case{"UnverifiedNotOffered",
             kRequired | kUnverified,
             Shows::kNothing,
             {},
             1,
             false,
             "STARTTLS not supported"}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    WhenOffered, SmtpTlsTest,
    testing::Values(
        Case{"Good", kOffered, Shows::kGood, {}, 0, true, ""},
        Case{"NotOffered", kOffered, Shows::kNothing, {}, 0, false, ""},
        Case{"Refused", kOffered, Shows::kGood, kRefused, 0, false, "server: 454 not now"},
        Case{"AnotherName", kOffered, Shows::kForAnotherName, {}, 0, true, kWrongName},
        Case{"UnknownAuthority", kOffered, Shows::kOfUnknownAuthority, {}, 0, true, kUntrusted},
        Case{"Unverified", kOffered | kUnverified, Shows::kOfUnknownAuthority, {}, 0, true, ""}),
    test_support::Title());

using SmtpTlsFilesTest = SmtpTlsBase;

TEST_F(SmtpTlsFilesTest, BadCertificateIsTracedAsAFailure) {
    const TraceRecorder trace;
    SmtpServer server({.certificate = Make(Shows::kOfUnknownAuthority)});
    EXPECT_EQ(Send({.port = server.Port(), .option = kOffered}).status, MAIL_STATUS_SENT);
    EXPECT_TRUE(trace.Has(1, "certificate of 127.0.0.1 not accepted: SSL certificate problem"))
        << trace.AllText();
    EXPECT_TRUE(trace.Has(1, "going on without verification"));
    EXPECT_EQ(server.Connections(), 2);
}

TEST_F(SmtpTlsFilesTest, MissingAuthorityFile) {
    authority_.Set(folder_ / "missing.pem");
    SmtpServer server({.certificate = Make(Shows::kGood)});
    EXPECT_EQ(Send({.port = server.Port(), .option = kRequired}).status, MAIL_STATUS_CONNECTION);
    EXPECT_EQ(Send({.port = server.Port(), .option = kOffered}).status, MAIL_STATUS_SENT);
}

TEST_F(SmtpTlsFilesTest, AuthorityFileReplacesTheSystemsStore) {
    authority_.Set({});
    SmtpServer server({.certificate = Make(Shows::kGood)});
    const Sent sent = Send({.port = server.Port(), .option = kRequired});
    EXPECT_EQ(sent.status, MAIL_STATUS_CONNECTION);
    EXPECT_THAT(sent.answer, HasSubstr(kUntrusted));
}

struct StageCase {
    const char *title;
    const char *stage;
    DWORD option;
    Misdeed misdeed;
    DWORD status;
    const char *reason;
};

class SmtpTlsStagesTest : public SmtpTlsBase, public testing::WithParamInterface<StageCase> {};

TEST_P(SmtpTlsStagesTest, GivesTheStatusOfTheStage) {
    const StageCase &row = GetParam();
    constexpr std::chrono::seconds kHandshake(2);
    SetDeadline(kHandshake);
    const TraceRecorder trace;
    const Certificate *certificate = Make(Shows::kGood);
    const Census before;
    SmtpServer server({.misdeeds = {{row.stage, row.misdeed}},
                       .certificate = certificate,
                       .tls_from_the_first_byte = row.option == kTls});
    const Sent sent =
        InTime(kHandshake, [&] { return Send({.port = server.Port(), .option = row.option}); });
    server.Stop();
    EXPECT_TRUE(NothingLeftSince(before));
    EXPECT_EQ(sent.status, row.status) << trace.AllText();
    EXPECT_THAT(sent.answer, testing::StartsWith(row.reason));
    EXPECT_LT(sent.elapsed, LongestCall(kHandshake)) << trace.AllText();
}

const Misdeed kStall = {"", Then::kStall};
const Misdeed kClose = {"", Then::kClose};
const Misdeed kNonsense = {"\x16\x03nonsense\r\n", Then::kStall};

INSTANTIATE_TEST_SUITE_P(
    Handshake, SmtpTlsStagesTest,
    testing::Values(
        StageCase{"TlsStalls", "TLS", kTls, kStall, 1, "TLS: not finished within the deadline"},
        StageCase{"TlsCloses", "TLS", kTls, kClose, 1, "TLS: "},
        StageCase{"TlsIsNonsense", "TLS", kTls, kNonsense, 1, "TLS: "},
        StageCase{"StarttlsStalls", "STARTTLS", kRequired, kStall, 1, "STARTTLS: not finished"},
        StageCase{"StarttlsCloses", "STARTTLS", kRequired, kClose, 1, "STARTTLS: "},
        StageCase{"StarttlsIsNonsense", "STARTTLS", kRequired, kNonsense, 1, "STARTTLS: "},
        StageCase{"HandshakeStalls", "handshake", kRequired, kStall, 1, "STARTTLS: not finished"},
        StageCase{"HandshakeCloses", "handshake", kRequired, kClose, 1, "STARTTLS: "},
        StageCase{"HandshakeIsNonsense", "handshake", kRequired, kNonsense, 1, "STARTTLS: "},
        StageCase{"HandshakeStallsWhenOffered", "handshake", kOffered, kStall, 1,
                  "STARTTLS: not finished"},
        // Commands smuggled in before the handshake would be obeyed as if they came encrypted.
        StageCase{"AnswersBeforeTheHandshake",
                  "STARTTLS",
                  kRequired,
                  {"220 start now\r\n250 injected\r\n", Then::kStall},
                  1,
                  "STARTTLS: "}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    InsideTls, SmtpTlsStagesTest,
    testing::Values(StageCase{"EhloStalls", "EHLO", kTls, kStall, 1, "EHLO: not finished"},
                    StageCase{"MailStalls", "MAIL", kTls, kStall, 2, "MAIL: not finished"},
                    StageCase{"RcptCloses", "RCPT", kTls, kClose, 2, "RCPT: "},
                    StageCase{"DataCloses", "DATA", kRequired, kClose, 3, "DATA: "},
                    StageCase{"EndOfDataStalls", "end of data", kRequired, kStall, 3,
                              "DATA: not finished"},
                    StageCase{"EndOfDataCloses", "end of data", kTls, kClose, 3, "DATA: "},
                    StageCase{"QuitStalls", "QUIT", kTls, kStall, 0, ""},
                    StageCase{"QuitCloses", "QUIT", kTls, kClose, 0, ""}),
    test_support::Title());

}  // namespace
