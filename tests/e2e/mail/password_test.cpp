// A marked password from the settings to the servers: nothing that is written anywhere shows it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include <mail_support/base64.h>
#include <mail_support/pop_server.h>
#include <mail_support/smtp_server.h>
#include <support/title.h>

#include "report_fixture.h"

namespace {

using mail_support::Base64;
using testing::HasSubstr;
using veloxctl_test::Result;
using veloxctl_test::Veloxctl;
using veloxctl_test::VeloxctlInTerminal;

constexpr char kMarked[] = "Marked/7f3a/Password";

// As it stands, and what base64 makes of it alone or inside anything else, at each place in a group
// of three bytes.
std::vector<std::string> Forms() {
    std::vector<std::string> forms = {kMarked};
    for (std::size_t before = 0; before < 3; ++before) {
        const std::string encoded = Base64(std::string(before, 'x') + kMarked);
        const std::size_t from = before == 0 ? 0 : 4;
        forms.push_back(encoded.substr(from, encoded.size() - 4 - from));
    }
    return forms;
}

void ExpectNoPassword(const std::string &where, const std::string &text) {
    for (const std::string &form : Forms())
        EXPECT_EQ(text.find(form), std::string::npos) << where << " shows " << form << ":\n"
                                                      << text;
}

struct Case {
    const char *title;
    std::vector<std::string> capabilities;
    std::string greeting;
    std::string right_password;
    std::string stage;  // where the server repeats what it was told
};

class PasswordTest : public ReportTest, public testing::WithParamInterface<Case> {
  protected:
    ~PasswordTest() override { LookIntoFiles(); }

    static Result Run(const std::vector<std::string> &words, const std::string &input = "") {
        const Result result = Veloxctl(words, {.input = input});
        ExpectNoPassword("output", result.output);
        ExpectNoPassword("errors", result.errors);
        return result;
    }

    // Logs, registry and whatever else the system keeps.
    void LookIntoFiles() {
        int files = 0;
        for (const auto &entry :
             std::filesystem::recursive_directory_iterator(server_.StateFolder())) {
            if (entry.is_regular_file()) {
                ExpectNoPassword(entry.path(), test_support::ReadWholeFile(entry.path()));
                ++files;
            }
        }
        EXPECT_GT(files, 0);
        ExpectNoPassword("the registry server's messages", server_.Log());
    }
};

TEST_P(PasswordTest, IsShownNowhere) {
    const Case &row = GetParam();
    mail_support::Misdeeds misdeeds;
    if (!row.stage.empty())
        misdeeds[row.stage] = {"-ERR '" + std::string(kMarked) + "' '" +
                               Base64(std::string("\0monitor\0", 9) + kMarked) + "' '" +
                               Base64(kMarked) + "'\r\n"};
    mail_support::PopServer pop({.misdeeds = misdeeds,
                                 .greeting = row.greeting,
                                 .capabilities = row.capabilities,
                                 .password = row.right_password});
    mail_support::SmtpServer smtp({});
    UseServer("127.0.0.1", smtp.Port());
    EXPECT_EQ(Run({"-v", "mail", "set", "--pop", "on", "--pop-server", "127.0.0.1", "--pop-port",
                   std::to_string(pop.Port()), "--pop-user", "monitor", "--pop-password-file", "-"},
                  std::string(kMarked) + "\n")
                  .status,
              0);
    Run({"-v", "mail", "show"});
    Run({"mail", "show", "--json"});
    Run({"reg", "export", "HKLM\\" + std::string(kMailKey)});
    const Result sent = Run({"-v", "report", "test"});
    EXPECT_THAT(sent.errors, HasSubstr("TransportConnect"));
    const bool right = row.right_password == kMarked && row.stage.empty();
    EXPECT_EQ(sent.status == 0, right) << sent.errors;
    EXPECT_EQ(pop.LogIns(), right ? 1 : 0);
}

const std::vector<std::string> kUser = {"USER"};
const std::vector<std::string> kSasl = {"SASL PLAIN LOGIN"};

INSTANTIATE_TEST_SUITE_P(
    Each, PasswordTest,
    testing::Values(Case{"User", kUser, "+OK ready", kMarked, ""},
                    Case{"WrongUser", kUser, "+OK ready", "other", ""},
                    Case{"Sasl", kSasl, "+OK ready", kMarked, ""},
                    Case{"WrongSasl", kSasl, "+OK ready", "other", ""},
                    Case{"Apop", kUser, "+OK <1.2@pop.test.example>", "other", ""},
                    Case{"RepeatedAtPass", kUser, "+OK ready", "other", "PASS"},
                    Case{"RepeatedAtSasl", kSasl, "+OK ready", "other", "authentication data"}),
    test_support::Title());

using TypedPasswordTest = ReportTest;

TEST_F(TypedPasswordTest, HasNoEcho) {
    const Result result =
        VeloxctlInTerminal({"-v", "mail", "set", "--pop-password"},
                           {{"POP password: ", std::string(kMarked) + "\n"},
                            {"POP password (again): ", std::string(kMarked) + "\n"}});
    EXPECT_EQ(result.status, 0) << result.output;
    ExpectNoPassword("the terminal", result.output);
}

}  // namespace
