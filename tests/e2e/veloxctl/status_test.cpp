// "veloxctl status": the registry server, and what became of the last import.
#include <gmock/gmock.h>
#include <sysexits.h>

#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "disk_folder.h"
#include "real_import.h"
#include "reg_fixture.h"
#include "support/title.h"

namespace veloxctl_test {
namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;

constexpr char kNoServer[] = "the registry server KESntserver is not running";

// The line of a report that begins with a title.
std::string LineOf(const Result &result, const std::string &title) {
    const std::size_t at = result.output.find(title + ":");
    return at == std::string::npos ? ""
                                   : result.output.substr(at, result.output.find('\n', at) - at);
}

class StatusTest : public RegTest {
  protected:
    void SetUp() override { std::filesystem::remove_all(LogFolder()); }

    static std::string LogFolder() { return Server().StateFolder() + "/log"; }
    static std::string LogFile() { return LogFolder() + "/vlxfd.log"; }

    // A log of these records, and perhaps of an older file's.
    static void WriteLog(const std::string &path, const std::string &records) {
        std::filesystem::create_directories(LogFolder());
        std::ofstream(path) << records;
    }

    static std::string LastImport() { return LineOf(Veloxctl({"status"}), "Last import"); }
};

std::string Record(const std::string &process, const std::string &rest) {
    return "2026-11-21T10:00:0" + process + ".000001 " + process + " " + rest + "\n";
}

TEST_F(StatusTest, TellsAboutTheServer) {
    const Result result = Veloxctl({"status"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(LineOf(result, "Registry server"),
                HasSubstr("running, version 1.0.0, process " + std::to_string(Server().Process()) +
                          ", clients: "));
    EXPECT_THAT(LineOf(result, "Store"), HasSubstr(Server().StoreFolder() + ", format 2, "));
    EXPECT_EQ(LineOf(result, "Last import"), "Last import:     none is in the log of vlxfd");
}

TEST_F(StatusTest, CountsKeysAndValues) {
    const json before = json::parse(Veloxctl({"status", "--json"}).output)["server"];
    Import("[HKLM\\test\\a]\n\"x\"=dword:1\n\"y\"=dword:2\n");
    const json after = json::parse(Veloxctl({"status", "--json"}).output)["server"];
    Import("[-HKLM\\test]\n");
    EXPECT_EQ(after["keys"].get<int>() - before["keys"].get<int>(), 2);
    EXPECT_EQ(after["values"].get<int>() - before["values"].get<int>(), 2);
    EXPECT_EQ(after["running"], true);
    EXPECT_EQ(after["process"], Server().Process());
}

TEST_F(StatusTest, TellsThatNoServerRuns) {
    const test_support::TempFolder empty;
    const Surroundings elsewhere = {.variables = {{"KES_RUN", empty.Path()}}};
    const Result result = Veloxctl({"status"}, elsewhere);
    EXPECT_EQ(result.status, EX_UNAVAILABLE);
    EXPECT_EQ(LineOf(result, "Registry server"), std::string("Registry server: ") + kNoServer);
    const json as_json = json::parse(Veloxctl({"status", "--json"}, elsewhere).output);
    EXPECT_EQ(as_json["server"], (json{{"running", false}, {"reason", kNoServer}}));
    EXPECT_EQ(as_json["last_import"], nullptr);
}

// What a run of vlxfd leaves to be told.
struct Told {
    const char *title;
    DiskFiles files;
    bool mounted = true;
    int status;
    std::string outcome;
    std::string failure;
};

class RealImportTest : public StatusTest, public testing::WithParamInterface<Told> {};

TEST_P(RealImportTest, IsTold) {
    const Told &row = GetParam();
    Import("[HKLM\\SOFTWARE\\XEV\\VLXService\\SETUP]\n\"MailAdrs\"=-\n");
    const test_support::TempFolder disk;
    WriteDisk(disk, row.files);
    EXPECT_EQ(ImportStatus(disk.Path(), "en", row.mounted ? "floppy" : "other"), row.status);
    const Result result = Veloxctl({"status"});
    EXPECT_THAT(LineOf(result, "Last import"), EndsWith(", " + row.outcome));
    EXPECT_EQ(LineOf(result, "First failure"),
              row.failure.empty() ? "" : "First failure:   " + row.failure);
    const json told = json::parse(Veloxctl({"status", "--json"}).output)["last_import"];
    EXPECT_EQ(told["status"], row.status);
    EXPECT_EQ(told["outcome"], row.outcome);
    EXPECT_EQ(told.contains("failure"), !row.failure.empty());
}

const Told kTold[] = {
    {"Done", {}, true, 1, "the key disk was imported (exit status 1)", ""},
    {"NoDisk",
     {},
     false,
     100,
     "no key disk was mounted (exit status 100)",
     "FD Hadn't mounted! (keyfd, CheckKeyFD)"},
    {"Refused",
     {.customer = Encoded("[NO-SUCH]\r\nX\r\n")},
     true,
     200,
     "the import of the key disk failed (exit status 200)",
     "Invalided item : NO-SUCH  (keyfd, CheckKeyFD)"},
    {"StepBehindFailed",
     {.address = "[PHONENO]\r\n1\r\n"},
     true,
     0,
     "the key disk was imported, but a step behind it failed (exit status 0)",
     "<RegQueryValueEx(MAILADRS) failed. (amstexml, AMAMRegReadEx)"},
};
INSTANTIATE_TEST_SUITE_P(Outcomes, RealImportTest, testing::ValuesIn(kTold), test_support::Title());

TEST_F(StatusTest, ImportWithoutServerIsTold) {
    const test_support::TempFolder run;
    const test_support::TempFolder disk;
    {
        const test_support::EnvironmentVariable elsewhere("KES_RUN", run.Path());
        EXPECT_EQ(ImportStatus(disk.Path(), "en"), 0);
    }
    EXPECT_THAT(
        LastImport(),
        EndsWith(", nothing was done: the registry server was not running (exit status 0)"));
}

TEST_F(StatusTest, OnlyTheLastRunIsTold) {
    WriteLog(LogFile(), Record("1", "0 setup main 10 >") + Record("1", "1 keyfd CheckKeyFD 9 old") +
                            Record("1", "0 setup main 12 <return 200") +
                            Record("2", "0 setup main 10 >") +
                            Record("2", "0 setup main 12 <return 1"));
    const Result result = Veloxctl({"status"});
    EXPECT_EQ(LineOf(result, "Last import"),
              "Last import:     2026-11-21T10:00:02.000001, the key disk was imported (exit status "
              "1)");
    EXPECT_EQ(LineOf(result, "First failure"), "");
}

TEST_F(StatusTest, RunThatWasCutOffIsTold) {
    WriteLog(LogFile(), Record("1", "0 setup main 10 >") + Record("1", "1 keyfd F 9 broken\\x1b"));
    const Result result = Veloxctl({"status"});
    EXPECT_THAT(LineOf(result, "Last import"),
                EndsWith(", it has not ended, or was ended from outside"));
    EXPECT_EQ(LineOf(result, "First failure"), "First failure:   broken\\x1b (keyfd, F)");
}

TEST_F(StatusTest, RecordsOfOtherProcessesAreNotTaken) {
    WriteLog(LogFile(), Record("1", "0 setup main 10 >") + Record("2", "1 keyfd F 9 of another") +
                            Record("2", "0 setup main 12 <return 200") +
                            Record("1", "0 setup main 12 <return 1"));
    const Result result = Veloxctl({"status"});
    EXPECT_THAT(LineOf(result, "Last import"), EndsWith("imported (exit status 1)"));
    EXPECT_EQ(LineOf(result, "First failure"), "");
}

TEST_F(StatusTest, RunMayBeginInTheOlderFile) {
    WriteLog(LogFile() + ".1", Record("1", "0 setup main 10 >"));
    WriteLog(LogFile(), Record("1", "0 setup main 12 <return 100"));
    EXPECT_THAT(LastImport(), EndsWith(", no key disk was mounted (exit status 100)"));
}

TEST_F(StatusTest, LinesThatAreNoRecordsArePassedOver) {
    WriteLog(LogFile(), "\n \nrubbish\n" + std::string(70000, 'x') + "\n" +
                            Record("1", "0 setup main 10 >") +
                            Record("1", "x setup main 1 <return 9") +
                            Record("1", "0 setup main 12 <return 1"));
    EXPECT_THAT(LastImport(), EndsWith("imported (exit status 1)"));
}

TEST_F(StatusTest, FailureIsShownInTheTerminalsEncoding) {
    WriteLog(LogFile(), Record("1", "0 setup main 10 >") +
                            Record("1", "1 keyfd F 9 \\xc6\\xfc\\xcb\\xdc") +
                            Record("1", "0 setup main 12 <return 200"));
    EXPECT_EQ(LineOf(Veloxctl({"status"}), "First failure"), "First failure:   日本 (keyfd, F)");
    EXPECT_EQ(LineOf(Veloxctl({"status"}, {.variables = {{"LC_ALL", "C"}}}), "First failure"),
              "First failure:   \\u65e5\\u672c (keyfd, F)");
    const json told = json::parse(Veloxctl({"status", "--json"}).output)["last_import"];
    EXPECT_EQ(told["failure"]["text"], "日本");
}

TEST_F(StatusTest, UnreadableLogIsTold) {
    std::filesystem::create_directories(LogFile());
    EXPECT_EQ(LastImport(), "Last import:     " + LogFile() + ": Is a directory");
}

}  // namespace
}  // namespace veloxctl_test
