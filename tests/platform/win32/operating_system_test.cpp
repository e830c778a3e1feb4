// Which file decides the system's language and names its distribution.
#include "operating_system.h"

#include <gtest/gtest.h>
#include <ntwin32/system.h>
#include <support/temp_folder.h>
#include <support/title.h>

#include <filesystem>
#include <utility>
#include <vector>

namespace {

using Files = std::vector<std::pair<std::string, std::string>>;

// A root folder with some files below it.
class Root {
  public:
    explicit Root(const Files &files) {
        for (const auto &[name, content] : files) {
            const std::filesystem::path path = folder_ / name;
            std::filesystem::create_directories(path.parent_path());
            folder_.Write(name, content);
        }
    }
    const std::string &Path() const { return folder_.Path(); }

  private:
    test_support::TempFolder folder_;
};

struct LanguageCase {
    const char *title;
    const char *variable;
    Files files;
    std::string setting;
    LANGID id;
    std::string locale;
};

class Language : public testing::TestWithParam<LanguageCase> {};

TEST_P(Language, ComesFromTheFirstPlaceThatNamesIt) {
    const LanguageCase &row = GetParam();
    const Root root(row.files);
    const std::string setting = win32::LanguageSetting(row.variable, root.Path());
    EXPECT_EQ(setting, row.setting);
    EXPECT_EQ(win32::LanguageIdOf(setting), row.id);
    EXPECT_EQ(win32::LocaleNameOf(setting), row.locale);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Language,
    testing::Values(LanguageCase{"Nothing", nullptr, {}, "en_US", 1033, "en_US"},
                    LanguageCase{"Variable", "ja", {}, "ja", 1041, "ja_JP.eucJP"},
                    LanguageCase{"VariableBeforeFiles",
                                 "en_GB.UTF-8",
                                 {{"etc/locale.conf", "LANG=ja_JP.UTF-8\n"}},
                                 "en_GB.UTF-8",
                                 1033,
                                 "en_GB.UTF-8"},
                    LanguageCase{"EmptyVariable",
                                 "",
                                 {{"etc/locale.conf", "LANG=ja_JP.UTF-8\n"}},
                                 "ja_JP.UTF-8",
                                 1041,
                                 "ja_JP.eucJP"},
                    LanguageCase{"LocaleConf",
                                 nullptr,
                                 {{"etc/locale.conf", "LANG=\"ja_JP.SJIS\"\n"},
                                  {"etc/default/locale", "LANG=de_DE\n"}},
                                 "ja_JP.SJIS",
                                 1041,
                                 "ja_JP.eucJP"},
                    LanguageCase{"DefaultLocale",
                                 nullptr,
                                 {{"etc/default/locale", "# comment\nLANG=de_DE.UTF-8\n"}},
                                 "de_DE.UTF-8",
                                 1033,
                                 "de_DE.UTF-8"},
                    LanguageCase{"LocaleConfWithoutLang",
                                 nullptr,
                                 {{"etc/locale.conf", "LC_TIME=de_DE\n"},
                                  {"etc/default/locale", "LANG=ja_JP.eucJP\n"}},
                                 "ja_JP.eucJP",
                                 1041,
                                 "ja_JP.eucJP"},
                    LanguageCase{
                        "LocaleConfWithEmptyLang",
                        nullptr,
                        {{"etc/locale.conf", "LANG=\n"}, {"etc/default/locale", "LANG=C.UTF-8\n"}},
                        "C.UTF-8",
                        1033,
                        "C.UTF-8"},
                    LanguageCase{"OtherLanguage", "jv_ID", {}, "jv_ID", 1033, "jv_ID"},
                    LanguageCase{"JapaneseInsideAName", "xja", {}, "xja", 1033, "xja"}),
    test_support::Title());

struct DistributionCase {
    const char *title;
    Files files;
    std::string line;
};

class Distribution : public testing::TestWithParam<DistributionCase> {};

TEST_P(Distribution, IsOneLine) {
    const Root root(GetParam().files);
    EXPECT_EQ(win32::DistributionLine(root.Path()), GetParam().line);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Distribution,
    testing::Values(
        DistributionCase{"None", {}, ""},
        DistributionCase{"RedHat",
                         {{"etc/redhat-release", "Red Hat Linux release 7.3 (Valhalla)\nmore\n"},
                          {"etc/os-release", "PRETTY_NAME=\"Other\"\n"}},
                         "Red Hat Linux release 7.3 (Valhalla)"},
        DistributionCase{"Turbo",
                         {{"etc/turbolinux-release", "release 8 Turbolinux Server 8\n"},
                          {"etc/redhat-release", "Red Hat compatible\n"}},
                         "release 8 Turbolinux Server 8"},
        DistributionCase{"Miracle",
                         {{"etc/miraclelinux-release", "Miracle Linux release 3.0\n"}},
                         "Miracle Linux release 3.0"},
        DistributionCase{"EmptyReleaseFile",
                         {{"etc/redhat-release", "\n"}, {"etc/SuSE-release", "SuSE Linux 9\n"}},
                         "SuSE Linux 9"},
        DistributionCase{"PrettyName",
                         {{"etc/os-release",
                           "NAME=\"Debian\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"}},
                         "Debian GNU/Linux 12 (bookworm)"},
        DistributionCase{"PrettyNameOfTheVendor",
                         {{"usr/lib/os-release", "PRETTY_NAME='Fedora Linux 40'\n"}},
                         "Fedora Linux 40"},
        DistributionCase{"NoPrettyName", {{"etc/os-release", "NAME=Debian\n"}}, ""}),
    test_support::Title());

}  // namespace
