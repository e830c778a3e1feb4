// The address file through CheckKeyFD.
#include <gmock/gmock.h>
#include <records/address_items.h>
#include <records/key_disk.h>

#include <string>
#include <vector>

#include "key_disk_fixture.h"
#include "support/title.h"

namespace {

using test_support::ToEuc;
using test_support::ToSjis;
using ::testing::ElementsAre;

// What the customer file of the fixture writes before.
const std::string kCustomerWrite = "TOKUINMA=EXAMPLE";

class AddressImportTest : public KeyDiskTest {};

struct Stored {
    std::string title;
    std::string text;                 // UTF-8
    std::vector<std::string> values;  // "name=value", the value in UTF-8
};

class AddressCases : public KeyDiskTest, public ::testing::WithParamInterface<Stored> {};

TEST_P(AddressCases, AreStored) {
    Address(ToSjis(GetParam().text));
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    std::vector<std::string> expected = {kCustomerWrite};
    for (const std::string &value : GetParam().values) {
        expected.push_back(ToSjis(value));
    }
    EXPECT_EQ(Writes(), expected);
}

using namespace std::string_literals;

INSTANTIATE_TEST_SUITE_P(
    AddressImport, AddressCases,
    ::testing::Values(
        Stored{"OneItem", "[E-MAIL]\r\na@b\r\n", {"MailAdrs=a@b"}},
        Stored{"AllItems",
               "[E-MAIL]\r\na@b\r\n[PHONENO]\r\n03-1\r\n[ERROR-REPLY]\r\nc@d\r\n",
               {"MailAdrs=a@b", "PhoneNo=03-1", "ErrorReply=c@d"}},
        Stored{"AnyOrder", "[PHONENO]\n03-1\n[E-MAIL]\na@b\n", {"PhoneNo=03-1", "MailAdrs=a@b"}},
        Stored{"CrLineEnds", "[E-MAIL]\ra@b\r", {"MailAdrs=a@b"}},
        Stored{"NoLastLineEnd", "[E-MAIL]\r\na@b", {"MailAdrs=a@b"}},
        Stored{"OnlyAnItemLine", "[E-MAIL]", {"MailAdrs="}},
        Stored{"LinesAreJoined", "[E-MAIL]\r\na\r\nb\r\n", {"MailAdrs=a\nb"}},
        Stored{"AnEmptyCrLfLineAddsItsLf", "[E-MAIL]\r\nA\r\n\r\nB\r\n", {"MailAdrs=A\n\nB"}},
        Stored{"AnEmptyFirstValueLine", "[E-MAIL]\r\n\r\nB\r\n", {"MailAdrs=\nB"}},
        Stored{"AnEmptyLastValueLine", "[E-MAIL]\r\nA\r\n\r\n", {"MailAdrs=A\n"}},
        Stored{"AnEmptyLfLineEndsTheFile", "[E-MAIL]\nA\n\n[NONE]\n", {"MailAdrs=A"}},
        Stored{
            "AZeroByteAtALinesStartEndsTheFile", "[E-MAIL]\r\nA\r\n\0[NONE]\r\n"s, {"MailAdrs=A"}},
        Stored{"AZeroByteEndsItsLine", "[E-MAIL]\r\nA\0B\r\nC\r\n"s, {"MailAdrs=A\nC"}},
        Stored{"AnEndMarkAfterCrLfIsAValueLine", "[E-MAIL]\r\nA\r\n\x1A", {"MailAdrs=A\n\x1A"}},
        Stored{"AnEndMarkAfterALoneCrIsDropped", "[E-MAIL]\rA\r\x1A", {"MailAdrs=A"}},
        Stored{"ARepeatedItemIsWrittenAgain",
               "[E-MAIL]\r\nA\r\n[E-MAIL]\r\nB\r\n",
               {"MailAdrs=A", "MailAdrs=B"}},
        Stored{"AnItemWithoutValueIsDropped", "[PHONENO]\r\n[E-MAIL]\r\nA\r\n", {"MailAdrs=A"}},
        Stored{"TheLastItemTakesTheValueBefore",
               "[E-MAIL]\r\nA\r\n[PHONENO]\r\n",
               {"MailAdrs=A", "PhoneNo=A"}},
        Stored{"ValuesAreNotConverted", "[E-MAIL]\r\n例ア\r\n", {"MailAdrs=例ア"}},
        Stored{"EmptyFile", "", {}}, Stored{"BeginsWithAnEmptyLfLine", "\n[E-MAIL]\nA\n", {}},
        Stored{"BeginsWithAZeroByte", "\0[E-MAIL]\nA\n"s, {}}),
    test_support::Title());

TEST_F(AddressImportTest, JapaneseNamesAreConverted) {
    Japanese();
    Customer(ToSjis("[お客様名称(カナ)]\r\nEXAMPLE\r\n"));
    Address(ToSjis(
        "[メールアドレス]\r\na@b\r\n[電話番号]\r\n03\r\n[エラーリプライアドレス]\r\nc@d\r\n"));
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_THAT(Writes(),
                ElementsAre(kCustomerWrite, "MailAdrs=a@b", "PhoneNo=03", "ErrorReply=c@d"));
    EXPECT_EQ(fakes::Text(kSetup, "MAILADRS"), "a@b");
}

// The texts and lines are Shift-JIS.
class AddressRefused : public KeyDiskTest, public ::testing::WithParamInterface<RefusedFile> {};

TEST_P(AddressRefused, FailsWithItsRows) {
    const RefusedFile &row = GetParam();
    if (row.japanese) {
        Japanese();
        Customer(ToSjis("[お客様名称(カナ)]\r\nEXAMPLE\r\n"));
    }
    Address(row.text);
    Heartbeat("[HEART-BEAT-INT]\r\n5\r\n");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(LastTrace(5), FailureTrace(row.message, row.state, row.line, row.item_line));
    std::vector<std::string> expected = {kCustomerWrite};
    expected.insert(expected.end(), row.written_before.begin(), row.written_before.end());
    EXPECT_EQ(Writes(), expected);
    EXPECT_EQ(fakes::Text(kSetting, "TOKUINMA"), "EXAMPLE") << "the customer file's values stay";
    EXPECT_EQ(fakes::CallCount("CreateFile"), 1) << "the heart-beat file is not looked at";
}

INSTANTIATE_TEST_SUITE_P(
    AddressImport, AddressRefused,
    ::testing::Values(
        RefusedFile{"ValueFirst", "a@b\r\n", "Case 0 : itemname = FALSE", 0, "a@b"},
        RefusedFile{"EmptyCrLfLineFirst", "\r\n[E-MAIL]\r\n", "Case 0 : itemname = FALSE", 0, ""},
        RefusedFile{"BlankBeforeTheBracket", " [E-MAIL]\r\n", "Case 0 : itemname = FALSE", 0,
                    " [E-MAIL]"},
        RefusedFile{"Unknown", "[NONE]\r\n", "Invalided item : NONE ", 0, "[NONE]", true},
        RefusedFile{"UnknownLater",
                    "[E-MAIL]\r\nA\r\n[NONE]\r\n",
                    "Invalided item : NONE ",
                    2,
                    "[NONE]",
                    true,
                    {"MailAdrs=A"}},
        RefusedFile{"UnknownAfterAnItemLine", "[E-MAIL]\r\n[NONE]\r\n", "Invalided item : NONE ", 1,
                    "[NONE]", true},
        RefusedFile{"EmptyName", "[]\r\n", "Invalided item :  ", 0, "[]", true},
        RefusedFile{"LongerName", "[E-MAILS]\r\n", "Invalided item : E-MAILS ", 0, "[E-MAILS]",
                    true},
        RefusedFile{"ANameThatDoesNotConvert", "[\x81\x20]\r\n", "Invalided item :  ", 0,
                    "[\x81\x20]", true},
        RefusedFile{"LastByteIsATrailByte", "[\x83\x5D\r\n", "Invalided item :  ", 0, "[\x83\x5D",
                    true},
        RefusedFile{"TheConvertedNameIsShown", ToSjis("[例]\r\n"),
                    "Invalided item : " + ToEuc("例 "), 0, ToSjis("[例]"), true},
        RefusedFile{
            "JapaneseDiskOnAnEnglishSystem", ToSjis("[メールアドレス]\r\n"),
            "KeyFD language error : NEED:\"E-MAIL\" <- KeyFD=\"" + ToEuc("メールアドレス\""), 0,
            ToSjis("[メールアドレス]"), true},
        RefusedFile{
            "EnglishDiskOnAJapaneseSystem",
            "[PHONENO]\r\n",
            "KeyFD language error : NEED:\"" + ToEuc("電話番号") + "\" <- KeyFD=\"PHONENO\"",
            0,
            "[PHONENO]",
            true,
            {},
            true}),
    test_support::Title());

// ---- Limits -----------------------------------------------------------------------------------

TEST_F(AddressImportTest, PiecesOfALongLineAreValueLines) {
    const std::string piece(KEYDISK_MAX_LINE, 'x');
    Address("[E-MAIL]\r\n" + piece + piece + "yz\r\n");
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_EQ(fakes::Text(kSetup, "MailAdrs"), piece + "\n" + piece + "\nyz");
}

// What fills the capacity and then ends leaves an empty line: with LF it ends the file.
TEST_F(AddressImportTest, ALineOfExactlyTheCapacity) {
    const std::string piece(KEYDISK_MAX_LINE, 'x');
    Address("[E-MAIL]\r\n" + piece + "\r\n[PHONENO]\r\n1\r\n");
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_EQ(fakes::Text(kSetup, "MailAdrs"), piece + "\n");
    EXPECT_EQ(fakes::Text(kSetup, "PhoneNo"), "1");

    StartAgain();
    Address("[E-MAIL]\n" + piece + "\n[PHONENO]\n1\n");
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_EQ(fakes::Text(kSetup, "MailAdrs"), piece);
    EXPECT_EQ(fakes::Text(kSetup, "PhoneNo"), std::nullopt);
}

TEST_F(AddressImportTest, AnItemNameOfTheWholeLine) {
    const std::string name(KEYDISK_MAX_LINE - 4, '\xB1');  // two bytes each in EUC-JP
    Address("[" + name + "]\r\n");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(LastTrace(5)[0].size(), std::string("1 Invalided item :  ").size() + 2 * name.size());
}

TEST_F(AddressImportTest, AValueOverTheLimitFails) {
    std::string lines;
    for (int i = 0; i < 17; ++i) {
        lines += std::string(1000, 'x') + "\r\n";
    }
    Address("[E-MAIL]\r\n" + lines);
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(LastTrace(5), FailureTrace("Value too long : AMVLXADR.INF line 18 : over 16384 bytes",
                                         2, std::string(1000, 'x'), false));
    EXPECT_THAT(Writes(), ElementsAre(kCustomerWrite));
}

// ---- Failing calls ----------------------------------------------------------------------------

TEST_F(AddressImportTest, IsOpenedForReadingOnly) {
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    for (const fakes::Call &call : fakes::Calls()) {
        if (call.function == "CreateFile") {
            EXPECT_EQ(call.detail.substr(call.detail.find(' ')),
                      " access=0x80000000 share=0 disposition=3 flags=0x80");
        }
    }
}

TEST_F(AddressImportTest, AFileThatDoesNotOpenFailsWithoutStatusRows) {
    fakes::FailCall("CreateFile");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_THAT(LastTrace(2), ElementsAre("1 Create AMVLXADR.INF Failed!", "0 <return 1."));
    EXPECT_EQ(fakes::Text(kSetting, "TOKUINMA"), "EXAMPLE");
}

TEST_F(AddressImportTest, AFirstLineThatCannotBeRead) {
    fakes::FailCall("ReadFile");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(LastTrace(5), FailureTrace("GetFileLine AMVLXADR.INF Error2!", 0, "", false));
}

TEST_F(AddressImportTest, ALaterLineThatCannotBeRead) {
    fakes::FailCall("ReadFile", 2);
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(LastTrace(5),
              FailureTrace("GetFileLine AMVLXADR.INF Error3!", 2, "a@b.example", false));
    EXPECT_THAT(Writes(), ElementsAre(kCustomerWrite));
}

struct FailedWrite {
    std::string title;
    std::string call;
    int nth = 1;
    std::string message;
    std::string line = {};
    bool item_line = false;
};

class AddressFailedWrites : public KeyDiskTest,
                            public ::testing::WithParamInterface<FailedWrite> {};

TEST_P(AddressFailedWrites, FailWithTheirRows) {
    Address("[E-MAIL]\r\nA\r\n[PHONENO]\r\nB\r\n");
    fakes::FailCall(GetParam().call, GetParam().nth);
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(LastTrace(5),
              FailureTrace(GetParam().message, 2, GetParam().line, GetParam().item_line));
}

// The first create and the first write of each run are the customer file's.
INSTANTIATE_TEST_SUITE_P(
    AddressImport, AddressFailedWrites,
    ::testing::Values(
        FailedWrite{"Key", "AMACRERegCreateKey", 2, "CreateKey Error5!", "[PHONENO]", true},
        FailedWrite{"Text", "AMACRERegWriteSz", 2, "WriteSz Error3!", "[PHONENO]", true},
        FailedWrite{"LastKey", "AMACRERegCreateKey", 3, "CreateKey Error6!", "B"},
        FailedWrite{"LastText", "AMACRERegWriteSz", 3, "WriteSz Error4!", "B"}),
    test_support::Title());

}  // namespace
