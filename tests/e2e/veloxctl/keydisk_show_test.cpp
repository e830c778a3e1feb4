// "veloxctl keydisk show": what it prints, from folders and images, in the terminal's encoding.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sysexits.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "disk_folder.h"
#include "reg_fixture.h"

namespace veloxctl_test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

DiskFiles Japanese() {
    return {.customer = Encoded(ToSjis("[部署名]\r\n情報部 ｱﾞ\r\n")),
            .address = ToSjis("[メールアドレス]\r\na@b\r\n")};
}

constexpr char kJapaneseShown[] =
    "# AMVLXUSR.INF\n%customer\n[部署名]\n情報部 ｱﾞ\n# AMVLXADR.INF\n%address\n"
    "[メールアドレス]\na@b\n# AMVLXHBI.INF: there is no heart-beat file\n";

class ShowTest : public RegTest {
  protected:
    Result Show(const DiskFiles &files, std::vector<std::string> options = {},
                const Surroundings &surroundings = {}) const {
        WriteDisk(folder_, files);
        options.insert(options.begin(), {"keydisk", "show", "--lang", "ja", folder_.Path()});
        return Veloxctl(options, surroundings);
    }

    // An image with the files of folder_, as another program makes it.
    std::string Image(const std::string &commands = "mcopy -i \"$1\" \"$2\"/* ::") const {
        const std::string image = images_ / "disk.img";
        const Result made = Veloxctl(
            {"-c", "mformat -C -f 1440 -i \"$1\" :: && " + commands, "-", image, folder_.Path()},
            {.variables = {{"MTOOLSRC", "/dev/null"}}, .program = "/bin/sh"});
        EXPECT_EQ(made.status, 0) << made.errors;
        return image;
    }

    test_support::TempFolder folder_;
    test_support::TempFolder images_;
};

TEST_F(ShowTest, PrintsAFormInUtf8) {
    const Result shown = Show(Japanese());
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.errors, "");
    EXPECT_EQ(shown.output, kJapaneseShown);
}

TEST_F(ShowTest, PrintsEscapesWhereTheTerminalLacksTheCharacters) {
    const Result shown = Show(Japanese(), {}, {.variables = {{"LC_ALL", "C"}}});
    EXPECT_THAT(shown.output, HasSubstr("[\\u90e8\\u7f72\\u540d]\n\\u60c5\\u5831\\u90e8 "
                                        "\\uff71\\uff9e\n"));
}

TEST_F(ShowTest, PrintsInTheTerminalsOwnEncoding) {
    const test_support::TempFolder locales;
    const Result made =
        Veloxctl({"-c", "localedef -i ja_JP -f EUC-JP \"$1/ja_JP.eucJP\"", "-", locales.Path()},
                 {.program = "/bin/sh"});
    ASSERT_EQ(made.status, 0) << made.errors;
    DiskFiles files = Japanese();
    files.address = ToSjis("[メールアドレス]\r\na@b\r\n[電話]\r\n");
    const Result shown =
        Show(files, {}, {.variables = {{"LC_ALL", "ja_JP.eucJP"}, {"LOCPATH", locales.Path()}}});
    EXPECT_THAT(shown.output,
                HasSubstr(test_support::Convert("[部署名]\n情報部 ｱﾞ\n", "UTF-8", "EUC-JP")));
    EXPECT_EQ(shown.errors,
              test_support::Convert("veloxctl: AMVLXADR.INF:3: refused: unknown item: [電話]\n",
                                    "UTF-8", "EUC-JP"));
}

TEST_F(ShowTest, PrintsNothingThatATerminalWouldObey) {
    DiskFiles files = Japanese();
    files.address = "[E-MAIL]\r\n\x1B[2J\x07 \\ \xFD\r\n#x\r\n%x\r\n\r\n";
    const Result shown = Show(files);
    EXPECT_THAT(shown.output, HasSubstr("[E-MAIL]\n\\x1b[2J\\x07 \\\\ \\xfd\n\\#x\n\\%x\n\\\n"));
    EXPECT_EQ((shown.output + shown.errors).find('\x1B'), std::string::npos);
}

TEST_F(ShowTest, TellsWhatCannotBeRead) {
    const Result shown = Show({.customer = "rubbish", .address = std::nullopt});
    EXPECT_EQ(shown.status, EX_DATAERR);
    EXPECT_EQ(shown.output,
              "# AMVLXUSR.INF: the customer file cannot be read\n"
              "# AMVLXADR.INF: there is no address file\n"
              "# AMVLXHBI.INF: there is no heart-beat file\n");
}

TEST_F(ShowTest, JsonHoldsFilesAndFindings) {
    DiskFiles files = Japanese();
    files.heartbeat = "[HEART-BEAT-INT]\r\n0\r\n";
    const Result shown = Show(files, {"--json"}, {.variables = {{"LC_ALL", "C"}}});
    EXPECT_EQ(shown.errors, "");
    const json expected = {
        {"files",
         {{{"file", "AMVLXUSR.INF"}, {"present", true}, {"lines", {"[部署名]", "情報部 ｱﾞ"}}},
          {{"file", "AMVLXADR.INF"}, {"present", true}, {"lines", {"[メールアドレス]", "a@b"}}},
          {{"file", "AMVLXHBI.INF"}, {"present", true}, {"lines", {"[HEART-BEAT-INT]", "0"}}}}},
        {"findings",
         {{{"severity", "note"},
           {"file", "AMVLXHBI.INF"},
           {"line", 2},
           {"text", "the interval 0 becomes 1"}}}}};
    EXPECT_EQ(json::parse(shown.output), expected);
}

TEST_F(ShowTest, ShowsImages) {
    WriteDisk(folder_, Japanese());
    const Result shown = Veloxctl({"keydisk", "show", "--lang", "ja", Image()});
    EXPECT_EQ(shown.errors, "");
    EXPECT_EQ(shown.output, kJapaneseShown);
}

TEST_F(ShowTest, FindsNamesOfAnyCaseOnImages) {
    WriteDisk(folder_, Japanese());
    const std::string image = Image(
        "mcopy -i \"$1\" \"$2\"/AMVLXUSR.INF ::amvlxusr.inf && "
        "mcopy -i \"$1\" \"$2\"/AMVLXADR.INF ::Amvlxadr.Inf");
    EXPECT_EQ(Veloxctl({"keydisk", "show", "--lang", "ja", image}).output, kJapaneseShown);
}

TEST_F(ShowTest, FolderInAFilesPlaceOfAnImageIsTold) {
    WriteDisk(folder_, Japanese());
    const std::string image = Image(
        "mcopy -i \"$1\" \"$2\"/AMVLXADR.INF :: && "
        "mmd -i \"$1\" ::AMVLXUSR.INF");
    const Result shown = Veloxctl({"keydisk", "show", "--lang", "ja", image});
    EXPECT_EQ(shown.status, EX_DATAERR);
    EXPECT_EQ(shown.errors, "veloxctl: AMVLXUSR.INF: refused: it is no regular file\n");
}

TEST_F(ShowTest, EmptyImageIsTold) {
    const Result shown = Veloxctl({"keydisk", "show", Image("true")});
    EXPECT_EQ(shown.status, EX_DATAERR);
    EXPECT_EQ(shown.errors,
              "veloxctl: AMVLXUSR.INF: refused: the file is missing\n"
              "veloxctl: AMVLXADR.INF: refused: the file is missing\n");
}

TEST_F(ShowTest, WhatIsNoDiskIsTold) {
    const std::string pipe = images_ / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::string huge = images_.Write("huge", "");
    std::filesystem::resize_file(huge, std::uintmax_t{1} << 40);
    struct {
        std::string disk;
        int status;
        std::string message;
    } const rows[] = {
        {images_ / "nothing", EX_NOINPUT, "No such file or directory"},
        {images_.Write("rubbish", std::string(100000, 'x')), EX_DATAERR, ""},
        {images_.Write("empty", ""), EX_DATAERR, ""},
        {pipe, EX_DATAERR, "it is neither a folder nor an image of a disk"},
        {huge, EX_DATAERR, "larger than 64 MiB, so no image of a floppy disk"},
    };
    for (const auto &row : rows) {
        const Result shown = Veloxctl({"keydisk", "show", row.disk});
        EXPECT_EQ(shown.status, row.status) << row.disk;
        EXPECT_EQ(shown.output, "");
        EXPECT_THAT(shown.errors, HasSubstr("veloxctl: " + row.disk + ": " + row.message));
    }
}

// Bytes of an image's administration changed at many places: an answer every time, never a hang.
TEST_F(ShowTest, DamagedImagesEndWithAnAnswer) {
    WriteDisk(folder_, Japanese());
    const std::string image = Image();
    const std::string whole = test_support::ReadWholeFile(image);
    for (const std::size_t at : {11U, 13U, 14U, 16U, 17U, 19U, 22U, 24U, 512U, 515U, 518U, 5120U,
                                 9728U, 9728U + 26U, 9728U + 28U, 9728U + 32U}) {
        std::string damaged = whole;
        damaged.replace(at, 4, "\xFF\x0F\xF1\x7F");
        const Result shown = Veloxctl({"keydisk", "show", images_.Write("damaged", damaged)});
        EXPECT_TRUE(shown.status == 0 || shown.status == EX_DATAERR) << at << shown.errors;
    }
    const std::string cut = images_.Write("cut", whole.substr(0, 9728));
    EXPECT_EQ(Veloxctl({"keydisk", "show", cut}).status, EX_DATAERR);
}

}  // namespace
}  // namespace veloxctl_test
