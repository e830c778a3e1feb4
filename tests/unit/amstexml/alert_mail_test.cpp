// Alerts of the queue by mail: the report's steps, the alert's own Message-ID, and nothing
// recorded.
#include "velox/alert_mail.h"

#include <amcrtcpy.h>
#include <gmock/gmock.h>
#include <ntwin32/memory.h>

#include "fakes/registry.h"
#include "mailer.h"
#include "transport.h"

namespace {

using mailer::TheModule;
using ::testing::ElementsAre;

constexpr char kFunction[] = "KesSendAlertByMail";
constexpr char kId[] = "<20240305T005320.123456Z-0123456789abcdef@host01>";
constexpr char kTo[] = "centre@centre.example, second@centre.example";
constexpr char kLines[] = "[ALERT]\r\ndisk 1\r\n";

class AlertMailTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        mailer::StoreSettings();
        mailer::Add();
    }
    int Send(const char *to = kTo) {
        std::fill_n(answer_, sizeof answer_, 'x');
        return KesSendAlertByMail(kId, to, kLines, answer_);
    }
    std::string LastTrace() { return fakes::TraceLinesOf(kFunction).back(); }

    char answer_[VX_ALERT_ANSWER_CAPACITY];
};

// The fake codec gives the body as it is taken.
TEST_F(AlertMailTest, SendsAReportOfKindAWithTheAlertsLines) {
    const auto before = fakes::Dump();
    EXPECT_EQ(Send(), 0);
    ASSERT_EQ(TheModule().mails.size(), 1U);
    const mailer::Mail &mail = TheModule().mails[0];
    EXPECT_EQ(mail.message_id, kId);
    EXPECT_EQ(mail.subject, "Velox Alert Notification");
    EXPECT_EQ(mail.sender, "sender@host.example");
    EXPECT_THAT(mail.to, ElementsAre("centre@centre.example", "second@centre.example"));
    void *encoded = nullptr;
    DWORD size = 0;
    const std::string body = mailer::Body("A", kLines);
    ASSERT_NE(UUCdEnCodingToMemory(body.data(), static_cast<DWORD>(body.size()), &encoded, &size),
              FALSE);
    EXPECT_EQ(mail.body, std::string(static_cast<char *>(encoded), size));
    std::free(encoded);
    EXPECT_EQ(fakes::Dump(), before) << "an alert's success is not recorded in the registry";
    EXPECT_EQ(fakes::LoadedModules(), 0);
}

TEST_F(AlertMailTest, TracesItsSteps) {
    EXPECT_EQ(Send("centre@centre.example"), 0);
    EXPECT_THAT(
        fakes::TraceLinesOf(kFunction),
        ElementsAre(std::string("0 >lpszMessageId=") + kId, "0 VX_REG_TO:centre@centre.example",
                    "0 szSubject_d:Velox Alert Notification", "0 g_szIP_reg:127.0.0.9",
                    "0 g_szAddress_reg:sender@host.example", "0 g_dwSMTPPort:2525",
                    "0 lpszTo[0]:centre@centre.example", "0 szSubject_d:Velox Alert Notification",
                    "0 <return 0."));
}

TEST_F(AlertMailTest, ARefusalComesBackInTheServersWords) {
    TheModule().status = MAIL_STATUS_ENVELOPE;
    EXPECT_EQ(Send(), VX_REPORT_ENVELOPE_REFUSED);
    EXPECT_STREQ(answer_, "550 no");
    EXPECT_EQ(LastTrace(), "0 <return -15.");
}

TEST_F(AlertMailTest, AFailedPopLogInSendsNothing) {
    transport::StoreSettings();
    transport::Add();
    transport::TheModule().connect = false;
    EXPECT_EQ(Send(), VX_REPORT_POP_FAILED);
    EXPECT_STREQ(answer_, "");
    EXPECT_TRUE(TheModule().mails.empty());
    EXPECT_EQ(LastTrace(), "0 <return -18.");
}

TEST_F(AlertMailTest, WhatIsMissingGivesTheReportsCodes) {
    EXPECT_EQ(Send(""), VX_REPORT_NO_DESTINATION);
    EXPECT_STREQ(answer_, "");
    EXPECT_EQ(LastTrace(), "1 <ETO invalid.return -4.");
    fakes::DeleteValue(mailer::kSetting, "MAIL");
    EXPECT_EQ(Send(), VX_REPORT_NO_CUSTOMER_MAIL);
    mailer::StoreSettings();
    fakes::DeleteValue(mailer::kSetup, "VERSION");
    EXPECT_EQ(Send(), VX_REPORT_NOT_COMPOSED);
    EXPECT_TRUE(TheModule().mails.empty());
}

TEST_F(AlertMailTest, AModuleWithoutTheFunctionIsUnloaded) {
    fakes::AddModule(mailer::kModule, {});
    EXPECT_EQ(Send(), VX_REPORT_NO_FUNCTION);
    EXPECT_EQ(LastTrace(), "1 <GetProcAddress(KesSendMailWithId) failed.return -13.");
    EXPECT_EQ(fakes::LoadedModules(), 0);
}

}  // namespace
