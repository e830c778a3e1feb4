// The grammar of item files: line ends, item lines, names and numbers.
#include "keyfd/item_text.h"

#include <gmock/gmock.h>
#include <records/address_items.h>
#include <records/customer_items.h>

#include <string>

#include "support/encoding.h"
#include "support/title.h"

namespace {

using test_support::ToEuc;

struct LineEnd {
    std::string title;
    std::string text;
    std::string stripped;
};

class LineEndCases : public ::testing::TestWithParam<LineEnd> {};

TEST_P(LineEndCases, IsRemoved) {
    std::string text = GetParam().text;
    EXPECT_EQ(StripLineEnd(text.data()), GetParam().stripped.size());
    EXPECT_EQ(std::string(text.c_str()), GetParam().stripped);
}

INSTANTIATE_TEST_SUITE_P(ItemText, LineEndCases,
                         ::testing::Values(LineEnd{"Empty", "", ""}, LineEnd{"None", "A", "A"},
                                           LineEnd{"Lf", "A\n", "A"}, LineEnd{"CrLf", "A\r\n", "A"},
                                           LineEnd{"Cr", "A\r", "A"},
                                           LineEnd{"LfCrLosesTheCrOnly", "A\n\r", "A\n"},
                                           LineEnd{"EndMarkThenLfThenCr", "A\r\n\x1A", "A"},
                                           LineEnd{"EndMarkBeforeLfStays", "A\x1A\n", "A\x1A"},
                                           LineEnd{"TwoEndMarksLoseOne", "A\x1A\x1A", "A\x1A"},
                                           LineEnd{"ARunLosesOneOfEach", "A\r\n\r\n", "A\r\n"},
                                           LineEnd{"OnlyALineEnd", "\r\n", ""}),
                         test_support::Title());

ITEM_LINE LineOf(const std::string &text) {
    ITEM_LINE line;
    EXPECT_TRUE(SetItemLine(&line, text.data(), text.size()));
    return line;
}

TEST(ItemLineTest, ALineEndsAtItsFirstZeroByte) {
    const ITEM_LINE line = LineOf(std::string("[A]\0B", 5));
    EXPECT_STREQ(line.szText, "[A]");
    EXPECT_EQ(line.dwLength, 3U);
    EXPECT_TRUE(IsItemLine(line));
}

TEST(ItemLineTest, TheLongestLineFits) {
    const std::string text = std::string(KEYDISK_MAX_LINE - 2, 'x') + "\r\n";
    EXPECT_EQ(LineOf(text).dwLength, KEYDISK_MAX_LINE - 2);
}

TEST(ItemLineTest, OneByteMoreIsRefusedAndShown) {
    const std::string text = std::string(KEYDISK_MAX_LINE - 1, 'x') + "\r\n";
    ITEM_LINE line;
    EXPECT_FALSE(SetItemLine(&line, text.data(), text.size()));
    EXPECT_EQ(std::string(line.szText), std::string(KEYDISK_MAX_LINE - 1, 'x'));
}

TEST(ItemLineTest, FirstAndLastByteDecide) {
    EXPECT_TRUE(IsItemLine(LineOf("[A]\r\n")));
    EXPECT_TRUE(IsItemLine(LineOf("[]")));
    EXPECT_TRUE(IsItemLine(LineOf("[\x83\x5D"))) << "the last byte is a trail byte";
    EXPECT_FALSE(IsItemLine(LineOf("[")));
    EXPECT_FALSE(IsItemLine(LineOf("]")));
    EXPECT_FALSE(IsItemLine(LineOf(" [A]")));
    EXPECT_FALSE(IsItemLine(LineOf("[A] ")));
    EXPECT_FALSE(IsItemLine(LineOf("")));
}

TEST(ItemLineTest, TheNameIsWhatIsBetweenTheBrackets) {
    char name[KEYDISK_MAX_LINE + 1];
    GetItemName(LineOf("[[A]]"), name);
    EXPECT_STREQ(name, "[A]");
    GetItemName(LineOf("[]"), name);
    EXPECT_STREQ(name, "");
}

// Every row under its own name, in both languages and both tables. The first of several rows with
// the same English name stands for all of them.
void ExpectOwnNames(const ITEM_TABLE &table, ITEM_LANGUAGE language) {
    const ITEM_ROW *first_without_english = nullptr;
    for (std::size_t i = 0; i < table.dwCount; ++i) {
        const ITEM_ROW *row = &table.lpRows[i];
        const ITEM_ROW *expected = row;
        if (language == ITEM_ENGLISH && std::string(row->lpszName[language]) == "*") {
            first_without_english = first_without_english == nullptr ? row : first_without_english;
            expected = first_without_english;
        }
        std::string name = row->lpszName[language];
        name += row->eMatch == ITEM_NUMBERED ? "01" : "";
        const ITEM_LOOKUP lookup = FindItem(table, language, name.c_str());
        EXPECT_EQ(lookup.eResult, ITEM_FOUND) << i;
        EXPECT_EQ(lookup.lpRow, expected) << i;
    }
}

TEST(FindItemTest, EveryRowByItsName) {
    ExpectOwnNames(CUSTOMER_TABLE, ITEM_ENGLISH);
    ExpectOwnNames(CUSTOMER_TABLE, ITEM_JAPANESE);
    ExpectOwnNames(ADDRESS_TABLE, ITEM_ENGLISH);
    ExpectOwnNames(ADDRESS_TABLE, ITEM_JAPANESE);
}

// Every row's name on a disk of the other language shows the language, at that row or before it.
void ExpectOtherLanguage(const ITEM_TABLE &table, ITEM_LANGUAGE language) {
    for (std::size_t i = 0; i < table.dwCount; ++i) {
        const std::string name = table.lpRows[i].lpszName[OtherLanguage(language)];
        const ITEM_LOOKUP lookup = FindItem(table, language, (name + "x").c_str());
        EXPECT_EQ(lookup.eResult, ITEM_WRONG_LANGUAGE) << i;
        EXPECT_LE(lookup.lpRow, &table.lpRows[i]) << i;
    }
}

TEST(FindItemTest, EveryRowInTheOtherLanguage) {
    ExpectOtherLanguage(CUSTOMER_TABLE, ITEM_ENGLISH);
    ExpectOtherLanguage(CUSTOMER_TABLE, ITEM_JAPANESE);
    ExpectOtherLanguage(ADDRESS_TABLE, ITEM_ENGLISH);
    ExpectOtherLanguage(ADDRESS_TABLE, ITEM_JAPANESE);
}

struct Name {
    std::string title;
    ITEM_LANGUAGE language = ITEM_ENGLISH;
    std::string name;  // UTF-8
    ITEM_RESULT result = ITEM_UNKNOWN;
    int row = -1;
};

class NameCases : public ::testing::TestWithParam<Name> {};

TEST_P(NameCases, IsFoundOrRefused) {
    const Name &row = GetParam();
    const ITEM_LOOKUP lookup = FindItem(CUSTOMER_TABLE, row.language, ToEuc(row.name).c_str());
    EXPECT_EQ(lookup.eResult, row.result);
    EXPECT_EQ(lookup.lpRow, row.row < 0 ? nullptr : &CUSTOMER_ITEMS[row.row]);
}

INSTANTIATE_TEST_SUITE_P(
    ItemText, NameCases,
    ::testing::Values(
        Name{"Asterisk", ITEM_ENGLISH, "*", ITEM_FOUND, 2},
        Name{"AsteriskAndMoreInEnglish", ITEM_ENGLISH, "*x", ITEM_UNKNOWN},
        Name{"AsteriskInJapanese", ITEM_JAPANESE, "*", ITEM_WRONG_LANGUAGE, 2},
        Name{"AsteriskAndMoreInJapanese", ITEM_JAPANESE, "*x", ITEM_WRONG_LANGUAGE, 2},
        Name{"EmptyEnglish", ITEM_ENGLISH, "", ITEM_UNKNOWN},
        Name{"EmptyJapanese", ITEM_JAPANESE, "", ITEM_UNKNOWN},
        Name{"CaseCounts", ITEM_ENGLISH, "Contract", ITEM_UNKNOWN},
        Name{"BlanksCount", ITEM_ENGLISH, "CONTRACT ", ITEM_UNKNOWN},
        Name{"LongerThanARow", ITEM_ENGLISH, "CONTRACTS", ITEM_UNKNOWN},
        Name{"ShorterThanARow", ITEM_ENGLISH, "CONTRAC", ITEM_UNKNOWN},
        Name{"Number", ITEM_ENGLISH, "SUB-N-CODE 01", ITEM_FOUND, 19},
        Name{"OneDigit", ITEM_ENGLISH, "SUB-N-CODE 1", ITEM_BAD_NUMBER, 19},
        Name{"ThreeDigits", ITEM_ENGLISH, "SUB-N-CODE 001", ITEM_BAD_NUMBER, 19},
        Name{"NoDigit", ITEM_ENGLISH, "SUB-N-CODE ", ITEM_BAD_NUMBER, 19},
        Name{"NoBlank", ITEM_ENGLISH, "SUB-N-CODE", ITEM_UNKNOWN},
        Name{"NoBlankButDigits", ITEM_ENGLISH, "SUB-N-CODE01", ITEM_UNKNOWN},
        Name{"JapaneseNumber", ITEM_JAPANESE, "装置コード 12", ITEM_FOUND, 19},
        Name{"JapaneseDeviceCode", ITEM_JAPANESE, "装置コード", ITEM_FOUND, 14},
        Name{"JapaneseCharacterAsNumber", ITEM_JAPANESE, "装置コード 漢", ITEM_FOUND, 19},
        Name{"JapaneseDeviceCodeInEnglish", ITEM_ENGLISH, "装置コード 12", ITEM_WRONG_LANGUAGE, 14},
        Name{"EnglishNumberInJapanese", ITEM_JAPANESE, "SUB-N-CODE 01", ITEM_WRONG_LANGUAGE, 19},
        Name{"FullWidthDigits", ITEM_JAPANESE, "装置コード １２", ITEM_BAD_NUMBER, 19}),
    test_support::Title());

struct Number {
    std::string title;
    std::string digits;
    int value = 0;
};

class NumberCases : public ::testing::TestWithParam<Number> {};

TEST_P(NumberCases, IsTwoBytes) {
    const std::string name = "SUB-N-CODE " + GetParam().digits;
    const ITEM_NUMBER number = GetItemNumber(CUSTOMER_ITEMS[19], ITEM_ENGLISH, name.c_str());
    EXPECT_EQ(number.nValue, GetParam().value);
    EXPECT_EQ(std::string(number.szText), GetParam().digits);
}

INSTANTIATE_TEST_SUITE_P(
    ItemText, NumberCases,
    ::testing::Values(Number{"Zero", "00", 0}, Number{"One", "01", 1},
                      Number{"NinetyNine", "99", 99}, Number{"Letters", "AB", 17 * 10 + 18},
                      Number{"BelowZero", "//", -11},
                      Number{"EucBytesAreNegative", "\xB4\xC1", (-76 - 48) * 10 + (-63 - 48)}),
    test_support::Title());

}  // namespace
