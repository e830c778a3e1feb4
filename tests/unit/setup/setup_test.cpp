// The start of vlxfd: trace log, registry server, exit status, and what the operator sees.
#include "setup/setup.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SetupTest : public fakes::PlatformTest {
  protected:
    static void PutDiskIn() {
        fakes::TheLibc().mounts = {{"/dev/fd0", "/mnt/floppy"}};
        fakes::AddEncodedFile("/mnt/floppy/AMVLXUSR.INF", "[USER-NAME]\r\nA\r\n");
        fakes::AddFile("/mnt/floppy/AMVLXADR.INF", "[E-MAIL]\r\na@b\r\n");
        fakes::StoreText("SOFTWARE\\XEV\\VLXService\\SETUP", "VERSION", "3.1");
        fakes::CreateKey("SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT\\Address");
    }

    static void ExpectNothingShown() {
        EXPECT_THAT(fakes::TheLibc().printed, IsEmpty());
        EXPECT_THAT(fakes::TheLibc().system_log, IsEmpty());
    }

    static std::vector<std::string> MainTrace() { return fakes::TraceLinesOf("main"); }
};

TEST_F(SetupTest, ServerDown) {
    fakes::TheSystem().server_ready = -1;
    PutDiskIn();
    const std::vector<std::string> before = fakes::Dump();
    EXPECT_EQ(RunSetup(), 0);
    EXPECT_THAT(fakes::TheLibc().printed, ElementsAre("Please confirm KESntserver is running!"));
    EXPECT_THAT(fakes::TheLibc().system_log,
                ElementsAre("6 KESntserver is not active! So vlxfd exit\n"));
    EXPECT_THAT(fakes::TraceLines(), ElementsAre("0 >", "1 <KESntserver is not active!"));
    EXPECT_EQ(fakes::Trace()[0].source, "setup");
    EXPECT_EQ(fakes::Trace()[0].function, "main");
    EXPECT_EQ(fakes::Trace()[1].function, "main");
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_EQ(fakes::CallCount("setmntent"), 0);
}

TEST_F(SetupTest, TheLogIsOpenedBeforeAnythingElse) {
    fakes::TheSystem().server_ready = -1;
    EXPECT_EQ(RunSetup(), 0);
    EXPECT_EQ(fakes::Calls()[0].function, "TraceLogInit");
    EXPECT_EQ(fakes::Calls()[0].detail, "0,vlxfd,0,5,0");
    EXPECT_EQ(fakes::Calls()[1].function, "CheckNTserverReady");
}

TEST_F(SetupTest, ALogThatDoesNotOpenStopsNothing) {
    PutDiskIn();
    fakes::FailCall("TraceLogInit");
    EXPECT_EQ(RunSetup(), 1);
}

TEST_F(SetupTest, AnyOtherAnswerCountsAsReady) {
    for (const int answer : {0, 1, 2, -2}) {
        fakes::TheSystem().server_ready = answer;
        EXPECT_EQ(RunSetup(), 100) << answer;
    }
    ExpectNothingShown();
}

TEST_F(SetupTest, Done) {
    PutDiskIn();
    EXPECT_EQ(RunSetup(), 1);
    EXPECT_THAT(MainTrace(), ElementsAre("0 >", "0 <return 1"));
    ExpectNothingShown();
}

TEST_F(SetupTest, NoFloppy) {
    EXPECT_EQ(RunSetup(), 100);
    EXPECT_THAT(MainTrace(), ElementsAre("0 >", "0 <return 100"));
    ExpectNothingShown();
}

TEST_F(SetupTest, AFailedImport) {
    PutDiskIn();
    fakes::FailCall("UUCdDeCodingFromFile");
    EXPECT_EQ(RunSetup(), 200);
    EXPECT_THAT(MainTrace(), ElementsAre("0 >", "0 <return 200"));
    ExpectNothingShown();
}

TEST_F(SetupTest, AFailedRegistryStep) {
    PutDiskIn();
    fakes::DeleteTree("SOFTWARE\\XEV\\KESALERTMAN");
    EXPECT_EQ(RunSetup(), 0);
    EXPECT_THAT(MainTrace(), ElementsAre("0 >", "0 <return 0"));
    ExpectNothingShown();
}

TEST_F(SetupTest, AComputerNameThatCannotBeStoredIsNotFatal) {
    PutDiskIn();
    fakes::FailCall("GetComputerName");
    EXPECT_EQ(RunSetup(), 1);
    ExpectNothingShown();
}

}  // namespace
