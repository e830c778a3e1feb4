// The file of GetUSRInfo: found, opened, read, decoded and converted, or refused.
#include "user_information.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::StartsWith;

TEST_F(UserInformationTest, ReadsAFolderWithAndWithoutASlash) {
    PutText("[USER-NAME]\nEXAMPLE\n");
    for (const std::string &path : {Folder(), folder_ / "."}) {
        EXPECT_EQ(GetUSRInfo(path.c_str(), &information_), USR_INFO_ENGLISH);
        EXPECT_THAT(Items(), ElementsAre(Pair(USR_INFO_USER_NAME, "EXAMPLE")));
    }
    EXPECT_TRUE(fakes::HasTrace(0, "szAMVLXUSR = " + File()));
    EXPECT_TRUE(fakes::HasTrace(0, "szAMVLXUSR = " + (folder_ / "./AMVLXUSR.INF")));
}

TEST_F(UserInformationTest, TracesEveryStepInOrder) {
    EXPECT_EQ(ReadText("[CONTRACT]\nA\n"), USR_INFO_ENGLISH);
    std::vector<std::string> expected = {
        "0 >pUsrPath=" + Folder() + ",puser_info=",
        "0 szAMVLXUSR = " + File(),
        "0 1byte-JIS:[CONTRACT]\nA\n",
        "0 2byte-JIS:[CONTRACT]\nA\n",
        "0 nEUC:[CONTRACT]\nA\n",
        "0 [0] " + test_support::ToEuc("お客様属性") + " => CONTRACT"};
    const std::vector<std::string> trace = fakes::TraceLines();
    ASSERT_EQ(trace.size(), 5U + 27U + 1U + 1U);
    EXPECT_THAT(trace[0], StartsWith(expected[0]));
    for (std::size_t i = 1; i < expected.size(); ++i) {
        EXPECT_EQ(trace[i], expected[i]);
    }
    EXPECT_EQ(trace[32], "0 [0] CONTRACT => CONTRACT");
    EXPECT_EQ(trace[33], "0 < return 1033");
    for (const fakes::TraceRecord &record : fakes::Trace()) {
        EXPECT_EQ(record.source, "secgetinf");
        EXPECT_EQ(record.function, "GetUSRInfo");
    }
}

TEST_F(UserInformationTest, AMissingPathReleasesTheOlderArray) {
    ASSERT_EQ(ReadText("[CONTRACT]\nA\n"), USR_INFO_ENGLISH);
    fakes::ClearTrace();
    EXPECT_EQ(GetUSRInfo(nullptr, &information_), USR_INFO_FAILED);
    EXPECT_EQ(information_, nullptr);
    EXPECT_THAT(fakes::TraceLines()[0], StartsWith("0 >pUsrPath=NULL,puser_info=0x"));
    EXPECT_EQ(fakes::TraceLines()[1], "1 pUsrPath=NULL");
    EXPECT_EQ(fakes::TraceLines()[2], "0 < return 2");
}

TEST_F(UserInformationTest, AMissingPlaceIsOnlyTraced) {
    EXPECT_EQ(GetUSRInfo("/mnt", nullptr), USR_INFO_FAILED);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre("0 >pUsrPath=/mnt,puser_info=(nil)", "1 puser_info=NULL",
                            "0 < puser_info = NULL", "0 < return 2"));
}

TEST_F(UserInformationTest, ReleasingNothingIsOnlyTraced) {
    FreeUSRInfo(nullptr);
    FreeUSRInfo(&information_);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre("0 < puser_info = NULL", "0 < *puser_info = NULL"));
}

TEST_F(UserInformationTest, AnArrayIsReplaced) {
    ASSERT_EQ(ReadText("[CONTRACT]\nA\n"), USR_INFO_ENGLISH);
    ASSERT_EQ(ReadText("[USER-NAME]\nB\n"), USR_INFO_ENGLISH);
    EXPECT_THAT(Items(), ElementsAre(Pair(USR_INFO_USER_NAME, "B")));
}

// ---- Files that are no regular files ------------------------------------------------------------

class NotOpenedTest : public UserInformationTest {
  protected:
    void ExpectNotOpened() {
        EXPECT_EQ(Read(), USR_INFO_NOT_OPENED);
        EXPECT_EQ(information_, nullptr);
        EXPECT_THAT(Failures(), ElementsAre("2 open AMVLXUSR.INF  error.  path:" + File()));
        EXPECT_EQ(fakes::TraceLines().back(), "0 < return 1");
    }
};

TEST_F(NotOpenedTest, NoFile) {
    ExpectNotOpened();
}

TEST_F(NotOpenedTest, AFolder) {
    ::mkdir(File().c_str(), 0700);
    ExpectNotOpened();
}

TEST_F(NotOpenedTest, APipeWithoutAWriter) {
    ASSERT_EQ(::mkfifo(File().c_str(), 0600), 0);
    ExpectNotOpened();
}

TEST_F(NotOpenedTest, ASymbolicLink) {
    std::ofstream(folder_ / "target") << fakes::FakeEncode("[CONTRACT]\n");
    ASSERT_EQ(::symlink((folder_ / "target").c_str(), File().c_str()), 0);
    ExpectNotOpened();
}

TEST_F(NotOpenedTest, ASizeThatCannotBeTaken) {
    PutText("[CONTRACT]\n");
    fakes::FailCall("fstat");
    EXPECT_EQ(Read(), USR_INFO_NOT_OPENED);
    EXPECT_EQ(information_, nullptr);
    EXPECT_THAT(Failures(), ElementsAre("2 fstat AMVLXUSR.INF  error.  path:" + File()));
}

TEST_F(UserInformationTest, APathThatIsTooLongIsRefused) {
    const std::string path = "/" + std::string(8192, 'a');
    EXPECT_EQ(GetUSRInfo(path.c_str(), &information_), USR_INFO_FAILED);
    EXPECT_EQ(information_, nullptr);
    EXPECT_THAT(Failures(), ElementsAre("1 path of 8193 bytes is longer than 8178 bytes"));
}

// ---- Reading and decoding -----------------------------------------------------------------------

TEST_F(UserInformationTest, AReadThatFailsShowsTheRoundedSize) {
    PutBytes(std::string(100, 'x'));
    fakes::FailCall("read");
    EXPECT_EQ(Read(), USR_INFO_FAILED);
    EXPECT_THAT(Failures(), ElementsAre("2 read file error. size:128"));
}

TEST_F(UserInformationTest, AReadThatFallsShortFails) {
    PutText("[CONTRACT]\nA\n");
    fakes::TheLibc().short_reads = true;
    EXPECT_EQ(Read(), USR_INFO_FAILED);
    EXPECT_THAT(Failures(), ElementsAre("2 read file error. size:48"));
}

struct LargeFile {
    off_t size;
    const char *trace;
};

TEST_F(UserInformationTest, AFileOverFourMebibytesIsNotRead) {
    for (const LargeFile &file :
         {LargeFile{(4 << 20) + 1, "2 read file error. size:4194336"},
          LargeFile{off_t{1} << 40, "2 read file error. size:2147483632"}}) {
        PutBytes("");
        ASSERT_EQ(::truncate(File().c_str(), file.size), 0);
        fakes::ClearTrace();
        EXPECT_EQ(Read(), USR_INFO_FAILED);
        EXPECT_EQ(information_, nullptr);
        EXPECT_THAT(Failures(), ElementsAre(file.trace));
    }
    EXPECT_EQ(fakes::CallCount("read"), 0);
}

TEST_F(UserInformationTest, AFileOfFourMebibytesIsRead) {
    PutBytes("");
    ASSERT_EQ(::truncate(File().c_str(), 4 << 20), 0);
    EXPECT_EQ(Read(), USR_INFO_FAILED);
    EXPECT_THAT(Failures(), ElementsAre("1 UUCdDeCodingFromMemory return false"));
}

TEST_F(UserInformationTest, WhatCannotBeDecodedFails) {
    for (const char *bytes : {"", "[CONTRACT]\nA\n"}) {
        PutBytes(bytes);
        fakes::ClearTrace();
        EXPECT_EQ(Read(), USR_INFO_FAILED);
        EXPECT_EQ(information_, nullptr);
        EXPECT_THAT(Failures(), ElementsAre("1 UUCdDeCodingFromMemory return false"));
    }
}

TEST_F(UserInformationTest, AnEmptyTextHasNoLine) {
    for (const std::string &text : {std::string(), std::string("\0[CONTRACT]\n", 12)}) {
        fakes::ClearTrace();
        EXPECT_EQ(ReadText(text), USR_INFO_FAILED);
        EXPECT_THAT(Failures(), ElementsAre("1 dwStartPos >= dwSize,go to error!",
                                            "1 SEC_Usr_GetCRLF() failed!!"));
    }
}

TEST_F(UserInformationTest, TheTextEndsAtItsFirstZeroByte) {
    EXPECT_EQ(ReadText(std::string("[CONTRACT]\nA\n\0[USER-NAME]\nB\n", 29)), USR_INFO_ENGLISH);
    EXPECT_THAT(Items(), ElementsAre(Pair(USR_INFO_CONTRACT, "A")));
}

TEST_F(UserInformationTest, BytesThatAreNoShiftJisFail) {
    EXPECT_EQ(ReadText("[USER-NAME]\n\x81\n"), USR_INFO_FAILED);
    EXPECT_EQ(information_, nullptr);
    EXPECT_THAT(Failures(), ElementsAre("1 ecm_SJIStoEUC() failed!!"));
}

TEST_F(UserInformationTest, AFailedWideningFails) {
    fakes::FailCall("kes_AnkZen");
    EXPECT_EQ(ReadText("[CONTRACT]\nA\n"), USR_INFO_FAILED);
    EXPECT_THAT(Failures(), ElementsAre("1 kes_AnkZen() failed!!"));
}

// ---- Memory and faults --------------------------------------------------------------------------

TEST_F(UserInformationTest, EachFailedAllocationFails) {
    // "begin{", the 15 bytes of the text and "}end" make 25 bytes of file.
    const std::vector<std::string> traces = {
        "2 malloc error ,malloc size : 216", "2 malloc error.  malloc size:48",
        "2 malloc error.  malloc size:30", "2 malloc error.  malloc size:30",
        "2 malloc error,malloc size:4"};
    for (std::size_t nth = 0; nth < traces.size(); ++nth) {
        fakes::ClearTrace();
        fakes::FailAllocation(static_cast<int>(nth) + 1);
        EXPECT_EQ(ReadText("[CONTRACT]\nABC\n"), USR_INFO_FAILED);
        EXPECT_EQ(information_, nullptr);
        EXPECT_THAT(Failures(), ElementsAre(traces[nth]));
        EXPECT_EQ(fakes::TraceLines().back(), "0 < return 2");
    }
}

TEST_F(UserInformationTest, EveryFailedCallLeavesNothingOpen) {
    ASSERT_EQ(ReadText("[CONTRACT]\nA\n"), USR_INFO_ENGLISH);
    const std::vector<fakes::Call> calls = fakes::Calls();
    for (std::size_t nth = 0; nth < calls.size(); ++nth) {
        TearDown();
        SetUp();
        fakes::FailAnyCall(static_cast<int>(nth) + 1);
        const LONG result = ReadText("[CONTRACT]\nA\n");
        // A release that fails leaves nothing to report.
        EXPECT_EQ(result == USR_INFO_ENGLISH, calls[nth].function == "GlobalFree") << nth;
        EXPECT_EQ(result == USR_INFO_ENGLISH, information_ != nullptr) << nth;
    }
}

TEST_F(UserInformationTest, SizesAreRoundedUpToSixteen) {
    EXPECT_EQ(Sec_Usr_CalcSize(0), 0U);
    EXPECT_EQ(Sec_Usr_CalcSize(1), 16U);
    EXPECT_EQ(Sec_Usr_CalcSize(16), 16U);
    EXPECT_EQ(Sec_Usr_CalcSize(17), 32U);
}

}  // namespace
