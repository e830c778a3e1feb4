// The customer file through CheckKeyFD: what is stored, in which order, and how each failure reads.
#include <gmock/gmock.h>
#include <records/customer_items.h>
#include <records/key_disk.h>

#include <string>
#include <vector>

#include "key_disk_fixture.h"
#include "support/title.h"

namespace {

using test_support::ToEuc;
using test_support::ToSjis;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

class CustomerImportTest : public KeyDiskTest {};

// ---- What is stored ---------------------------------------------------------------------------

struct Stored {
    std::string title;
    std::string text;                 // UTF-8
    std::vector<std::string> values;  // "name=value" (UTF-8), in the order of writing
};

class StoredCases : public KeyDiskTest, public ::testing::WithParamInterface<Stored> {
  protected:
    void ExpectStored() {
        Customer(ToSjis(GetParam().text));
        EXPECT_EQ(Import(), KEYFD_IMPORTED);
        std::vector<std::string> expected;
        for (const std::string &value : GetParam().values) {
            expected.push_back(ToEuc(value));
        }
        expected.emplace_back("MailAdrs=a@b.example");
        EXPECT_EQ(Writes(), expected);
    }
};

TEST_P(StoredCases, EnglishDisk) {
    ExpectStored();
}

INSTANTIATE_TEST_SUITE_P(
    CustomerImport, StoredCases,
    ::testing::Values(
        Stored{"OneItem", "[USER-NAME]\r\nA\r\n", {"TOKUINMA=A"}},
        Stored{"LfLineEnds", "[USER-NAME]\nA\n[USER-DIVISION]\nB\n", {"TOKUINMA=A", "BUNMN=B"}},
        Stored{"CrLineEnds", "[USER-NAME]\rA\r[USER-DIVISION]\rB\r", {"TOKUINMA=A", "BUNMN=B"}},
        Stored{"ValueLinesAreJoined", "[USER-NAME]\r\nA\r\nB\r\nC\r\n", {"TOKUINMA=A\nB\nC"}},
        Stored{"OfARunOfBreaksOneCrLfIsRemoved",
               "[USER-NAME]\r\nA\r\n\r\nB\r\n",
               {"TOKUINMA=A\r\n\nB"}},
        Stored{"OfARunOfLfOneIsRemoved", "[USER-NAME]\nA\n\nB\n", {"TOKUINMA=A\n\nB"}},
        Stored{"BlanksStay", "[USER-NAME]\r\n A \r\n", {"TOKUINMA= A "}},
        Stored{
            "AnItemWithoutValueIsDropped", "[USER-NAME]\r\n[USER-DIVISION]\r\nB\r\n", {"BUNMN=B"}},
        Stored{"TheLastItemTakesTheValueBefore",
               "[USER-NAME]\r\nA\r\n[USER-DIVISION]\r\n",
               {"TOKUINMA=A", "BUNMN=A"}},
        Stored{"ADroppedItemDoesNotChangeTheValueBefore",
               "[USER-NAME]\r\nA\r\n[USER-ZIPCODE]\r\n[USER-DIVISION]\r\n",
               {"TOKUINMA=A", "BUNMN=A"}},
        Stored{"TheLastItemWithoutAnyValueIsEmpty", "[USER-NAME]\r\n", {"TOKUINMA="}},
        Stored{"ARepeatedItemIsWrittenAgain",
               "[USER-NAME]\r\nA\r\n[USER-NAME]\r\nB\r\n",
               {"TOKUINMA=A", "TOKUINMA=B"}},
        Stored{"AnUnterminatedLastLineIsDropped", "[USER-NAME]\r\nA\r\nB", {"TOKUINMA=A"}},
        Stored{"AnUnterminatedItemLineIsDropped",
               "[USER-NAME]\r\nA\r\n[USER-DIVISION]",
               {"TOKUINMA=A"}},
        Stored{"AnEndMarkAfterTheLastBreakIsDropped", "[USER-NAME]\r\nA\r\n\x1A", {"TOKUINMA=A"}},
        Stored{"AnEndMarkBeforeABreakStays", "[USER-NAME]\r\nA\x1A\r\n", {"TOKUINMA=A\x1A"}},
        Stored{"AZeroByteEndsTheText",
               std::string("[USER-NAME]\r\nA\r\n\0[X]\r\n", 22),
               {"TOKUINMA=A"}},
        Stored{"Corporate", "[CONTRACT]\r\nCorporate\r\n", {"KAISHAKBN=1"}},
        Stored{"Personal", "[CONTRACT]\r\nPersonal\r\n", {"KAISHAKBN=99"}},
        Stored{"ContractBeforeOthers",
               "[CONTRACT]\r\nPersonal\r\n[USER-NAME]\r\nA\r\n",
               {"KAISHAKBN=99", "TOKUINMA=A"}},
        Stored{"Options",
               "[SUB-N-CODE 03]\r\nA\r\n[SUB-N-CODE 01]\r\nB\r\n",
               {"OPTCD03=A", "OPTCD01=B", "OPTCDN=3"}},
        Stored{"AnOptionWithoutValueRaisesTheNumber",
               "[SUB-N-CODE 09]\r\n[SUB-N-CODE 01]\r\nB\r\n",
               {"OPTCD01=B", "OPTCDN=9"}},
        Stored{"TheLastOptionWithoutValue",
               "[SUB-N-CODE 01]\r\nA\r\n[SUB-N-CODE 02]\r\n",
               {"OPTCD01=A", "OPTCD02=A", "OPTCDN=2"}},
        Stored{"OptionZeroAloneWritesNoNumber", "[SUB-N-CODE 00]\r\nA\r\n", {"OPTCD00=A"}},
        Stored{"OptionThatIsNoDigits", "[SUB-N-CODE AB]\r\nA\r\n", {"OPTCDAB=A", "OPTCDN=188"}},
        Stored{"ANegativeOptionDoesNotRaise",
               "[SUB-N-CODE 01]\r\nA\r\n[SUB-N-CODE //]\r\nB\r\n",
               {"OPTCD01=A", "OPTCD//=B", "OPTCDN=1"}},
        Stored{"ANegativeOptionAlone", "[SUB-N-CODE //]\r\nB\r\n", {"OPTCD//=B"}},
        Stored{"AnAsteriskIsRow2", "[*]\r\nA\r\n", {"TOKUINMN=A"}},
        Stored{"AJapaneseValue", "[USER-NAME]\r\n株式会社例\r\n", {"TOKUINMA=株式会社例"}},
        Stored{"ABracketInAValue", "[USER-NAME]\r\n[A] B\r\n", {"TOKUINMA=[A] B"}}),
    test_support::Title());

// Every row of the table with a value of its own, in both languages.
class EveryRow : public KeyDiskTest, public ::testing::WithParamInterface<ITEM_LANGUAGE> {
  protected:
    static std::string Name(const ITEM_ROW &row) {
        return row.lpszName[GetParam()] + std::string(row.eMatch == ITEM_NUMBERED ? "07" : "");
    }
};

TEST_P(EveryRow, IsStored) {
    if (GetParam() == ITEM_JAPANESE) {
        Japanese();
    }
    std::string text;
    std::vector<std::string> expected;
    for (std::size_t i = 0; i < CUSTOMER_ITEM_COUNT; ++i) {
        const ITEM_ROW &row = CUSTOMER_ITEMS[i];
        const bool kind = row.dwType == REG_DWORD;
        const std::string value = kind ? "Personal" : "value " + std::to_string(i);
        text += "[" + Name(row) + "]\r\n" + value + "\r\n";
        // On an English disk every "*" is row 2.
        const bool row_2 = GetParam() == ITEM_ENGLISH && Name(row) == "*";
        const std::string value_name = row_2 ? "TOKUINMN" : row.lpszValueName;
        expected.push_back(value_name + (row.eMatch == ITEM_NUMBERED ? "07=" : "=") +
                           (kind ? "99" : value));
    }
    Customer(test_support::Convert(text, "EUC-JP-MS", "CP932"));
    Address("");
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    expected.emplace_back("OPTCDN=7");
    EXPECT_EQ(Writes(), expected);
    EXPECT_EQ(fakes::Number(kSetting, "KAISHAKBN"), 99U);
    EXPECT_EQ(fakes::Text(kSetting, "SYSSETEL"), "value 26");
    EXPECT_EQ(fakes::Number(kSetting, "OPTCDN"), 7U);
}

INSTANTIATE_TEST_SUITE_P(CustomerImport, EveryRow, ::testing::Values(ITEM_ENGLISH, ITEM_JAPANESE),
                         [](const auto &row) {
                             return row.param == ITEM_ENGLISH ? "English" : "Japanese";
                         });

TEST_F(CustomerImportTest, TheCatalogueNamesTheCustomerKinds) {
    fakes::TheLibc().catalogue = {{"velox:Corporate", ToEuc("法人")},
                                  {"velox:Personal", ToEuc("個人")}};
    Japanese();
    Customer(ToSjis("[お客様属性]\r\n個人\r\n"));
    Address(ToSjis("[メールアドレス]\r\na@b\r\n"));
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_EQ(fakes::Number(kSetting, "KAISHAKBN"), 99U);

    Customer(ToSjis("[お客様属性]\r\nPersonal\r\n"));
    EXPECT_EQ(Import(), KEYFD_FAILED) << "the English text is not the catalogue's";
    EXPECT_TRUE(fakes::HasTrace(1, "Mismatch data error!"));
}

// ---- Limits -----------------------------------------------------------------------------------

TEST_F(CustomerImportTest, TheLongestLineIsStored) {
    const std::string value(KEYDISK_MAX_LINE - 2, 'x');
    Customer("[USER-NAME]\r\n" + value + "\r\n");
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_EQ(fakes::Text(kSetting, "TOKUINMA"), value);
}

TEST_F(CustomerImportTest, ALineThatIsOneByteTooLongFails) {
    Customer("[USER-NAME]\r\n" + std::string(KEYDISK_MAX_LINE - 1, 'x') + "\r\n");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(LastTrace(5),
              FailureTrace("Line too long : AMVLXUSR.INF line 2 : 1025 bytes, at most 1024", 1,
                           std::string(KEYDISK_MAX_LINE - 1, 'x'), false));
    EXPECT_TRUE(Writes().empty());
}

TEST_F(CustomerImportTest, ARunOfLineBreaksCountsAsPartOfTheLine) {
    Customer("[USER-NAME]\r\nA" + std::string(KEYDISK_MAX_LINE, '\n') + "B\r\n");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_TRUE(
        fakes::HasTrace(1, "Line too long : AMVLXUSR.INF line 2 : 1025 bytes, at most 1024"));
}

// Sixteen lines of 1022 bytes and one: 16 * 1023 + 16 bytes with the line feeds between them.
std::string ValueOf(std::size_t size) {
    std::string lines;
    while (size > 1022) {
        lines += std::string(1022, 'x') + "\r\n";
        size -= 1023;
    }
    return lines + std::string(size, 'y') + "\r\n";
}

TEST_F(CustomerImportTest, TheLongestValueIsStored) {
    Customer("[USER-NAME]\r\n" + ValueOf(KEYDISK_MAX_VALUE));
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    const std::string stored = fakes::Text(kSetting, "TOKUINMA").value_or("");
    EXPECT_EQ(stored.size(), KEYDISK_MAX_VALUE);
    EXPECT_EQ(stored.back(), 'y');
}

TEST_F(CustomerImportTest, AValueThatIsOneByteTooLongFails) {
    Customer("[USER-NAME]\r\n" + ValueOf(KEYDISK_MAX_VALUE + 1));
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(LastTrace(5), FailureTrace("Value too long : AMVLXUSR.INF line 18 : over 16384 bytes",
                                         2, std::string(17, 'y'), false));
    EXPECT_TRUE(Writes().empty());
}

// ---- Failures ---------------------------------------------------------------------------------

// All texts are UTF-8.
class RefusedCases : public KeyDiskTest, public ::testing::WithParamInterface<RefusedFile> {};

TEST_P(RefusedCases, FailsWithItsRows) {
    const RefusedFile &row = GetParam();
    if (row.japanese) {
        Japanese();
    }
    Customer(ToSjis(row.text));
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(LastTrace(5),
              FailureTrace(ToEuc(row.message), row.state, ToEuc(row.line), row.item_line));
    EXPECT_EQ(Writes(), row.written_before);
    EXPECT_EQ(fakes::CallCount("CreateFile"), 0) << "the address file is not looked at";
}

const std::string kWritten = "[USER-NAME]\r\nA\r\n[USER-DIVISION]\r\nB\r\n";

INSTANTIATE_TEST_SUITE_P(
    CustomerImport, RefusedCases,
    ::testing::Values(
        RefusedFile{"Empty", "", "GetCRLF() failed!!", 0, "", false},
        RefusedFile{"OneByte", "A", "Case 0 : itemname = FALSE", 0, "A", false},
        RefusedFile{"BeginsWithALineBreak", "\r\n[USER-NAME]\r\nA\r\n", "GetCRLF() failed!!", 0, "",
                    false},
        RefusedFile{"BeginsWithAZeroByte", std::string("\0[USER-NAME]\r\n", 14),
                    "GetCRLF() failed!!", 0, "", false},
        RefusedFile{"NoLineBreak", "[USER-NAME]", "GetCRLF() failed!!", 0, "", false},
        RefusedFile{"TextBeforeTheFirstItem", "A\r\n[USER-NAME]\r\n", "Case 0 : itemname = FALSE",
                    0, "A", false},
        RefusedFile{"ABlankBeforeTheBracket", " [USER-NAME]\r\n", "Case 0 : itemname = FALSE", 0,
                    " [USER-NAME]", false},
        RefusedFile{"UnknownFirstItem", "[NONE]\r\nA\r\n", "Invalided item : NONE ", 0, "[NONE]",
                    true},
        RefusedFile{"EmptyItemName", "[]\r\nA\r\n", "Invalided item :  ", 0, "[]", true},
        RefusedFile{"UnknownLaterItem",
                    kWritten + "[NONE]\r\n",
                    "Invalided item : NONE ",
                    2,
                    "[NONE]",
                    true,
                    {"TOKUINMA=A", "BUNMN=B"}},
        RefusedFile{"UnknownItemAfterAnItemLine", "[USER-NAME]\r\n[NONE]\r\n",
                    "Invalided item : NONE ", 1, "[NONE]", true},
        RefusedFile{"NumberTooShort", "[SUB-N-CODE 1]\r\nA\r\n", "Case 0 : Option Number Error!", 0,
                    "[SUB-N-CODE 1]", true},
        RefusedFile{"NumberTooLong",
                    kWritten + "[SUB-N-CODE 001]\r\nA\r\n",
                    "Case 0 : Option Number Error!",
                    2,
                    "[SUB-N-CODE 001]",
                    true,
                    {"TOKUINMA=A", "BUNMN=B"}},
        RefusedFile{"JapaneseDiskOnAnEnglishSystem", "[お客様属性]\r\nA\r\n",
                    "KeyFD language error : NEED:\"CONTRACT\" <- KeyFD=\"お客様属性\"", 0,
                    "[お客様属性]", true},
        RefusedFile{"EnglishDiskOnAJapaneseSystem",
                    "[CONTRACT]\r\nA\r\n",
                    "KeyFD language error : NEED:\"お客様属性\" <- KeyFD=\"CONTRACT\"",
                    0,
                    "[CONTRACT]",
                    true,
                    {},
                    true},
        RefusedFile{"LaterEnglishItemOnAJapaneseSystem",
                    "[部署名]\r\nA\r\n[N-CODE]\r\n",
                    "KeyFD language error : NEED:\"装置コード\" <- KeyFD=\"N-CODE\"",
                    2,
                    "[N-CODE]",
                    true,
                    {"BUNMN=A"},
                    true},
        RefusedFile{"AsteriskOnAJapaneseSystem",
                    "[*]\r\nA\r\n",
                    "KeyFD language error : NEED:\"お客様名称(漢字)\" <- KeyFD=\"*\"",
                    0,
                    "[*]",
                    true,
                    {},
                    true},
        RefusedFile{"ContractMismatchDuringTheFile",
                    "[USER-NAME]\r\nA\r\n[CONTRACT]\r\nOther\r\n[USER-DIVISION]\r\n",
                    "Mismatch data1 error!",
                    2,
                    "[USER-DIVISION]",
                    true,
                    {"TOKUINMA=A"}},
        RefusedFile{"ContractMismatchAtTheEnd",
                    "[USER-NAME]\r\nA\r\n[CONTRACT]\r\nOther\r\n",
                    "Mismatch data error!",
                    2,
                    "Other",
                    false,
                    {"TOKUINMA=A"}},
        RefusedFile{"ContractAloneWithoutValue", "[CONTRACT]\r\n", "Mismatch data error!", 1,
                    "[CONTRACT]", true},
        RefusedFile{"ContractTakesTheValueBefore",
                    "[USER-NAME]\r\nA\r\n[CONTRACT]\r\n",
                    "Mismatch data error!",
                    1,
                    "[CONTRACT]",
                    true,
                    {"TOKUINMA=A"}},
        RefusedFile{"ContractCaseCounts", "[CONTRACT]\r\ncorporate\r\n", "Mismatch data error!", 2,
                    "corporate", false}),
    test_support::Title());

// The contract's last value may be one that another item left behind.
TEST_F(CustomerImportTest, ContractWithoutValueTakesAMatchingValueBefore) {
    Customer("[USER-NAME]\r\nPersonal\r\n[CONTRACT]\r\n");
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    EXPECT_EQ(fakes::Number(kSetting, "KAISHAKBN"), 99U);
}

struct FailedWrite {
    std::string title;
    std::string call;
    int nth = 1;
    std::string text;
    std::string message;
    int state = 2;
    std::string line = {};
    bool item_line = false;
};

class FailedWriteCases : public KeyDiskTest, public ::testing::WithParamInterface<FailedWrite> {};

TEST_P(FailedWriteCases, FailsWithItsRows) {
    const FailedWrite &row = GetParam();
    Customer(row.text);
    fakes::FailCall(row.call, row.nth);
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(LastTrace(5), FailureTrace(row.message, row.state, row.line, row.item_line));
    EXPECT_EQ(fakes::CallCount("CreateFile"), 0);
}

const std::string kTwoTexts = "[USER-NAME]\r\nA\r\n[USER-DIVISION]\r\nB\r\n";
const std::string kTwoKinds = "[CONTRACT]\r\nPersonal\r\n[CONTRACT]\r\nCorporate\r\n";

INSTANTIATE_TEST_SUITE_P(
    CustomerImport, FailedWriteCases,
    ::testing::Values(
        FailedWrite{"TextKey", "AMACRERegCreateKey", 1, kTwoTexts, "CreateKey Error1!", 2,
                    "[USER-DIVISION]", true},
        FailedWrite{"Text", "AMACRERegWriteSz", 1, kTwoTexts, "WriteSz Error1!", 2,
                    "[USER-DIVISION]", true},
        FailedWrite{"NumberKey", "AMACRERegCreateKey", 1, kTwoKinds, "CreateKey Error2!", 2,
                    "[CONTRACT]", true},
        FailedWrite{"Number", "AMACRERegWriteDword", 1, kTwoKinds, "WriteData Error1!", 2,
                    "[CONTRACT]", true},
        FailedWrite{"LastTextKey", "AMACRERegCreateKey", 2, kTwoTexts, "CreateKey Error3!", 2, "B"},
        FailedWrite{"LastText", "AMACRERegWriteSz", 2, kTwoTexts, "WriteSz Error2!", 2, "B"},
        FailedWrite{"LastNumberKey", "AMACRERegCreateKey", 2, kTwoKinds, "CreateKey Error4!", 2,
                    "Corporate"},
        FailedWrite{"LastNumber", "AMACRERegWriteDword", 2, kTwoKinds, "WriteData Error2!", 2,
                    "Corporate"},
        FailedWrite{"OptionCount", "AMACRERegWriteDword", 1, "[SUB-N-CODE 02]\r\nA\r\n",
                    "WriteData Error3!", 2, "A"}),
    test_support::Title());

TEST_F(CustomerImportTest, WhatWasWrittenStays) {
    Customer(kTwoTexts);
    fakes::FailCall("AMACRERegWriteSz", 2);
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(fakes::Text(kSetting, "TOKUINMA"), "A");
    EXPECT_EQ(fakes::Text(kSetting, "BUNMN"), std::nullopt);
}

// ---- Decoding and conversion ------------------------------------------------------------------

TEST_F(CustomerImportTest, TheThreeStagesAreTraced) {
    Customer(ToSjis("[USER-NAME]\r\n例\r\n"));
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    const std::string sjis = ToSjis("[USER-NAME]\r\n例\r\n");
    const std::string euc = ToEuc("[USER-NAME]\r\n例\r\n");
    const std::vector<std::string> trace = ImportTrace();
    ASSERT_GE(trace.size(), 7U);
    EXPECT_THAT(std::vector<std::string>(trace.begin() + 4, trace.begin() + 7),
                ElementsAre("0 1byte-JIS:" + sjis, "0 2byte-JIS:" + sjis, "0 nEUC:" + euc));
}

TEST_F(CustomerImportTest, BuffersAreTwiceTheDecodedSize) {
    EXPECT_EQ(Import(), KEYFD_IMPORTED);
    std::vector<std::string> conversions;
    for (const fakes::Call &call : fakes::Calls()) {
        if (call.function == "kes_AnkZen" || call.function == "ecm_SJIStoEUC") {
            conversions.push_back(call.function + " " + call.detail);
        }
    }
    ASSERT_GE(conversions.size(), 2U);
    EXPECT_EQ(conversions[0], "kes_AnkZen 22 44");
    EXPECT_EQ(conversions[1], "ecm_SJIStoEUC 44 44");
}

TEST_F(CustomerImportTest, AFileThatDoesNotDecodeFails) {
    fakes::FailCall("UUCdDeCodingFromFile");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_THAT(LastTrace(2), ElementsAre("1 UUCdDeCodingFromFile() failed!!", "0 <return 1."));
}

TEST_F(CustomerImportTest, AMissingFileFails) {
    fakes::TheLibc().mounts = {{"/dev/fd0", "/media/floppy0"}};
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_EQ(fakes::Calls().back().detail, "/media/floppy0/AMVLXUSR.INF");
    EXPECT_THAT(LastTrace(2), ElementsAre("1 UUCdDeCodingFromFile() failed!!", "0 <return 1."));
}

TEST_F(CustomerImportTest, EachAllocationHasItsMessage) {
    fakes::FailAllocation(1);
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_THAT(LastTrace(2), ElementsAre("2 hMem malloc failed!", "0 <return 1."));
    fakes::FailAllocation(2);
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_THAT(LastTrace(2), ElementsAre("2 szhMem malloc failed!", "0 <return 1."));
    EXPECT_FALSE(fakes::HasTrace(0, "1byte-JIS:[USER-NAME]\r\nEXAMPLE\r\n"));
}

TEST_F(CustomerImportTest, AFailedWideningFails) {
    fakes::FailCall("kes_AnkZen");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_THAT(LastTrace(3), ElementsAre("0 1byte-JIS:[USER-NAME]\r\nEXAMPLE\r\n",
                                          "1 kes_AnkZen() failed!!", "0 <return 1."));
}

TEST_F(CustomerImportTest, BytesThatAreNoShiftJisFail) {
    Customer("[USER-NAME]\r\n\x81\x20\r\n");
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_THAT(LastTrace(3), ElementsAre("0 2byte-JIS:[USER-NAME]\r\n\x81\x20\r\n",
                                          "1 ecm_SJIStoEUC() failed!!", "0 <return 1."));
    EXPECT_TRUE(Writes().empty());
}

// A text that the conversion makes as long as its buffer: the last byte is not the text's end.
TEST_F(CustomerImportTest, ATextThatFillsItsBufferIsNotOverrun) {
    Customer(std::string(64, '\xB1'));  // half-width katakana: two bytes each in EUC-JP
    EXPECT_EQ(Import(), KEYFD_FAILED);
    EXPECT_TRUE(fakes::HasTrace(1, "Case 0 : itemname = FALSE"));
}

}  // namespace
