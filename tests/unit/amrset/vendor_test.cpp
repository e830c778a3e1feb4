// The dealer's data and the list of dealers.
#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include "contract_support.h"
#include "support/title.h"

namespace {

using contract::kKey;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;

struct Field {
    const char *title;  // the value's name
    char (VLX_VEND_DATA::*text)[VLX_FIELD_SIZE];
    std::size_t read_size;
};

constexpr Field kFields[] = {
    {"SYSSHOPNMN", &VLX_VEND_DATA::szDealer, 51},
    {"SYSEIGYOBUNMN", &VLX_VEND_DATA::szSalesOffice, 61},
    {"SYSEIGYONMN", &VLX_VEND_DATA::szSalesName, 41},
    {"SYSEIGYOTEL", &VLX_VEND_DATA::szSalesTelephone, 31},
    {"SYSSEBU", &VLX_VEND_DATA::szEngineerDepartment, 61},
    {"SYSSENMN", &VLX_VEND_DATA::szEngineerName, 41},
    {"SYSSETEL", &VLX_VEND_DATA::szEngineerTelephone, 31},
};

void StoreNamedRecord() {
    for (const Field &field : kFields) {
        fakes::StoreText(kKey, field.title, field.title);
    }
}

VLX_VEND_DATA NamedRecord() {
    VLX_VEND_DATA data = {};
    for (const Field &field : kFields) {
        contract::Fill(data.*field.text, field.title);
    }
    return data;
}

class VendorTest : public contract::ContractTest {
  protected:
    std::vector<std::string> Read() {
        count_ = 4711;
        contract::Buffers dealers(20, VLX_DEALER_SIZE);
        result_ = GetVlxVendSetting(&data_, dealers.Data(), &count_);
        return dealers.Texts(result_ == 1 ? count_ : 0);
    }
    VLX_VEND_DATA data_ = {};
    DWORD count_ = 0;
    BOOL result_ = FALSE;
};

class VendorFieldTest : public VendorTest, public ::testing::WithParamInterface<Field> {};

INSTANTIATE_TEST_SUITE_P(Values, VendorFieldTest, ::testing::ValuesIn(kFields),
                         test_support::Title());

TEST_P(VendorFieldTest, ReadsUpToItsReadSize) {
    const std::string longest(GetParam().read_size - 1, 'x');
    fakes::StoreText(kKey, GetParam().title, longest);
    Read();
    EXPECT_EQ(data_.*GetParam().text, longest);
}

TEST_P(VendorFieldTest, ReadsALargerOrMissingValueAsEmpty) {
    std::memset(&data_, 0x55, sizeof data_);
    Read();
    EXPECT_STREQ(data_.*GetParam().text, "");
    fakes::StoreText(kKey, GetParam().title, std::string(GetParam().read_size, 'x'));
    Read();
    EXPECT_STREQ(data_.*GetParam().text, "");
}

TEST_P(VendorFieldTest, OneByteIsTooLittleForTheDealersNameAlone) {
    fakes::StoreBytes(kKey, GetParam().title, REG_SZ, "X");
    Read();
    EXPECT_STREQ(data_.*GetParam().text,
                 std::string_view(GetParam().title) == "SYSSHOPNMN" ? "" : "X");
}

TEST_F(VendorTest, AnEnglishSystemHasNoDealersAndNeedsNoFile) {
    StoreNamedRecord();
    EXPECT_THAT(Read(), ElementsAre());
    EXPECT_EQ(result_, 1);
    EXPECT_STREQ(data_.szEngineerTelephone, "SYSSETEL");
    EXPECT_EQ(fakes::CallCount("CreateFile"), 0);
    EXPECT_THAT(
        fakes::TraceLines(),
        ElementsAre(
            MatchesRegex("0 >lpVlxVendData=0x[0-9a-f]+,vendData=0x[0-9a-f]+,vendLen=0x[0-9a-f]+"),
            "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].function, "GetVlxVendSetting");
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
}

TEST_F(VendorTest, AJapaneseSystemListsTheDealersOfFile2) {
    UseJapanese();
    StoreNamedRecord();
    fakes::AddFile(contract::kJapanese2, "# [Seller_Name]\n[SELLER_NAME]\nDealer A\nB\n[end]\nC\n");
    EXPECT_THAT(Read(), ElementsAre("Dealer A", "B"));
    EXPECT_EQ(result_, 1);
    EXPECT_STREQ(data_.szDealer, "SYSSHOPNMN");
    EXPECT_EQ(fakes::TraceLines().back(), "0 <return TRUE.");
}

struct DealerFile {
    const char *title;
    std::string text;
    std::vector<std::string> dealers;
};
class DealerFileTest : public VendorTest, public ::testing::WithParamInterface<DealerFile> {};

TEST_P(DealerFileTest, Gives) {
    UseJapanese();
    fakes::AddFile(contract::kJapanese2, GetParam().text);
    EXPECT_EQ(Read(), GetParam().dealers);
    EXPECT_EQ(result_, 1);
}

const std::string k49(49, 'a');
const std::string k50(50, 'a');
INSTANTIATE_TEST_SUITE_P(
    Files, DealerFileTest,
    ::testing::Values(DealerFile{"NoHeading", "A\n[END]\n", {}},
                      DealerFile{"NoEndMark", "[Seller_Name]\nA\nB\n", {"A", "B"}},
                      DealerFile{"LastLineWithoutLineEnd", "[Seller_Name]\nAB", {"A"}},
                      DealerFile{"Of49Bytes", "[Seller_Name]\n" + k49 + "\nB\n", {k49, "B"}},
                      DealerFile{"Of50BytesIsSplit", "[Seller_Name]\n" + k50 + "\n", {k49, ""}},
                      DealerFile{"Of51BytesLosesOne", "[Seller_Name]\n" + k50 + "b\n", {k49, "b"}}),
    test_support::Title());

TEST_F(VendorTest, AJapaneseSystemWithoutFile2Fails) {
    UseJapanese();
    StoreNamedRecord();
    EXPECT_THAT(Read(), ElementsAre());
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(count_, 0U);
    EXPECT_STREQ(data_.szDealer, "");
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("2 <fopen /opt/xev/kestro_sa/data/J_vxsadm2.txt failed.return FALSE."));
}

TEST_F(VendorTest, AFailedExpansionTouchesNothing) {
    fakes::FailCall("ExpandEnvironmentStrings");
    data_ = NamedRecord();
    DWORD count = 4711;
    EXPECT_EQ(GetVlxVendSetting(&data_, nullptr, &count), 0);
    EXPECT_EQ(count, 4711U);
    EXPECT_STREQ(data_.szDealer, "SYSSHOPNMN");
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <ExpandEnvironmentStrings failed."));
    EXPECT_EQ(fakes::CallCount("RegOpenKeyEx"), 0);
}

TEST_F(VendorTest, AFailedAllocationFails) {
    UseJapanese();
    fakes::AddFile(contract::kJapanese2, "[Seller_Name]\nA\n");
    fakes::FailAllocation(1);
    EXPECT_THAT(Read(), ElementsAre());
    EXPECT_EQ(result_, 0);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre(MatchesRegex("2 malloc [0-9]+ failed."),
                            "2 <fopen /opt/xev/kestro_sa/data/J_vxsadm2.txt failed.return FALSE."));
}

TEST_F(VendorTest, EachFailedCallFailsOrCostsItsOwnField) {
    FailEachCall(
        [] {
            UseJapanese();
            StoreNamedRecord();
            fakes::AddFile(contract::kJapanese2, "[Seller_Name]\nA\nB\n[END]\n");
        },
        [&] { Read(); },
        [&](const fakes::Call &call) {
            const bool fatal = call.function == "ExpandEnvironmentStrings" ||
                               call.function == "CreateFile" || call.function == "ReadFile";
            EXPECT_EQ(result_, fatal ? 0 : 1);
            if (!fatal) {
                EXPECT_EQ(count_, 2U);
                const std::string failed = call.function == "RegQueryValueEx" ? ValueOf(call) : "";
                for (const Field &field : kFields) {
                    EXPECT_STREQ(data_.*field.text, failed == field.title ? "" : field.title);
                }
            }
        });
}

TEST_F(VendorTest, TheBoundedFormStoresUpToTheCapacityAndCountsAll) {
    UseJapanese();
    StoreNamedRecord();
    fakes::AddFile(contract::kJapanese2, "[Seller_Name]\nA\nB\nC\n[END]\n");
    contract::Buffers dealers(3, VLX_DEALER_SIZE);
    DWORD count = 0;
    EXPECT_EQ(GetVlxVendSettingBounded(&data_, dealers.Data(), 2, &count), 1);
    EXPECT_EQ(count, 3U);
    EXPECT_THAT(dealers.Texts(2), ElementsAre("A", "B"));
    EXPECT_TRUE(dealers.Untouched(2));
    EXPECT_STREQ(data_.szSalesName, "SYSEIGYONMN");
    EXPECT_EQ(fakes::Trace().back().function, "GetVlxVendSettingBounded");
    EXPECT_EQ(GetVlxVendSettingBounded(&data_, nullptr, 0, &count), 1);
    EXPECT_EQ(count, 3U);
}

TEST_F(VendorTest, WritesInTheOrderOfTheTable) {
    const VLX_VEND_DATA data = NamedRecord();
    EXPECT_EQ(SetVlxVendSetting(&data), 1);
    EXPECT_THAT(fakes::ValueNames(kKey),
                ElementsAre("SYSSHOPNMN", "SYSEIGYOBUNMN", "SYSEIGYONMN", "SYSEIGYOTEL", "SYSSEBU",
                            "SYSSENMN", "SYSSETEL"));
    for (const Field &field : kFields) {
        EXPECT_EQ(fakes::Text(kKey, field.title), field.title);
    }
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >lpVlxVendData=0x[0-9a-f]+"), "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].function, "SetVlxVendSetting");
}

TEST_F(VendorTest, EachFailedCallOfWritingCostsOnlyItsOwnValue) {
    VLX_VEND_DATA data = NamedRecord();
    std::memset(data.szSalesName, 'x', sizeof data.szSalesName);
    BOOL result = FALSE;
    FailEachCall([] { fakes::CreateKey(kKey); }, [&] { result = SetVlxVendSetting(&data); },
                 [&](const fakes::Call &call) {
                     EXPECT_EQ(result, 1);
                     const bool lost = call.function == "RegSetValueEx";
                     EXPECT_EQ(fakes::ValueNames(kKey).size(), lost ? 5U : 6U);
                     EXPECT_TRUE(fakes::HasTrace(1, "SYSEIGYONMN has no end within 128 bytes."));
                 });
}

}  // namespace
