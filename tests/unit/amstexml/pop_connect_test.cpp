// POP before SMTP: its steps, the settings that it needs, the wait, and what becomes of the
// password.
#include "velox/pop_connect.h"

#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <algorithm>
#include <cstring>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"
#include "support/title.h"
#include "transport.h"
#include "velox/mail_base.h"

extern "C" int PopConnectedFromC(void);

// Blocks that were wiped, as they were before.
static std::vector<std::string> wiped_blocks;

extern "C" void __real_explicit_bzero(void *block, std::size_t size);
extern "C" void __wrap_explicit_bzero(void *block, std::size_t size) {
    wiped_blocks.emplace_back(static_cast<const char *>(block), size);
    __real_explicit_bzero(block, size);
}
// What a fortified build calls.
extern "C" void __wrap___explicit_bzero_chk(void *block, std::size_t size, std::size_t) {
    __wrap_explicit_bzero(block, size);
}

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using transport::kPassword;
using transport::TheModule;

constexpr char kPath[] = AMAM_DEFAULT_BASE_PATH;
constexpr char kInfo[] = "0 TRANSPORTINFO Srv:(pop.example),Account:(reporter),Port:(1100)";

class PopConnectTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        transport::StoreSettings();
        transport::Add();
        wiped_blocks.clear();
    }
    void TearDown() override {
        for (const fakes::TraceRecord &record : fakes::Trace()) {
            EXPECT_THAT(record.text, Not(HasSubstr(kPassword)));
            EXPECT_THAT(record.text, Not(HasSubstr(fakes::FakePassword(kPassword))));
        }
        PlatformTest::TearDown();
    }
    static std::vector<std::string> OwnTrace() { return fakes::TraceLinesOf("AMPBSConnect"); }
};

TEST_F(PopConnectTest, LogsInAndOut) {
    EXPECT_EQ(PopConnectedFromC(), 1);
    EXPECT_THAT(TheModule().calls,
                ElementsAre("init", "connect 119", "disconnect 119", "release 119"));
    EXPECT_STREQ(TheModule().info.szServer, "pop.example");
    EXPECT_STREQ(TheModule().info.szAccount, "reporter");
    EXPECT_STREQ(TheModule().info.szPassword, kPassword);
    EXPECT_EQ(TheModule().info.dwPort, 1100U);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >", kInfo, "0 Load amrpop.dll",
                                        "0 GetProcAddress Success", "0 TransportInit OK ",
                                        "0 TransportConnect OK", "0 TransPortDisconnect OK",
                                        "0 POP AUTH Success", "0 TransPortRelease OK", "0 <1"));
    EXPECT_EQ(fakes::Trace()[0].source, "amstexml");
}

TEST_F(PopConnectTest, WithoutTheFlagNothingElseIsReadOrLoaded) {
    fakes::StoreNumber(kPath, "POPFlag", 0);
    fakes::DeleteValue(kPath, "POPPort");
    EXPECT_EQ(AMPBSConnect(), 1);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >", "0 <\"get authentication\" is not set. PASS"));
    EXPECT_EQ(fakes::CallCount("RegQueryValueEx"), 1);
    EXPECT_FALSE(std::any_of(fakes::Calls().begin(), fakes::Calls().end(), [](const auto &call) {
        return call.function == "LoadLibrary" && call.detail == "amrpop.dll";
    }));
}

TEST_F(PopConnectTest, AnyOtherFlagWantsTheLogIn) {
    for (const DWORD flag : {1U, 2U, 0x80000000U}) {
        fakes::StoreNumber(kPath, "POPFlag", flag);
        transport::Add();
        EXPECT_EQ(AMPBSConnect(), 1);
        EXPECT_EQ(TheModule().calls.size(), 4U);
    }
}

TEST_F(PopConnectTest, EveryMissingSettingFailsAndNothingIsLoaded) {
    for (const char *name : {"POPFlag", "POPPort", "POPServer", "POPUser", "POPPass"}) {
        SetUp();
        fakes::DeleteValue(kPath, name);
        EXPECT_EQ(AMPBSConnect(), 0);
        EXPECT_THAT(OwnTrace(), ElementsAre("0 >", std::string("1 <Err: reg read ") + name));
        EXPECT_TRUE(TheModule().calls.empty());
    }
}

TEST_F(PopConnectTest, TheFirstMissingSettingIsNamed) {
    for (const char *name : {"POPPort", "POPServer", "POPUser", "POPPass"}) {
        fakes::DeleteValue(kPath, name);
    }
    for (const char *name : {"POPPort", "POPServer", "POPUser", "POPPass"}) {
        EXPECT_EQ(AMPBSConnect(), 0);
        EXPECT_EQ(OwnTrace().back(), std::string("1 <Err: reg read ") + name);
        fakes::StoreText(kPath, name, "abc");
    }
}

TEST_F(PopConnectTest, ATextOf256BytesIsTakenAndALongerOneIsNot) {
    for (const char *name : {"POPServer", "POPUser"}) {
        SetUp();
        fakes::StoreText(kPath, name, std::string(256, 'x'));
        EXPECT_EQ(AMPBSConnect(), 1);
        fakes::StoreText(kPath, name, std::string(257, 'x'));
        EXPECT_EQ(AMPBSConnect(), 0);
        EXPECT_EQ(OwnTrace().back(), std::string("1 <Err: reg read ") + name);
        fakes::StoreBytes(kPath, name, REG_SZ, std::string(257, 'x'));
        EXPECT_EQ(AMPBSConnect(), 0) << "without terminator";
    }
}

TEST_F(PopConnectTest, AnEncodedPasswordOf256BytesIsTakenAndALongerOneIsNot) {
    const std::string longest(256 - fakes::FakePassword("").size(), 'p');
    fakes::StoreText(kPath, "POPPass", fakes::FakePassword(longest));
    EXPECT_EQ(AMPBSConnect(), 1);
    EXPECT_EQ(TheModule().info.szPassword, longest);
    EXPECT_EQ(fakes::Calls()[fakes::Calls().size() - 1].function, "FreeLibrary");
    fakes::StoreText(kPath, "POPPass", fakes::FakePassword(longest + "p"));
    EXPECT_EQ(AMPBSConnect(), 0);
    EXPECT_EQ(OwnTrace().back(), "1 <Err: reg read POPPass");
    fakes::StoreBytes(kPath, "POPPass", REG_SZ, fakes::FakePassword(longest + "p"));
    EXPECT_EQ(AMPBSConnect(), 0) << "without terminator";
}

TEST_F(PopConnectTest, ThePasswordIsDecodedOverItsLength) {
    EXPECT_EQ(AMPBSConnect(), 1);
    const auto decode =
        std::find_if(fakes::Calls().begin(), fakes::Calls().end(),
                     [](const auto &call) { return call.function == "Ras_Decode"; });
    ASSERT_NE(decode, fakes::Calls().end());
    EXPECT_EQ(decode->detail, std::to_string(fakes::FakePassword(kPassword).size()));
}

TEST_F(PopConnectTest, APasswordThatDoesNotDecodeGoesOutEmpty) {
    fakes::StoreText(kPath, "POPPass", "not encoded at all");
    EXPECT_EQ(AMPBSConnect(), 1);
    EXPECT_STREQ(TheModule().info.szPassword, "");
}

TEST_F(PopConnectTest, EveryPlainCopyOfThePasswordIsWiped) {
    EXPECT_EQ(AMPBSConnect(), 1);
    ASSERT_EQ(wiped_blocks.size(), 2U) << "the decoded value, then the record";
    EXPECT_EQ(wiped_blocks[0].size(), 258U);
    EXPECT_STREQ(wiped_blocks[0].c_str(), kPassword);
    EXPECT_EQ(wiped_blocks[1].size(), sizeof(TRANSPORTINFO));
    EXPECT_STREQ(wiped_blocks[1].c_str() + offsetof(TRANSPORTINFO, szPassword), kPassword);
}

TEST_F(PopConnectTest, TheModuleIsMissing) {
    fakes::FailCall("LoadLibrary", 2);  // the first loads the registry module
    EXPECT_EQ(AMPBSConnect(), 0);
    EXPECT_THAT(OwnTrace(),
                ElementsAre("0 >", kInfo, "0 Load amrpop.dll", "1 <Err: LoadLibrary (amrpop.dll)"));
}

TEST_F(PopConnectTest, AnyMissingFunctionFailsAndUnloads) {
    for (const char *name :
         {"TransportInit", "TransportConnect", "TransportDisconnect", "TransportRelease"}) {
        SetUp();
        transport::Add(name);
        EXPECT_EQ(AMPBSConnect(), 0);
        EXPECT_TRUE(TheModule().calls.empty());
        EXPECT_EQ(fakes::CallCount("GetProcAddress"), 4) << "all four are looked up";
        EXPECT_THAT(OwnTrace(), ElementsAre("0 >", kInfo, "0 Load amrpop.dll",
                                            "1 Err: GetProcAddress (Transport...)", "0 <0"));
        EXPECT_EQ(fakes::LoadedModules(), 0);
    }
}

struct Failure {
    const char *title;
    bool transport::Module::*step;
    HTRANSPORT handle;
    int result;
    std::vector<std::string> calls;
    std::vector<std::string> trace;  // from the module's functions on
};

class PopFailureTest : public PopConnectTest, public ::testing::WithParamInterface<Failure> {};

TEST_P(PopFailureTest, IsTracedAndTheTransportIsReleased) {
    TheModule().*GetParam().step = false;
    TheModule().handle = GetParam().handle;
    fakes::StoreNumber(kPath, "POPTime", 5);
    EXPECT_EQ(AMPBSConnect(), GetParam().result);
    EXPECT_EQ(TheModule().calls, GetParam().calls);
    const auto trace = OwnTrace();
    EXPECT_EQ(std::vector<std::string>(trace.begin() + 4, trace.end()), GetParam().trace);
    EXPECT_EQ(fakes::CallCount("sleep"), GetParam().result);
    EXPECT_EQ(wiped_blocks.size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(
    Steps, PopFailureTest,
    ::testing::Values(
        Failure{
            "Init", &transport::Module::init, 0, 0, {"init"}, {"1 TransportInit Error", "0 <0"}},
        Failure{"InitThatLeftATransport",
                &transport::Module::init,
                7,
                0,
                {"init", "release 7"},
                {"1 TransportInit Error", "0 TransPortRelease OK", "0 <0"}},
        Failure{
            "Connect",
            &transport::Module::connect,
            7,
            0,
            {"init", "connect 7", "release 7"},
            {"0 TransportInit OK ", "1 TransportConnect Error", "0 TransPortRelease OK", "0 <0"}},
        Failure{"Disconnect",
                &transport::Module::disconnect,
                7,
                0,
                {"init", "connect 7", "disconnect 7", "release 7"},
                {"0 TransportInit OK ", "0 TransportConnect OK", "1 TransPortDisconnect Error",
                 "0 TransPortRelease OK", "0 <0"}},
        Failure{"ReleaseChangesNothing",
                &transport::Module::release,
                7,
                1,
                {"init", "connect 7", "disconnect 7", "release 7"},
                {"0 TransportInit OK ", "0 TransportConnect OK", "0 TransPortDisconnect OK",
                 "0 Sleep 5 seconds for waiting server auth", "0 POP AUTH Success",
                 "1 TransPortRelease Error", "0 TransPortRelease OK", "0 <1"}}),
    test_support::Title());

TEST_F(PopConnectTest, WaitsOnceForTheServer) {
    fakes::StoreNumber(kPath, "POPTime", 5);
    EXPECT_EQ(AMPBSConnect(), 1);
    EXPECT_THAT(fakes::TheLibc().sleeps, ElementsAre(5U));
    EXPECT_THAT(OwnTrace(), ::testing::Contains("0 Sleep 5 seconds for waiting server auth"));
}

TEST_F(PopConnectTest, TheWaitIsUnsigned) {
    fakes::StoreNumber(kPath, "POPTime", 0xFFFFFFFF);
    EXPECT_EQ(AMPBSConnect(), 1);
    EXPECT_THAT(fakes::TheLibc().sleeps, ElementsAre(0xFFFFFFFFU));
    EXPECT_THAT(OwnTrace(),
                ::testing::Contains("0 Sleep 4294967295 seconds for waiting server auth"));
}

TEST_F(PopConnectTest, AMissingWaitIsNone) {
    fakes::DeleteValue(kPath, "POPTime");
    EXPECT_EQ(AMPBSConnect(), 1);
    EXPECT_TRUE(fakes::TheLibc().sleeps.empty());
    EXPECT_EQ(OwnTrace().back(), "0 <1");
}

constexpr char kOtherPath[] = "SOFTWARE\\XEV\\Elsewhere";

BOOL OtherPath(const char *, const char *, HKEY *, char *path, DWORD *size) noexcept {
    if (*size != 0) {
        std::memcpy(path, kOtherPath, sizeof kOtherPath);
    }
    *size = sizeof kOtherPath;
    return TRUE;
}

TEST_F(PopConnectTest, TheSettingsStandUnderThePathOfTheRegistryModule) {
    fakes::AddModule("/opt/xev/kestro_sa/lib/amcregac.dll",
                     {{"AMACBSGetMethodRegistryPath", reinterpret_cast<void (*)()>(&OtherPath)}});
    EXPECT_EQ(AMPBSConnect(), 0);
    EXPECT_EQ(OwnTrace().back(), "1 <Err: reg read POPFlag");
    fakes::StoreNumber(kOtherPath, "POPFlag", 0);
    EXPECT_EQ(AMPBSConnect(), 1);
}

TEST_F(PopConnectTest, EachCallFailingInTurn) {
    fakes::StoreNumber(kPath, "POPTime", 5);
    EXPECT_EQ(AMPBSConnect(), 1);
    const std::size_t calls = fakes::Calls().size();
    for (std::size_t nth = 1; nth <= calls; ++nth) {
        SetUp();
        fakes::StoreNumber(kPath, "POPTime", 5);
        fakes::FailAnyCall(static_cast<int>(nth));
        const int result = AMPBSConnect();
        const fakes::Call failed = fakes::Calls()[nth - 1];
        SCOPED_TRACE(failed.function + " " + failed.detail);
        const bool harmless = nth <= 2 || failed.function == "RegCloseKey" ||
                              failed.function == "Ras_Decode" || failed.function == "sleep" ||
                              failed.function == "FreeLibrary" ||
                              failed.detail.ends_with("POPTime") ||
                              (failed.function == "RegOpenKeyEx" && TheModule().calls.size() > 2);
        EXPECT_EQ(result, harmless ? 1 : 0);
        EXPECT_EQ(fakes::OpenKeys(), 0);
        EXPECT_EQ(fakes::LoadedModules(), 0);
        EXPECT_EQ(fakes::UnusedFaults(), 0);
    }
}

}  // namespace
