// "veloxctl keydisk show": what it says of disks that the import would not take as they look. Every
// verdict is compared with the import itself.
#include <sys/stat.h>
#include <sysexits.h>
#include <unistd.h>

#include "command.h"
#include "disk_folder.h"
#include "real_import.h"
#include "reg_fixture.h"
#include "support/title.h"

namespace veloxctl_test {
namespace {

constexpr int kImportFailed = 200;

struct Verdict {
    const char *title;
    DiskFiles files;
    std::string language = "en";
    // Behind "veloxctl: AMVLX", a line each.
    std::string errors;
};

std::string WithNames(const std::string &lines) {
    std::string named;
    for (std::size_t start = 0; start < lines.size();) {
        const std::size_t end = lines.find('\n', start) + 1;
        named += "veloxctl: AMVLX" + lines.substr(start, end - start);
        start = end;
    }
    return named;
}

// The command refuses what the import refuses.
void ExpectAgreement(const Result &shown, const std::string &folder, const std::string &language) {
    const int imported = ImportStatus(folder, language);
    EXPECT_EQ(shown.status == EX_DATAERR, imported == kImportFailed)
        << "show ends with " << shown.status << ", the import with " << imported;
    EXPECT_TRUE(imported == kImportFailed || imported == 0 || imported == 1) << imported;
}

class CheckTest : public RegTest, public testing::WithParamInterface<Verdict> {
  protected:
    test_support::TempFolder folder_;
};

TEST_P(CheckTest, TellsWhatTheImportDoes) {
    WriteDisk(folder_, GetParam().files);
    const Result shown =
        Veloxctl({"keydisk", "show", "--lang", GetParam().language, folder_.Path()});
    EXPECT_EQ(shown.errors, WithNames(GetParam().errors));
    EXPECT_EQ(shown.status == EX_DATAERR, shown.errors.find(": refused: ") != std::string::npos);
    ExpectAgreement(shown, folder_.Path(), GetParam().language);
}

DiskFiles Customer(const std::string &text) {
    return {.customer = Encoded(text)};
}
DiskFiles Address(const std::string &text) {
    return {.address = text};
}
DiskFiles Heartbeat(const std::string &text) {
    return {.heartbeat = text};
}

const Verdict kCustomerVerdicts[] = {
    {"Plain", {}, "en", ""},
    {"Missing", {.customer = std::nullopt}, "en", "USR.INF: refused: the file is missing\n"},
    {"NotEncoded",
     {.customer = "[USER-NAME]\r\nX\r\n"},
     "en",
     "USR.INF: refused: the uuencoded text is damaged or incomplete\n"},
    {"EncodingCutOff",
     {.customer = Encoded("[USER-NAME]\r\nX\r\n").substr(0, 30)},
     "en",
     "USR.INF: refused: the uuencoded text is damaged or incomplete\n"},
    {"EncodingWithMoreBehind",
     {.customer = Encoded("[USER-NAME]\r\nX\r\n") + "more\n"},
     "en",
     "USR.INF: refused: the uuencoded text is damaged or incomplete\n"},
    {"TooLarge",
     {.customer = Encoded("[USER-NAME]\r\nX\r\n") + std::string(0x400001, '\n')},
     "en",
     "USR.INF: refused: it is larger than 4 MiB\n"},
    {"NoShiftJis", Customer("[USER-NAME]\r\nX\x81\x20\r\n"), "en",
     "USR.INF:2: refused: the text is not Shift-JIS: \\x81\n"},
    {"ZeroByte", Customer(std::string("[USER-NAME]\r\nX\r\n\0[OS-NAME]\r\nY\r\n", 31)), "en",
     "USR.INF:3: not imported: what follows the zero byte is not imported\n"},
    {"Empty", Customer(""), "en", "USR.INF:1: refused: the text has no line end\n"},
    {"EmptyFirstLine", Customer("\r\n[USER-NAME]\r\nX\r\n"), "en",
     "USR.INF:1: refused: the text begins with an empty line\n"},
    {"ValueFirst", Customer("X\r\n[USER-NAME]\r\n"), "en",
     "USR.INF:1: refused: a value stands before the first item: X\n"},
    {"UnknownItem", Customer("[USER-NAME]\r\nX\r\n[USERNAME]\r\n"), "en",
     "USR.INF:3: refused: unknown item: [USERNAME]\n"},
    {"EmptyItem", Customer("[]\r\nX\r\n"), "en", "USR.INF:1: refused: unknown item: []\n"},
    {"EnglishOnJapanese", Customer("[CONTRACT]\r\nCorporate\r\n"), "ja",
     "USR.INF:1: refused: [CONTRACT] is an item of a disk in the other language; this import is "
     "Japanese\nADR.INF:1: refused: [E-MAIL] is an item of a disk in the other language; this "
     "import "
     "is Japanese\n"},
    {"JapaneseOnEnglish", Customer(ToSjis("[部署名]\r\nX\r\n")), "en",
     "USR.INF:1: refused: [部署名] is an item of a disk in the other language; this import is "
     "English\n"},
    {"StarOnJapanese",
     {.customer = Encoded("[*]\r\nX\r\n"), .address = ToSjis("[電話番号]\r\n1\r\n")},
     "ja",
     "USR.INF:1: refused: [*] is an item of a disk in the other language; this import is Japanese\n"
     "ADR.INF: note: there is no mail address; unless the registry holds one the set-up ends with "
     "0\n"},
    {"StarOnEnglish", Customer("[*]\r\nX\r\n"), "en", ""},
    {"OptionNumberTooShort", Customer("[SUB-N-CODE 1]\r\nX\r\n"), "en",
     "USR.INF:1: refused: an option number has exactly two digits: [SUB-N-CODE 1]\n"},
    {"OptionNumberTooLong", Customer("[SUB-N-CODE 001]\r\nX\r\n"), "en",
     "USR.INF:1: refused: an option number has exactly two digits: [SUB-N-CODE 001]\n"},
    {"OptionNumberWithoutDigits", Customer("[SUB-N-CODE AB]\r\nX\r\n"), "en",
     "USR.INF:1: note: the option number is not made of two digits\n"},
    {"OptionNumberZero", Customer("[SUB-N-CODE 00]\r\nX\r\n"), "en",
     "USR.INF:1: note: the option number 00 does not count as an option\n"},
    {"OtherCustomerKind", Customer("[CONTRACT]\r\nCorporation\r\n[USER-NAME]\r\nX\r\n"), "en",
     "USR.INF:1: refused: the value of [CONTRACT] is neither \"Corporate\" nor \"Personal\"\n"},
    {"OtherCustomerKindLast", Customer("[USER-NAME]\r\nX\r\n[CONTRACT]\r\npersonal\r\n"), "en",
     "USR.INF:3: refused: the value of [CONTRACT] is neither \"Corporate\" nor \"Personal\"\n"},
    {"PersonalCustomer", Customer("[CONTRACT]\r\nPersonal\r\n"), "en", ""},
    {"ItemWithoutValue", Customer("[OS-NAME]\r\n[USER-NAME]\r\nX\r\n"), "en",
     "USR.INF:1: not imported: [OS-NAME] has no value and is not imported\n"},
    {"LastItemWithoutValue", Customer("[USER-NAME]\r\nX\r\n[OS-NAME]\r\n"), "en",
     "USR.INF:3: note: the last item, [OS-NAME], has no value and gets the value of the item "
     "before "
     "it\n"},
    {"LastItemGetsNoCustomerKind", Customer("[USER-NAME]\r\nX\r\n[CONTRACT]\r\n"), "en",
     "USR.INF:3: note: the last item, [CONTRACT], has no value and gets the value of the item "
     "before "
     "it\nUSR.INF:3: refused: the value of [CONTRACT] is neither \"Corporate\" nor \"Personal\"\n"},
    {"ItemTwice", Customer("[OS-NAME]\r\nX\r\n[USER-NAME]\r\nX\r\n[OS-NAME]\r\nY\r\n"), "en",
     "USR.INF:5: note: [OS-NAME] stands here again and replaces the one before\n"},
    {"OptionTwice",
     Customer("[SUB-N-CODE 01]\r\nX\r\n[SUB-N-CODE 02]\r\nX\r\n[SUB-N-CODE 01]\r\nY\r\n"), "en",
     "USR.INF:5: note: [SUB-N-CODE 01] stands here again and replaces the one before\n"},
    {"EmptyLine", Customer("[USER-NAME]\r\nX\r\n\r\nY\r\n"), "en",
     "USR.INF:3: note: the empty line becomes a part of the line before it\n"},
    {"NoLastLineEnd", Customer("[USER-NAME]\r\nX\r\n[OS-NAME]\r\nY"), "en",
     "USR.INF:4: not imported: the last line has no line end and is not imported\n"
     "USR.INF:3: note: the last item, [OS-NAME], has no value and gets the value of the item "
     "before "
     "it\n"},
    {"LongestLine", Customer("[USER-NAME]\r\n" + std::string(1022, 'x') + "\r\n"), "en", ""},
    {"LongLine", Customer("[USER-NAME]\r\n" + std::string(1023, 'x') + "\r\n"), "en",
     "USR.INF:2: refused: the line exceeds 1024 bytes in EUC-JP\n"},
    {"LineThatIsLongInEucJp", Customer("[USER-NAME]\r\n" + std::string(512, '\xB1') + "\r\n"), "en",
     "USR.INF:2: refused: the line exceeds 1024 bytes in EUC-JP\n"},
};
INSTANTIATE_TEST_SUITE_P(Customer, CheckTest, testing::ValuesIn(kCustomerVerdicts),
                         test_support::Title());

std::string Lines(const std::string &line, int count) {
    std::string lines;
    for (int i = 0; i < count; ++i) {
        lines += line;
    }
    return lines;
}

const Verdict kLongValueVerdicts[] = {
    {"LongestValue",
     Customer("[USER-NAME]\r\n" + Lines(std::string(1000, 'x') + "\r\n", 16) +
              std::string(368, 'x') + "\r\n"),
     "en", ""},
    {"LongValue",
     Customer("[USER-NAME]\r\n" + Lines(std::string(1000, 'x') + "\r\n", 16) +
              std::string(369, 'x') + "\r\n"),
     "en", "USR.INF:18: refused: the value exceeds 16384 bytes\n"},
};
INSTANTIATE_TEST_SUITE_P(LongValues, CheckTest, testing::ValuesIn(kLongValueVerdicts),
                         test_support::Title());

constexpr char kNoMail[] =
    "ADR.INF: note: there is no mail address; unless the registry holds one the set-up ends with "
    "0\n";

const Verdict kAddressVerdicts[] = {
    {"Missing", {.address = std::nullopt}, "en", "ADR.INF: refused: the file is missing\n"},
    {"Empty", Address(""), "en", kNoMail},
    {"JapaneseOnJapanese",
     {.customer = Encoded(ToSjis("[部署名]\r\nX\r\n")),
      .address = ToSjis("[メールアドレス]\r\na@b\r\n")},
     "ja",
     ""},
    {"ValueFirst", Address("a@b.example\r\n"), "en",
     "ADR.INF:1: refused: a value stands before the first item: a@b.example\n"},
    {"UnknownItem", Address("[E-MAIL]\r\na@b\r\n[EMAIL]\r\nx\r\n"), "en",
     "ADR.INF:3: refused: unknown item: [EMAIL]\n"},
    {"NameThatIsNoShiftJis", Address("[E-MAIL]\r\na@b\r\n[\x81 ]\r\n"), "en",
     "ADR.INF:3: refused: unknown item: [\\x81 ]\n"},
    {"ItemWithoutValue", Address("[PHONENO]\r\n[E-MAIL]\r\na@b\r\n"), "en",
     "ADR.INF:1: not imported: [PHONENO] has no value and is not imported\n"},
    {"LastItemWithoutValue", Address("[E-MAIL]\r\na@b\r\n[PHONENO]\r\n"), "en",
     "ADR.INF:3: note: the last item, [PHONENO], has no value and gets the value of the item "
     "before "
     "it\n"},
    {"ItemTwice", Address("[E-MAIL]\r\na@b\r\n[PHONENO]\r\n1\r\n[E-MAIL]\r\nc@d\r\n"), "en",
     "ADR.INF:5: note: [E-MAIL] stands here again and replaces the one before\n"},
    {"EmptyLineEndsTheFile", Address("[E-MAIL]\na@b\n\n[PHONENO]\n1\n"), "en",
     "ADR.INF:3: not imported: an empty line ended by LF alone, or a zero byte, ends the file; "
     "what "
     "follows is not imported\n"},
    {"EmptyLastLine", Address("[E-MAIL]\na@b\n\n"), "en", ""},
    {"EmptyFirstLine", Address("\n[E-MAIL]\na@b\n"), "en",
     std::string(
         "ADR.INF:1: not imported: an empty line ended by LF alone, or a zero byte, ends the "
         "file; what follows is not imported\n") +
         kNoMail},
    {"EmptyLineEndedByCrLf", Address("[E-MAIL]\r\na@b\r\n\r\n"), "en", ""},
    {"ZeroByteInALine", Address(std::string("[E-MAIL]\r\na@b\0c\r\n", 17)), "en",
     "ADR.INF:2: note: what follows the zero byte on its line is not imported\n"},
    {"ByteThatEndsALine", Address("[E-MAIL]\r\na@b\xFF[PHONENO]\r\n1\r\n"), "en",
     "ADR.INF:2: note: the byte FF is taken for the end of a line\n"},
    {"LongLine", Address("[PHONENO]\r\n" + std::string(1100, '1') + "\r\n[E-MAIL]\r\na@b\r\n"),
     "en", "ADR.INF:2: note: the line exceeds 1023 bytes and is imported as several lines\n"},
    {"LongestLine", Address("[PHONENO]\r\n" + std::string(1023, '1') + "\r\n[E-MAIL]\r\na@b\r\n"),
     "en", ""},
    {"LineThatFillsTheReader",
     Address("[PHONENO]\r\n" + std::string(1024, '1') + "\r\n[E-MAIL]\r\na@b\r\n"), "en",
     "ADR.INF:2: note: the line exceeds 1023 bytes and is imported as several lines\n"},
    {"LineThatFillsTheReaderEndedByLf",
     Address("[E-MAIL]\na@b\n[PHONENO]\n" + std::string(1024, '1') + "\n[ERROR-REPLY]\nx\n"), "en",
     "ADR.INF:4: note: the line exceeds 1023 bytes and is imported as several lines\n"
     "ADR.INF:4: not imported: an empty line ended by LF alone, or a zero byte, ends the file; "
     "what "
     "follows is not imported\n"},
    {"JapaneseValue", Address(ToSjis("[PHONENO]\r\n電話\r\n[E-MAIL]\r\na@b\r\n")), "en",
     "ADR.INF:2: note: the value is stored in Shift-JIS as it stands\n"},
    {"LongestMailAddress", Address("[E-MAIL]\r\n" + std::string(127, 'a') + "\r\n"), "en", ""},
    {"LongMailAddress", Address("[E-MAIL]\r\n" + std::string(128, 'a') + "\r\n"), "en",
     "ADR.INF: note: the mail address exceeds 127 bytes; the set-up will end with 0 behind the "
     "import\n"},
    {"LongValue", Address("[E-MAIL]\r\n" + Lines(std::string(1000, 'x') + "\r\n", 17)), "en",
     "ADR.INF:18: refused: the value exceeds 16384 bytes\n"},
};
INSTANTIATE_TEST_SUITE_P(Address, CheckTest, testing::ValuesIn(kAddressVerdicts),
                         test_support::Title());

const Verdict kHeartbeatVerdicts[] = {
    {"Plain", Heartbeat("[HEART-BEAT-INT]\r\n10\r\n"), "en", ""},
    {"BlanksAndEmptyLines", Heartbeat("\r\n[HEART-BEAT-INT]\r\n \r\n 10\t \r\n\r\n"), "en", ""},
    {"Empty", Heartbeat(""), "en", "HBI.INF: note: there is no interval; it becomes 1\n"},
    {"NoValue", Heartbeat("[HEART-BEAT-INT]\r\n"), "en",
     "HBI.INF: note: there is no interval; it becomes 1\n"},
    {"OtherItem", Heartbeat("[HEARTBEAT]\r\n10\r\n"), "en",
     "HBI.INF:1: refused: the first line is not the item line of the heart-beat file: "
     "[HEARTBEAT]\n"},
    {"BlankBeforeTheItem", Heartbeat(" [HEART-BEAT-INT]\r\n10\r\n"), "en",
     "HBI.INF:1: refused: the first line is not the item line of the heart-beat file:  "
     "[HEART-BEAT-INT]\n"},
    {"NoNumber", Heartbeat("[HEART-BEAT-INT]\r\nten\r\n"), "en",
     "HBI.INF:2: refused: the interval holds what is no digit: ten\n"},
    {"TwoNumbers", Heartbeat("[HEART-BEAT-INT]\r\n1 0\r\n"), "en",
     "HBI.INF:2: refused: something follows the interval: 1 0\n"},
    {"ThirdLine", Heartbeat("[HEART-BEAT-INT]\r\n10\r\nx\r\n"), "en",
     "HBI.INF:3: refused: a third line is not allowed: x\n"},
    {"Zero", Heartbeat("[HEART-BEAT-INT]\r\n0\r\n"), "en",
     "HBI.INF:2: note: the interval 0 becomes 1\n"},
    {"LargestNumber", Heartbeat("[HEART-BEAT-INT]\r\n04294967295\r\n"), "en", ""},
    {"LargeNumber", Heartbeat("[HEART-BEAT-INT]\r\n4294967306\r\n"), "en",
     "HBI.INF:2: note: the interval exceeds 32 bits and becomes 10\n"},
    {"EmptyLineEndsTheFile", Heartbeat("[HEART-BEAT-INT]\n\n10\n"), "en",
     "HBI.INF:2: not imported: an empty line ended by LF alone, or a zero byte, ends the file; "
     "what "
     "follows is not imported\nHBI.INF: note: there is no interval; it becomes 1\n"},
};
INSTANTIATE_TEST_SUITE_P(Heartbeat, CheckTest, testing::ValuesIn(kHeartbeatVerdicts),
                         test_support::Title());

// What may stand in the place of a file.
enum class Odd { kFolder, kLink, kDanglingLink, kPipe };

struct OddFile {
    const char *title;
    const char *name;
    Odd odd;
    std::string errors;
};

class OddFileTest : public RegTest, public testing::WithParamInterface<OddFile> {
  protected:
    void Replace(const std::string &path, Odd odd) const {
        ASSERT_EQ(::unlink(path.c_str()), 0);
        switch (odd) {
            case Odd::kFolder:
                ASSERT_EQ(::mkdir(path.c_str(), 0700), 0);
                break;
            case Odd::kLink:
                ASSERT_EQ(::symlink(elsewhere_.Write("file", "x").c_str(), path.c_str()), 0);
                break;
            case Odd::kDanglingLink:
                ASSERT_EQ(::symlink("nowhere", path.c_str()), 0);
                break;
            case Odd::kPipe:
                ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
                break;
        }
    }

    test_support::TempFolder folder_;
    test_support::TempFolder elsewhere_;
};

TEST_P(OddFileTest, IsNeitherFollowedNorWaitedFor) {
    WriteDisk(folder_, Heartbeat("[HEART-BEAT-INT]\r\n10\r\n"));
    Replace(folder_ / GetParam().name, GetParam().odd);
    const Result shown = Veloxctl({"keydisk", "show", "--lang", "en", folder_.Path()});
    EXPECT_EQ(shown.errors, WithNames(GetParam().errors));
    ExpectAgreement(shown, folder_.Path(), "en");
}

const OddFile kOddFiles[] = {
    {"CustomerFolder", kCustomerFile, Odd::kFolder, "USR.INF: refused: it is no regular file\n"},
    {"CustomerLink", kCustomerFile, Odd::kLink, "USR.INF: refused: it is a symbolic link\n"},
    {"CustomerDanglingLink", kCustomerFile, Odd::kDanglingLink,
     "USR.INF: refused: it is a symbolic link\n"},
    {"CustomerPipe", kCustomerFile, Odd::kPipe, "USR.INF: refused: it is no regular file\n"},
    {"AddressFolder", kAddressFile, Odd::kFolder, "ADR.INF: refused: it is no regular file\n"},
    {"AddressLink", kAddressFile, Odd::kLink, "ADR.INF: refused: it is a symbolic link\n"},
    {"AddressPipe", kAddressFile, Odd::kPipe, "ADR.INF: refused: it is no regular file\n"},
    {"HeartbeatFolder", kHeartbeatFile, Odd::kFolder,
     "HBI.INF: not imported: it is no regular file; the import passes over it\n"},
    {"HeartbeatLink", kHeartbeatFile, Odd::kLink,
     "HBI.INF: not imported: it is a symbolic link; the import passes over it\n"},
    {"HeartbeatPipe", kHeartbeatFile, Odd::kPipe,
     "HBI.INF: not imported: it is no regular file; the import passes over it\n"},
};
INSTANTIATE_TEST_SUITE_P(OddFiles, OddFileTest, testing::ValuesIn(kOddFiles),
                         test_support::Title());

}  // namespace
}  // namespace veloxctl_test
