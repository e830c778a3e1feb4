// The path of the mail base key: from the module, or the default one for every failure on the way.
#include <gmock/gmock.h>

#include <cstring>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "velox/mail_base.h"

namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

constexpr char kDefault[] =
    "SOFTWARE\\XEV\\KESAlertMan\\BaseSetting\\Report\\VeloxReport(Internet Mail)\\Setting";
constexpr char kModule[] = "/opt/xev/kestro_sa/lib/amcregac.dll";

// The module's function, as the test sets it up.
struct {
    std::string path;
    int fail_at = 0;  // the call that fails
    int calls = 0;
    std::string arguments;
    bool terminate = true;
} module;

BOOL GetMethodRegistryPath(const char *category, const char *method, HKEY *key, char *path,
                           DWORD *size) noexcept {
    module.arguments += std::string(category) + "/" + method + "/" + std::to_string(*size) + " ";
    if (++module.calls == module.fail_at) {
        return FALSE;
    }
    *key = 0x80000002U;
    if (*size != 0) {
        module.path.copy(path, module.path.size());
        if (module.terminate) {
            path[module.path.size()] = '\0';
        }
    }
    *size = static_cast<DWORD>(module.path.size() + (module.terminate ? 1 : 0));
    return TRUE;
}

class BasePathTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        module = {};
        module.path = "SOFTWARE\\XEV\\Mail";
        std::memset(path_, 'z', sizeof path_);
    }
    static void AddModule() {
        fakes::AddModule(kModule, {{"AMACBSGetMethodRegistryPath",
                                    reinterpret_cast<void (*)()>(&GetMethodRegistryPath)}});
    }
    void ExpectDefault(const char *trace) {
        EXPECT_EQ(AMAMGetBaseRegPath(path_), 1);
        EXPECT_STREQ(path_, kDefault);
        EXPECT_THAT(fakes::TraceLines(),
                    ElementsAre(MatchesRegex("0 >g_szAMBaseRegPath=0x[0-9a-f]+"), trace));
    }
    char path_[AMAM_BASE_PATH_CAPACITY];
};

TEST_F(BasePathTest, ComesFromTheModule) {
    AddModule();
    EXPECT_EQ(AMAMGetBaseRegPath(path_), 1);
    EXPECT_STREQ(path_, "SOFTWARE\\XEV\\Mail");
    EXPECT_EQ(module.arguments,
              "Report/VeloxReport(Internet Mail)/0 Report/VeloxReport(Internet Mail)/18 ");
    EXPECT_THAT(fakes::TraceLines(), ElementsAre(MatchesRegex("0 >g_szAMBaseRegPath=0x[0-9a-f]+"),
                                                 "0 <g_szAMBaseRegPath=SOFTWARE\\XEV\\Mail"));
    EXPECT_EQ(fakes::Calls()[0].detail, "%KesDir% 128");
    for (const auto &record : fakes::Trace()) {
        EXPECT_EQ(record.source, "amstexml");
        EXPECT_EQ(record.function, "AMAMGetBaseRegPath");
    }
}

TEST_F(BasePathTest, ExpansionFails) {
    AddModule();
    fakes::FailCall("ExpandEnvironmentStrings");
    ExpectDefault(
        "1 <ExpandEnvironmentStrings failed.g_szAMBaseRegPath=SOFTWARE\\XEV\\KESAlertMan\\"
        "BaseSetting\\Report\\VeloxReport(Internet Mail)\\Setting.");
    EXPECT_EQ(fakes::CallCount("LoadLibrary"), 0);
}

TEST_F(BasePathTest, AFolderOver127BytesIsAFailedExpansion) {
    fakes::TheSystem().kes_directory = std::string(128, 'd');
    EXPECT_EQ(AMAMGetBaseRegPath(path_), 1);
    EXPECT_STREQ(path_, kDefault);
    EXPECT_EQ(fakes::CallCount("LoadLibrary"), 0);
}

TEST_F(BasePathTest, TheModuleIsMissing) {
    ExpectDefault("1 <LoadLibrary(/opt/xev/kestro_sa/lib/amcregac.dll) failed.");
}

TEST_F(BasePathTest, ALibraryPathOf127BytesIsLoadedAndALongerOneIsNot) {
    fakes::TheSystem().kes_directory = std::string(127 - std::strlen("/lib/amcregac.dll"), 'd');
    ExpectDefault(
        ("1 <LoadLibrary(" + fakes::TheSystem().kes_directory + "/lib/amcregac.dll) failed.")
            .c_str());
    fakes::ClearTrace();
    fakes::TheSystem().kes_directory += 'd';
    ExpectDefault("1 <LoadLibrary(amcregac.dll) failed.");
    EXPECT_EQ(fakes::CallCount("LoadLibrary"), 1);
}

TEST_F(BasePathTest, TheFunctionIsMissing) {
    fakes::AddModule(kModule, {});
    ExpectDefault("1 <GetProcAddress(AMACBSGetMethodRegistryPath) return TRUE.");
}

TEST_F(BasePathTest, AskingForTheSizeFails) {
    AddModule();
    module.fail_at = 1;
    ExpectDefault("1 <lpGetMethodRegistryPath failed.");
    EXPECT_EQ(module.calls, 1);
}

TEST_F(BasePathTest, NoMemoryForThePath) {
    AddModule();
    fakes::FailAllocation(1);
    ExpectDefault("2 <malloc lpbyBuf error!");
    EXPECT_EQ(module.calls, 1);
}

TEST_F(BasePathTest, AskingForThePathFails) {
    AddModule();
    module.fail_at = 2;
    ExpectDefault("1 <lpGetMethodRegistryPath failed.");
    EXPECT_EQ(module.calls, 2);
}

TEST_F(BasePathTest, APathOf511BytesIsTakenAndALongerOneIsNot) {
    AddModule();
    module.path = std::string(511, 'p');
    EXPECT_EQ(AMAMGetBaseRegPath(path_), 1);
    EXPECT_EQ(path_, module.path);

    fakes::ClearTrace();
    module.path = std::string(512, 'p');
    ExpectDefault("1 <the path has more than 511 bytes.");
}

TEST_F(BasePathTest, APathWithoutTerminatorEnds) {
    AddModule();
    module.terminate = false;
    EXPECT_EQ(AMAMGetBaseRegPath(path_), 1);
    EXPECT_STREQ(path_, "SOFTWARE\\XEV\\Mail");
}

TEST_F(BasePathTest, EachCallFailingInTurnGivesAPathAndLeavesNothing) {
    AddModule();
    EXPECT_EQ(AMAMGetBaseRegPath(path_), 1);
    const std::size_t calls = fakes::Calls().size();
    for (std::size_t nth = 1; nth <= calls; ++nth) {
        SCOPED_TRACE(nth);
        fakes::Reset();
        AddModule();
        fakes::FailAnyCall(static_cast<int>(nth));
        EXPECT_EQ(AMAMGetBaseRegPath(path_), 1);
        EXPECT_STREQ(path_, nth == calls ? module.path.c_str() : kDefault) << "the last unloads";
        EXPECT_EQ(fakes::UnusedFaults(), 0);
        EXPECT_EQ(fakes::LoadedModules(), 0);
    }
}

}  // namespace
