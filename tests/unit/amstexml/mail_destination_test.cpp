// Reading and writing the mail settings of the Velox report's destination.
#include "velox/mail_destination.h"

#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"
#include "registry/text.h"
#include "support/title.h"

extern "C" BOOL SetScheduleFromC(const DEST_DATA *schedule);

namespace {

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::StrEq;

const std::string kKey = "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT";
const std::string kAddress = kKey + "\\Address";
const std::string kSchedule = kKey + "\\SCHEDULE";
const std::string kContract = "SOFTWARE\\XEV\\VLXService\\SETTING";

// ---- Reading ------------------------------------------------------------------------------------

class MailDestinationReadTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        fakes::StoreText(kAddress, "ETo", "a@x.example,b@y.example");
        fakes::StoreText(kAddress, "ESubject", "Alarm");
        fakes::StoreNumber(kAddress, "EOpening", 2);
        fakes::StoreNumber(kAddress, "EReportLevel", 7);
        fakes::StoreNumber(kContract, "KAISHAKBN", 1);
        fakes::StoreNumber(kContract, "OPTCDN", 0);
        std::memset(&data_, 'q', sizeof data_);
    }
    void TearDown() override {
        std::free(text_);
        PlatformTest::TearDown();
    }

    BOOL Read() {
        std::free(text_);
        text_ = unset_;
        const BOOL result = GetAMAMDeseSetting(&data_, &text_);
        EXPECT_NE(text_, unset_);
        return result;
    }

    VXML_DEST_DATA data_;
    char *text_ = nullptr;

  private:
    char unset_[1] = {};
};

TEST_F(MailDestinationReadTest, ReadsEverythingAndTheServiceInformation) {
    EXPECT_EQ(Read(), TRUE);
    EXPECT_STREQ(data_.szTo, "a@x.example,b@y.example");
    EXPECT_STREQ(data_.szSubject, "Alarm");
    EXPECT_EQ(data_.szOpenStatus, 2U);
    EXPECT_EQ(data_.szRepLevel, 7U);
    for (const BYTE byte : data_.abyReserved) {
        EXPECT_EQ(byte, 0);
    }
    ASSERT_NE(text_, nullptr);
    EXPECT_THAT(text_, HasSubstr("Corporate\n[USER-NAME]\n"));
    EXPECT_THAT(fakes::TraceLinesOf("GetAMAMDeseSetting"),
                ElementsAre(MatchesRegex("0 >lpVxmlDestData=0x[0-9a-f]+,phMem=0x[0-9a-f]+"),
                            "0 lpVxmlDestData->szSubject=Alarm", "0 lpVxmlDestData->szOpenStatus=2",
                            "0 lpVxmlDestData->szRepLevel=7", "0 <return 1"));
    EXPECT_EQ(fakes::Trace()[0].source, "amstexml");
}

TEST_F(MailDestinationReadTest, MissingValuesHaveDefaults) {
    for (const char *name : {"ESubject", "EOpening", "EReportLevel"}) {
        fakes::DeleteValue(kAddress, name);
    }
    EXPECT_EQ(Read(), TRUE);
    EXPECT_STREQ(data_.szSubject, "Velox Alert Notification");
    EXPECT_EQ(data_.szOpenStatus, 0U);
    EXPECT_EQ(data_.szRepLevel, 3U);
}

TEST_F(MailDestinationReadTest, AMissingSubjectIsTranslatedByTheDomainThatIsCurrent) {
    fakes::DeleteValue(kAddress, "ESubject");
    ASSERT_EQ(Read(), TRUE);  // binds the domain "velox" for the next reading
    std::string subject = "a";
    for (int i = 0; i < 300; ++i) {
        subject += "\xB4\xC1";
    }
    fakes::TheLibc().catalogue = {{"velox:Velox Alert Notification", subject}};
    EXPECT_EQ(Read(), TRUE);
    EXPECT_EQ(data_.szSubject, subject.substr(0, 511));
}

TEST_F(MailDestinationReadTest, WithoutAddressesItFailsAtOnce) {
    fakes::DeleteValue(kAddress, "ETo");
    EXPECT_EQ(Read(), FALSE);
    EXPECT_EQ(text_, nullptr);
    EXPECT_STREQ(data_.szTo, "");
    EXPECT_STREQ(data_.szSubject, "");
    EXPECT_EQ(data_.szOpenStatus, 0U);
    EXPECT_EQ(data_.szRepLevel, 3U);
    EXPECT_THAT(fakes::TraceLinesOf("GetAMAMDeseSetting"),
                ElementsAre(testing::_, "1 <AMAMRegReadEx ETo failed."));
}

TEST_F(MailDestinationReadTest, WithoutServiceInformationTheRestIsRead) {
    fakes::DeleteValue(kContract, "KAISHAKBN");
    EXPECT_EQ(Read(), FALSE);
    EXPECT_EQ(text_, nullptr);
    EXPECT_EQ(data_.szOpenStatus, 2U);
    EXPECT_EQ(data_.szRepLevel, 7U);
    EXPECT_THAT(
        fakes::TraceLinesOf("GetAMAMDeseSetting"),
        ElementsAre(testing::_, "0 lpVxmlDestData->szSubject=Alarm",
                    "1 GetVlxServiceInfo() return FALSE.", "0 lpVxmlDestData->szOpenStatus=2",
                    "0 lpVxmlDestData->szRepLevel=7", "0 <return 0"));
}

TEST_F(MailDestinationReadTest, TextsAtAndOverTheirCapacity) {
    const std::string longest(VXML_DEST_TEXT_CAPACITY - 1, 't');
    fakes::StoreText(kAddress, "ETo", longest);
    fakes::StoreText(kAddress, "ESubject", longest);
    EXPECT_EQ(Read(), TRUE);
    EXPECT_EQ(data_.szTo, longest);
    EXPECT_EQ(data_.szSubject, longest);
    fakes::StoreBytes(kAddress, "ESubject", REG_SZ, longest + "t");
    EXPECT_EQ(Read(), TRUE);
    EXPECT_STREQ(data_.szSubject, "Velox Alert Notification");
    fakes::StoreText(kAddress, "ETo", longest + "t");
    EXPECT_EQ(Read(), FALSE);
}

TEST_F(MailDestinationReadTest, EachRefusedAllocationFailsIt) {
    fakes::FailAllocation(1);
    EXPECT_EQ(Read(), FALSE);
    EXPECT_GE(fakes::Allocations(), 1);
    EXPECT_EQ(text_, nullptr);
    EXPECT_EQ(data_.szRepLevel, 7U);
}

TEST_F(MailDestinationReadTest, EachRefusedCallLeavesAValueOrItsDefault) {
    ASSERT_EQ(Read(), TRUE);
    const std::size_t calls = fakes::Calls().size();
    for (std::size_t nth = 1; nth <= calls; ++nth) {
        SCOPED_TRACE("call " + std::to_string(nth) + ": " + fakes::Calls()[nth - 1].function);
        fakes::FailAnyCall(static_cast<int>(nth));
        const bool read = Read() != FALSE;
        EXPECT_EQ(read, data_.szTo[0] != '\0' && text_ != nullptr);
        const bool addressed = data_.szTo[0] != '\0';
        EXPECT_THAT(data_.szSubject, AnyOf(StrEq(addressed ? "Alarm" : ""),
                                           StrEq(addressed ? "Velox Alert Notification" : "")));
        EXPECT_THAT(data_.szOpenStatus, AnyOf(addressed ? 2U : 0U, 0U));
        EXPECT_THAT(data_.szRepLevel, AnyOf(addressed ? 7U : 3U, 3U));
        EXPECT_EQ(fakes::OpenKeys(), 0);
        EXPECT_EQ(fakes::UnusedFaults(), 0);
    }
}

// ---- Writing ------------------------------------------------------------------------------------

class MailDestinationWriteTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        fakes::CreateKey(kAddress);
        fakes::StoreText(kKey, "COMMENT", "");
        EXPECT_TRUE(CopyText(data_.szTo, "a@x.example"));
        EXPECT_TRUE(CopyText(data_.szSubject, "Alarm"));
        data_.szOpenStatus = 2;
        data_.szRepLevel = 7;
        schedule_->dwSchedule = 0x123456;
        schedule_->dwRetryCount = 3;
        schedule_->dwRetryInterval = 5;
    }

    BOOL Write() { return SetAMAMDeseSetting(&data_, schedule_.get()); }

    static std::vector<std::string> ScheduleLines() {
        std::vector<std::string> lines = {kSchedule, kSchedule + " PARAM0=REG_DWORD:0x123456"};
        for (const char *number : {"1", "2", "3", "4", "5", "6"}) {
            lines.push_back(kSchedule + " PARAM" + number + "=REG_DWORD:0xFFFFFF");
        }
        lines.push_back(kSchedule + " RETRYCOUNT=REG_DWORD:0x3");
        lines.push_back(kSchedule + " RETRYINTERVAL=REG_DWORD:0x5");
        return lines;
    }

    VXML_DEST_DATA data_{};
    std::unique_ptr<DEST_DATA> schedule_ = std::make_unique<DEST_DATA>();
};

TEST_F(MailDestinationWriteTest, WritesMailPartCommentAndSchedule) {
    EXPECT_EQ(Write(), TRUE);
    EXPECT_THAT(fakes::Dump(kAddress), ElementsAre(kAddress, kAddress + " ETo=REG_SZ:a@x.example",
                                                   kAddress + " ESubject=REG_SZ:Alarm",
                                                   kAddress + " EReportLevel=REG_DWORD:0x7"));
    EXPECT_EQ(fakes::Text(kKey, "Comment"), "To: a@x.example");
    EXPECT_EQ(fakes::Dump(kSchedule), ScheduleLines());
    EXPECT_THAT(fakes::TraceLinesOf("SetAMAMDeseSetting"),
                ElementsAre(MatchesRegex("0 >lpVxmlDestData=0x[0-9a-f]+,pDestData=0x[0-9a-f]+"),
                            "0 <return 1"));
    EXPECT_EQ(fakes::Trace()[0].source, "amstexml");
    expected_open_keys_ = 1;  // that of the schedule
}

TEST_F(MailDestinationWriteTest, WithoutMailRecordOnlyTheScheduleIsWritten) {
    EXPECT_EQ(SetScheduleFromC(schedule_.get()), TRUE);
    EXPECT_THAT(fakes::ValueNames(kAddress), IsEmpty());
    EXPECT_EQ(fakes::Text(kKey, "Comment"), "");
    EXPECT_EQ(fakes::Dump(kSchedule), ScheduleLines());
    EXPECT_THAT(fakes::TraceLinesOf("SetAMAMDeseSetting")[0],
                MatchesRegex("0 >lpVxmlDestData=\\(nil\\),pDestData=0x[0-9a-f]+"));
    expected_open_keys_ = 1;
}

TEST_F(MailDestinationWriteTest, ScheduleKeyIsMadeWithFullAccess) {
    EXPECT_EQ(SetScheduleFromC(schedule_.get()), TRUE);
    EXPECT_EQ(fakes::Calls()[0].function, "RegCreateKeyEx");
    EXPECT_EQ(fakes::Calls()[0].detail, kSchedule + " sam=0xF003F options=0");
    expected_open_keys_ = 1;
}

TEST_F(MailDestinationWriteTest, TheLongestAddressesFitTheComment) {
    const std::string longest(VXML_DEST_TEXT_CAPACITY - 1, 't');
    EXPECT_TRUE(CopyText(data_.szTo, longest.c_str()));
    EXPECT_EQ(Write(), TRUE);
    EXPECT_EQ(fakes::Text(kAddress, "ETo"), longest);
    EXPECT_EQ(fakes::Text(kKey, "Comment"), "To: " + longest);
    expected_open_keys_ = 1;
}

struct ValueRow {
    const char *title;
    int nth;  // RegSetValueEx that is refused
};

class RefusedValueTest : public MailDestinationWriteTest,
                         public ::testing::WithParamInterface<ValueRow> {};

TEST_P(RefusedValueTest, IsNamedAndEndsTheWriting) {
    fakes::FailCall("RegSetValueEx", GetParam().nth);
    EXPECT_EQ(Write(), FALSE);
    const std::vector<std::string> lines = fakes::TraceLinesOf("SetAMAMDeseSetting");
    const bool mail_part = GetParam().nth <= 4;
    if (mail_part) {
        EXPECT_THAT(lines, ElementsAre(testing::_, std::string("1 <AMAMRegWrite ") +
                                                       GetParam().title + " failed."));
        EXPECT_FALSE(fakes::KeyExists(kSchedule));
    } else {
        EXPECT_THAT(
            lines,
            ElementsAre(testing::_, std::string("1 RegSetValueEx ") + GetParam().title + " failed.",
                        "0 <return FALSE."));
        EXPECT_EQ(fakes::Text(kKey, "Comment"), "To: a@x.example");
    }
    const int written = std::min(GetParam().nth - 1, 3) + std::max(GetParam().nth - 5, 0);
    EXPECT_EQ(fakes::ValueNames(kAddress).size() + fakes::ValueNames(kSchedule).size(),
              static_cast<std::size_t>(written));
    EXPECT_EQ(fakes::CallCount("RegSetValueEx"), GetParam().nth);
}

INSTANTIATE_TEST_SUITE_P(Rows, RefusedValueTest,
                         ::testing::Values(ValueRow{"ETo", 1}, ValueRow{"ESubject", 2},
                                           ValueRow{"EReportLevel", 3}, ValueRow{"Comment", 4},
                                           ValueRow{"PARAM0", 5}, ValueRow{"PARAM1", 6},
                                           ValueRow{"PARAM2", 7}, ValueRow{"PARAM3", 8},
                                           ValueRow{"PARAM4", 9}, ValueRow{"PARAM5", 10},
                                           ValueRow{"PARAM6", 11}, ValueRow{"RETRYCOUNT", 12},
                                           ValueRow{"RETRYINTERVAL", 13}),
                         test_support::Title());

TEST_F(MailDestinationWriteTest, ARefusedScheduleKeyIsNamed) {
    fakes::FailCall("RegCreateKeyEx");
    EXPECT_EQ(Write(), FALSE);
    EXPECT_EQ(fakes::Text(kKey, "Comment"), "To: a@x.example");
    EXPECT_THAT(fakes::TraceLinesOf("SetAMAMDeseSetting"),
                ElementsAre(testing::_, "1 <RegCreateKeyEx " + kSchedule + " failed."));
}

TEST_F(MailDestinationWriteTest, TextsWithoutEndAreRefused) {
    std::memset(data_.szSubject, 's', sizeof data_.szSubject);
    EXPECT_EQ(Write(), FALSE);
    EXPECT_THAT(fakes::ValueNames(kAddress), ElementsAre("ETo"));
    std::memset(data_.szTo, 't', sizeof data_.szTo);
    EXPECT_EQ(Write(), FALSE);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <AMAMRegWrite ESubject failed.", "1 <AMAMRegWrite ETo failed."));
}

TEST_F(MailDestinationWriteTest, WithoutAddressKeyNothingIsCreated) {
    fakes::DeleteTree(kAddress);
    EXPECT_EQ(Write(), FALSE);
    EXPECT_FALSE(fakes::KeyExists(kAddress));
    EXPECT_FALSE(fakes::KeyExists(kSchedule));
}

}  // namespace
