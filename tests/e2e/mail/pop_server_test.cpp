// amrpop.dll and a real POP3 server, alone and as the key to an SMTP server.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include <mail_support/certificates.h>
#include <mail_support/logging_in.h>
#include <mail_support/sending.h>
#include <mail_support/server.h>

#include "mail_fixture.h"
#include "mailbox.h"
#include "servers.h"

namespace {

using namespace mail_support;
using testing::HasSubstr;

constexpr char kPassword[] = "Marked 51c0 password";

class RealPopTest : public MailTest {
  protected:
    Account TheAccount(unsigned port) {
        return {.server = OwnLoopbackAddress(), .password = kPassword, .port = port};
    }
};

TEST_F(RealPopTest, ClearText) {
    const Dovecot dovecot("monitor", kPassword, nullptr);
    EXPECT_TRUE(LogIn(TheAccount(Dovecot::kPort)).disconnect) << trace_.AllText() << dovecot.Log();
    EXPECT_TRUE(std::filesystem::exists(dovecot.LogInMark()));
    EXPECT_TRUE(trace_.Has(0, "the connection is clear text"));
}

TEST_F(RealPopTest, UpgradeWhenOffered) {
    const Dovecot dovecot("monitor", kPassword, &certificate_);
    EXPECT_TRUE(LogIn(TheAccount(Dovecot::kPort)).disconnect) << trace_.AllText() << dovecot.Log();
    EXPECT_TRUE(std::filesystem::exists(dovecot.LogInMark()));
    EXPECT_THAT(dovecot.LogWith(", TLS,"), HasSubstr(", TLS,"));
    EXPECT_TRUE(trace_.Has(0, "the connection is encrypted"));
    EXPECT_FALSE(trace_.Has(1, "")) << trace_.AllText();
}

TEST_F(RealPopTest, TlsFromTheFirstByte) {
    const Dovecot dovecot("monitor", kPassword, &certificate_);
    EXPECT_TRUE(LogIn(TheAccount(Dovecot::kTlsPort)).disconnect)
        << trace_.AllText() << dovecot.Log();
    EXPECT_TRUE(std::filesystem::exists(dovecot.LogInMark()));
    EXPECT_THAT(dovecot.LogWith(", TLS,"), HasSubstr(", TLS,"));
}

TEST_F(RealPopTest, WrongPassword) {
    const Dovecot dovecot("monitor", "another", &certificate_);
    for (const unsigned port : {Dovecot::kPort, Dovecot::kTlsPort}) {
        const LoggedIn result = LogIn(TheAccount(port));
        EXPECT_TRUE(result.init);
        EXPECT_FALSE(result.connect);
        EXPECT_TRUE(result.release);
    }
    EXPECT_TRUE(trace_.Has(1, "log-in failed, AUTH: the server said \"-ERR [AUTH]"))
        << trace_.AllText();
    EXPECT_FALSE(std::filesystem::exists(dovecot.LogInMark()));
}

TEST_F(RealPopTest, UnknownAccount) {
    const Dovecot dovecot("somebody", kPassword, nullptr);
    EXPECT_FALSE(LogIn(TheAccount(Dovecot::kPort)).connect);
    EXPECT_FALSE(std::filesystem::exists(dovecot.LogInMark()));
}

// The goodbye is said: the server saw a log-out, not a lost connection.
TEST_F(RealPopTest, ServerSeesTheLogOut) {
    const Dovecot dovecot("monitor", kPassword, nullptr);
    ASSERT_TRUE(LogIn(TheAccount(Dovecot::kPort)).disconnect) << trace_.AllText();
    EXPECT_THAT(dovecot.LogWith("Disconnected: Logged out"), HasSubstr("Disconnected: Logged out"));
}

TEST_F(RealPopTest, MailIsTakenOnlyAfterTheLogIn) {
    const Dovecot dovecot("monitor", kPassword, &certificate_);
    const Exim exim({.certificate = &certificate_, .gate = dovecot.LogInMark()});
    const Sending report = {.server = OwnLoopbackAddress(),
                            .port = Exim::kPort,
                            .option = MAIL_OPTION_STARTTLS_REQUIRED,
                            .body = Encode("after the log-in\r\n")};
    const Sent before = Send(report);
    EXPECT_EQ(before.status, MAIL_STATUS_ENVELOPE);
    EXPECT_THAT(before.answer, HasSubstr("550 log in by POP first"));
    ASSERT_TRUE(LogIn(TheAccount(Dovecot::kPort)).disconnect) << trace_.AllText() << dovecot.Log();
    ASSERT_EQ(Send(report).status, MAIL_STATUS_SENT) << trace_.AllText();
    EXPECT_EQ(Decode(ReadMailbox(exim.Mailbox(1)).at(0)), "after the log-in\r\n");
}

}  // namespace
