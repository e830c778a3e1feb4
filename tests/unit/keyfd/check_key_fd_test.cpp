// The frame of the import: language, mount table, paths, results, and a whole run's trace.
#include <gmock/gmock.h>

#include <climits>
#include <clocale>
#include <string>
#include <vector>

#include "key_disk_fixture.h"

namespace {

using test_support::ToEuc;
using test_support::ToSjis;
using ::testing::ElementsAre;
using ::testing::StartsWith;

class CheckKeyFdTest : public KeyDiskTest {
  protected:
    // The calls up to the first file, as "function detail".
    static std::vector<std::string> CallsBeforeTheFiles() {
        std::vector<std::string> lines;
        for (const fakes::Call &call : fakes::Calls()) {
            if (call.function == "UUCdDeCodingFromFile") {
                break;
            }
            lines.push_back(call.detail.empty() ? call.function
                                                : call.function + " " + call.detail);
        }
        return lines;
    }
};

TEST_F(CheckKeyFdTest, SetsTheLanguageUpBeforeItLooksForTheDisk) {
    fakes::TheSystem().language_name = "ja_JP.eucJP";
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_THAT(CallsBeforeTheFiles(),
                ElementsAre("GetSystemDefaultLangID", "GetSystemDefaultLANG 128",
                            "setlocale " + std::to_string(LC_ALL) + " ja_JP.eucJP",
                            "bindtextdomain velox /opt/xev/kestro_sa/data/mo", "textdomain velox",
                            "setmntent /etc/mtab r", "endmntent"));
}

TEST_F(CheckKeyFdTest, WithoutALanguageNameItIsEmpty) {
    fakes::FailCall("GetSystemDefaultLANG");
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_EQ(CallsBeforeTheFiles()[2], "setlocale " + std::to_string(LC_ALL) + " ");
}

TEST_F(CheckKeyFdTest, OnlyTheLanguageIdentifierChoosesTheTables) {
    fakes::TheSystem().language_name = "ja_JP.eucJP";
    for (const LANGID language : {LANGID{1033}, LANGID{0}, LANGID{1042}}) {
        fakes::TheSystem().language_id = language;
        EXPECT_EQ(Import(), KEYFD_IMPORTED) << language;
    }
    fakes::TheSystem().language_id = 1041;
    EXPECT_EQ(Import(), KEYFD_FAILED);
}

TEST_F(CheckKeyFdTest, TraceOfAWholeRun) {
    Heartbeat("[HEART-BEAT-INT]\r\n5\r\n");
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_THAT(
        ImportTrace(),
        ElementsAre("0 >", "0 Has mounted /dev/sda1 /\n", "0 Has mounted /dev/fd0 /mnt/floppy\n",
                    "0 FD Had mounted!", "0 1byte-JIS:[USER-NAME]\r\nEXAMPLE\r\n",
                    "0 2byte-JIS:[USER-NAME]\r\nEXAMPLE\r\n", "0 nEUC:[USER-NAME]\r\nEXAMPLE\r\n",
                    "1 Value ? : AMVLXHBI : 35", "0 <return 0."));
    for (const fakes::TraceRecord &record : fakes::Trace()) {
        EXPECT_EQ(record.source, "keyfd");
    }
}

TEST_F(CheckKeyFdTest, AnOptionCountIsTraced) {
    Customer("[SUB-N-CODE 02]\r\nA\r\n");
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_TRUE(fakes::HasTrace(0, "dwOptNum : 2"));
}

TEST_F(CheckKeyFdTest, TheThreeFilesAreReadInOrder) {
    Heartbeat("[HEART-BEAT-INT]\r\n5\r\n");
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    std::vector<std::string> paths;
    for (const fakes::Call &call : fakes::Calls()) {
        if (call.function == "UUCdDeCodingFromFile" || call.function == "CreateFile") {
            paths.push_back(call.detail.substr(0, call.detail.find(' ')));
        }
    }
    EXPECT_THAT(paths, ElementsAre("/mnt/floppy/AMVLXUSR.INF", "/mnt/floppy/AMVLXADR.INF",
                                   "/mnt/floppy/AMVLXHBI.INF"));
    EXPECT_THAT(Writes(), ElementsAre("TOKUINMA=EXAMPLE", "MailAdrs=a@b.example", "HBINTERVAL=5"));
}

// Each file is closed before the next one is opened.
TEST_F(CheckKeyFdTest, FilesAreClosedOneByOne) {
    Heartbeat("[HEART-BEAT-INT]\r\n5\r\n");
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    std::vector<std::string> calls;
    for (const fakes::Call &call : fakes::Calls()) {
        if (call.function == "CreateFile" || call.function == "CloseHandle" ||
            call.function == "GlobalFree" || call.function == "AMACRERegWriteDword") {
            calls.push_back(call.function);
        }
    }
    EXPECT_THAT(calls, ElementsAre("GlobalFree", "CreateFile", "CloseHandle", "CreateFile",
                                   "CloseHandle", "AMACRERegWriteDword"));
}

TEST_F(CheckKeyFdTest, AMountTableThatDoesNotOpen) {
    fakes::FailCall("setmntent");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_THAT(ImportTrace(), ElementsAre("0 >", "1 Open /etc/mtab failed!", "0 <return 1."));
}

TEST_F(CheckKeyFdTest, NoFloppyMounted) {
    fakes::TheLibc().mounts = {{"/dev/sda1", "/"}, {"/dev/floppy", "/mnt/disk"}};
    EXPECT_EQ(Import(), KEYFD_NOT_MOUNTED);
    EXPECT_THAT(ImportTrace(), ElementsAre("0 >", "0 Has mounted /dev/sda1 /\n",
                                           "0 Has mounted /dev/floppy /mnt/disk\n",
                                           "1 FD Hadn't mounted!", "0 <return 4."));
    EXPECT_TRUE(fakes::Dump().empty());
}

TEST_F(CheckKeyFdTest, AnEmptyMountTable) {
    fakes::TheLibc().mounts.clear();
    EXPECT_EQ(Import(), KEYFD_NOT_MOUNTED);
    EXPECT_THAT(ImportTrace(), ElementsAre("0 >", "1 FD Hadn't mounted!", "0 <return 4."));
}

TEST_F(CheckKeyFdTest, TheFirstFolderThatContainsTheWordIsTheDisk) {
    fakes::TheLibc().mounts = {
        {"a", "/media/Floppy"}, {"b", "/xfloppy2/y"}, {"c", "/mnt/floppy"}, {"d", "/"}};
    EXPECT_EQ(Import(), KEYFD_FAILED) << "no files there";
    EXPECT_EQ(fakes::Calls().back().detail, "/xfloppy2/y/AMVLXUSR.INF");
    EXPECT_FALSE(fakes::HasTrace(0, "Has mounted c /mnt/floppy\n"))
        << "later entries are not looked at";
}

TEST_F(CheckKeyFdTest, TheLongestFolder) {
    const std::string folder = "/floppy" + std::string(PATH_MAX - 7 - 14, 'x');
    fakes::TheLibc().mounts = {{"/dev/fd0", folder}};
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(fakes::Calls().back().detail, folder + "/AMVLXUSR.INF");
}

TEST_F(CheckKeyFdTest, AFolderWhosePathsAreTooLong) {
    fakes::TheLibc().mounts = {{"/dev/fd0", "/floppy" + std::string(PATH_MAX - 7 - 13, 'x')}};
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_THAT(LastTrace(2), ElementsAre("1 Path of AMVLXUSR.INF too long : at most 4095 bytes",
                                          "0 <return 1."));
    EXPECT_EQ(fakes::CallCount("UUCdDeCodingFromFile"), 0);
}

TEST_F(CheckKeyFdTest, AFolderThatIsTooLong) {
    fakes::TheLibc().mounts = {{"/dev/fd0", "/floppy" + std::string(PATH_MAX, 'x')}};
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_THAT(LastTrace(2), ElementsAre("1 Folder of the key disk too long : at most 4095 bytes",
                                          "0 <return 1."));
}

TEST_F(CheckKeyFdTest, TheDriveIsNotUsed) {
    EXPECT_EQ(CheckKeyFD(0), KEYFD_IMPORTED);
    EXPECT_EQ(CheckKeyFD('B'), KEYFD_IMPORTED);
}

}  // namespace
