// "veloxctl reg export" and "veloxctl reg import".
#include <sys/stat.h>
#include <sysexits.h>

#include <fstream>

#include "reg_fixture.h"
#include "support/temp_folder.h"
#include "support/title.h"

namespace veloxctl_test {
namespace {

using test_support::ReadWholeFile;

constexpr char kContent[] =
    "[HKLM\\test]\n\"text\"=\"日本 \\\"\\\\\\\"\"\n@=dword:1\n\"\uF701\uF7FF\"=hex(1):ff\n"
    "[HKLM\\test\\]a[\\日]\n\"m\"=hex(7):61,00,00\n";

class TransferTest : public RegTest {
  protected:
    test_support::TempFolder folder_;
};

TEST_F(TransferTest, ExportGoesToStandardOutput) {
    Import("[HKLM\\test]\n\"a\"=\"日\"\n[HKLM\\test\\s]\n");
    const Result result = Veloxctl({"reg", "export", "HKLM\\test"});
    EXPECT_EQ(result.status, EX_OK) << result.errors;
    EXPECT_EQ(result.output, std::string(kHeader) +
                                 "[HKEY_LOCAL_MACHINE\\test]\r\n\"a\"=\"日\"\r\n\r\n[HKEY_LOCAL_"
                                 "MACHINE\\test\\s]\r\n\r\n");
}

TEST_F(TransferTest, ExportIsUtf8WhateverTheTerminalIs) {
    Import("[HKLM\\test]\n\"a\"=\"日\"\n");
    const Result result = Veloxctl({"reg", "export", "test"}, {.variables = {{"LC_ALL", "C"}}});
    EXPECT_NE(result.output.find("\"a\"=\"日\""), std::string::npos) << result.output;
}

TEST_F(TransferTest, EveryByteComesBack) {
    Import(kContent);
    const std::string before = Exported();
    for (const char *form : {"", "--utf16"}) {
        const std::string file = folder_ / "saved.reg";
        std::vector<std::string> words = {"reg", "export", "test", file, "-f"};
        if (*form != '\0') {
            words.emplace_back(form);
        }
        ASSERT_EQ(Veloxctl(words).status, EX_OK);
        Import("[-HKLM\\test]\n");
        ASSERT_EQ(Exported(), "");
        const Result result = Veloxctl({"reg", "import", file});
        ASSERT_EQ(result.status, EX_OK) << result.errors;
        EXPECT_EQ(Exported(), before);
    }
}

TEST_F(TransferTest, ExportMakesAPrivateFile) {
    Import("[HKLM\\test]\n");
    const std::string file = folder_ / "saved.reg";
    ASSERT_EQ(Veloxctl({"reg", "export", "test", file}).status, EX_OK);
    struct stat status = {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
}

TEST_F(TransferTest, ExportReplacesOnlyByForce) {
    Import("[HKLM\\test]\n");
    const std::string file = folder_.Write("saved.reg", "old");
    const Result refused = Veloxctl({"reg", "export", "test", file});
    EXPECT_EQ(refused.status, EX_CANTCREAT);
    EXPECT_EQ(refused.errors, "veloxctl: " + file + ": it exists; -f replaces it\n");
    EXPECT_EQ(ReadWholeFile(file), "old");
    EXPECT_EQ(Veloxctl({"reg", "export", "test", file, "-f"}).status, EX_OK);
    EXPECT_TRUE(ReadWholeFile(file).starts_with(kHeader));
}

TEST_F(TransferTest, ExportWritesThroughALink) {
    Import("[HKLM\\test]\n");
    const std::string file = folder_.Write("saved.reg", "old");
    const std::string link = folder_ / "link.reg";
    ASSERT_EQ(::symlink(file.c_str(), link.c_str()), 0);
    EXPECT_EQ(Veloxctl({"reg", "export", "test", link, "-f"}).status, EX_OK);
    struct stat status = {};
    ASSERT_EQ(::lstat(link.c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    EXPECT_TRUE(ReadWholeFile(file).starts_with(kHeader));
}

TEST_F(TransferTest, ExportToADeviceLeavesTheDevice) {
    Import("[HKLM\\test]\n");
    EXPECT_EQ(Veloxctl({"reg", "export", "test", "/dev/null", "-f"}).status, EX_OK);
    struct stat status = {};
    ASSERT_EQ(::stat("/dev/null", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode));
    const Result full = Veloxctl({"reg", "export", "test", "/dev/full", "-f"});
    EXPECT_EQ(full.status, EX_IOERR);
    EXPECT_EQ(full.errors, "veloxctl: /dev/full: No space left on device\n");
}

TEST_F(TransferTest, ExportRefusesWhatIsNoPlaceForAFile) {
    Import("[HKLM\\test]\n");
    EXPECT_EQ(Veloxctl({"reg", "export", "test", folder_.Path(), "-f"}).errors,
              "veloxctl: " + folder_.Path() + ": it is no regular file\n");
    const std::string nowhere = folder_ / "no/file.reg";
    const Result result = Veloxctl({"reg", "export", "test", nowhere});
    EXPECT_EQ(result.status, EX_NOINPUT);
    EXPECT_EQ(result.errors, "veloxctl: " + nowhere + ": No such file or directory\n");
}

TEST_F(TransferTest, ImportReportsPlaceAndCauseAndWritesNothing) {
    const std::string file = folder_.Write(
        "bad.reg", std::string(kHeader) + "[HKLM\\test]\r\n\"日\"=\"x\"\r\n\"日\"=oops\r\n");
    const Result result = Veloxctl({"reg", "import", file});
    EXPECT_EQ(result.status, EX_DATAERR);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "veloxctl: " + file +
                  ":5:5: The data is neither quoted text, dword:, hex:, hex(n): nor -\n");
    EXPECT_EQ(Exported(), "");
}

TEST_F(TransferTest, ImportOfStandardInputIsNamedSo) {
    EXPECT_EQ(
        Veloxctl({"reg", "import", "-"}, {.input = "x"}).errors,
        "veloxctl: standard input:1:1: The first line is not \"Windows Registry Editor Version "
        "5.00\"\n");
}

TEST_F(TransferTest, ImportOfWhatIsNoFile) {
    const std::string missing = folder_ / "missing.reg";
    Result result = Veloxctl({"reg", "import", missing});
    EXPECT_EQ(result.status, EX_NOINPUT);
    EXPECT_EQ(result.errors, "veloxctl: " + missing + ": No such file or directory\n");
    result = Veloxctl({"reg", "import", folder_.Path()});
    EXPECT_EQ(result.status, EX_NOINPUT);
    EXPECT_EQ(result.errors, "veloxctl: " + folder_.Path() + ": Is a directory\n");
}

TEST_F(TransferTest, ImportOfAHugeFileIsRefused) {
    const std::string file = folder_.Write("huge.reg", kHeader);
    ASSERT_EQ(::truncate(file.c_str(), off_t{1} << 40), 0);
    const Result result = Veloxctl({"reg", "import", file});
    EXPECT_EQ(result.status, EX_DATAERR);
    EXPECT_EQ(result.errors, "veloxctl: " + file + ": larger than 536870912 bytes\n");
}

struct Plan {
    const char *title;
    std::string before;
    std::string lines;
    std::string output;
};

class PlanTest : public TransferTest, public testing::WithParamInterface<Plan> {};

TEST_P(PlanTest, IsShownAndThenCarriedOut) {
    Import(GetParam().before);
    const std::string before = Exported();
    const std::string file = folder_.Write("plan.reg", kHeader + GetParam().lines);
    const Result result = Veloxctl({"reg", "import", "-n", file});
    EXPECT_EQ(result.status, EX_OK) << result.errors;
    EXPECT_EQ(result.output, GetParam().output);
    EXPECT_EQ(Exported(), before);
    ASSERT_EQ(Veloxctl({"reg", "import", file}).status, EX_OK);
    EXPECT_EQ(Exported() == before, GetParam().output.empty());
}

const Plan kPlans[] = {
    {"Nothing", "[HKLM\\test]\n\"v\"=\"x\"\n",
     "[HKLM\\test]\n\"v\"=\"x\"\n\"w\"=-\n[-HKLM\\test\\no]\n", ""},
    {"NewKeysOnTheWay", "", "[HKLM\\test\\a]\n",
     "create key      HKEY_LOCAL_MACHINE\\test\ncreate key      HKEY_LOCAL_MACHINE\\test\\a\n"},
    {"NewValue", "[HKLM\\test]\n", "[HKLM\\test]\n\"v\"=dword:2\n",
     "add value       HKEY_LOCAL_MACHINE\\test    v    REG_DWORD    0x2\n"},
    {"ChangedValue", "[HKLM\\test]\n\"V\"=\"日\"\n", "[HKLM\\test]\n\"v\"=\"本\"\n",
     "change value    HKEY_LOCAL_MACHINE\\test    V    REG_SZ    日    ->    REG_SZ    本\n"},
    {"ChangedType", "[HKLM\\test]\n\"v\"=\"\"\n", "[HKLM\\test]\n\"v\"=hex(2):00\n",
     "change value    HKEY_LOCAL_MACHINE\\test    v    REG_SZ        ->    REG_EXPAND_SZ    \n"},
    {"DeletedValue", "[HKLM\\test]\n\"v\"=\"x\"\n", "[HKLM\\test]\n\"V\"=-\n",
     "delete value    HKEY_LOCAL_MACHINE\\test    v    REG_SZ    x\n"},
    {"DeletedTree", "[HKLM\\test\\a]\n\"v\"=\"x\"\n[HKLM\\test\\a\\b]\n@=\"y\"\n",
     "[-HKLM\\test\\A]\n",
     "delete key      HKEY_LOCAL_MACHINE\\test\\A    keys below: 1, values: 2\n"},
    {"DeletedAndMadeAgain", "[HKLM\\test\\a]\n\"v\"=\"x\"\n",
     "[-HKLM\\test\\a]\n[HKLM\\test\\a]\n\"v\"=\"x\"\n\"w\"=\"1\"\n",
     "delete key      HKEY_LOCAL_MACHINE\\test\\a    keys below: 0, values: 1\n"
     "create key      HKEY_LOCAL_MACHINE\\test\\a\n"
     "add value       HKEY_LOCAL_MACHINE\\test\\a    v    REG_SZ    x\n"
     "add value       HKEY_LOCAL_MACHINE\\test\\a    w    REG_SZ    1\n"},
    {"MadeAndDeleted", "[HKLM\\test]\n\"k\"=\"1\"\n",
     "[HKLM\\test\\a\\b]\n\"v\"=\"x\"\n[-HKLM\\test]\n[-HKLM\\test\\a]\n",
     "create key      HKEY_LOCAL_MACHINE\\test\\a\ncreate key      HKEY_LOCAL_MACHINE\\test\\a\\b\n"
     "add value       HKEY_LOCAL_MACHINE\\test\\a\\b    v    REG_SZ    x\n"
     "delete key      HKEY_LOCAL_MACHINE\\test    keys below: 2, values: 2\n"},
    {"BelowADeletedKey", "[HKLM\\test\\a\\b]\n\"v\"=\"x\"\n",
     "[-HKLM\\test]\n[HKLM\\test\\a\\b]\n\"v\"=-\n\"w\"=\"1\"\n",
     "delete key      HKEY_LOCAL_MACHINE\\test    keys below: 2, values: 1\n"
     "create key      HKEY_LOCAL_MACHINE\\test\ncreate key      HKEY_LOCAL_MACHINE\\test\\a\n"
     "create key      HKEY_LOCAL_MACHINE\\test\\a\\b\n"
     "add value       HKEY_LOCAL_MACHINE\\test\\a\\b    w    REG_SZ    1\n"},
    {"SetTwice", "[HKLM\\test]\n\"v\"=\"1\"\n", "[HKLM\\test]\n\"v\"=\"2\"\n\"V\"=\"3\"\n",
     "change value    HKEY_LOCAL_MACHINE\\test    v    REG_SZ    1    ->    REG_SZ    2\n"
     "change value    HKEY_LOCAL_MACHINE\\test    v    REG_SZ    2    ->    REG_SZ    3\n"},
};
INSTANTIATE_TEST_SUITE_P(Import, PlanTest, testing::ValuesIn(kPlans), test_support::Title());

TEST_F(TransferTest, ThePlanIsJsonToo) {
    Import("[HKLM\\test\\a]\n\"v\"=\"1\"\n");
    const std::string file = folder_.Write(
        "plan.reg", std::string(kHeader) + "[HKLM\\test\\a]\n\"v\"=dword:2\n[-HKLM\\test\\a]\n");
    const Result result = Veloxctl({"reg", "import", "-n", "--json", file});
    EXPECT_EQ(
        result.output,
        "[\n  {\n    \"step\": \"change value\",\n"
        "    \"key\": \"HKEY_LOCAL_MACHINE\\\\test\\\\a\",\n"
        "    \"before\": {\n      \"name\": \"v\",\n      \"type\": \"REG_SZ\",\n"
        "      \"data\": \"1\"\n    },\n"
        "    \"after\": {\n      \"name\": \"v\",\n      \"type\": \"REG_DWORD\",\n"
        "      \"data\": 2\n    }\n  },\n"
        "  {\n    \"step\": \"delete key\",\n    \"key\": \"HKEY_LOCAL_MACHINE\\\\test\\\\a\",\n"
        "    \"subkeys\": 0,\n    \"values\": 1\n  }\n]\n");
}

}  // namespace
}  // namespace veloxctl_test
