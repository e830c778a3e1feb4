// Reading and writing the mail base settings.
#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <cstring>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"
#include "registry/text.h"
#include "support/title.h"
#include "velox/mail_base.h"

namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

constexpr char kPath[] = "SOFTWARE\\XEV\\Mail\\Setting";

std::vector<std::string> Failures(const char *function) {
    std::vector<std::string> lines;
    for (const std::string &line : fakes::TraceLinesOf(function)) {
        if (line[0] != '0') {
            lines.push_back(line);
        }
    }
    return lines;
}

class GetBaseSettingTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        fakes::StoreText(kPath, "Server", "mail.example");
        fakes::StoreText(kPath, "IP", "127.0.0.9");
        fakes::StoreText(kPath, "Address", "sender@host.example");
        fakes::StoreNumber(kPath, "SMTPPort", 465);
        fakes::StoreNumber(kPath, "Option", 1);
        std::memset(static_cast<void *>(&data_), 'z', sizeof data_);
    }
    BOOL Get() { return GetAMBIBaseSetting(&data_, kPath); }
    VXML_BASE_DATA data_;
};

TEST_F(GetBaseSettingTest, ReadsAllFive) {
    EXPECT_EQ(Get(), TRUE);
    EXPECT_STREQ(data_.szServer, "mail.example");
    EXPECT_STREQ(data_.szIP, "127.0.0.9");
    EXPECT_STREQ(data_.szAddress, "sender@host.example");
    EXPECT_EQ(data_.dwSMTPPort, 465U);
    EXPECT_EQ(data_.dwOption, 1U);
    EXPECT_THAT(fakes::TraceLinesOf("GetAMBIBaseSetting"),
                ElementsAre(MatchesRegex("0 >lpVxmlBaseData=0x[0-9a-f]+,"
                                         "g_szAMBaseRegPath=SOFTWARE.XEV.Mail.Setting"),
                            "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].source, "amstexml");
}

TEST_F(GetBaseSettingTest, MissingNumbersTakeTheirDefaults) {
    fakes::DeleteValue(kPath, "SMTPPort");
    fakes::DeleteValue(kPath, "Option");
    EXPECT_EQ(Get(), TRUE);
    EXPECT_EQ(data_.dwSMTPPort, 25U);
    EXPECT_EQ(data_.dwOption, 3U);
    EXPECT_THAT(Failures("GetAMBIBaseSetting"), ElementsAre());
}

TEST_F(GetBaseSettingTest, StoredZerosAreNotDefaults) {
    fakes::StoreNumber(kPath, "SMTPPort", 0);
    fakes::StoreNumber(kPath, "Option", 0);
    EXPECT_EQ(Get(), TRUE);
    EXPECT_EQ(data_.dwSMTPPort, 0U);
    EXPECT_EQ(data_.dwOption, 0U);
}

TEST_F(GetBaseSettingTest, EmptyTextsAreRead) {
    for (const char *name : {"Server", "IP", "Address"}) {
        fakes::StoreText(kPath, name, "");
    }
    EXPECT_EQ(Get(), TRUE);
    EXPECT_STREQ(data_.szServer, "");
}

// The first text that cannot be read ends the call; what follows it is as it was set before.
TEST_F(GetBaseSettingTest, AMissingTextEndsTheCall) {
    const char *names[] = {"Server", "IP", "Address"};
    for (int missing = 0; missing < 3; ++missing) {
        SetUp();
        fakes::DeleteValue(kPath, names[missing]);
        EXPECT_EQ(Get(), FALSE);
        EXPECT_STREQ(data_.szServer, missing > 0 ? "mail.example" : "");
        EXPECT_STREQ(data_.szIP, missing > 1 ? "127.0.0.9" : "");
        EXPECT_STREQ(data_.szAddress, "");
        EXPECT_EQ(data_.dwSMTPPort, 25U);
        EXPECT_EQ(data_.dwOption, 0U);
        EXPECT_EQ(fakes::TraceLinesOf("GetAMBIBaseSetting").back(),
                  std::string("1 <AMAMRegReadEx ") + names[missing] + " failed.");
        EXPECT_EQ(fakes::CallCount("RegQueryValueEx"), missing + 1);
    }
}

struct Limit {
    const char *title;
    const char *name;
    std::size_t capacity;
};

class GetBaseLimitTest : public GetBaseSettingTest, public ::testing::WithParamInterface<Limit> {};

TEST_P(GetBaseLimitTest, AFullFieldIsReadAndOneByteMoreIsNot) {
    const auto &[title, name, capacity] = GetParam();
    fakes::StoreText(kPath, name, std::string(capacity - 1, 'x'));
    EXPECT_EQ(Get(), TRUE);
    fakes::StoreText(kPath, name, std::string(capacity, 'x'));
    EXPECT_EQ(Get(), FALSE);
    EXPECT_EQ(fakes::TraceLinesOf("GetAMBIBaseSetting").back(),
              std::string("1 <AMAMRegReadEx ") + name + " failed.");
}

TEST_P(GetBaseLimitTest, AFullFieldWithoutTerminatorDoesNotFit) {
    const auto &[title, name, capacity] = GetParam();
    fakes::StoreBytes(kPath, name, REG_SZ, std::string(capacity, 'x'));
    EXPECT_EQ(Get(), FALSE);
    EXPECT_LT(strnlen(data_.szServer, 257), 257U);
    EXPECT_LT(strnlen(data_.szIP, 257), 257U);
    EXPECT_LT(strnlen(data_.szAddress, 81), 81U);
    fakes::StoreBytes(kPath, name, REG_SZ, std::string(capacity - 1, 'x'));
    EXPECT_EQ(Get(), TRUE) << "one byte less leaves room for the terminator";
}

INSTANTIATE_TEST_SUITE_P(Fields, GetBaseLimitTest,
                         ::testing::Values(Limit{"Server", "Server", 257}, Limit{"IP", "IP", 257},
                                           Limit{"Address", "Address", 81}),
                         test_support::Title());

template <std::size_t N>
void Fill(char (&field)[N], const char *text) {
    ASSERT_TRUE(CopyText(field, text));
}

class SetBaseSettingTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        fakes::CreateKey(kPath);
        fakes::TheLibc().host_address = "127.0.0.9";
        data_ = {};
        Fill(data_.szServer, "mail.example");
        Fill(data_.szIP, "old");
        Fill(data_.szAddress, "sender@host.example");
        data_.dwSMTPPort = 587;
        data_.dwOption = 2;
    }
    int Set() { return SetAMBIBaseSetting(&data_, kPath); }
    static std::vector<std::string> Stored() {
        auto lines = fakes::Dump(kPath);
        lines.erase(lines.begin());
        for (std::string &line : lines) {
            line.erase(0, std::strlen(kPath) + 1);
        }
        return lines;
    }
    VXML_BASE_DATA data_;
};

TEST_F(SetBaseSettingTest, AHostNameIsResolvedAndStoredWithItsAddress) {
    EXPECT_EQ(Set(), 1);
    EXPECT_STREQ(data_.szIP, "127.0.0.9");
    EXPECT_THAT(Stored(), ElementsAre("IP=REG_SZ:127.0.0.9", "Server=REG_SZ:mail.example",
                                      "Address=REG_SZ:sender@host.example",
                                      "SMTPPort=REG_DWORD:0x24B", "Option=REG_DWORD:0x2"));
    EXPECT_EQ(fakes::Text(kPath, "IP"), "127.0.0.9") << "with its terminator";
    EXPECT_EQ(fakes::Text(kPath, "Server"), "mail.example");
    EXPECT_EQ(fakes::Text(kPath, "Address"), "sender@host.example");
    EXPECT_THAT(fakes::TraceLinesOf("SetAMBIBaseSetting"),
                ElementsAre(MatchesRegex("0 >lpVxmlBaseData=0x[0-9a-f]+,"
                                         "g_szAMBaseRegPath=SOFTWARE.XEV.Mail.Setting"),
                            "0 AMBIMyIPCheck() return 0", "0 szServer: mail.example",
                            "0 szIP: 127.0.0.9", "0 <return 1."));
}

TEST_F(SetBaseSettingTest, ADottedAddressIsStoredAsBoth) {
    Fill(data_.szServer, "192.168.1.10");
    EXPECT_EQ(Set(), 1);
    EXPECT_STREQ(data_.szIP, "old") << "the record's field is ignored and left";
    EXPECT_THAT(Stored(), ElementsAre("Server=REG_SZ:192.168.1.10", "IP=REG_SZ:192.168.1.10",
                                      "Address=REG_SZ:sender@host.example",
                                      "SMTPPort=REG_DWORD:0x24B", "Option=REG_DWORD:0x2"));
    EXPECT_EQ(fakes::CallCount("gethostbyname"), 0);
    EXPECT_EQ(fakes::TraceLinesOf("SetAMBIBaseSetting")[1], "0 AMBIMyIPCheck() return 1");
}

TEST_F(SetBaseSettingTest, AnInvalidServerIsRefusedAndNothingIsWritten) {
    for (const char *server : {"256.1.1.1", "mx", "mx1.foo.com", ""}) {
        SetUp();
        Fill(data_.szServer, server);
        EXPECT_EQ(Set(), 2);
        EXPECT_THAT(Stored(), ElementsAre());
        EXPECT_EQ(fakes::CallCount("gethostbyname"), 0);
        EXPECT_EQ(fakes::CallCount("RegOpenKeyEx"), 0);
        EXPECT_THAT(fakes::TraceLinesOf("SetAMBIBaseSetting"),
                    ElementsAre(MatchesRegex("0 >.*"), "0 AMBIMyIPCheck() return 2",
                                "1 <AMBIMyIPCheck() error!return 2."));
    }
}

TEST_F(SetBaseSettingTest, AHostNameThatDoesNotResolveIsRefused) {
    fakes::TheLibc().host_address.clear();
    EXPECT_EQ(Set(), 2);
    EXPECT_THAT(Stored(), ElementsAre());
    EXPECT_STREQ(data_.szIP, "old");
    EXPECT_EQ(fakes::TraceLinesOf("SetAMBIBaseSetting").back(),
              "1 <gethostbyname() failed.return 2.");
}

struct FailedWrite {
    const char *title;
    const char *server;
    int nth;  // write that fails
    const char *trace;
    std::vector<std::string> written;
};

class SetBaseWriteTest : public SetBaseSettingTest,
                         public ::testing::WithParamInterface<FailedWrite> {};

TEST_P(SetBaseWriteTest, AFailedWriteEndsTheCallAndKeepsWhatWasWritten) {
    Fill(data_.szServer, GetParam().server);
    fakes::FailCall("RegSetValueEx", GetParam().nth);
    EXPECT_EQ(Set(), 0);
    EXPECT_EQ(fakes::TraceLinesOf("SetAMBIBaseSetting").back(), GetParam().trace);
    EXPECT_EQ(fakes::ValueNames(kPath), GetParam().written);
}

INSTANTIATE_TEST_SUITE_P(
    Writes, SetBaseWriteTest,
    ::testing::Values(
        FailedWrite{"HostIP", "mail.example", 1, "1 <AMAMRegWrite() IP failed.", {}},
        FailedWrite{
            "HostServer", "mail.example", 2, "1 <AMAMRegWrite() Server failed.return 0.", {"IP"}},
        FailedWrite{"HostAddress",
                    "mail.example",
                    3,
                    "1 <AMAMRegWrite() Address failed.return 0.",
                    {"IP", "Server"}},
        FailedWrite{"HostPort",
                    "mail.example",
                    4,
                    "1 <AMAMRegWrite() SMTPPort failed.return 0.",
                    {"IP", "Server", "Address"}},
        FailedWrite{"HostOption",
                    "mail.example",
                    5,
                    "1 <AMAMRegWrite() Option failed.return 0.",
                    {"IP", "Server", "Address", "SMTPPort"}},
        FailedWrite{"DottedServer", "1.2.3.4", 1, "1 <AMAMRegWrite() Server failed.return 0.", {}},
        FailedWrite{"DottedIP", "1.2.3.4", 2, "1 <AMAMRegWrite() IP failed.return 0.", {"Server"}},
        FailedWrite{"DottedAddress",
                    "1.2.3.4",
                    3,
                    "1 <AMAMRegWrite() Address failed.return 0.",
                    {"Server", "IP"}}),
    test_support::Title());

TEST_F(SetBaseSettingTest, AMissingKeyIsNotCreated) {
    fakes::DeleteTree("SOFTWARE");
    EXPECT_EQ(Set(), 0);
    EXPECT_FALSE(fakes::KeyExists(kPath));
}

TEST_F(SetBaseSettingTest, FieldsWithoutTerminatorAreRefused) {
    std::memset(data_.szServer, 'a', sizeof data_.szServer);
    EXPECT_EQ(Set(), 2);
    EXPECT_EQ(fakes::TraceLinesOf("SetAMBIBaseSetting").back(),
              "1 <szServer does not end inside its field.return 2.");
    SetUp();
    std::memset(data_.szAddress, 'a', sizeof data_.szAddress);
    EXPECT_EQ(Set(), 0);
    EXPECT_EQ(fakes::TraceLinesOf("SetAMBIBaseSetting").back(),
              "1 <szAddress does not end inside its field.return 0.");
    EXPECT_THAT(Stored(), ElementsAre());
}

TEST_F(SetBaseSettingTest, EachCallFailingInTurn) {
    EXPECT_EQ(Set(), 1);
    const std::size_t calls = fakes::Calls().size();
    for (std::size_t nth = 1; nth <= calls; ++nth) {
        SCOPED_TRACE(nth);
        fakes::Reset();
        SetUp();
        fakes::FailAnyCall(static_cast<int>(nth));
        const int result = Set();
        const bool close = fakes::Calls()[nth - 1].function == "RegCloseKey";
        EXPECT_EQ(result, nth == 1 ? 2 : close ? 1 : 0);
        EXPECT_EQ(fakes::OpenKeys(), 0);
        EXPECT_EQ(fakes::UnusedFaults(), 0);
    }
}

}  // namespace
