// The machine's data: every value, what stands in for a missing one, and what a failed call does.
#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include "contract_support.h"
#include "support/title.h"

namespace {

using contract::kKey;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;
using namespace std::string_literals;

constexpr char kHardwareKey[] = "SOFTWARE\\XEV\\HW";

struct Field {
    const char *title;  // the value's name
    char (VLX_MACH_DATA::*text)[VLX_FIELD_SIZE];
    std::size_t read_size;
    const char *otherwise;  // what a record shows when the value cannot be read
};

// In the order in which they are read and written.
constexpr Field kFields[] = {
    {"SYSNMN", &VLX_MACH_DATA::szServerName, 41, "HOST01"},
    {"SOCHICD", &VLX_MACH_DATA::szDeviceCode, 41, "PRODUCT"},
    {"SYSGOKI", &VLX_MACH_DATA::szSerialNumber, 17, ""},
    {"GUARANTEE", &VLX_MACH_DATA::szGuaranteeNumber, 17, ""},
    {"OSNMA", &VLX_MACH_DATA::szOsName, 31, ""},
    {"OSREV", &VLX_MACH_DATA::szOsVersion, 33, ""},
};

void StoreNamedRecord() {
    fakes::StoreText(kHardwareKey, "ProductName", "PRODUCT");
    for (const Field &field : kFields) {
        fakes::StoreText(kKey, field.title, field.title);
    }
}

VLX_MACH_DATA NamedRecord() {
    VLX_MACH_DATA data = {};
    for (const Field &field : kFields) {
        contract::Fill(data.*field.text, field.title);
    }
    return data;
}

class MachineTest : public contract::ContractTest {};

class MachineFieldTest : public contract::ContractTest,
                         public ::testing::WithParamInterface<Field> {
  protected:
    void SetUp() override {
        ContractTest::SetUp();
        fakes::StoreText(kHardwareKey, "ProductName", "PRODUCT");
    }
};

INSTANTIATE_TEST_SUITE_P(Values, MachineFieldTest, ::testing::ValuesIn(kFields),
                         test_support::Title());

TEST_P(MachineFieldTest, ReadsUpToItsReadSize) {
    const std::string longest(GetParam().read_size - 1, 'x');
    fakes::StoreText(kKey, GetParam().title, longest);
    VLX_MACH_DATA data = {};
    EXPECT_EQ(GetVlxMachSetting(&data), 1);
    EXPECT_STREQ(data.*GetParam().text, longest.c_str());
}

TEST_P(MachineFieldTest, ALargerValueCountsAsMissing) {
    fakes::StoreText(kKey, GetParam().title, std::string(GetParam().read_size, 'x'));
    VLX_MACH_DATA data = {};
    EXPECT_EQ(GetVlxMachSetting(&data), 1);
    EXPECT_STREQ(data.*GetParam().text, GetParam().otherwise);
}

TEST_P(MachineFieldTest, AMissingValueIsReplacedOrEmpty) {
    VLX_MACH_DATA data;
    std::memset(&data, 0x55, sizeof data);
    EXPECT_EQ(GetVlxMachSetting(&data), 1);
    EXPECT_STREQ(data.*GetParam().text, GetParam().otherwise);
}

TEST_F(MachineTest, AnEmptyServerNameIsTheComputersName) {
    fakes::StoreText(kKey, "SYSNMN", "");
    VLX_MACH_DATA data = {};
    EXPECT_EQ(GetVlxMachSetting(&data), 1);
    EXPECT_STREQ(data.szServerName, "HOST01");
}

TEST_F(MachineTest, AComputerNameOverFortyBytesIsNotTaken) {
    fakes::TheSystem().computer_name = std::string(41, 'h');
    VLX_MACH_DATA data = {};
    EXPECT_EQ(GetVlxMachSetting(&data), 1);
    EXPECT_STREQ(data.szServerName, "");
    EXPECT_EQ(fakes::CallCount("GetComputerName"), 1);

    fakes::TheSystem().computer_name = std::string(40, 'h');
    EXPECT_EQ(GetVlxMachSetting(&data), 1);
    EXPECT_EQ(data.szServerName, std::string(40, 'h'));
}

TEST_F(MachineTest, AnEmptyDeviceCodeStaysEmpty) {
    StoreNamedRecord();
    fakes::StoreText(kKey, "SOCHICD", "");
    VLX_MACH_DATA data = {};
    EXPECT_EQ(GetVlxMachSetting(&data), 1);
    EXPECT_STREQ(data.szDeviceCode, "");
    EXPECT_EQ(fakes::TraceLinesOf("RegReadEx").size(), 0U);
}

TEST_F(MachineTest, WithoutDeviceCodeAndProductNameTheFieldIsEmpty) {
    VLX_MACH_DATA data = {};
    EXPECT_EQ(GetVlxMachSetting(&data), 1);
    EXPECT_STREQ(data.szDeviceCode, "");
    EXPECT_THAT(fakes::TraceLinesOf("RegReadEx"),
                ::testing::Contains("0 >RegPath=SOFTWARE\\XEV\\HW,RegValue=ProductName,"));
}

TEST_F(MachineTest, AnOsNameOfOneByteLeavesTheFieldEmpty) {
    fakes::StoreBytes(kKey, "OSNMA", REG_SZ, "X");
    VLX_MACH_DATA data = {};
    EXPECT_EQ(GetVlxMachSetting(&data), 1);
    EXPECT_STREQ(data.szOsName, "");
    // Any other value of one byte is taken.
    fakes::StoreBytes(kKey, "OSREV", REG_SZ, "X");
    EXPECT_EQ(GetVlxMachSetting(&data), 1);
    EXPECT_STREQ(data.szOsVersion, "X");
}

TEST_F(MachineTest, ReadingTraces) {
    StoreNamedRecord();
    VLX_MACH_DATA data = {};
    EXPECT_EQ(GetVlxMachSetting(&data), 1);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >lpVlxMachData=0x[0-9a-f]+"), "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
    EXPECT_EQ(fakes::Trace()[0].function, "GetVlxMachSetting");
    EXPECT_EQ(fakes::Calls()[0].detail, std::string(kKey) + " sam=0x2001B");
}

TEST_F(MachineTest, WritesInItsOrder) {
    const VLX_MACH_DATA data = NamedRecord();
    EXPECT_EQ(SetVlxMachSetting(&data), 1);
    EXPECT_THAT(fakes::ValueNames(kKey),
                ElementsAre("SYSNMN", "SOCHICD", "SYSGOKI", "GUARANTEE", "OSNMA", "OSREV"));
    for (const Field &field : kFields) {
        EXPECT_EQ(fakes::Text(kKey, field.title), field.title);
    }
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >lpVlxMachData=0x[0-9a-f]+"), "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].function, "SetVlxMachSetting");
}

TEST_F(MachineTest, LeavesOutAFieldWithoutEnd) {
    VLX_MACH_DATA data = NamedRecord();
    std::memset(data.szDeviceCode, 'x', sizeof data.szDeviceCode);
    EXPECT_EQ(SetVlxMachSetting(&data), 1);
    EXPECT_EQ(fakes::ValueNames(kKey).size(), 5U);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 SOCHICD has no end within 128 bytes."));
}

TEST_F(MachineTest, AFailedCallOfReadingCostsOnlyItsOwnField) {
    VLX_MACH_DATA data;
    BOOL result = FALSE;
    FailEachCall(
        StoreNamedRecord, [&] { result = GetVlxMachSetting(&data); },
        [&](const fakes::Call &call) {
            EXPECT_EQ(result, 1);
            const std::string failed = call.function == "RegQueryValueEx" ? ValueOf(call) : "";
            for (const Field &field : kFields) {
                EXPECT_STREQ(data.*field.text,
                             failed == field.title ? field.otherwise : field.title);
            }
        });
}

TEST_F(MachineTest, AFailedStandInLeavesItsFieldEmpty) {
    VLX_MACH_DATA data;
    BOOL result = FALSE;
    FailEachCall([] { fakes::StoreText(kHardwareKey, "ProductName", "PRODUCT"); },
                 [&] { result = GetVlxMachSetting(&data); },
                 [&](const fakes::Call &call) {
                     EXPECT_EQ(result, 1);
                     EXPECT_STREQ(data.szServerName,
                                  call.function == "GetComputerName" ? "" : "HOST01");
                     const bool product_failed =
                         call.detail.starts_with(kHardwareKey) && call.function != "RegCloseKey";
                     EXPECT_STREQ(data.szDeviceCode, product_failed ? "" : "PRODUCT");
                 });
}

TEST_F(MachineTest, AFailedCallOfWritingCostsOnlyItsOwnValue) {
    const VLX_MACH_DATA data = NamedRecord();
    BOOL result = FALSE;
    FailEachCall([] { fakes::CreateKey(kKey); }, [&] { result = SetVlxMachSetting(&data); },
                 [&](const fakes::Call &call) {
                     EXPECT_EQ(result, 1);
                     const bool lost = call.function == "RegSetValueEx";
                     EXPECT_EQ(fakes::ValueNames(kKey).size(), lost ? 5U : 6U);
                 });
}

// ---- The names of operating systems -------------------------------------------------------------

class OsListTest : public contract::ContractTest {
  protected:
    std::vector<std::string> List(const std::string &file) {
        fakes::AddFile(contract::kEnglish1, file);
        count_ = 4711;
        contract::Buffers names(20, VLX_OS_NAME_SIZE);
        result_ = GetVlxMachListData(names.Data(), &count_);
        return names.Texts(result_ == 1 ? count_ : 0);
    }
    BOOL result_ = FALSE;
    DWORD count_ = 0;
};

TEST_F(OsListTest, ListsTheSection) {
    EXPECT_THAT(List("# comment\n[OS_Name]\nLinux A\nLinux B\n[END]\nLinux C\n"),
                ElementsAre("Linux A", "Linux B"));
    EXPECT_EQ(result_, 1);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >osName=0x[0-9a-f]+,osLen=0x[0-9a-f]+"),
                            "0 VXSADM1:/opt/xev/kestro_sa/data/E_vxsadm1.txt", "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[1].function, "GetVlxMachListData");
    EXPECT_EQ(fakes::Trace()[1].source, "amrset");
}

TEST_F(OsListTest, AJapaneseSystemReadsTheJapaneseFile) {
    UseJapanese();
    fakes::AddFile(contract::kJapanese1, "[OS_Name]\nLinux J\n[END]\n");
    EXPECT_THAT(List("[OS_Name]\nLinux E\n[END]\n"), ElementsAre("Linux J"));
    EXPECT_TRUE(fakes::HasTrace(0, "VXSADM1:/opt/xev/kestro_sa/data/J_vxsadm1.txt"));
}

struct OsFile {
    const char *title;
    std::string text;
    std::vector<std::string> names;
};
class OsFileTest : public OsListTest, public ::testing::WithParamInterface<OsFile> {};

TEST_P(OsFileTest, Gives) {
    EXPECT_EQ(List(GetParam().text), GetParam().names);
    EXPECT_EQ(result_, 1);
}

using Names = std::vector<std::string>;
const std::string k29(29, 'a');
const std::string k30(30, 'a');
INSTANTIATE_TEST_SUITE_P(
    Files, OsFileTest,
    ::testing::Values(
        OsFile{"NoHeading", "A\nB\n[END]\n", {}}, OsFile{"EmptyFile", "", {}},
        OsFile{"HeadingOfAnyCase", "[os_name]\nA\n[end]\nB\n", {"A"}},
        OsFile{"NoEndMark", "[OS_Name]\nA\nB\n", {"A", "B"}},
        OsFile{"LastLineWithoutLineEndLosesItsLastByte", "[OS_Name]\nA\nBCD", {"A", "BC"}},
        OsFile{"EndMarkWithoutLineEndIsAnEntry", "[OS_Name]\nA\n[END]", {"A", "[END"}},
        OsFile{"HeadingWithoutLineEnd", "A\n[OS_Name]", {}},
        OsFile{"EmptyLineIsAnEntry", "[OS_Name]\n\nA\n[END]\n", {"", "A"}},
        OsFile{"CarriageReturnIsNoHeading", "[OS_Name]\r\nA\n[END]\n", {}},
        OsFile{"CarriageReturnIsNoEndMark", "[OS_Name]\nA\n[END]\r\nB\n", {"A", "[END]\r", "B"}},
        OsFile{"BlankBehindTheHeading", "[OS_Name] \nA\n[END]\n", {}},
        OsFile{"Of29Bytes", "[OS_Name]\n" + k29 + "\nB\n[END]\n", {k29, "B"}},
        OsFile{"Of30BytesIsSplit", "[OS_Name]\n" + k30 + "\nB\n[END]\n", {k29, "", "B"}},
        OsFile{"Of31BytesLosesOne", "[OS_Name]\n" + k30 + "b\n[END]\n", {k29, "b"}},
        OsFile{"Of61BytesLosesTwo",
               "[OS_Name]\n" + k30 + std::string(30, 'b') + "c\n[END]\n",
               {k29, std::string(29, 'b'), "c"}},
        OsFile{"HeadingBehindThirtyBytesOfItsLine", k30 + "[OS_Name]\nA\n[END]\n", {"A"}},
        OsFile{"EndMarkBehindThirtyBytesOfItsLine", "[OS_Name]\n" + k30 + "[END]\nB\n", {k29}},
        OsFile{"ZeroByteEndsAPiece", "[OS_Name]\nAB\0C\nD\n[END]\n"s, {"A", "D"}},
        OsFile{"ZeroByteAlone", "[OS_Name]\n\0\nD\n[END]\n"s, {"", "D"}}),
    test_support::Title());

TEST_F(OsListTest, AFailedExpansionGives0AndLeavesTheCount) {
    fakes::FailCall("ExpandEnvironmentStrings");
    contract::Buffers names(1, VLX_OS_NAME_SIZE);
    DWORD count = 4711;
    EXPECT_EQ(GetVlxMachListData(names.Data(), &count), 0);
    EXPECT_EQ(count, 4711U);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <ExpandEnvironmentStrings failed."));
}

TEST_F(OsListTest, ADirectoryOver4095BytesIsAFailedExpansion) {
    fakes::TheSystem().kes_directory = "/" + std::string(4095, 'd');
    contract::Buffers names(1, VLX_OS_NAME_SIZE);
    DWORD count = 4711;
    EXPECT_EQ(GetVlxMachListData(names.Data(), &count), 0);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <ExpandEnvironmentStrings failed."));
    fakes::TheSystem().kes_directory.pop_back();
    fakes::AddFile(fakes::TheSystem().kes_directory + "/data/E_vxsadm1.txt", "[OS_Name]\nA\n");
    EXPECT_EQ(GetVlxMachListData(names.Data(), &count), 1);
    EXPECT_EQ(count, 1U);
}

TEST_F(OsListTest, AMissingFileGives0AndNoNames) {
    contract::Buffers names(1, VLX_OS_NAME_SIZE);
    DWORD count = 4711;
    EXPECT_EQ(GetVlxMachListData(names.Data(), &count), 0);
    EXPECT_EQ(count, 0U);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("2 <fopen /opt/xev/kestro_sa/data/E_vxsadm1.txt failed."));
}

TEST_F(OsListTest, AFileThatCannotBeReadGives0) {
    fakes::FailCall("ReadFile");
    EXPECT_THAT(List("[OS_Name]\nA\n"), ElementsAre());
    EXPECT_EQ(result_, 0);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 ReadFile failed.",
                            "2 <fopen /opt/xev/kestro_sa/data/E_vxsadm1.txt failed."));
}

TEST_F(OsListTest, ALargeFileIsReadWhole) {
    const std::string comment(99, '#');
    std::string file;
    for (int i = 0; i < 2000; ++i) {  // 200 kB: more than two blocks of memory
        file += comment + "\n";
    }
    EXPECT_THAT(List(file + "[OS_Name]\nA\n[END]\n"), ElementsAre("A"));
}

TEST_F(OsListTest, EachFailedAllocationGives0) {
    const std::string large = std::string(100000, '#') + "\n[OS_Name]\nA\n[END]\n";
    EXPECT_THAT(List(large), ElementsAre("A"));
    const int allocations = fakes::Allocations();
    EXPECT_EQ(allocations, 2);
    for (int i = 1; i <= allocations; ++i) {
        fakes::ClearTrace();
        fakes::FailAllocation(i);
        EXPECT_THAT(List(large), ElementsAre());
        EXPECT_EQ(result_, 0);
        EXPECT_THAT(fakes::TraceLines(2),
                    ElementsAre(MatchesRegex("2 malloc [0-9]+ failed."),
                                "2 <fopen /opt/xev/kestro_sa/data/E_vxsadm1.txt failed."));
    }
}

TEST_F(OsListTest, EachFailedCallGives0OrTheWholeList) {
    contract::Buffers names(3, VLX_OS_NAME_SIZE);
    DWORD count = 0;
    BOOL result = FALSE;
    FailEachCall([] { fakes::AddFile(contract::kEnglish1, "[OS_Name]\nA\nB\n[END]\n"); },
                 [&] { result = GetVlxMachListData(names.Data(), &count); },
                 [&](const fakes::Call &call) {
                     const bool harmless = call.function == "GetSystemDefaultLangID" ||
                                           call.function == "CloseHandle";
                     EXPECT_EQ(result, harmless ? 1 : 0);
                     EXPECT_EQ(harmless ? 2U : 0U, result == 1 ? count : 0U);
                 });
}

class OsListBoundedTest : public OsListTest {
  protected:
    void SetUp() override {
        OsListTest::SetUp();
        fakes::AddFile(contract::kEnglish1, "[OS_Name]\nA\nB\nC\n[END]\n");
    }
};

TEST_F(OsListBoundedTest, StoresUpToTheCapacityAndCountsAll) {
    contract::Buffers names(3, VLX_OS_NAME_SIZE);
    DWORD count = 0;
    EXPECT_EQ(GetVlxMachListDataBounded(names.Data(), 2, &count), 1);
    EXPECT_EQ(count, 3U);
    EXPECT_THAT(names.Texts(2), ElementsAre("A", "B"));
    EXPECT_TRUE(names.Untouched(2));
    EXPECT_EQ(fakes::TraceLines()[2], "0 <return TRUE.");
    EXPECT_EQ(fakes::Trace()[2].function, "GetVlxMachListDataBounded");
    EXPECT_THAT(fakes::TraceLines()[0],
                MatchesRegex("0 >osName=0x[0-9a-f]+,osCapacity=2,osLen=0x[0-9a-f]+"));
}

TEST_F(OsListBoundedTest, CountsWithoutAnArray) {
    DWORD count = 0;
    EXPECT_EQ(GetVlxMachListDataBounded(nullptr, 0, &count), 1);
    EXPECT_EQ(count, 3U);
}

TEST_F(OsListBoundedTest, FailsAsTheOtherOne) {
    fakes::FailCall("CreateFile");
    DWORD count = 4711;
    EXPECT_EQ(GetVlxMachListDataBounded(nullptr, 0, &count), 0);
    EXPECT_EQ(count, 0U);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("2 <fopen /opt/xev/kestro_sa/data/E_vxsadm1.txt failed."));
}

}  // namespace
