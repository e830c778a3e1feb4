// The value wrappers: results, buffers, trace records and closed keys for every way through them.
#include "velox/registry_access.h"

#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <cstring>

#include "fakes/platform.h"
#include "fakes/registry.h"

namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

constexpr char kPath[] = "SOFTWARE\\XEV\\VLXService\\SETUP";

class RegAccessTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        fakes::StoreText(kPath, "VERSION", "3.1");
        fakes::StoreNumber(kPath, "SETTING", 0x12345678);
    }

    DWORD type_ = 77;
    DWORD size_ = 16;
    BYTE data_[16] = {'o', 'l', 'd', 0};
};

TEST_F(RegAccessTest, RegReadExReadsTextWithItsTerminator) {
    EXPECT_EQ(RegReadEx(HKEY_LOCAL_MACHINE, kPath, "VERSION", &type_, &size_, data_), 1U);
    EXPECT_EQ(type_, REG_SZ);
    EXPECT_EQ(size_, 4U);
    EXPECT_STREQ(reinterpret_cast<char *>(data_), "3.1");
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre("0 >RegPath=SOFTWARE\\XEV\\VLXService\\SETUP,RegValue=VERSION,",
                            StartsWith("0 RegType=0x"), "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
    EXPECT_EQ(fakes::Trace()[0].function, "RegReadEx");
    EXPECT_EQ(fakes::Calls()[0].detail, "SOFTWARE\\XEV\\VLXService\\SETUP sam=0x20019");
}

TEST_F(RegAccessTest, RegReadExReadsANumber) {
    size_ = sizeof(DWORD);
    EXPECT_EQ(RegReadEx(HKEY_LOCAL_MACHINE, kPath, "setting", &type_, &size_, data_), 1U);
    DWORD number = 0;
    std::memcpy(&number, data_, sizeof number);
    EXPECT_EQ(type_, REG_DWORD);
    EXPECT_EQ(number, 0x12345678U);
}

TEST_F(RegAccessTest, RegReadExOfAMissingValueGivesAnEmptyTextAndType0) {
    EXPECT_EQ(RegReadEx(HKEY_LOCAL_MACHINE, kPath, "NONE", &type_, &size_, data_), 0U);
    EXPECT_EQ(type_, 0U);
    EXPECT_EQ(data_[0], 0);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <RegQueryValueEx error!return FALSE."));
}

TEST_F(RegAccessTest, RegReadExOfAMissingKeyGivesAnEmptyTextAndType0) {
    EXPECT_EQ(RegReadEx(HKEY_LOCAL_MACHINE, "NONE", "VERSION", &type_, &size_, data_), 0U);
    EXPECT_EQ(type_, 0U);
    EXPECT_EQ(data_[0], 0);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <RegOpenKeyEx error!return FALSE."));
}

TEST_F(RegAccessTest, RegReadExTracesNullTextsAndPassesThemOn) {
    EXPECT_EQ(RegReadEx(HKEY_LOCAL_MACHINE, nullptr, nullptr, &type_, &size_, data_), 0U);
    EXPECT_EQ(fakes::TraceLines()[0], "0 >RegPath=NULL,RegValue=NULL,");
    EXPECT_EQ(fakes::CallCount("RegQueryValueEx"), 1);
}

TEST_F(RegAccessTest, RegReadExOfATooLargeValueFails) {
    size_ = 3;
    EXPECT_EQ(RegReadEx(HKEY_LOCAL_MACHINE, kPath, "VERSION", &type_, &size_, data_), 0U);
    EXPECT_EQ(data_[0], 0);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <RegQueryValueEx error!return FALSE."));
}

TEST_F(RegAccessTest, AMAMRegReadExReadsText) {
    EXPECT_EQ(AMAMRegReadEx(HKEY_LOCAL_MACHINE, kPath, "VERSION", &type_, &size_, data_), 1U);
    EXPECT_EQ(type_, REG_SZ);
    EXPECT_EQ(size_, 4U);
    EXPECT_STREQ(reinterpret_cast<char *>(data_), "3.1");
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre("0 >",
                            StartsWith("0 RegPath=SOFTWARE\\XEV\\VLXService\\SETUP,"
                                       "RegValue=VERSION,RegType=0x"),
                            "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].source, "amstexml");
    EXPECT_EQ(fakes::Calls()[0].detail, "SOFTWARE\\XEV\\VLXService\\SETUP sam=0x20019");
}

TEST_F(RegAccessTest, AMAMRegReadExLeavesTypeAndBufferOnFailure) {
    EXPECT_EQ(AMAMRegReadEx(HKEY_LOCAL_MACHINE, kPath, "NONE", &type_, &size_, data_), 0U);
    EXPECT_EQ(AMAMRegReadEx(HKEY_LOCAL_MACHINE, "NONE", "VERSION", &type_, &size_, data_), 0U);
    EXPECT_EQ(type_, 77U);
    EXPECT_STREQ(reinterpret_cast<char *>(data_), "old");
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegQueryValueEx(NONE) failed.", "1 <RegOpenKeyEx NONE error."));
}

TEST_F(RegAccessTest, AMAMRegReadExTracesNullTexts) {
    EXPECT_EQ(AMAMRegReadEx(HKEY_LOCAL_MACHINE, nullptr, nullptr, &type_, &size_, data_), 0U);
    EXPECT_THAT(fakes::TraceLines()[1], StartsWith("0 RegPath=NULL,RegValue=NULL,"));
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <RegQueryValueEx(NULL) failed."));
}

TEST_F(RegAccessTest, AMAMRegWriteStoresTheBytesGiven) {
    EXPECT_EQ(AMAMRegWrite(HKEY_LOCAL_MACHINE, kPath, "VERSION", REG_SZ, "4.0", 4), 1U);
    EXPECT_EQ(fakes::Text(kPath, "VERSION"), "4.0");
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre("0 >szSubKey=SOFTWARE\\XEV\\VLXService\\SETUP,lpItm=VERSION",
                            ::testing::MatchesRegex("0 dwType=1,lpData=0x[0-9a-f]+,dwSize=4"),
                            "0 <return TRUE"));
    EXPECT_EQ(fakes::Calls()[0].detail, "SOFTWARE\\XEV\\VLXService\\SETUP sam=0x2");
}

TEST_F(RegAccessTest, AMAMRegWriteCreatesNoKey) {
    const auto before = fakes::Dump();
    EXPECT_EQ(AMAMRegWrite(HKEY_LOCAL_MACHINE, "NONE", "VERSION", REG_SZ, "4.0", 4), 0U);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <RegOpenKeyEx NONE failed."));
}

TEST_F(RegAccessTest, AMAMRegWriteReportsARefusedValueAndClosesTheKey) {
    fakes::FailCall("RegSetValueEx", 1, ERROR_DISK_FULL);
    EXPECT_EQ(AMAMRegWrite(HKEY_LOCAL_MACHINE, kPath, "VERSION", REG_SZ, "4.0", 4), 0U);
    EXPECT_EQ(fakes::Text(kPath, "VERSION"), "3.1");
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <RegSetValueEx VERSION failed."));
}

TEST_F(RegAccessTest, AMAMRegWriteTracesNullTexts) {
    EXPECT_EQ(AMAMRegWrite(HKEY_LOCAL_MACHINE, nullptr, nullptr, REG_SZ, "", 1), 1U);
    EXPECT_EQ(fakes::TraceLines()[0], "0 >szSubKey=NULL,lpItm=NULL");
    fakes::DeleteValue("", "");
}

}  // namespace
