// Assignments in the operating system's settings files, read as a shell reads them.
#include "settings_file.h"

#include <gtest/gtest.h>
#include <support/temp_folder.h>
#include <support/title.h>
#include <sys/stat.h>

#include <filesystem>

namespace {

using win32::FindAssignment;
using win32::FirstLine;
using win32::ReadSettingsFile;

constexpr char kNone[] = "(none)";

struct AssignmentCase {
    const char *title;
    std::string content;
    std::string value;
};

class Assignment : public testing::TestWithParam<AssignmentCase> {};

TEST_P(Assignment, IsReadAsAShellDoes) {
    EXPECT_EQ(FindAssignment(GetParam().content, "LANG").value_or(kNone), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Assignment,
    testing::Values(AssignmentCase{"Bare", "LANG=ja_JP.UTF-8\n", "ja_JP.UTF-8"},
                    AssignmentCase{"WithoutLineEnd", "LANG=ja_JP.UTF-8", "ja_JP.UTF-8"},
                    AssignmentCase{"DoubleQuoted", "LANG=\"ja_JP.UTF-8\"\n", "ja_JP.UTF-8"},
                    AssignmentCase{"SingleQuoted", "LANG='ja_JP.UTF-8'\n", "ja_JP.UTF-8"},
                    AssignmentCase{"InPieces", "LANG=ja\"_\"'JP'.UTF\\-8\n", "ja_JP.UTF-8"},
                    AssignmentCase{"Exported", "export LANG=de_DE\n", "de_DE"},
                    AssignmentCase{"ExportedWithTab", " \texport\t LANG=de_DE\n", "de_DE"},
                    AssignmentCase{"NotExported", "exportLANG=de_DE\n", kNone},
                    AssignmentCase{"Indented", "  LANG=de_DE\n", "de_DE"},
                    AssignmentCase{"CarriageReturn", "LANG=de_DE\r\n", "de_DE"},
                    AssignmentCase{"CarriageReturnAfterQuote", "LANG=\"de_DE\"\r\n", "de_DE"},
                    AssignmentCase{"Empty", "LANG=\n", ""},
                    AssignmentCase{"EmptyQuotes", "LANG=\"\"\n", ""},
                    AssignmentCase{"LastOneWins", "LANG=de_DE\nLANG=fr_FR\n", "fr_FR"},
                    AssignmentCase{"BadOneDoesNotWin", "LANG=de_DE\nLANG=\"fr_FR\n", "de_DE"},
                    AssignmentCase{"OtherNames", "LANGUAGE=de\nXLANG=fr\nLC_LANG=it\n", kNone},
                    AssignmentCase{"Comment", "#LANG=de_DE\n # LANG=fr_FR\n", kNone},
                    AssignmentCase{"CommentBehind", "LANG=de_DE # German\n", "de_DE"},
                    AssignmentCase{"HashInside", "LANG=de#DE\n", "de#DE"},
                    AssignmentCase{"Semicolon", "LANG=de_DE; export LANG\n", "de_DE"},
                    AssignmentCase{"SecondWord", "LANG=de_DE locale\n", kNone},
                    AssignmentCase{"BlankBeforeSign", "LANG =de_DE\n", kNone},
                    AssignmentCase{"BlankAfterSign", "LANG= de_DE\n", kNone},
                    AssignmentCase{"OpenDoubleQuote", "LANG=\"de_DE\n", kNone},
                    AssignmentCase{"OpenSingleQuote", "LANG='de_DE\n", kNone},
                    AssignmentCase{"OpenEscape", "LANG=de_DE\\", kNone},
                    AssignmentCase{"EscapesInDoubleQuotes", "LANG=\"a\\\"b\\\\c\\$d\\`e\\f\"\n",
                                   "a\"b\\c$d`e\\f"},
                    AssignmentCase{"OpenEscapeInDoubleQuotes", "LANG=\"a\\", kNone},
                    AssignmentCase{"NothingEscapedInSingleQuotes", "LANG='a\\b$c'\n", "a\\b$c"},
                    AssignmentCase{"NoContent", "", kNone},
                    AssignmentCase{"NameAlone", "LANG", kNone},
                    AssignmentCase{"ZeroBytes", std::string("\0LANG=x\n\0", 9), kNone}),
    test_support::Title());

TEST(FirstLine, EndsBeforeTrailingBlanks) {
    EXPECT_EQ(FirstLine("one\ntwo\n"), "one");
    EXPECT_EQ(FirstLine("one"), "one");
    EXPECT_EQ(FirstLine(" one \t\r\ntwo"), " one");
    EXPECT_EQ(FirstLine(" \t\r\n"), "");
    EXPECT_EQ(FirstLine("\ntwo"), "");
    EXPECT_EQ(FirstLine(""), "");
}

TEST(SettingsFile, IsReadThroughALink) {
    const test_support::TempFolder folder;
    std::filesystem::create_symlink(folder.Write("real", "LANG=C\n"), folder / "link");
    EXPECT_EQ(ReadSettingsFile(folder / "link"), "LANG=C\n");
}

TEST(SettingsFile, IsReadToItsFirst64Kibibytes) {
    const test_support::TempFolder folder;
    const std::string path = folder.Write("large", std::string(70000, 'x'));
    EXPECT_EQ(ReadSettingsFile(path), std::string(65536, 'x'));
}

TEST(SettingsFile, IsEmptyWhenItCannotBeRead) {
    const test_support::TempFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(ReadSettingsFile(folder / "missing"), "");
    EXPECT_EQ(ReadSettingsFile(folder / "pipe"), "");
    EXPECT_EQ(ReadSettingsFile(folder.Path()), "");
    EXPECT_EQ(ReadSettingsFile("/dev/zero"), "");
}

}  // namespace
