// "veloxctl keydisk template" and "create": the disks they make, taken by the import itself.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sysexits.h>
#include <unistd.h>

#include <filesystem>

#include "disk_folder.h"
#include "real_import.h"
#include "reg_fixture.h"
#include "support/title.h"

namespace veloxctl_test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

class CreateTest : public RegTest {
  protected:
    void SetUp() override {
        Import(
            "[-HKLM\\SOFTWARE\\XEV\\VLXService]\n"
            "[HKLM\\SOFTWARE\\XEV\\VLXService\\HEARTBEAT]\n"
            "[HKLM\\SOFTWARE\\XEV\\VLXService\\SETTING]\n"
            "[HKLM\\SOFTWARE\\XEV\\VLXService\\SETUP]\n\"VERSION\"=\"3.1\"\n");
    }

    // The names of the files of a folder.
    static std::vector<std::string> Names(const std::string &folder) {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(folder)) {
            names.push_back(entry.path().filename());
        }
        std::ranges::sort(names);
        return names;
    }

    Result Create(const std::string &form, std::vector<std::string> options) const {
        options.insert(options.begin(), {"keydisk", "create", folder_.Write("form", form)});
        return Veloxctl(options);
    }

    test_support::TempFolder folder_;
};

// The files of an image, read by another program.
void Unpack(const std::string &image, const std::string &folder) {
    std::filesystem::create_directories(folder);
    const Result result =
        Veloxctl({"-c", "mcopy -n -i \"$1\" '::*' \"$2\"", "-", image, folder},
                 {.variables = {{"MTOOLSRC", "/dev/null"}}, .program = "/bin/sh"});
    ASSERT_EQ(result.status, 0) << result.errors;
}

// The values of a key as .reg lines, with this machine's name as HOST and its system as OS.
std::string Values(const std::string &key) {
    std::string text = Veloxctl({"reg", "export", "SOFTWARE\\XEV\\VLXService\\" + key}).output;
    std::erase(text, '\r');
    text.erase(0, text.find("]\n") + 2);
    char host[256] = {};
    ::gethostname(host, sizeof(host) - 1);
    const std::string name = "\"SYSNMN\"=\"" + std::string(host) + "\"";
    if (const std::size_t at = text.find(name); at != std::string::npos) {
        text.replace(at, name.size(), "\"SYSNMN\"=HOST");
    }
    if (const std::size_t at = text.find("3.1/LINUX"); at != std::string::npos) {
        text.replace(at, text.find('"', at) - at, "3.1/OS");
    }
    return text;
}

struct ImportedTemplate {
    const char *title;
    std::string setting;
};

class TemplateTest : public CreateTest, public testing::WithParamInterface<ImportedTemplate> {};

constexpr char kSetup[] =
    "\"VERSION\"=\"3.1/OS\"\n\"MailAdrs\"=\"report@center.example\"\n"
    "\"PhoneNo\"=\"03-5555-0400\"\n\"ErrorReply\"=\"error@customer.example\"\n\n";

TEST_P(TemplateTest, MakesADiskThatTheImportTakes) {
    const std::string language = GetParam().title;
    const Result form = Veloxctl({"keydisk", "template", "--lang", language});
    ASSERT_EQ(form.status, 0) << form.errors;
    const Result made =
        Veloxctl({"keydisk", "create", "-", "-o", folder_ / "disk/"}, {.input = form.output});
    EXPECT_EQ(made.status, 0);
    EXPECT_EQ(made.output + made.errors, "");
    EXPECT_EQ(ImportStatus(folder_ / "disk", language), 1);
    EXPECT_EQ(Values("SETTING"), GetParam().setting);
    EXPECT_EQ(Values("SETUP"), kSetup);
    EXPECT_EQ(Values("HEARTBEAT"), "\"HBINTERVAL\"=dword:0000000a\n\n");
}

TEST_P(TemplateTest, MakesAnImageWithTheSameFiles) {
    const std::string language = GetParam().title;
    const std::string form = Veloxctl({"keydisk", "template", "--lang", language}).output;
    EXPECT_EQ(Create(form, {"-o", folder_ / "disk/"}).errors, "");
    EXPECT_EQ(Create(form, {"-o", folder_ / "disk.img"}).errors, "");
    EXPECT_EQ(std::filesystem::file_size(folder_ / "disk.img"), 1474560U);
    Unpack(folder_ / "disk.img", folder_ / "unpacked");
    EXPECT_EQ(Names(folder_ / "unpacked"),
              (std::vector<std::string>{kAddressFile, kHeartbeatFile, kCustomerFile}));
    for (const std::string &name : Names(folder_ / "unpacked")) {
        EXPECT_EQ(test_support::ReadWholeFile(folder_ / ("unpacked/" + name)),
                  test_support::ReadWholeFile(folder_ / ("disk/" + name)));
    }
    const Result shown = Veloxctl({"keydisk", "show", "--lang", language, folder_ / "disk.img"});
    EXPECT_EQ(shown.errors, "");
    // What is shown is a form again, and makes the same disk.
    EXPECT_EQ(Create(shown.output, {"-o", folder_ / "again/"}).errors, "");
    EXPECT_EQ(test_support::ReadWholeFile(folder_ / "again/AMVLXUSR.INF"),
              test_support::ReadWholeFile(folder_ / "disk/AMVLXUSR.INF"));
}

const ImportedTemplate kTemplates[] = {
    {"en",
     "\"KAISHAKBN\"=dword:00000001\n\"TOKUINMA\"=\"EXAMPLE TRADING CO.\"\n"
     "\"BUNMN\"=\"INFORMATION SYSTEMS\"\n\"ZIPNO\"=\"100-0001\"\n"
     "\"ADRSNMA\"=\"1-1 CHIYODA, TOKYO\"\n\"BUTEL\"=\"03-5555-0100\"\n"
     "\"MAIL\"=\"systems@customer.example\"\n\"BUTANNMA\"=\"TARO YAMADA\"\n"
     "\"USERCODE\"=\"C0001234\"\n\"SYSNMN\"=HOST\n\"SOCHICD\"=\"N8100-0001\"\n"
     "\"SYSGOKI\"=\"0000001\"\n\"GUARANTEE\"=\"G-0000001\"\n\"OSNMA\"=\"LINUX\"\n"
     "\"OSREV\"=\"3.1\"\n\"OPTCD01\"=\"N8102-0001\"\n\"SYSSHOPNMN\"=\"EXAMPLE DEALER\"\n"
     "\"SYSEIGYOBUNMN\"=\"TOKYO OFFICE\"\n\"SYSEIGYONMN\"=\"HANAKO SATO\"\n"
     "\"SYSEIGYOTEL\"=\"03-5555-0200\"\n\"SYSSEBU\"=\"TOKYO SUPPORT CENTER\"\n"
     "\"SYSSENMN\"=\"JIRO SUZUKI\"\n\"SYSSETEL\"=\"03-5555-0300\"\n"
     "\"OPTCDN\"=dword:00000001\n\n"},
    {"ja",
     "\"KAISHAKBN\"=dword:00000001\n\"TOKUINMA\"=\"カブシキガイシャ レイショウジ\"\n"
     "\"TOKUINMN\"=\"株式会社例商事\"\n\"BUNMN\"=\"情報システム部\"\n\"ZIPNO\"=\"100-0001\"\n"
     "\"ADRSNMA\"=\"トウキョウト チヨダク チヨダ\"\n\"ADRSNMN\"=\"東京都千代田区千代田\"\n"
     "\"SHOZAINMN\"=\"１－１ 例ビル３階\"\n\"BUTEL\"=\"03-5555-0100\"\n"
     "\"MAIL\"=\"systems@customer.example\"\n\"BUTANNMA\"=\"ヤマダ タロウ\"\n"
     "\"BUTANNMN\"=\"山田 太郎\"\n\"USERCODE\"=\"C0001234\"\n\"SYSNMN\"=HOST\n"
     "\"SOCHICD\"=\"N8100-0001\"\n\"SYSGOKI\"=\"0000001\"\n\"GUARANTEE\"=\"G-0000001\"\n"
     "\"OSNMA\"=\"LINUX\"\n\"OSREV\"=\"3.1\"\n\"OPTCD01\"=\"N8102-0001\"\n"
     "\"SYSSHOPNMN\"=\"例販売株式会社\"\n\"SYSEIGYOBUNMN\"=\"東京営業所\"\n"
     "\"SYSEIGYONMN\"=\"佐藤 花子\"\n\"SYSEIGYOTEL\"=\"03-5555-0200\"\n"
     "\"SYSSEBU\"=\"東京サポートセンター\"\n\"SYSSENMN\"=\"鈴木 次郎\"\n"
     "\"SYSSETEL\"=\"03-5555-0300\"\n\"OPTCDN\"=dword:00000001\n\n"},
};
INSTANTIATE_TEST_SUITE_P(Languages, TemplateTest, testing::ValuesIn(kTemplates),
                         test_support::Title());

TEST_F(CreateTest, TemplateFollowsTheSystemsLanguage) {
    const std::string japanese = Veloxctl({"keydisk", "template", "--lang", "ja"}).output;
    EXPECT_THAT(japanese, HasSubstr("[お客様名称(カナ)]"));
    EXPECT_EQ(Veloxctl({"keydisk", "template"}, {.variables = {{"KES_LANG", "ja_JP"}}}).output,
              japanese);
    EXPECT_EQ(Veloxctl({"keydisk", "template"}, {.variables = {{"KES_LANG", "de"}}}).output,
              Veloxctl({"keydisk", "template", "--lang", "en"}).output);
}

constexpr char kForm[] =
    "%customer\n[USER-NAME]\nX\n%address\n[E-MAIL]\na@b.example\n%heartbeat\n"
    "[HEART-BEAT-INT]\n10\n";

// What a form means, byte by byte.
struct Written {
    const char *title;
    std::string form;
    std::string customer;
    std::string address;
};

class FormTest : public CreateTest, public testing::WithParamInterface<Written> {};

TEST_P(FormTest, BecomesTheseBytes) {
    const Result made = Create(GetParam().form, {"-o", folder_ / "disk/", "--unchecked"});
    EXPECT_EQ(made.status, 0) << made.errors;
    EXPECT_EQ(test_support::ReadWholeFile(folder_ / "disk/AMVLXUSR.INF"),
              GetParam().customer.empty() ? "" : Encoded(GetParam().customer));
    EXPECT_EQ(test_support::ReadWholeFile(folder_ / "disk/AMVLXADR.INF"), GetParam().address);
}

const Written kWritten[] = {
    {"Lines", kForm, "[USER-NAME]\r\nX\r\n", "[E-MAIL]\r\na@b.example\r\n"},
    {"CarriageReturns", "%address\r\n[E-MAIL]\r\na@b\r\n", "", "[E-MAIL]\r\na@b\r\n"},
    {"Mark", "\xEF\xBB\xBF%address\n[E-MAIL]\n", "", "[E-MAIL]\r\n"},
    {"NoLastLineEnd", "%address\n[E-MAIL]\na@b", "", "[E-MAIL]\r\na@b\r\n"},
    {"CommentsAndEmptyLines", "# c\n\n%address \t\n# [PHONENO]\n\n[E-MAIL]\n #a\n", "",
     "[E-MAIL]\r\n #a\r\n"},
    {"Escapes", "%address\n\\#\n\\%x\n\\\na\\\\b\\x00\\xfe\\u65e5\n", "",
     std::string("#\r\n%x\r\n\r\na\\b\0\xFE\x93\xFA\r\n", 18)},
    {"HalfWidthKatakana", "%address\nｱﾞ\n", "", "\xB1\xDE\r\n"},
    {"SignsOfTheVendor", "%address\n①髙\n", "", "\x87\x40\xFB\xFC\r\n"},
    {"LongLine", "%address\n" + std::string(3000, 'x') + "\n", "", std::string(3000, 'x') + "\r\n"},
    {"EmptyPart", "%address\n", "", ""},
};
INSTANTIATE_TEST_SUITE_P(Forms, FormTest, testing::ValuesIn(kWritten), test_support::Title());

TEST_F(CreateTest, FileWithoutSectionIsNotMade) {
    EXPECT_EQ(Create("%customer\n[USER-NAME]\nX\n%address\n", {"-o", folder_ / "disk/"}).status, 0);
    EXPECT_EQ(Names(folder_ / "disk"), (std::vector<std::string>{kAddressFile, kCustomerFile}));
}

TEST_F(CreateTest, FilesAreTheOwnersAlone) {
    EXPECT_EQ(Create(kForm, {"-o", folder_ / "disk/"}).status, 0);
    EXPECT_EQ(Create(kForm, {"-o", folder_ / "image"}).status, 0);
    for (const char *name : {"disk/AMVLXUSR.INF", "disk/AMVLXADR.INF", "image"}) {
        struct stat status = {};
        ASSERT_EQ(::stat((folder_ / name).c_str(), &status), 0) << name;
        EXPECT_EQ(status.st_mode & 07777U, 0600U) << name;
    }
}

// A form that is refused: nothing is made, and the message names the place.
struct Refused {
    const char *title;
    std::string form;
    std::string message;
};

class RefusedFormTest : public CreateTest, public testing::WithParamInterface<Refused> {};

TEST_P(RefusedFormTest, NamesThePlace) {
    const Result result = Create(GetParam().form, {"-o", folder_ / "disk/"});
    EXPECT_EQ(result.status, EX_DATAERR);
    EXPECT_EQ(result.errors, "veloxctl: " + (folder_ / "form") + GetParam().message + "\n");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "disk"));
}

const Refused kRefused[] = {
    {"NoSection", "# x\n[USER-NAME]\n",
     ":2:1: a section (%customer, %address or %heartbeat) must come first"},
    {"UnknownSection", "%customers\n",
     ":1:1: unknown section; there are %customer, %address and %heartbeat"},
    {"SectionTwice", "%address\n%customer\n%address\n",
     ":3:1: the section stands here a second time"},
    {"NotUtf8", "%address\n日本\x93\n", ":2:3: the bytes are not UTF-8"},
    {"NoSuchCharacter", "%address\nx한\n", ":2:2: Shift-JIS lacks the character U+D55C"},
    {"NoSuchEscapedCharacter", "%address\nxx\\ud55c\n",
     ":2:3: Shift-JIS lacks the character \\ud55c"},
    {"UnknownEscape", "%address\n日\\q\n",
     ":2:2: unknown escape; a backslash itself is written twice"},
    {"CutEscape", "%address\n\\x4\n", ":2:1: unknown escape; a backslash itself is written twice"},
    {"EscapeWithOtherDigits", "%address\n\\x4g\n",
     ":2:1: unknown escape; a backslash itself is written twice"},
};
INSTANTIATE_TEST_SUITE_P(Forms, RefusedFormTest, testing::ValuesIn(kRefused),
                         test_support::Title());

TEST_F(CreateTest, DiskThatTheImportRefusesIsNotMade) {
    const std::string form = "%customer\n# c\n[USER-NAME]\nX\n\n[USERNAME]\n%address\n";
    const Result result = Create(form, {"-o", folder_ / "disk/"});
    EXPECT_EQ(result.status, EX_DATAERR);
    EXPECT_EQ(result.errors,
              "veloxctl: " + (folder_ / "form") + ":6: refused: unknown item: [USERNAME]\n" +
                  "veloxctl: " + (folder_ / "form") +
                  ": %address: note: there is no mail address; unless the registry holds one the "
                  "set-up ends with 0\n" +
                  "veloxctl: " + (folder_ / "form") +
                  ": no disk was made, since the import would refuse it\n");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "disk"));
    EXPECT_EQ(Create(form, {"-o", folder_ / "disk/", "--unchecked"}).errors, "");
    EXPECT_EQ(ImportStatus(folder_ / "disk", "en"), 200);
}

TEST_F(CreateTest, LanguageOfTheImportIsTheItemsOrTheOptions) {
    const std::string form = "%customer\n[部署名]\nX\n%address\n[メールアドレス]\na@b.example\n";
    EXPECT_EQ(Create(form, {"-o", folder_ / "disk/"}).errors, "");
    EXPECT_EQ(ImportStatus(folder_ / "disk", "ja"), 1);
    EXPECT_THAT(Create(form, {"-o", folder_ / "other/", "--lang", "en"}).errors,
                HasSubstr(":2: refused: [部署名] is an item of a disk in the other language"));
}

TEST_F(CreateTest, ExistingFilesAreReplacedOnlyWhenAsked) {
    std::filesystem::create_directory(folder_ / "disk");
    EXPECT_EQ(Create(kForm, {"-o", folder_ / "disk"}).errors, "");
    const std::string other = "%customer\n[USER-NAME]\nY\n%address\n[E-MAIL]\nc@d.example\n";
    const Result refused = Create(other, {"-o", folder_ / "disk"});
    EXPECT_EQ(refused.status, EX_CANTCREAT);
    EXPECT_EQ(refused.errors,
              "veloxctl: " + (folder_ / "disk/AMVLXUSR.INF") + ": it exists; -f replaces it\n");
    EXPECT_EQ(test_support::ReadWholeFile(folder_ / "disk/AMVLXUSR.INF"),
              Encoded("[USER-NAME]\r\nX\r\n"));
    EXPECT_EQ(Create(other, {"-f", "-o", folder_ / "disk"}).errors, "");
    EXPECT_EQ(test_support::ReadWholeFile(folder_ / "disk/AMVLXUSR.INF"),
              Encoded("[USER-NAME]\r\nY\r\n"));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "disk/AMVLXHBI.INF"));
    EXPECT_EQ(Create(kForm, {"-o", folder_ / "image"}).errors, "");
    EXPECT_EQ(Create(kForm, {"-o", folder_ / "image"}).status, EX_CANTCREAT);
    EXPECT_EQ(Create(kForm, {"-f", "-o", folder_ / "image"}).errors, "");
}

TEST_F(CreateTest, FileThatTheFormLacksIsNotRemovedUnasked) {
    std::filesystem::create_directory(folder_ / "disk");
    EXPECT_EQ(folder_.Write("disk/AMVLXHBI.INF", "kept"), folder_ / "disk/AMVLXHBI.INF");
    const Result result =
        Create("%customer\n[USER-NAME]\nX\n%address\n[E-MAIL]\na@b\n", {"-o", folder_ / "disk"});
    EXPECT_EQ(result.status, EX_CANTCREAT);
    EXPECT_THAT(result.errors, EndsWith("disk/AMVLXHBI.INF: it exists and the form has no such "
                                        "file; -f removes it\n"));
    EXPECT_EQ(Names(folder_ / "disk"), std::vector<std::string>{kHeartbeatFile});
}

TEST_F(CreateTest, PlacesThatCannotBeUsedAreTold) {
    EXPECT_EQ(Create(kForm, {}).errors, "veloxctl: keydisk create: --output is missing\n");
    EXPECT_EQ(Create(kForm, {"-o", folder_ / "no/such/"}).status, EX_NOINPUT);
    EXPECT_EQ(Create(kForm, {"-o", folder_ / "no/image"}).status, EX_NOINPUT);
    const Result missing = Veloxctl({"keydisk", "create", folder_ / "nothing", "-o", "x"});
    EXPECT_EQ(missing.status, EX_NOINPUT);
    EXPECT_EQ(missing.errors,
              "veloxctl: " + (folder_ / "nothing") + ": No such file or directory\n");
}

TEST_F(CreateTest, FormThatFitsNoFloppyDiskIsTold) {
    std::string form = "%customer\n[USER-NAME]\nX\n%address\n[E-MAIL]\na@b\n[PHONENO]\n";
    for (int i = 0; i < 1600; ++i) {
        form += std::string(1000, '1') + "\n";
    }
    const Result result = Create(form, {"--unchecked", "-o", folder_ / "image"});
    EXPECT_EQ(result.status, EX_CANTCREAT);
    EXPECT_THAT(result.errors, HasSubstr("Disk full"));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "image"));
}

}  // namespace
}  // namespace veloxctl_test
