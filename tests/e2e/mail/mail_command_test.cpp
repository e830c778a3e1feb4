// "veloxctl mail".
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sysexits.h>

#include <nlohmann/json.hpp>
#include <string>

#include <support/title.h>

#include "report_fixture.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using veloxctl_test::Result;
using veloxctl_test::Veloxctl;
using veloxctl_test::VeloxctlInTerminal;
using Words = std::vector<std::string>;

class MailCommandTest : public ReportTest {
  protected:
    static std::string Show() { return MustSucceed({"mail", "show"}); }
    static nlohmann::json ShowJson() {
        return nlohmann::json::parse(MustSucceed({"mail", "show", "--json"}));
    }
    // The key of the settings, every value.
    static std::string Stored() {
        return MustSucceed({"reg", "export", "HKLM\\" + std::string(kMailKey)});
    }
};

TEST_F(MailCommandTest, ShowsTheDefaultSettingsAndWhatTheyLack) {
    const std::string shown = Show();
    for (const char *row :
         {"SMTP server:     (empty)\n", "Port:            25\n",
          "STARTTLS when the server offers it, else clear text, certificate verified (option 3)\n",
          "POP log-in:      none\n", "POP password:    (missing)\n",
          "Problem:         IP is missing or empty: no report goes out (-7)\n",
          "Problem:         Address is missing or empty: no report goes out (-8)\n"})
        EXPECT_THAT(shown, HasSubstr(row));
}

TEST_F(MailCommandTest, ShowsWhatWasSet) {
    MustSucceed({"mail", "set", "--server", "127.0.0.2", "--port", "2525", "--sender",
                 "agent@server.example", "--protection", "tls", "--verify", "off"});
    MustSucceed({"mail", "set", "--pop", "on", "--pop-server", "pop.test.example", "--pop-port",
                 "995", "--pop-user", "monitor", "--pop-wait", "7", "--pop-password-file", "-"},
                "secret\n");
    const std::string shown = Show();
    for (const char *row :
         {"SMTP server:     127.0.0.2\n", "Its address:     127.0.0.2\n", "Port:            2525\n",
          "Sender:          agent@server.example\n",
          "Protection:      TLS from the first byte, certificate not verified (option 5)\n",
          "POP log-in:      before every report\n", "POP server:      pop.test.example\n",
          "POP port:        995\n", "POP user:        monitor\n", "POP password:    stored\n",
          "POP wait:        7 s\n"})
        EXPECT_THAT(shown, HasSubstr(row));
    EXPECT_THAT(shown, Not(HasSubstr("Problem:")));
    const nlohmann::json expected = {{"server", "127.0.0.2"},
                                     {"address", "127.0.0.2"},
                                     {"port", 2525},
                                     {"sender", "agent@server.example"},
                                     {"option", 5},
                                     {"protection", "tls"},
                                     {"verify", false},
                                     {"pop",
                                      {{"flag", 1},
                                       {"server", "pop.test.example"},
                                       {"port", 995},
                                       {"user", "monitor"},
                                       {"password", "stored"},
                                       {"wait", 7}}},
                                     {"problems", nlohmann::json::array()}};
    EXPECT_EQ(ShowJson(), expected);
}

TEST_F(MailCommandTest, SetLeavesTheRestAlone) {
    UseServer("127.0.0.2", 2525, "starttls");
    Import("[HKLM\\" + std::string(kMailKey) + "]\n\"Option\"=dword:12\n");
    const std::string before = Stored();
    MustSucceed({"mail", "set", "--port", "26"});
    EXPECT_EQ(Number(kMailKey, "SMTPPort"), 26U);
    MustSucceed({"mail", "set", "--port", "2525"});
    EXPECT_EQ(Stored(), before);
    MustSucceed({"mail", "set", "--protection", "plain"});
    EXPECT_EQ(Number(kMailKey, "Option"), 0x10U);  // a bit without meaning stays
    MustSucceed({"mail", "set", "--verify", "off"});
    EXPECT_EQ(Number(kMailKey, "Option"), 0x14U);
    MustSucceed({"mail", "set", "--verify", "on", "--pop", "off"});
    EXPECT_EQ(Number(kMailKey, "Option"), 0x10U);
    EXPECT_EQ(Number(kMailKey, "POPFlag"), 0U);
}

TEST_F(MailCommandTest, ANameIsResolvedWhenItIsStored) {
    MustSucceed({"mail", "set", "--server", "localhost"});
    EXPECT_THAT(Show(), HasSubstr("SMTP server:     localhost\nIts address:     127.0.0.1\n"));
}

TEST_F(MailCommandTest, AMissingOptionIsMarked) {
    Remove(kMailKey, "Option");
    EXPECT_THAT(Show(), HasSubstr("Protection:      (missing: reports go out plain)\n"));
    EXPECT_EQ(ShowJson()["option"], nullptr);
    EXPECT_THAT(Show(), HasSubstr("Problem:         Option is missing: reports go out plain\n"));
}

struct Problem {
    const char *title;
    const char *lines;  // changes of the mail key
    const char *problem;
};

class MailProblemTest : public MailCommandTest, public testing::WithParamInterface<Problem> {};

TEST_P(MailProblemTest, IsShownAndNamedBySet) {
    UseServer("127.0.0.2", 25);
    UsePop("pop.test.example", 110, "monitor", "secret");
    Import("[HKLM\\" + std::string(kMailKey) + "]\n" + GetParam().lines);
    EXPECT_THAT(Show(), HasSubstr("Problem:         " + std::string(GetParam().problem)));
    const Result set = Veloxctl({"mail", "set", "--port", "25"});
    EXPECT_EQ(set.status, EX_OK);
    EXPECT_THAT(set.errors,
                HasSubstr("veloxctl: stored; note: " + std::string(GetParam().problem)));
}

INSTANTIATE_TEST_SUITE_P(
    Each, MailProblemTest,
    testing::Values(Problem{"Flag", "\"POPFlag\"=-\n", "POPFlag is missing: the POP log-in fails"},
                    Problem{"Port", "\"POPPort\"=-\n", "POPPort is missing: "},
                    Problem{"Server", "\"POPServer\"=\"\"\n", "POPServer is missing or empty: "},
                    Problem{"User", "\"POPUser\"=-\n", "POPUser is missing or empty: "},
                    Problem{"Password", "\"POPPass\"=\"\"\n", "POPPass is missing or empty: "},
                    Problem{"ForeignPassword", "\"POPPass\"=\"from another host\"\n",
                            "POPPass does not decode on this host, store it again: "}),
    test_support::Title());

struct Refused {
    const char *title;
    Words options;
    int status;
    const char *message;
    const char *input = "";
};

class MailSetRefusalTest : public MailCommandTest, public testing::WithParamInterface<Refused> {};

// Also what stands beside the wrong option is not stored.
TEST_P(MailSetRefusalTest, StoresNothing) {
    const std::string before = Stored();
    Words words = {"mail", "set", "--pop-user", "other"};
    words.insert(words.end(), GetParam().options.begin(), GetParam().options.end());
    const Result result = Veloxctl(words, {.input = GetParam().input});
    EXPECT_EQ(result.status, GetParam().status);
    EXPECT_THAT(result.errors, HasSubstr(GetParam().message));
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(Stored(), before);
}

const std::string kLong(257, 'a');

INSTANTIATE_TEST_SUITE_P(
    Each, MailSetRefusalTest,
    testing::Values(
        Refused{"ShortName",
                {"--server", "mx1.foo.com"},
                EX_DATAERR,
                "mx1.foo.com: it is read as an IPv4 address that is wrong, because none of its "
                "first parts has four characters; give a longer name of the same server"},
        Refused{"WrongAddress", {"--server", "256.1.1.1"}, EX_DATAERR, "256.1.1.1: it is read as"},
        Refused{"UnknownName",
                {"--server", "unknown.invalid"},
                EX_NOHOST,
                "unknown.invalid: the name does not resolve ("},
        Refused{"EmptyServer", {"--server", ""}, EX_DATAERR, "1 to 256 characters are wanted"},
        Refused{"LongServer", {"--server", kLong}, EX_DATAERR, "1 to 256 characters are wanted"},
        Refused{"BlankInServer", {"--server", "a b"}, EX_DATAERR, "without blanks"},
        Refused{"Port0", {"--port", "0"}, EX_USAGE, "a number from 1 to 65535"},
        Refused{"Port65536", {"--port", "65536"}, EX_USAGE, "a number from 1 to 65535"},
        Refused{"PortText", {"--port", "25x"}, EX_USAGE, "a number from 1 to 65535"},
        Refused{"SenderWithoutAt", {"--sender", "agent"}, EX_DATAERR, "name@host.example"},
        Refused{"SenderInBrackets", {"--sender", "<a@b>"}, EX_DATAERR, "name@host.example"},
        Refused{"LongSender",
                {"--sender", std::string(80, 'a') + "@"},
                EX_DATAERR,
                "1 to 80 characters"},
        Refused{"Protection", {"--protection", "some"}, EX_USAGE, "some"},
        Refused{"Wait", {"--pop-wait", "86401"}, EX_USAGE, "a number from 0 to 86400"},
        Refused{"EmptyPassword",
                {"--pop-password-file", "-"},
                EX_DATAERR,
                "the POP password is empty",
                "\n"},
        Refused{"LongPassword",
                {"--pop-password-file", "-"},
                EX_DATAERR,
                "151",
                "01234567890123456789012345678901234567890123456789"
                "01234567890123456789012345678901234567890123456789"
                "01234567890123456789012345678901234567890123456789xx"},
        Refused{"TwoPasswords",
                {"--pop-password", "--pop-password-file", "-"},
                EX_USAGE,
                "exclude each other",
                "a\n"}),
    test_support::Title());

TEST_F(MailCommandTest, SetWantsSomethingToSet) {
    const Result result = Veloxctl({"mail", "set"});
    EXPECT_EQ(result.status, EX_USAGE);
    EXPECT_THAT(result.errors, HasSubstr("nothing is to be set"));
}

TEST_F(MailCommandTest, ThePasswordIsAskedForTwiceWithoutEcho) {
    const Result result = VeloxctlInTerminal(
        {"mail", "set", "--pop-password"},
        {{"POP password: ", "marked 51c0\n"}, {"POP password (again): ", "marked 51c0\n"}});
    EXPECT_EQ(result.status, EX_OK) << result.output;
    EXPECT_THAT(result.output, Not(HasSubstr("51c0")));
    EXPECT_EQ(ShowJson()["pop"]["password"], "stored");
}

TEST_F(MailCommandTest, ThePasswordThatIsTypedAheadIsNotEchoed) {
    const Result result = VeloxctlInTerminal({"mail", "set", "--pop-password"},
                                             {{"POP password: ", "marked 51c0\nmarked 51c0\n"}});
    EXPECT_EQ(result.status, EX_OK) << result.output;
    EXPECT_THAT(result.output, Not(HasSubstr("51c0")));
}

TEST_F(MailCommandTest, ThePasswordIsTheFilesFirstLine) {
    const std::string file = folder_.Write("password", "first\nsecond\n");
    MustSucceed({"mail", "set", "--pop-password-file", file});
    EXPECT_EQ(ShowJson()["pop"]["password"], "stored");
    EXPECT_EQ(Veloxctl({"mail", "set", "--pop-password-file", folder_ / "absent"}).status,
              EX_NOINPUT);
}

}  // namespace
