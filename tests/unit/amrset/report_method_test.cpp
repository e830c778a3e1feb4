// The selected report method and the opening state.
#include "velox/report_method.h"

#include <gmock/gmock.h>

#include "fakes/platform.h"
#include "fakes/registry.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

constexpr char kMethodKey[] =
    "SOFTWARE\\XEV\\KESALERTMAN\\BASESETTING\\REPORT\\VELOXREPORT\\SETTING";
constexpr char kSetupKey[] = "SOFTWARE\\XEV\\VLXService\\SETUP";
constexpr char kAddressKey[] =
    "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT\\Address";
constexpr char kMethodTraced[] =
    "SOFTWARE\\XEV\\KESAlertMan\\BaseSetting\\REPORT\\VELOXREPORT\\SETTING";

class ReportMethodTest : public fakes::PlatformTest {};

struct StoredMethod {
    const char *text;
    LONG result;
    DWORD method;
};

TEST_F(ReportMethodTest, StoredTextsAreComparedWithoutCase) {
    constexpr DWORD kUntouched = 77;
    const StoredMethod cases[] = {
        {"Internet Mail", 0, 0},    {"internet mail", 0, 0},  {"Dial-up", 0, 1},
        {"DIAL-UP", 0, 1},          {"TransToManager", 0, 2}, {"transtomanager", 0, 2},
        {"Dialup", -1, kUntouched}, {"", -1, kUntouched},     {"Internet Mail ", -1, kUntouched},
    };
    for (const StoredMethod &stored : cases) {
        fakes::StoreText(kMethodKey, "SelectedMethod", stored.text);
        fakes::ClearTrace();
        DWORD method = kUntouched;
        EXPECT_EQ(AMGetVlxMethod(&method), stored.result) << stored.text;
        EXPECT_EQ(method, stored.method) << stored.text;
        const std::string end =
            "<return " + std::to_string(stored.result) + ".SelectedMethod = " + stored.text;
        EXPECT_TRUE(fakes::HasTrace(stored.result == 0 ? 0 : 1, end)) << end;
    }
}

TEST_F(ReportMethodTest, AMethodThatCannotBeReadFails) {
    DWORD method = 77;
    EXPECT_EQ(AMGetVlxMethod(&method), -1);
    EXPECT_EQ(method, 77U);
    EXPECT_THAT(fakes::TraceLines(1), Contains("1 <RegReadEx SelectedMethod failed."));
}

TEST_F(ReportMethodTest, ATextOf64BytesWithoutTerminatorStaysInside) {
    DWORD method = 77;
    fakes::StoreBytes(kMethodKey, "SelectedMethod", 1, std::string(64, 'x'));
    EXPECT_EQ(AMGetVlxMethod(&method), -1);
    fakes::StoreBytes(kMethodKey, "SelectedMethod", 1, std::string(65, 'x'));
    EXPECT_EQ(AMGetVlxMethod(&method), -1);
    EXPECT_EQ(method, 77U);
}

TEST_F(ReportMethodTest, EachMethodIsStoredAsItsText) {
    fakes::CreateKey(kMethodKey);
    const char *texts[] = {"Internet Mail", "Dial-up", "TransToManager"};
    for (DWORD method = 0; method < 3; ++method) {
        fakes::ClearTrace();
        EXPECT_EQ(AMSetVlxMethod(method), 0);
        EXPECT_EQ(fakes::Text(kMethodKey, "SelectedMethod"), texts[method]);
        EXPECT_EQ(fakes::TraceLinesOf("AMSetVlxMethod"),
                  (std::vector<std::string>{"0 >selected_method=" + std::to_string(method),
                                            "0 <return 0"}));
    }
}

TEST_F(ReportMethodTest, AnotherNumberStoresNothing) {
    fakes::StoreText(kMethodKey, "SelectedMethod", "Dial-up");
    const auto before = fakes::Dump();
    EXPECT_EQ(AMSetVlxMethod(3), -1);
    EXPECT_EQ(AMSetVlxMethod(0xFFFFFFFF), -1);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_EQ(fakes::CallCount("RegOpenKeyEx"), 0);
}

TEST_F(ReportMethodTest, AMissingSettingKeyIsNotCreated) {
    EXPECT_EQ(AMSetVlxMethod(0), -1);
    EXPECT_TRUE(fakes::Dump().empty());
    EXPECT_THAT(
        fakes::TraceLinesOf("AMSetVlxMethod"),
        Contains(std::string("1 <AMAMRegWrite ") + kMethodTraced + "/SelectedMethod failed."));
}

class ResetOpenSetTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        fakes::StoreNumber(kSetupKey, "SETTING", 1);
        fakes::StoreNumber(kAddressKey, "EOpening", 2);
    }
};

TEST_F(ResetOpenSetTest, BothStatesBecome0) {
    EXPECT_EQ(AMResetOpenSet(), 0);
    EXPECT_EQ(fakes::Number(kSetupKey, "SETTING"), 0U);
    EXPECT_EQ(fakes::Number(kAddressKey, "EOpening"), 0U);
}

TEST_F(ResetOpenSetTest, WhatIs0IsNotWritten) {
    fakes::StoreNumber(kSetupKey, "SETTING", 0);
    fakes::StoreNumber(kAddressKey, "EOpening", 0);
    EXPECT_EQ(AMResetOpenSet(), 0);
    EXPECT_EQ(fakes::CallCount("RegSetValueEx"), 0);
}

TEST_F(ResetOpenSetTest, AMissingOpeningStateIs0) {
    fakes::DeleteValue(kAddressKey, "EOpening");
    EXPECT_EQ(AMResetOpenSet(), 0);
    EXPECT_EQ(fakes::Number(kAddressKey, "EOpening"), std::nullopt);
}

TEST_F(ResetOpenSetTest, AFailedReadIsTracedAsTheWrite) {
    fakes::DeleteValue(kSetupKey, "SETTING");
    EXPECT_EQ(AMResetOpenSet(), -1);
    EXPECT_THAT(
        fakes::TraceLinesOf("AMResetOpenSet"),
        ElementsAre("0 >", "1 <AMAMRegWrite SOFTWARE\\XEV\\VLXSERVICE\\SETUP/SETTING failed."));
    EXPECT_EQ(fakes::Number(kAddressKey, "EOpening"), 2U);
}

TEST_F(ResetOpenSetTest, AFailedFirstWriteStopsBeforeTheOpeningState) {
    fakes::FailCall("RegSetValueEx");
    EXPECT_EQ(AMResetOpenSet(), -1);
    EXPECT_THAT(
        fakes::TraceLinesOf("AMResetOpenSet"),
        ElementsAre("0 >", "1 <AMAMRegWrite SOFTWARE\\XEV\\VLXSERVICE\\SETUP/SETTING failed."));
    EXPECT_EQ(fakes::Number(kAddressKey, "EOpening"), 2U);
}

TEST_F(ResetOpenSetTest, AFailedSecondWriteLeavesTheFirstDone) {
    fakes::FailCall("RegSetValueEx", 2);
    EXPECT_EQ(AMResetOpenSet(), -1);
    EXPECT_EQ(fakes::Number(kSetupKey, "SETTING"), 0U);
    EXPECT_EQ(fakes::Number(kAddressKey, "EOpening"), 2U);
    EXPECT_THAT(fakes::TraceLinesOf("AMResetOpenSet"),
                ElementsAre("0 >", "1 <AMAMRegWrite EOpening failed."));
}

}  // namespace
