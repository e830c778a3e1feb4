// The import driver: its registry steps, their failures, and the description and name it stores.
#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <string>
#include <vector>

#include "key_disk_fixture.h"
#include "support/title.h"

namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

class DriverTest : public KeyDiskTest {
  protected:
    void SetUp() override {
        KeyDiskTest::SetUp();
        Registry();
    }

    // What a set-up registry holds before the tool runs.
    static void Registry() {
        fakes::StoreText(kSetup, "VERSION", "3.1");
        fakes::CreateKey(kDestination);
    }

    static std::vector<std::string> DriverTrace() {
        return fakes::TraceLinesOf("GetOpenMsgfromFD");
    }
};

TEST_F(DriverTest, AWholeRun) {
    Heartbeat("[HEART-BEAT-INT]\r\n0\r\n");
    fakes::TheSystem().distribution = "Red Hat Linux";
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    EXPECT_EQ(fakes::Text(kDestination, "ETo"), "a@b.example");
    EXPECT_EQ(fakes::Text(kSetup, "VERSION"), "3.1/LINUX(RH)");
    EXPECT_EQ(fakes::Number(kHeartbeat, "HBINTERVAL"), 1U);
    EXPECT_EQ(fakes::Text(kSetting, "SYSNMN"), "HOST01");
    EXPECT_THAT(DriverTrace(), ElementsAre("0 >", "3 CheckKeyFD():dwResult = 0", "0 <return 1"));
}

// The description is taken before the disk is looked for; each step reads before it writes.
TEST_F(DriverTest, OrderOfTheSteps) {
    Heartbeat("[HEART-BEAT-INT]\r\n0\r\n");
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    std::vector<std::string> calls;
    for (const fakes::Call &call : fakes::Calls()) {
        for (const char *name : {"getOSDistribution", "setmntent", "RegQueryValueEx",
                                 "RegSetValueEx", "GetComputerName", "AMACRERegCreateKey"}) {
            if (call.function == name) {
                calls.push_back(call.function);
            }
        }
    }
    EXPECT_THAT(calls, ElementsAre("getOSDistribution", "setmntent",       //
                                   "AMACRERegCreateKey", "RegSetValueEx",  // customer file
                                   "AMACRERegCreateKey", "RegSetValueEx",  // address file
                                   "AMACRERegCreateKey", "RegSetValueEx",  // heart-beat file
                                   "RegQueryValueEx", "RegSetValueEx",     // ETo
                                   "RegQueryValueEx", "RegSetValueEx",     // VERSION
                                   "RegQueryValueEx", "RegSetValueEx",     // HBINTERVAL
                                   "GetComputerName", "AMACRERegCreateKey", "RegSetValueEx"));
}

TEST_F(DriverTest, KeysAndValuesAreSpeltAsTheyStand) {
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    std::vector<std::string> traces = fakes::TraceLinesOf("AMAMRegReadEx");
    EXPECT_THAT(traces[1], MatchesRegex("0 RegPath=SOFTWARE\\\\XEV\\\\VLXService\\\\SETUP,"
                                        "RegValue=MAILADRS,.*"));
    EXPECT_THAT(traces[7], MatchesRegex("0 RegPath=SOFTWARE\\\\XEV\\\\VLXService\\\\HeartBeat,"
                                        "RegValue=HBINTERVAL,.*"));
}

TEST_F(DriverTest, NoFloppy) {
    fakes::TheLibc().mounts.clear();
    const std::vector<std::string> before = fakes::Dump();
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_NOT_MOUNTED);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(DriverTrace(), ElementsAre("0 >", "3 CheckKeyFD():dwResult = 4", "0 <return 100."));
}

TEST_F(DriverTest, AFailedImport) {
    Address("[NONE]\r\n");
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_IMPORT_FAILED);
    EXPECT_EQ(fakes::Text(kSetup, "VERSION"), "3.1");
    EXPECT_THAT(DriverTrace(), ElementsAre("0 >", "3 CheckKeyFD():dwResult = 1", "0 <return 200."));
}

// ---- The mail address -------------------------------------------------------------------------

TEST_F(DriverTest, WithoutAMailAddressNothingIsWritten) {
    Address("[PHONENO]\r\n03\r\n");
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_REGISTRY_FAILED);
    EXPECT_TRUE(fakes::ValueNames(kDestination).empty());
    EXPECT_EQ(fakes::Text(kSetup, "VERSION"), "3.1");
    EXPECT_EQ(DriverTrace().back(), "1 <AMAMRegReadEx (MAILADRS) Failed");
}

TEST_F(DriverTest, AMailAddressOfTheBuffersSize) {
    const std::string address(127, 'x');
    Address("[E-MAIL]\r\n" + address + "\r\n");
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    EXPECT_EQ(fakes::Text(kDestination, "ETo"), address);
}

TEST_F(DriverTest, ALongerMailAddressCannotBeRead) {
    Address("[E-MAIL]\r\n" + std::string(128, 'x') + "\r\n");
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_REGISTRY_FAILED);
    EXPECT_EQ(DriverTrace().back(), "1 <AMAMRegReadEx (MAILADRS) Failed");
}

// A value that fills the buffer without a terminator is copied with one.
TEST_F(DriverTest, AMailAddressWithoutTerminator) {
    Address("");
    fakes::StoreBytes(kSetup, "MailAdrs", REG_SZ, std::string(128, 'x'));
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    EXPECT_EQ(fakes::Text(kDestination, "ETo"), std::string(128, 'x'));
}

TEST_F(DriverTest, WithoutTheDestinationNoKeyIsMade) {
    fakes::DeleteTree("SOFTWARE\\XEV\\KESALERTMAN");
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_REGISTRY_FAILED);
    EXPECT_FALSE(fakes::KeyExists(kDestination));
    EXPECT_EQ(DriverTrace().back(), "1 <AMAMRegWrite(REG_SZ) Failed");
    EXPECT_EQ(fakes::Text(kSetup, "VERSION"), "3.1");
}

// ---- The version ------------------------------------------------------------------------------

TEST_F(DriverTest, WithoutAVersion) {
    fakes::DeleteValue(kSetup, "VERSION");
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_REGISTRY_FAILED);
    EXPECT_EQ(DriverTrace().back(), "1 <AMAMRegReadEx (AM_REG_VLXVER) Failed");
    EXPECT_EQ(fakes::Text(kDestination, "ETo"), "a@b.example") << "what was written stays";
}

TEST_F(DriverTest, TheVersionsTypeIsKept) {
    fakes::StoreBytes(kSetup, "VERSION", 2, std::string("2.0\0", 4));
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    const auto version = fakes::Bytes(kSetup, "VERSION");
    ASSERT_TRUE(version);
    EXPECT_EQ(version->first, 2U);
    EXPECT_EQ(version->second, std::string("2.0/LINUX\0", 10));
}

TEST_F(DriverTest, EveryRunAppendsTheDescriptionAgain) {
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    EXPECT_EQ(fakes::Text(kSetup, "VERSION"), "3.1/LINUX/LINUX");
}

struct Growth {
    std::string title;
    std::string distribution;
    int runs = 0;  // that succeed
};

class GrowthCases : public DriverTest, public ::testing::WithParamInterface<Growth> {};

TEST_P(GrowthCases, TheVersionGrowsUntilItsBufferIsFull) {
    fakes::TheSystem().distribution = GetParam().distribution;
    for (int run = 1; run <= GetParam().runs; ++run) {
        ASSERT_EQ(GetOpenMsgfromFD(), SETUP_DONE) << run;
    }
    const auto version = fakes::Text(kSetup, "VERSION");
    fakes::ClearTrace();
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_REGISTRY_FAILED);
    EXPECT_EQ(fakes::Text(kSetup, "VERSION"), version);
    EXPECT_EQ(DriverTrace().back(), "1 <AMAMRegWrite VERSION Failed");
}

INSTANTIATE_TEST_SUITE_P(Driver, GrowthCases,
                         ::testing::Values(Growth{"Linux", "Debian", 20},
                                           Growth{"LinuxRh", "Red Hat", 12}),
                         test_support::Title());

TEST_F(DriverTest, AVersionThatLeavesExactlyItsRoom) {
    const std::string version(128 - 1 - 6, 'v');
    fakes::StoreText(kSetup, "VERSION", version);
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    EXPECT_EQ(fakes::Text(kSetup, "VERSION"), version + "/LINUX");
}

TEST_F(DriverTest, AVersionThatIsOneByteTooLong) {
    fakes::StoreText(kSetup, "VERSION", std::string(128 - 6, 'v'));
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_REGISTRY_FAILED);
    EXPECT_EQ(fakes::Text(kSetup, "VERSION"), std::string(128 - 6, 'v'));
}

TEST_F(DriverTest, AVersionWithoutTerminatorStaysInside) {
    fakes::StoreBytes(kSetup, "VERSION", REG_SZ, std::string(128, 'v'));
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_REGISTRY_FAILED);
    EXPECT_EQ(DriverTrace().back(), "1 <AMAMRegWrite VERSION Failed");
}

// ---- The heart-beat interval ------------------------------------------------------------------

TEST_F(DriverTest, AMissingIntervalIsNotWritten) {
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    EXPECT_FALSE(fakes::KeyExists(kHeartbeat));
    EXPECT_THAT(DriverTrace(), ElementsAre("0 >", "3 CheckKeyFD():dwResult = 0",
                                           "1 AMAMRegReadEx (HBINTERVAL) Failed", "0 <return 1"));
}

TEST_F(DriverTest, AnIntervalStays) {
    fakes::StoreNumber(kHeartbeat, "HBINTERVAL", 5);
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    EXPECT_EQ(fakes::Number(kHeartbeat, "HBINTERVAL"), 5U);
}

TEST_F(DriverTest, AnIntervalOfZeroBecomesOne) {
    fakes::StoreNumber(kHeartbeat, "HBINTERVAL", 0);
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    EXPECT_EQ(fakes::Number(kHeartbeat, "HBINTERVAL"), 1U);
}

TEST_F(DriverTest, AnIntervalThatIsTooLargeCountsAsMissing) {
    fakes::StoreText(kHeartbeat, "HBINTERVAL", "10 minutes");
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    EXPECT_EQ(fakes::Text(kHeartbeat, "HBINTERVAL"), "10 minutes");
}

TEST_F(DriverTest, TypeAndSizeOfTheIntervalAreKept) {
    fakes::StoreBytes(kHeartbeat, "HBINTERVAL", REG_SZ, std::string(1, '\0'));
    EXPECT_EQ(GetOpenMsgfromFD(), SETUP_DONE);
    const auto interval = fakes::Bytes(kHeartbeat, "HBINTERVAL");
    ASSERT_TRUE(interval);
    EXPECT_EQ(interval->first, REG_SZ);
    EXPECT_EQ(interval->second, "\x01");
}

// ---- Failing writes ---------------------------------------------------------------------------

struct FailedWrite {
    std::string title;
    int nth = 0;  // of RegSetValueEx; the first two are the import's
    LONG result = 0;
    std::string trace;
};

class DriverWrites : public DriverTest, public ::testing::WithParamInterface<FailedWrite> {};

TEST_P(DriverWrites, ThatFail) {
    fakes::StoreNumber(kHeartbeat, "HBINTERVAL", 0);
    fakes::FailCall("RegSetValueEx", GetParam().nth);
    EXPECT_EQ(GetOpenMsgfromFD(), GetParam().result);
    const std::vector<std::string> trace = DriverTrace();
    EXPECT_THAT(trace, ::testing::Contains("1 " + GetParam().trace));
    EXPECT_EQ(trace.back(),
              GetParam().result == SETUP_DONE ? "0 <return 1" : "1 " + GetParam().trace);
}

INSTANTIATE_TEST_SUITE_P(
    Driver, DriverWrites,
    ::testing::Values(FailedWrite{"MailAddress", 3, 0, "<AMAMRegWrite(REG_SZ) Failed"},
                      FailedWrite{"Version", 4, 0, "<AMAMRegWrite VERSION Failed"},
                      FailedWrite{"Interval", 5, 0, "<AMAMRegWrite (HBINTERVAL) Failed"},
                      FailedWrite{"ComputerName", 6, 1, "SetRealComputerName() Failed!"}),
    test_support::Title());

// ---- GetosDescri ------------------------------------------------------------------------------

struct Distribution {
    std::string title;
    std::string line = {};
    std::string description;
};

class DistributionCases : public KeyDiskTest, public ::testing::WithParamInterface<Distribution> {};

TEST_P(DistributionCases, IsDescribed) {
    fakes::TheSystem().distribution = GetParam().line;
    char description[OS_DESCRIPTION_CAPACITY] = {};
    EXPECT_EQ(GetosDescri(description), 1);
    EXPECT_EQ(std::string(description), GetParam().description);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >os=0x[0-9a-f]+"), "0 <os=" + GetParam().description));
    EXPECT_EQ(fakes::Trace()[0].function, "GetosDescri");
    EXPECT_EQ(fakes::Trace()[0].source, "keyfd");
    EXPECT_EQ(fakes::Calls().back().detail, "600");
}

INSTANTIATE_TEST_SUITE_P(
    Driver, DistributionCases,
    ::testing::Values(Distribution{"Red", "Red Hat Enterprise Linux Server", "LINUX(RH)"},
                      Distribution{"Turbo", "Turbolinux Server 8", "LINUX(TB)"},
                      Distribution{"Miracle", "Miracle Linux 3.0", "LINUX(ML)"},
                      Distribution{"RedBeforeTurbo", "Turbolinux on Red Hat", "LINUX(RH)"},
                      Distribution{"TurboBeforeMiracle", "Miracle and Turbo", "LINUX(TB)"},
                      Distribution{"InsideAWord", "xRedx", "LINUX(RH)"},
                      Distribution{"CaseCounts", "red turbo MIRACLE", "LINUX"},
                      Distribution{"None", "Debian GNU/Linux 12 (bookworm)", "LINUX"},
                      Distribution{"Empty", "", "LINUX"},
                      Distribution{"AtTheEndOfTheBuffer", std::string(596, 'x') + "Red",
                                   "LINUX(RH)"},
                      Distribution{"BehindTheBuffer", std::string(597, 'x') + "Red", "LINUX"}),
    test_support::Title());

TEST_F(DriverTest, ADistributionThatCannotBeReadIsLinux) {
    fakes::FailCall("getOSDistribution");
    char description[OS_DESCRIPTION_CAPACITY] = {};
    EXPECT_EQ(GetosDescri(description), 1);
    EXPECT_STREQ(description, "LINUX");
}

TEST_F(DriverTest, ADescriptionWithoutBufferIsOnlyTraced) {
    EXPECT_EQ(GetosDescri(nullptr), 1);
    EXPECT_THAT(fakes::TraceLines(), ElementsAre("0 >os=(nil)", "0 <os=NULL"));
}

// ---- SetRealComputerName ----------------------------------------------------------------------

TEST_F(DriverTest, TheComputersNameIsStored) {
    fakes::TheSystem().computer_name = std::string(256, 'h');
    EXPECT_EQ(SetRealComputerName(), 1);
    EXPECT_EQ(fakes::Text(kSetting, "SYSNMN"), std::string(256, 'h'));
    EXPECT_EQ(fakes::Calls()[0].detail, "257");
    EXPECT_THAT(fakes::TraceLines(), ElementsAre("0 >", "0 <return 1."));
    EXPECT_EQ(fakes::Trace()[0].function, "SetRealComputerName");
}

struct NameFault {
    std::string title;
    std::string call;
    std::string message;
};

class NameFaults : public KeyDiskTest, public ::testing::WithParamInterface<NameFault> {};

TEST_P(NameFaults, GiveZero) {
    fakes::FailCall(GetParam().call);
    EXPECT_EQ(SetRealComputerName(), 0);
    EXPECT_THAT(fakes::TraceLines(), ElementsAre("0 >", "1 " + GetParam().message, "0 <return 0."));
    for (const fakes::TraceRecord &record : fakes::Trace()) {
        EXPECT_EQ(record.function, "SetRealComputerName");
    }
    EXPECT_EQ(fakes::Text(kSetting, "SYSNMN"), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Driver, NameFaults,
    ::testing::Values(NameFault{"Name", "GetComputerName", "GetComputerName2() Failed! "},
                      NameFault{"Key", "AMACRERegCreateKey",
                                "CreateKey SOFTWARE\\XEV\\VLXService\\SETTING Error9!"},
                      NameFault{"Text", "AMACRERegWriteSz", "WriteSz SYSNMN Error6!"}),
    test_support::Title());

}  // namespace
