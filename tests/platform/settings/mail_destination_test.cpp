// The mail settings of the Velox report's destination in a real registry.
#include <velox/mail_destination.h>

#include <cstdlib>
#include <memory>

#include "settings_fixture.h"

namespace settings_test {
namespace {

using ::testing::IsSubsetOf;
using ::testing::IsSupersetOf;

const std::string kVeloxReport = kDestinations + "\\VELOXREPORT";

class MailDestination : public SettingsTest {
  protected:
    void SetUp() override {
        SettingsTest::SetUp();
        CreateKey(kVeloxReport + "\\Address");
        StoreNumber("SOFTWARE\\XEV\\VLXService\\SETTING", "KAISHAKBN", 1);
        schedule_->dwSchedule = 0x7F;
        schedule_->dwRetryCount = 2;
        schedule_->dwRetryInterval = 10;
    }
    std::unique_ptr<DEST_DATA> schedule_ = std::make_unique<DEST_DATA>();
    test_support::EnvironmentVariable language_{"KES_LANG", "en_US"};
};

TEST_F(MailDestination, IsWrittenAndReadBack) {
    VXML_DEST_DATA mail = {};
    Fill(mail.szTo, "a@example.com,b@example.com");
    Fill(mail.szSubject, "Alert");
    mail.szRepLevel = 2;
    ASSERT_EQ(SetAMAMDeseSetting(&mail, schedule_.get()), TRUE);
    EXPECT_THAT(Lines(kVeloxReport),
                IsSupersetOf({"Comment=To: a@example.com,b@example.com",
                              "Address ETo=a@example.com,b@example.com", "Address ESubject=Alert",
                              "Address EReportLevel=0x2", "SCHEDULE PARAM0=0x7f",
                              "SCHEDULE PARAM6=0xffffff", "SCHEDULE RETRYINTERVAL=0xa"}));
    StoreNumber(kVeloxReport + "\\Address", "EOpening", 1);
    VXML_DEST_DATA read = {};
    char *text = nullptr;
    ASSERT_EQ(GetAMAMDeseSetting(&read, &text), TRUE);
    EXPECT_STREQ(read.szTo, mail.szTo);
    EXPECT_STREQ(read.szSubject, "Alert");
    EXPECT_EQ(read.szOpenStatus, 1U);
    EXPECT_EQ(read.szRepLevel, 2U);
    ASSERT_NE(text, nullptr);
    std::free(text);
}

TEST_F(MailDestination, MissingValuesHaveTheirDefaults) {
    StoreText(kVeloxReport + "\\Address", "ETo", "a@example.com");
    VXML_DEST_DATA read = {};
    char *text = nullptr;
    ASSERT_EQ(GetAMAMDeseSetting(&read, &text), TRUE);
    std::free(text);
    EXPECT_STREQ(read.szSubject, "Velox Alert Notification");
    EXPECT_EQ(read.szOpenStatus, 0U);
    EXPECT_EQ(read.szRepLevel, 3U);
}

TEST_F(MailDestination, TheScheduleIsWrittenAlone) {
    ASSERT_EQ(SetAMAMDeseSetting(nullptr, schedule_.get()), TRUE);
    EXPECT_THAT(Lines(kVeloxReport),
                IsSubsetOf({"Address", "SCHEDULE", "SCHEDULE PARAM0=0x7f",
                            "SCHEDULE PARAM1=0xffffff", "SCHEDULE PARAM2=0xffffff",
                            "SCHEDULE PARAM3=0xffffff", "SCHEDULE PARAM4=0xffffff",
                            "SCHEDULE PARAM5=0xffffff", "SCHEDULE PARAM6=0xffffff",
                            "SCHEDULE RETRYCOUNT=0x2", "SCHEDULE RETRYINTERVAL=0xa"}));
    EXPECT_EQ(Lines(kVeloxReport).size(), 11U);
}

TEST_F(MailDestination, WithoutAddressesTheReadFails) {
    VXML_DEST_DATA read = {};
    char *text = nullptr;
    EXPECT_EQ(GetAMAMDeseSetting(&read, &text), FALSE);
    EXPECT_EQ(text, nullptr);
}

}  // namespace
}  // namespace settings_test
