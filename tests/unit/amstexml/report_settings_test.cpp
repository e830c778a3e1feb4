// The settings that a report is sent with, and what each missing one gives.
#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include "fakes/registry.h"
#include "mailer.h"
#include "support/title.h"

namespace {

using mailer::kBase;
using mailer::kSetting;
using mailer::kSetup;
using mailer::OwnTrace;
using mailer::TheModule;
using ::testing::Contains;
using ::testing::Not;

class ReportSettingsTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        mailer::StoreSettings();
        mailer::Add();
    }
};

struct Needed {
    const char *title;
    const char *path;
    const char *name;
    std::size_t size;  // that is read
    int result;
    const char *trace;
};

class NeededSettingTest : public ReportSettingsTest, public ::testing::WithParamInterface<Needed> {
  protected:
    static void ExpectFailure() {
        const auto before = fakes::Dump();
        EXPECT_EQ(mailer::Send(1), GetParam().result);
        EXPECT_EQ(OwnTrace().back(), GetParam().trace);
        EXPECT_EQ(fakes::Dump(), before);
        EXPECT_TRUE(TheModule().mails.empty());
    }
};

TEST_P(NeededSettingTest, Missing) {
    fakes::DeleteValue(GetParam().path, GetParam().name);
    ExpectFailure();
}

TEST_P(NeededSettingTest, Empty) {
    fakes::StoreText(GetParam().path, GetParam().name, "");
    ExpectFailure();
}

TEST_P(NeededSettingTest, OverItsSize) {
    fakes::StoreText(GetParam().path, GetParam().name, std::string(GetParam().size, 'x'));
    ExpectFailure();
}

TEST_P(NeededSettingTest, OfItsFullSize) {
    fakes::StoreText(GetParam().path, GetParam().name, std::string(GetParam().size - 1, 'x'));
    EXPECT_EQ(mailer::Send(1), 0);
    fakes::StoreBytes(GetParam().path, GetParam().name, REG_SZ, std::string(GetParam().size, 'x'));
    EXPECT_EQ(mailer::Send(1), 0) << "without terminator";
}

INSTANTIATE_TEST_SUITE_P(Settings, NeededSettingTest,
                         ::testing::Values(Needed{"Server", kBase, "IP", 257, -7,
                                                  "1 <AMAMRegReadEx IP failed.return -7."},
                                           Needed{"Sender", kBase, "Address", 81, -8,
                                                  "1 <AMAMRegReadEx Address failed.return -8."},
                                           Needed{"CustomerMail", kSetting, "MAIL", 261, -9,
                                                  "1 <MAIL is invalid."}),
                         test_support::Title());

TEST_F(ReportSettingsTest, AllGoToTheModule) {
    EXPECT_EQ(mailer::Send(2), 0);
    ASSERT_EQ(TheModule().mails.size(), 1U);
    const mailer::Mail &mail = TheModule().mails[0];
    EXPECT_EQ(mail.server, "127.0.0.9");
    EXPECT_EQ(mail.sender, "sender@host.example");
    EXPECT_EQ(mail.port, 2525U);
    EXPECT_EQ(mail.error_reply, "errors@host.example");
    EXPECT_EQ(mail.error_copy, "errors@host.example");
    EXPECT_EQ(mail.option, 2U);
    EXPECT_EQ(mail.form, 2U);
    EXPECT_EQ(mail.to, std::vector<std::string>{"centre@centre.example"});
    EXPECT_EQ(mail.subject, "Subject");
    EXPECT_EQ(mail.body, fakes::FakeEncode(mailer::Body("A")));
    EXPECT_EQ(mail.size, 23U + 7U + mail.body.size());
    EXPECT_EQ(mail.status_before, 0U);
}

TEST_F(ReportSettingsTest, AMissingPortIs25) {
    fakes::DeleteValue(kBase, "SMTPPort");
    EXPECT_EQ(mailer::Send(2), 0);
    EXPECT_EQ(TheModule().mails[0].port, 25U);
    EXPECT_THAT(OwnTrace(), Contains("0 g_dwSMTPPort:25"));
}

TEST_F(ReportSettingsTest, AMissingOptionIs0) {
    fakes::DeleteValue(kBase, "Option");
    EXPECT_EQ(mailer::Send(2), 0);
    EXPECT_EQ(TheModule().mails[0].option, 0U);
    EXPECT_THAT(OwnTrace(), Contains("1 AMAMRegReadEx Option failed."));
}

TEST_F(ReportSettingsTest, TheOptionWordIsPassedOnWhole) {
    fakes::StoreNumber(kBase, "Option", 0xFFFFFFFF);
    EXPECT_EQ(mailer::Send(2), 0);
    EXPECT_EQ(TheModule().mails[0].option, 0xFFFFFFFFU);
}

TEST_F(ReportSettingsTest, AMissingErrorReplyIsEmpty) {
    fakes::DeleteValue(kSetup, "ERRORREPLY");
    EXPECT_EQ(mailer::Send(2), 0);
    EXPECT_EQ(TheModule().mails[0].error_reply, "");
    EXPECT_EQ(TheModule().mails[0].error_copy, "");
    EXPECT_THAT(OwnTrace(), Contains("1 AMAMRegReadEx ERRORREPLY failed."));
}

TEST_F(ReportSettingsTest, AnEmptyErrorReplyIsNoFailure) {
    fakes::StoreText(kSetup, "ERRORREPLY", "");
    EXPECT_EQ(mailer::Send(2), 0);
    EXPECT_EQ(TheModule().mails[0].error_reply, "");
    EXPECT_EQ(TheModule().mails[0].error_copy, "");
    EXPECT_THAT(OwnTrace(), Not(Contains("1 AMAMRegReadEx ERRORREPLY failed.")));
}

TEST_F(ReportSettingsTest, AnErrorReplyOverItsSizeIsEmpty) {
    fakes::StoreText(kSetup, "ERRORREPLY", std::string(81, 'e'));
    EXPECT_EQ(mailer::Send(2), 0);
    EXPECT_EQ(TheModule().mails[0].error_reply, "");
    fakes::StoreText(kSetup, "ERRORREPLY", std::string(80, 'e'));
    EXPECT_EQ(mailer::Send(2), 0);
    EXPECT_EQ(TheModule().mails[1].error_reply, std::string(80, 'e'));
    EXPECT_EQ(TheModule().mails[1].error_copy, std::string(80, 'e'));
}

// The first missing setting decides.
TEST_F(ReportSettingsTest, AreReadInOrder) {
    fakes::DeleteValue(kBase, "IP");
    fakes::DeleteValue(kBase, "Address");
    fakes::DeleteValue(kSetting, "MAIL");
    fakes::DeleteValue(kSetup, "VERSION");
    EXPECT_EQ(mailer::Send(2), -7);
    fakes::StoreText(kBase, "IP", "127.0.0.9");
    EXPECT_EQ(mailer::Send(2), -8);
    fakes::StoreText(kBase, "Address", "a@b");
    EXPECT_EQ(mailer::Send(2), -9);
    fakes::StoreText(kSetting, "MAIL", "c@d");
    EXPECT_EQ(mailer::Send(2), -10);
    EXPECT_EQ(AMAMVeloxTestReport(nullptr, 2, "S", "a b", nullptr), -6) << "the list comes first";
}

}  // namespace
