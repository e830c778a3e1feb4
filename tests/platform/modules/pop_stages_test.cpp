// amrpop.dll against a server that misbehaves at one stage: the right result, in time, and nothing
// left behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include <mail_support/census.h>
#include <mail_support/certificates.h>
#include <mail_support/logging_in.h>
#include <mail_support/pop_server.h>
#include <mail_support/sending.h>
#include <mail_support/trace_recorder.h>
#include <support/title.h>

#include "module_fixture.h"

namespace {

using namespace mail_support;

const std::string kGarbage = std::string("\x01\xff\0 what?", 9) + "\r\n";
const Misdeed kStall = {"", Then::kStall};
const Misdeed kClose = {"", Then::kClose};
const Misdeed kNonsense = {kGarbage, Then::kStall};
const Misdeed kFlood = {"* and more\r\n", Then::kRepeat};
const Misdeed kEndlessLine = {"+OK and more", Then::kRepeat};
const Misdeed kDrip = {"+", Then::kDrip};

const std::vector<std::string> kWithSasl = {"SASL PLAIN LOGIN", "USER"};
const std::vector<std::string> kWithoutSasl = {"USER"};

struct Case {
    const char *title;
    const char *stage;
    Misdeed misdeed;
    const char *reason;  // part of the failure's trace
};

class PopStagesBase : public ModuleTest {
  protected:
    void Try(const Case &row, const PopBehaviour &behaviour, std::chrono::seconds deadline) {
        SetDeadline(deadline);
        const TraceRecorder trace;
        const Census before;
        PopServer server(behaviour);
        const LoggedIn result = InTime(deadline, [&] { return LogIn({.port = server.Port()}); });
        server.Stop();
        EXPECT_TRUE(NothingLeftSince(before));
        const bool at_goodbye = std::string(row.stage) == "QUIT";
        EXPECT_TRUE(result.init);
        EXPECT_EQ(result.connect, at_goodbye) << trace.AllText();
        EXPECT_FALSE(result.disconnect) << trace.AllText();
        EXPECT_TRUE(result.release);
        EXPECT_TRUE(trace.Has(1, row.reason)) << trace.AllText();
        EXPECT_LT(result.elapsed, LongestCall(deadline)) << trace.AllText();
    }
};

class PopStagesTest : public PopStagesBase, public testing::WithParamInterface<Case> {};

TEST_P(PopStagesTest, FailsInTime) {
    const Case &row = GetParam();
    const std::string stage = row.stage;
    const bool sasl = stage == "AUTH" || stage == "authentication data";
    Try(row,
        {.misdeeds = {{row.stage, row.misdeed}}, .capabilities = sasl ? kWithSasl : kWithoutSasl},
        kDeadline);
}

INSTANTIATE_TEST_SUITE_P(
    Stall, PopStagesTest,
    testing::Values(
        Case{"Greeting", "greeting", kStall, "log-in failed, greeting: not finished within"},
        Case{"Capa", "CAPA", kStall, "log-in failed, CAPA: not finished within"},
        Case{"User", "USER", kStall, "log-in failed, USER: not finished within"},
        Case{"Pass", "PASS", kStall, "log-in failed, PASS: not finished within"},
        Case{"Auth", "AUTH", kStall, "log-in failed, AUTH: not finished within"},
        Case{"AuthData", "authentication data", kStall, "log-in failed, AUTH: not finished"},
        Case{"Quit", "QUIT", kStall, "log-out failed, QUIT: no answer"}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Close, PopStagesTest,
    testing::Values(Case{"Greeting", "greeting", kClose, "log-in failed, greeting: "},
                    Case{"Capa", "CAPA", kClose, "log-in failed, CAPA: "},
                    Case{"User", "USER", kClose, "log-in failed, USER: "},
                    Case{"Pass", "PASS", kClose, "log-in failed, PASS: "},
                    Case{"Auth", "AUTH", kClose, "log-in failed, AUTH: "},
                    Case{"AuthData", "authentication data", kClose, "log-in failed, AUTH: "},
                    Case{"Quit", "QUIT", kClose, "log-out failed, QUIT: no answer"}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Nonsense, PopStagesTest,
    testing::Values(
        Case{"Greeting", "greeting", kNonsense, "log-in failed, greeting: not finished within"},
        Case{"Capa", "CAPA", kNonsense, "log-in failed, CAPA: not finished within"},
        Case{"User", "USER", kNonsense, "log-in failed, USER: not finished within"},
        Case{"Pass", "PASS", kNonsense, "log-in failed, PASS: not finished within"},
        Case{"Auth", "AUTH", kNonsense, "log-in failed, AUTH: not finished within"},
        Case{"AuthData", "authentication data", kNonsense, "log-in failed, AUTH: not finished"},
        Case{"Quit", "QUIT", kNonsense, "log-out failed, QUIT: the server said"}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    NeverStopsTalking, PopStagesTest,
    testing::Values(Case{"FloodAtGreeting", "greeting", kFlood, "log-in failed, greeting: "},
                    Case{"FloodAtCapa", "CAPA", kFlood, "log-in failed, CAPA: "},
                    Case{"FloodAtPass", "PASS", kFlood, "log-in failed, PASS: "},
                    Case{"FloodAtQuit", "QUIT", kFlood, "log-out failed, QUIT: the server said"},
                    Case{"EndlessLineAtCapa", "CAPA", kEndlessLine, "log-in failed, CAPA: "},
                    Case{"EndlessLineAtUser", "USER", kEndlessLine, "log-in failed, USER: "},
                    Case{"EndlessLineAtQuit", "QUIT", kEndlessLine, "log-out failed, QUIT: no "},
                    Case{"DripAtPass", "PASS", kDrip, "log-in failed, PASS: not finished"},
                    Case{"DripAtQuit", "QUIT", kDrip, "log-out failed, QUIT: no answer"}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Refusal, PopStagesTest,
    testing::Values(
        Case{"Greeting", "greeting", {"-ERR busy\r\n"}, "the server said \"-ERR busy\""},
        Case{"User", "USER", {"-ERR no such user\r\n"}, "\"-ERR no such user\""},
        Case{"UserAnsweredWithAnInvitation", "USER", {"+ go on\r\n"}, "\"+ go on\""},
        Case{"Pass",
             "PASS",
             {"-ERR [IN-USE] locked\r\n"},
             "log-in failed, PASS: the server said \"-ERR [IN-USE] locked\""},
        Case{"AuthData", "authentication data", {"-ERR [AUTH] no\r\n"}, "\"-ERR [AUTH] no\""},
        Case{"Quit",
             "QUIT",
             {"-ERR I stay\r\n"},
             "log-out failed, QUIT: the server said \"-ERR I stay\""}),
    test_support::Title());

class PopTlsStagesTest : public PopStagesBase, public testing::WithParamInterface<Case> {
  protected:
    Authority authority_of_server_;
    Certificate certificate_ = authority_of_server_.Issue("IP:127.0.0.1");
};

TEST_P(PopTlsStagesTest, FailsInTime) {
    authority_.Set(authority_of_server_.File());
    Try(GetParam(),
        {.misdeeds = {{GetParam().stage, GetParam().misdeed}}, .certificate = &certificate_},
        std::chrono::seconds(2));
}

INSTANTIATE_TEST_SUITE_P(
    Upgrade, PopTlsStagesTest,
    testing::Values(Case{"StlsStalls", "STLS", kStall, "log-in failed, STLS: not finished"},
                    Case{"StlsCloses", "STLS", kClose, "log-in failed, STLS: "},
                    Case{"StlsIsNonsense", "STLS", kNonsense, "log-in failed, STLS: "},
                    Case{"HandshakeStalls", "handshake", kStall, "log-in failed, STLS: not fin"},
                    Case{"HandshakeCloses", "handshake", kClose, "log-in failed, STLS: "},
                    Case{"HandshakeIsNonsense", "handshake", kNonsense, "log-in failed, STLS: "},
                    Case{"AnswersBeforeTheHandshake",
                         "STLS",
                         {"+OK start now\r\n+OK injected\r\n", Then::kStall},
                         "log-in failed, STLS: "}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    InsideTls, PopTlsStagesTest,
    testing::Values(Case{"PassStalls", "PASS", kStall, "log-in failed, PASS: not finished"},
                    Case{"PassCloses", "PASS", kClose, "log-in failed, PASS: "},
                    Case{"QuitStalls", "QUIT", kStall, "log-out failed, QUIT: no answer"},
                    Case{"QuitCloses", "QUIT", kClose, "log-out failed, QUIT: no answer"},
                    Case{"QuitIsNonsense", "QUIT", kNonsense, "log-out failed, QUIT: the server"}),
    test_support::Title());

using PopConnectionTest = ShortDeadlineTest;

TEST_F(PopConnectionTest, ConnectStalls) {
    const TraceRecorder trace;
    const DeafPort port;
    const Census before;
    const LoggedIn result = InTime(kDeadline, [&] { return LogIn({.port = port.Port()}); });
    EXPECT_TRUE(NothingLeftSince(before));
    EXPECT_FALSE(result.connect);
    EXPECT_TRUE(trace.Has(1, "log-in failed, connect: not finished within the deadline"));
    EXPECT_LT(result.elapsed, LongestCall(kDeadline));
}

TEST_F(PopConnectionTest, ConnectIsRefused) {
    const TraceRecorder trace;
    const ClosedPort port;
    EXPECT_FALSE(LogIn({.port = port.Port()}).connect);
    EXPECT_TRUE(trace.Has(1, "log-in failed, connect: Failed to connect to 127.0.0.1"));
}

}  // namespace
