// The lines and items of GetUSRInfo.
#include <cstring>
#include <vector>

#include "records/customer_items.h"
#include "support/title.h"
#include "user_information.h"

namespace {

using test_support::ToSjis;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using ItemMap = std::map<int, std::string>;

struct ReadCase {
    std::string title;
    std::string text;  // Shift-JIS
    LONG result = USR_INFO_ENGLISH;
    ItemMap items = {};
    std::vector<std::string> failures = {};
};

class UserItemsTest : public UserInformationTest, public ::testing::WithParamInterface<ReadCase> {};

TEST_P(UserItemsTest, Gives) {
    EXPECT_EQ(ReadText(GetParam().text), GetParam().result);
    EXPECT_EQ(Items(), GetParam().items);
    EXPECT_EQ(Failures(), GetParam().failures);
    EXPECT_EQ(information_ == nullptr, GetParam().result == USR_INFO_FAILED);
}

std::string Repeated(std::size_t count, char byte) {
    return std::string(count, byte);
}

// Lines of at most 1000 bytes, joined as a value is.
std::string Lines(std::size_t count) {
    std::string lines;
    for (std::size_t i = 0; i < count; ++i) {
        lines += Repeated(1000, 'v') + "\n";
    }
    return lines;
}

INSTANTIATE_TEST_SUITE_P(
    Languages, UserItemsTest,
    ::testing::Values(
        ReadCase{"English", "[USER-NAME]\nA\n", USR_INFO_ENGLISH, {{1, "A"}}},
        ReadCase{"Japanese", ToSjis("[お客様名称(カナ)]\nA\n"), USR_INFO_JAPANESE, {{1, "A"}}},
        ReadCase{"FirstHeaderUnknown",
                 "[SHOE-SIZE]\nA\n",
                 USR_INFO_FAILED,
                 {},
                 {"1 SHOE-SIZE not exist"}},
        ReadCase{"LaterHeaderUnknown",
                 "[CONTRACT]\nA\n[SHOE-SIZE]\nB\n",
                 USR_INFO_FAILED,
                 {},
                 {"1 SHOE-SIZE not exist"}},
        ReadCase{"EnglishHeaderInAJapaneseFile",
                 ToSjis("[お客様属性]\nA\n[USER-NAME]\nB\n"),
                 USR_INFO_FAILED,
                 {},
                 {"1 USER-NAME not exist"}},
        ReadCase{"JapaneseHeaderInAnEnglishFile",
                 ToSjis("[CONTRACT]\nA\n[お客様名称(カナ)]\nB\n"),
                 USR_INFO_FAILED,
                 {},
                 {"1 " + test_support::ToEuc("お客様名称(カナ)") + " not exist"}},
        ReadCase{"StarAlone", "[*]\nA\n", USR_INFO_ENGLISH, {{2, "A"}}},
        ReadCase{"EmptyHeader", "[]\nA\n", USR_INFO_FAILED, {}, {"1  not exist"}}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Headers, UserItemsTest,
    ::testing::Values(
        ReadCase{"TextBeforeTheFirstHeader",
                 "A\n[CONTRACT]\nB\n",
                 USR_INFO_FAILED,
                 {},
                 {"1 item  error "}},
        ReadCase{"EmptyLineBeforeTheFirstHeader",
                 "\r\n[CONTRACT]\r\nB\r\n",
                 USR_INFO_FAILED,
                 {},
                 {"1 item  error "}},
        ReadCase{"SubDeviceWithANumber", "[SUB-N-CODE 01]\nA\n", USR_INFO_ENGLISH, {{19, "A"}}},
        ReadCase{"SubDeviceWithAnything", "[SUB-N-CODE x y]\nA\n", USR_INFO_ENGLISH, {{19, "A"}}},
        ReadCase{"SubDeviceAlone", "[SUB-N-CODE ]\nA\n", USR_INFO_ENGLISH, {{19, "A"}}},
        ReadCase{"SubDeviceWithoutBlank",
                 "[SUB-N-CODE1]\nA\n",
                 USR_INFO_FAILED,
                 {},
                 {"1 SUB-N-CODE1 not exist"}},
        ReadCase{"JapaneseDeviceCode", ToSjis("[装置コード]\nA\n"), USR_INFO_JAPANESE, {{14, "A"}}},
        ReadCase{"JapaneseSubDevice",
                 ToSjis("[装置コード 1]\nA\n[装置コード 2]\nB\n"),
                 USR_INFO_JAPANESE,
                 {{19, "B"}}},
        ReadCase{"NothingAfterAHeader", "[CONTRACT]\n", USR_INFO_ENGLISH, {}},
        ReadCase{"HeaderAfterHeader", "[CONTRACT]\n[USER-NAME]\nA\n", USR_INFO_ENGLISH, {{1, "A"}}},
        ReadCase{
            "TheLaterValueStays", "[CONTRACT]\nA\n[CONTRACT]\nB\n", USR_INFO_ENGLISH, {{0, "B"}}},
        ReadCase{"TheLaterEmptyValueStays", "[CONTRACT]\nA\n[CONTRACT]\n", USR_INFO_ENGLISH, {}},
        ReadCase{
            "HeaderWithoutLineEnd", "[CONTRACT]\nA\n[USER-NAME]", USR_INFO_ENGLISH, {{0, "A"}}},
        ReadCase{
            "HalfABracket", "[CONTRACT]\n[\n]\nA]\n[A\n", USR_INFO_ENGLISH, {{0, "[\n]\nA]\n[A"}}}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    Values, UserItemsTest,
    ::testing::Values(
        ReadCase{"ThreeLinesAndABlankOne",
                 "[CONTRACT]\nA\n\nB\nC\n",
                 USR_INFO_ENGLISH,
                 {{0, "A\nB\nC"}}},
        ReadCase{"CrLf", "[CONTRACT]\r\nA\r\n\r\nB\r\n", USR_INFO_ENGLISH, {{0, "A\nB"}}},
        ReadCase{"CrOnly", "[CONTRACT]\rA\rB\r", USR_INFO_ENGLISH, {{0, "A\nB"}}},
        ReadCase{"BlankLinesFirst", "[CONTRACT]\n\n\nA\n", USR_INFO_ENGLISH, {{0, "A"}}},
        ReadCase{"NoFinalLineEnd", "[CONTRACT]\nAB", USR_INFO_ENGLISH, {{0, "AB"}}},
        ReadCase{"OneByteWithoutLineEnd", "[CONTRACT]\nA", USR_INFO_ENGLISH, {{0, "A"}}},
        ReadCase{"EndMarkAfterText", "[CONTRACT]\nAB\x1A", USR_INFO_ENGLISH, {{0, "AB"}}},
        ReadCase{"EndMarkAlone", "[CONTRACT]\nA\n\x1A", USR_INFO_ENGLISH, {{0, "A\n\x1A"}}},
        ReadCase{
            "EndMarkBeforeTheLineEnd", "[CONTRACT]\nA\x1A\n", USR_INFO_ENGLISH, {{0, "A\x1A"}}},
        ReadCase{"ALineOfTheLimit",
                 "[CONTRACT]\n" + Repeated(1022, 'v') + "\n",
                 USR_INFO_ENGLISH,
                 {{0, Repeated(1022, 'v')}}},
        ReadCase{"ALineOverTheLimit",
                 "[CONTRACT]\n" + Repeated(1023, 'v') + "\n",
                 USR_INFO_FAILED,
                 {},
                 {"1 line of 1024 bytes is longer than 1023 bytes"}},
        ReadCase{"AValueOfTheLimit",
                 "[CONTRACT]\n" + Lines(16) + Repeated(368, 'v') + "\n",
                 USR_INFO_ENGLISH,
                 {{0, Lines(16) + Repeated(368, 'v')}}},
        ReadCase{"AValueOverTheLimit",
                 "[CONTRACT]\n" + Lines(16) + Repeated(369, 'v') + "\n",
                 USR_INFO_FAILED,
                 {},
                 {"1 value of CONTRACT is longer than 16384 bytes"}}),
    test_support::Title());

// ---- The whole table ----------------------------------------------------------------------------

class WholeTableTest : public UserInformationTest,
                       public ::testing::WithParamInterface<ITEM_LANGUAGE> {};

TEST_P(WholeTableTest, EachItemHasItsPlace) {
    std::string text;
    ItemMap expected;
    for (int row = 0; row < USR_INFO_ITEM_COUNT; ++row) {
        const ITEM_ROW &item = CUSTOMER_ITEMS[row];
        const std::string name = item.lpszName[GetParam()];
        if (name == ITEM_NOT_IN_ENGLISH) {
            continue;
        }
        const std::string value = "value " + std::to_string(row);
        text.append("[").append(name);
        text.append(item.eMatch == ITEM_NUMBERED ? "01]\r\n" : "]\r\n").append(value + "\r\n");
        expected[row] = value;
    }
    EXPECT_EQ(ReadText(test_support::Convert(text, "EUC-JP-MS", "CP932")),
              GetParam() == ITEM_JAPANESE ? USR_INFO_JAPANESE : USR_INFO_ENGLISH);
    EXPECT_EQ(Items(), expected);
    EXPECT_EQ(expected.size(), GetParam() == ITEM_JAPANESE ? 27U : 23U);
}

INSTANTIATE_TEST_SUITE_P(Languages, WholeTableTest, ::testing::Values(ITEM_ENGLISH, ITEM_JAPANESE));

// ---- The line scanner ---------------------------------------------------------------------------

struct Scan {
    const char *text;
    DWORD start;
    DWORD result;
};

TEST_F(UserInformationTest, LineEnds) {
    for (const Scan &scan :
         {Scan{"AB\nC", 0, 2}, Scan{"AB\rC", 0, 2}, Scan{"\r\nA", 0, 0}, Scan{"\r\nA", 1, 1},
          Scan{"ABC", 0, 2}, Scan{"ABC", 2, 2}, Scan{"AB\n", 0, 2}, Scan{"A", 0, 0}}) {
        const auto size = static_cast<DWORD>(std::strlen(scan.text));
        EXPECT_EQ(SEC_Usr_GetCRLF(scan.start, scan.text, size), scan.result) << scan.text;
    }
    EXPECT_THAT(fakes::TraceLines(), IsEmpty());
    EXPECT_EQ(SEC_Usr_GetCRLF(3, "ABC", 3), static_cast<DWORD>(-1));
    EXPECT_EQ(SEC_Usr_GetCRLF(0, "", 0), static_cast<DWORD>(-1));
    EXPECT_THAT(fakes::TraceLines(), ElementsAre("1 dwStartPos >= dwSize,go to error!",
                                                 "1 dwStartPos >= dwSize,go to error!"));
    EXPECT_EQ(fakes::Trace()[0].function, "SEC_Usr_GetCRLF");
}

}  // namespace
