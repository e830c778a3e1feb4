// amrpop.dll: how it logs in, which transports it accepts, and what its handles mean.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include <mail_support/base64.h>
#include <mail_support/census.h>
#include <mail_support/certificates.h>
#include <mail_support/logging_in.h>
#include <mail_support/pop_server.h>
#include <mail_support/trace_recorder.h>
#include <support/title.h>

#include "module_fixture.h"

namespace {

using namespace mail_support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class PopLogInTest : public ModuleTest {
  protected:
    TraceRecorder trace_;
};

TEST_F(PopLogInTest, WithUserAndPass) {
    PopServer server({});
    const LoggedIn result = LogIn({.port = server.Port()});
    EXPECT_TRUE(result.init);
    EXPECT_TRUE(result.connect);
    EXPECT_TRUE(result.disconnect);
    EXPECT_TRUE(result.release);
    EXPECT_THAT(server.Commands(), ElementsAre("CAPA", "USER monitor", "PASS secret", "QUIT"));
    EXPECT_EQ(server.LogIns(), 1);
    EXPECT_FALSE(trace_.Has(1, "")) << trace_.AllText();
}

TEST_F(PopLogInTest, WithSaslPlain) {
    PopServer server({.capabilities = {"SASL PLAIN", "USER"}});
    EXPECT_TRUE(LogIn({.port = server.Port()}).disconnect);
    EXPECT_THAT(
        server.Commands(),
        ElementsAre("CAPA", "AUTH PLAIN", Base64(std::string("\0monitor\0secret", 15)), "QUIT"));
}

TEST_F(PopLogInTest, ServerWithoutCapa) {
    PopServer server({.misdeeds = {{"CAPA", {"-ERR what?\r\n"}}}});
    EXPECT_TRUE(LogIn({.port = server.Port()}).disconnect);
    EXPECT_EQ(server.LogIns(), 1);
}

TEST_F(PopLogInTest, ServerThatTakesNoKnownLogIn) {
    PopServer server({.capabilities = {"TOP"}});
    EXPECT_FALSE(LogIn({.port = server.Port()}).connect);
    EXPECT_THAT(server.Commands(), ElementsAre("CAPA"));
}

TEST_F(PopLogInTest, ApopRefused) {
    PopServer server({.greeting = "+OK ready <17.42@pop.test.example>"});
    EXPECT_FALSE(LogIn({.port = server.Port()}).connect);
    EXPECT_TRUE(trace_.Has(1, "log-in failed, APOP: the server said \"-ERR digest refused\""));
    EXPECT_TRUE(trace_.Has(0, "client: APOP"));
}

TEST_F(PopLogInTest, WrongPassword) {
    PopServer server({});
    const LoggedIn result = LogIn({.password = "hunter2", .port = server.Port()});
    EXPECT_TRUE(result.init);
    EXPECT_FALSE(result.connect);
    EXPECT_TRUE(result.release);
    EXPECT_EQ(server.LogIns(), 0);
    EXPECT_TRUE(trace_.Has(1,
                           "log-in failed, PASS: the server said "
                           "\"-ERR [AUTH] wrong account or password\""));
}

TEST_F(PopLogInTest, TraceTellsTheConversationWithoutPassword) {
    PopServer server({});
    LogIn({.port = server.Port()});
    const std::string told = trace_.AllText();
    for (const char *line :
         {"0 amrpop TransportConnect ", " ms, note: connecting to 127.0.0.1:", "server: +OK ready",
          "client: CAPA", "client: USER\n", "note: the connection is clear text", "client: PASS\n",
          "note: logged in", "0 amrpop TransportDisconnect ", "client: QUIT", "server: +OK bye",
          "note: logged out"})
        EXPECT_THAT(told, HasSubstr(line));
    EXPECT_THAT(told, Not(HasSubstr("secret")));
}

// Passwords of more than printable ASCII, as they are.
TEST_F(PopLogInTest, PasswordWithBlanksAndHighBytes) {
    const std::string password = " p\xC6\xFC %s 100% ";
    PopServer server({.password = password});
    EXPECT_TRUE(LogIn({.password = password, .port = server.Port()}).disconnect);
}

TEST_F(PopLogInTest, LongestTexts) {
    const std::string name(256, 'n');
    const std::string password(256, 'p');
    PopServer server({.account = name, .password = password});
    EXPECT_TRUE(LogIn({.name = name, .password = password, .port = server.Port()}).disconnect);
}

struct Planted {
    const char *title;
    std::vector<std::string> capabilities;
    std::string stage;
    std::string right_password;
};

class PopSecretTest : public PopLogInTest, public testing::WithParamInterface<Planted> {};

constexpr char kMarked[] = "Marked-7f3a-Password";

// The server repeats what it was told, as servers that are being debugged do.
TEST_P(PopSecretTest, PasswordIsNeverTraced) {
    const Planted &row = GetParam();
    const std::string plain = Base64(std::string("\0monitor\0", 9) + kMarked);
    Misdeeds misdeeds;
    if (!row.stage.empty())
        misdeeds[row.stage] = {"-ERR got '" + std::string(kMarked) + "' and " + plain + "\r\n"};
    PopServer server(
        {.misdeeds = misdeeds, .capabilities = row.capabilities, .password = row.right_password});
    LogIn({.password = kMarked, .port = server.Port()});
    const std::string told = trace_.AllText();
    EXPECT_THAT(told, Not(HasSubstr(kMarked)));
    EXPECT_THAT(told, Not(HasSubstr(Base64(kMarked))));
    EXPECT_THAT(told, Not(HasSubstr(plain)));
    if (!row.stage.empty()) {
        EXPECT_THAT(told, HasSubstr("(an answer that repeats the password)"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Each, PopSecretTest,
    testing::Values(Planted{"Pass", {"USER"}, "", kMarked},
                    Planted{"WrongPass", {"USER"}, "", "other"},
                    Planted{"Plain", {"SASL PLAIN"}, "", kMarked},
                    Planted{"WrongPlain", {"SASL PLAIN"}, "", "other"},
                    Planted{"RepeatedAtUser", {"USER"}, "USER", kMarked},
                    Planted{"RepeatedAtPass", {"USER"}, "PASS", kMarked},
                    Planted{"RepeatedAtPlain", {"SASL PLAIN"}, "authentication data", kMarked},
                    Planted{"RepeatedAtQuit", {"USER"}, "QUIT", kMarked}),
    test_support::Title());

struct BadInfo {
    const char *title;
    Account account;
    const char *reason;
};

class PopInfoTest : public PopLogInTest, public testing::WithParamInterface<BadInfo> {};

TEST_P(PopInfoTest, IsRefused) {
    const PopModule pop;
    const TRANSPORTINFO info = MakeInfo(GetParam().account);
    HTRANSPORT transport = 4711;
    EXPECT_EQ(pop.init(&transport, &info), FALSE);
    EXPECT_EQ(transport, 0U);
    EXPECT_TRUE(trace_.Has(1, GetParam().reason)) << trace_.AllText();
}

INSTANTIATE_TEST_SUITE_P(
    Each, PopInfoTest,
    testing::Values(BadInfo{"NoServer",
                            {.server = "", .port = 110},
                            "server is neither an address nor a host name"},
                    BadInfo{"ServerWithPort",
                            {.server = "a.example:110", .port = 110},
                            "server is neither an address nor a host name"},
                    BadInfo{"ServerFillsItsField",
                            {.server = std::string(257, 'x'), .port = 110},
                            "server does not end inside its field"},
                    BadInfo{"NoAccount", {.name = "", .port = 110}, "account is empty"},
                    BadInfo{"AccountWithLineFeed",
                            {.name = "a\nDELE 1", .port = 110},
                            "account holds a control byte"},
                    BadInfo{"AccountFillsItsField",
                            {.name = std::string(257, 'x'), .port = 110},
                            "account does not end inside its field"},
                    BadInfo{"NoPassword", {.password = "", .port = 110}, "password is empty"},
                    BadInfo{"PasswordWithLineFeed",
                            {.password = "a\r\nDELE 1", .port = 110},
                            "password holds a control byte"},
                    BadInfo{"PasswordFillsItsField",
                            {.password = std::string(257, 'x'), .port = 110},
                            "password does not end inside its field"},
                    BadInfo{"PortNought", {.port = 0}, "port 0 does not exist"},
                    BadInfo{"PortTooLarge", {.port = 65536}, "port 65536 does not exist"}),
    test_support::Title());

TEST_F(PopLogInTest, NullPointers) {
    const PopModule pop;
    const TRANSPORTINFO info = MakeInfo({.port = 110});
    HTRANSPORT transport = 0;
    EXPECT_EQ(pop.init(nullptr, &info), FALSE);
    EXPECT_EQ(pop.init(&transport, nullptr), FALSE);
    EXPECT_EQ(transport, 0U);
}

TEST_F(PopLogInTest, WrongHandles) {
    const PopModule pop;
    PopServer server({});
    const TRANSPORTINFO info = MakeInfo({.port = server.Port()});
    HTRANSPORT transport = 0;
    ASSERT_EQ(pop.init(&transport, &info), TRUE);
    ASSERT_NE(transport, 0U);
    EXPECT_EQ(pop.disconnect(transport), FALSE);
    EXPECT_TRUE(trace_.Has(1, "not logged in"));
    for (const HTRANSPORT wrong : {HTRANSPORT{0}, transport + 1, ~HTRANSPORT{0}}) {
        EXPECT_EQ(pop.connect(wrong), FALSE);
        EXPECT_EQ(pop.disconnect(wrong), FALSE);
        EXPECT_EQ(pop.release(wrong), FALSE);
    }
    EXPECT_EQ(pop.release(transport), TRUE);
    EXPECT_EQ(pop.release(transport), FALSE);
    EXPECT_EQ(pop.connect(transport), FALSE);
    EXPECT_TRUE(trace_.Has(1, "no such transport"));
}

TEST_F(PopLogInTest, TransportCanBeUsedAgain) {
    const PopModule pop;
    PopServer server({});
    const TRANSPORTINFO info = MakeInfo({.port = server.Port()});
    HTRANSPORT transport = 0;
    ASSERT_EQ(pop.init(&transport, &info), TRUE);
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(pop.connect(transport), TRUE);
        EXPECT_EQ(pop.connect(transport), FALSE);
        EXPECT_EQ(pop.disconnect(transport), TRUE);
        EXPECT_EQ(pop.disconnect(transport), FALSE);
    }
    EXPECT_EQ(pop.release(transport), TRUE);
    EXPECT_EQ(server.LogIns(), 2);
}

TEST_F(PopLogInTest, TwoTransportsAtATime) {
    const PopModule pop;
    PopServer first({});
    PopServer second({});
    const TRANSPORTINFO first_info = MakeInfo({.port = first.Port()});
    const TRANSPORTINFO second_info = MakeInfo({.port = second.Port()});
    HTRANSPORT transports[2] = {0, 0};
    ASSERT_EQ(pop.init(&transports[0], &first_info), TRUE);
    ASSERT_EQ(pop.init(&transports[1], &second_info), TRUE);
    EXPECT_NE(transports[0], transports[1]);
    EXPECT_EQ(pop.connect(transports[0]), TRUE);
    EXPECT_EQ(pop.connect(transports[1]), TRUE);
    EXPECT_EQ(pop.disconnect(transports[0]), TRUE);
    EXPECT_EQ(pop.release(transports[0]), TRUE);
    EXPECT_EQ(pop.disconnect(transports[1]), TRUE);
    EXPECT_EQ(pop.release(transports[1]), TRUE);
}

TEST_F(PopLogInTest, ReleaseClosesAnOpenConnection) {
    const Census before;
    {
        PopServer server({});
        const PopModule pop;
        const TRANSPORTINFO info = MakeInfo({.port = server.Port()});
        HTRANSPORT transport = 0;
        ASSERT_EQ(pop.init(&transport, &info), TRUE);
        ASSERT_EQ(pop.connect(transport), TRUE);
        EXPECT_EQ(pop.release(transport), TRUE);
        EXPECT_EQ(server.LogIns(), 0);
    }
    EXPECT_TRUE(NothingLeftSince(before));
}

TEST_F(PopLogInTest, FailedConnectClosesItsSocketAtOnce) {
    PopServer server({});
    const PopModule pop;
    const TRANSPORTINFO info = MakeInfo({.password = "hunter2", .port = server.Port()});
    HTRANSPORT transport = 0;
    ASSERT_EQ(pop.init(&transport, &info), TRUE);
    const Census before;
    EXPECT_EQ(pop.connect(transport), FALSE);
    EXPECT_TRUE(NothingLeftSince(before));
    EXPECT_EQ(pop.release(transport), TRUE);
}

}  // namespace
