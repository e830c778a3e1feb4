// The customer's data: every value, its read size, the kind and what a failed call does.
#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <algorithm>

#include "contract_support.h"
#include "support/title.h"

namespace {

using contract::kKey;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;

struct Field {
    const char *title;  // the value's name
    char (VLX_USER_DATA::*text)[VLX_FIELD_SIZE];
    std::size_t read_size;
};

constexpr Field kFields[] = {
    {"TOKUINMA", &VLX_USER_DATA::szNameKana, 51},
    {"TOKUINMN", &VLX_USER_DATA::szName, 81},
    {"BUNMN", &VLX_USER_DATA::szDepartment, 61},
    {"ZIPNO", &VLX_USER_DATA::szPostalCode, 8},
    {"ADRSNMA", &VLX_USER_DATA::szAddressKana, 51},
    {"ADRSNMN", &VLX_USER_DATA::szAddress, 81},
    {"SHOZAINMN", &VLX_USER_DATA::szAddressDetails, 41},
    {"BUTEL", &VLX_USER_DATA::szTelephone, 31},
    {"MAIL", &VLX_USER_DATA::szMail, 81},
    {"BUTANNMA", &VLX_USER_DATA::szContactKana, 21},
    {"BUTANNMN", &VLX_USER_DATA::szContact, 31},
    {"USERCODE", &VLX_USER_DATA::szUserCode, 11},
};

// A record of which each text is the name of its value.
VLX_USER_DATA NamedRecord() {
    VLX_USER_DATA data = {};
    data.dwKind = VLX_CUSTOMER_CORPORATE;
    for (const Field &field : kFields) {
        contract::Fill(data.*field.text, field.title);
    }
    return data;
}

void StoreNamedRecord() {
    fakes::StoreNumber(kKey, "KAISHAKBN", 1);
    for (const Field &field : kFields) {
        fakes::StoreText(kKey, field.title,
                         std::string(field.title).substr(0, field.read_size - 1));
    }
}

class CustomerTest : public contract::ContractTest {};

class CustomerFieldTest : public contract::ContractTest,
                          public ::testing::WithParamInterface<Field> {};

INSTANTIATE_TEST_SUITE_P(Values, CustomerFieldTest, ::testing::ValuesIn(kFields),
                         test_support::Title());

TEST_P(CustomerFieldTest, ReadsUpToItsReadSize) {
    const std::string longest(GetParam().read_size - 1, 'x');
    fakes::StoreText(kKey, GetParam().title, longest);
    VLX_USER_DATA data = {};
    EXPECT_EQ(GetVlxUserSetting(&data), 1);
    EXPECT_STREQ(data.*GetParam().text, longest.c_str());
    for (const Field &field : kFields) {
        EXPECT_TRUE(field.text == GetParam().text || (data.*field.text)[0] == '\0') << field.title;
    }
}

TEST_P(CustomerFieldTest, ReadsALargerValueAsEmpty) {
    fakes::StoreText(kKey, GetParam().title, std::string(GetParam().read_size, 'x'));
    VLX_USER_DATA data = {};
    EXPECT_EQ(GetVlxUserSetting(&data), 1);
    EXPECT_STREQ(data.*GetParam().text, "");
}

TEST_P(CustomerFieldTest, ReadsAValueWithoutTerminator) {
    const std::string text(GetParam().read_size, 'x');
    fakes::StoreBytes(kKey, GetParam().title, REG_SZ, text);
    VLX_USER_DATA data = {};
    EXPECT_EQ(GetVlxUserSetting(&data), 1);
    EXPECT_STREQ(data.*GetParam().text, text.c_str());
}

struct Kind {
    const char *title;
    DWORD stored;
    DWORD read;
};
class CustomerKindTest : public contract::ContractTest,
                         public ::testing::WithParamInterface<Kind> {};

TEST_P(CustomerKindTest, Reads) {
    fakes::StoreNumber(kKey, "KAISHAKBN", GetParam().stored);
    VLX_USER_DATA data = {};
    data.dwKind = 7;
    EXPECT_EQ(GetVlxUserSetting(&data), 1);
    EXPECT_EQ(data.dwKind, GetParam().read);
}
INSTANTIATE_TEST_SUITE_P(Stored, CustomerKindTest,
                         ::testing::Values(Kind{"Corporate", 1, 1}, Kind{"Personal", 99, 0},
                                           Kind{"Zero", 0, 0}, Kind{"Two", 2, 0},
                                           Kind{"Large", 0xFFFFFFFF, 0}),
                         test_support::Title());

class CustomerKindWriteTest : public contract::ContractTest,
                              public ::testing::WithParamInterface<Kind> {};

TEST_P(CustomerKindWriteTest, Writes) {
    VLX_USER_DATA data = {};
    data.dwKind = GetParam().read;
    EXPECT_EQ(SetVlxUserSetting(&data), 1);
    EXPECT_EQ(fakes::Number(kKey, "KAISHAKBN"), GetParam().stored);
}
INSTANTIATE_TEST_SUITE_P(Given, CustomerKindWriteTest,
                         ::testing::Values(Kind{"Corporate", 1, 1}, Kind{"Personal", 99, 0},
                                           Kind{"Seven", 0, 7}, Kind{"NinetyNine", 0, 99}),
                         test_support::Title());

TEST_F(CustomerTest, ReadingTracesAndOpensTheKeyForBothUses) {
    fakes::CreateKey(kKey);
    VLX_USER_DATA data;
    std::memset(&data, 0x55, sizeof data);
    EXPECT_EQ(GetVlxUserSetting(&data), 1);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >lpVlxUserData=0x[0-9a-f]+"), "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
    EXPECT_EQ(fakes::Trace()[0].function, "GetVlxUserSetting");
    EXPECT_EQ(fakes::Calls()[0].detail, std::string(kKey) + " sam=0x2001B");
    const VLX_USER_DATA empty = {};
    EXPECT_EQ(std::memcmp(&data, &empty, sizeof data), 0);
}

TEST_F(CustomerTest, ReadingCreatesAMissingKey) {
    VLX_USER_DATA data = {};
    EXPECT_EQ(GetVlxUserSetting(&data), 1);
    EXPECT_TRUE(fakes::KeyExists(kKey));
    EXPECT_EQ(fakes::CallCount("RegCreateKey"), 1);
}

TEST_F(CustomerTest, QueriesInTheOrderOfTheTable) {
    StoreNamedRecord();
    VLX_USER_DATA data = {};
    EXPECT_EQ(GetVlxUserSetting(&data), 1);
    std::vector<std::string> queried;
    for (const fakes::Call &call : fakes::Calls()) {
        if (call.function == "RegQueryValueEx") {
            queried.push_back(ValueOf(call));
        }
    }
    EXPECT_THAT(queried, ElementsAre("KAISHAKBN", "TOKUINMA", "TOKUINMN", "BUNMN", "ZIPNO",
                                     "ADRSNMA", "ADRSNMN", "SHOZAINMN", "BUTEL", "MAIL", "BUTANNMA",
                                     "BUTANNMN", "USERCODE"));
}

TEST_F(CustomerTest, WritesAllButTheUserCode) {
    fakes::StoreText(kKey, "USERCODE", "OLD");
    const VLX_USER_DATA data = NamedRecord();
    EXPECT_EQ(SetVlxUserSetting(&data), 1);
    EXPECT_THAT(
        fakes::ValueNames(kKey),
        ElementsAre("USERCODE", "KAISHAKBN", "TOKUINMA", "TOKUINMN", "BUNMN", "ZIPNO", "ADRSNMA",
                    "ADRSNMN", "SHOZAINMN", "BUTEL", "MAIL", "BUTANNMA", "BUTANNMN"));
    EXPECT_EQ(fakes::Text(kKey, "USERCODE"), "OLD");
    for (const Field &field : kFields) {
        if (std::string_view(field.title) != "USERCODE") {
            EXPECT_EQ(fakes::Text(kKey, field.title), field.title);
        }
    }
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >lpVlxUserData=0x[0-9a-f]+"), "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].function, "SetVlxUserSetting");
}

TEST_F(CustomerTest, WritesMoreThanItReads) {
    VLX_USER_DATA data = NamedRecord();
    contract::Fill(data.szPostalCode, std::string(127, '1'));
    EXPECT_EQ(SetVlxUserSetting(&data), 1);
    EXPECT_EQ(fakes::Text(kKey, "ZIPNO"), std::string(127, '1'));
    EXPECT_EQ(GetVlxUserSetting(&data), 1);
    EXPECT_STREQ(data.szPostalCode, "");
}

TEST_F(CustomerTest, LeavesOutAFieldWithoutEnd) {
    fakes::StoreText(kKey, "BUNMN", "OLD");
    VLX_USER_DATA data = NamedRecord();
    std::memset(data.szDepartment, 'x', sizeof data.szDepartment);
    EXPECT_EQ(SetVlxUserSetting(&data), 1);
    EXPECT_EQ(fakes::Text(kKey, "BUNMN"), "OLD");
    EXPECT_EQ(fakes::Text(kKey, "ZIPNO"), "ZIPNO");
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 BUNMN has no end within 128 bytes."));
}

TEST_F(CustomerTest, AFailedCallOfReadingCostsOnlyItsOwnField) {
    VLX_USER_DATA data;
    BOOL result = FALSE;
    FailEachCall(
        StoreNamedRecord, [&] { result = GetVlxUserSetting(&data); },
        [&](const fakes::Call &call) {
            EXPECT_EQ(result, 1);
            const std::string failed = call.function == "RegQueryValueEx" ? ValueOf(call) : "";
            EXPECT_EQ(data.dwKind, failed == "KAISHAKBN" ? 0U : 1U);
            for (const Field &field : kFields) {
                const std::string whole = std::string(field.title).substr(0, field.read_size - 1);
                EXPECT_EQ(std::string(data.*field.text), failed == field.title ? "" : whole);
            }
        });
}

TEST_F(CustomerTest, AFailedCallOfWritingCostsOnlyItsOwnValue) {
    const VLX_USER_DATA data = NamedRecord();
    BOOL result = FALSE;
    FailEachCall([] {}, [&] { result = SetVlxUserSetting(&data); },
                 [&](const fakes::Call &call) {
                     EXPECT_EQ(result, 1);
                     if (call.function == "RegCreateKey") {
                         EXPECT_FALSE(fakes::KeyExists(kKey));
                         return;
                     }
                     const std::string failed =
                         call.function == "RegSetValueEx" ? ValueOf(call) : "";
                     EXPECT_EQ(fakes::ValueNames(kKey).size(), failed.empty() ? 12U : 11U);
                     EXPECT_TRUE(failed.empty() || !fakes::Bytes(kKey, failed));
                 });
}

TEST_F(CustomerTest, WithoutAnyKeyTheRecordIsEmpty) {
    fakes::FailCall("RegOpenKeyEx");
    fakes::FailCall("RegCreateKey");
    VLX_USER_DATA data = NamedRecord();
    EXPECT_EQ(GetVlxUserSetting(&data), 1);
    const VLX_USER_DATA empty = {};
    EXPECT_EQ(std::memcmp(&data, &empty, sizeof data), 0);
}

}  // namespace
