// Reading report destinations.
#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <memory>
#include <string>
#include <vector>

#include "fakes/platform.h"
#include "fakes/registry.h"
#include "registry/text.h"
#include "sweep.h"
#include "velox/destination_setting.h"

namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

const std::string kList = "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST";
const std::string kKey = kList + "\\ID1";

void StoreDestination(const std::string &key, const std::string &method) {
    fakes::StoreText(key, "METHOD", method);
    fakes::CreateKey(key + "\\Address");
    fakes::StoreNumber(key + "\\SCHEDULE", "PARAM0", 0x123);
    fakes::StoreNumber(key + "\\SCHEDULE", "PARAM1", 0x456);
    fakes::StoreNumber(key + "\\SCHEDULE", "RETRYCOUNT", 3);
    fakes::StoreNumber(key + "\\SCHEDULE", "RETRYINTERVAL", 5);
}

void StoreManager(const std::string &key) {
    fakes::StoreText(key + "\\Address", "ManagerIP", "192.0.2.7");
    fakes::StoreNumber(key + "\\Address", "PortNumber", 25150);
}

// A record full of what a caller may have left in it.
std::unique_ptr<DEST_DATA> DirtyRecord(const char *id) {
    auto record = std::make_unique<DEST_DATA>();
    std::memset(record.get(), 'q', sizeof *record);
    record->nAction = 2;
    EXPECT_TRUE(CopyText(record->szDestID, id));
    return record;
}

class DestReadTest : public fakes::PlatformTest {};

void ExpectNoAddress(const DEST_DATA &record) {
    EXPECT_STREQ(record.szCommandLine, "");
    EXPECT_STREQ(record.szManagerIP, "");
    EXPECT_EQ(record.dwPortNumber, 0U);
    EXPECT_STREQ(record.szTelNo, "");
    EXPECT_STREQ(record.szUserName, "");
    EXPECT_STREQ(record.szPassWord, "");
}

TEST_F(DestReadTest, ReadsACommand) {
    StoreDestination(kKey, "Run Command");
    fakes::StoreText(kKey + "\\Address", "CommandLine", "/bin/mail root");
    const auto record = DirtyRecord("ID1");
    EXPECT_EQ(GetDestSetting(record.get()), 0);
    EXPECT_EQ(record->nAction, 2U);
    EXPECT_STREQ(record->szDestID, "ID1");
    EXPECT_STREQ(record->szMethod, "Run Command");
    EXPECT_STREQ(record->szCommandLine, "/bin/mail root");
    EXPECT_STREQ(record->szManagerIP, "");
    EXPECT_EQ(record->dwSchedule, 0x123U);
    EXPECT_EQ(record->dwRetryCount, 3U);
    EXPECT_EQ(record->dwRetryInterval, 5U);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >lpDestData=0x[0-9a-f]+"), "0 <return 0."));
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
    EXPECT_EQ(fakes::Trace()[0].function, "GetDestSetting");
    EXPECT_EQ(fakes::Calls()[0].detail, kKey + " sam=0x20019");
}

TEST_F(DestReadTest, ReadsAnInBandManager) {
    StoreDestination(kKey, "Manager (TCP_IP IN-BAND)");
    StoreManager(kKey);
    const auto record = DirtyRecord("id1");
    EXPECT_EQ(GetDestSetting(record.get()), 0);
    EXPECT_STREQ(record->szManagerIP, "192.0.2.7");
    EXPECT_EQ(record->dwPortNumber, 25150U);
    EXPECT_STREQ(record->szTelNo, "");
    EXPECT_STREQ(record->szPassWord, "");
}

TEST_F(DestReadTest, AnInBandManagerWithoutAddressHasPresets) {
    StoreDestination(kKey, "Manager (TCP_IP IN-BAND)");
    const auto record = DirtyRecord("ID1");
    EXPECT_EQ(GetDestSetting(record.get()), 0);
    EXPECT_STREQ(record->szManagerIP, "0.0.0.0");
    EXPECT_EQ(record->dwPortNumber, 0U);
}

TEST_F(DestReadTest, ReadsAnOutOfBandManager) {
    StoreDestination(kKey, "Manager (TCP_IP Out-of-Band)");
    StoreManager(kKey);
    fakes::StoreText(kKey + "\\Address", "TelNo", "0123");
    fakes::StoreText(kKey + "\\Address", "UserName", "u");
    fakes::StoreText(kKey + "\\Address", "PassWord", "p");
    const auto record = DirtyRecord("ID1");
    EXPECT_EQ(GetDestSetting(record.get()), 0);
    EXPECT_STREQ(record->szManagerIP, "192.0.2.7");
    EXPECT_EQ(record->dwPortNumber, 25150U);
    EXPECT_STREQ(record->szTelNo, "0123");
    EXPECT_STREQ(record->szUserName, "u");
    EXPECT_STREQ(record->szPassWord, "p");
}

TEST_F(DestReadTest, AnOutOfBandManagerWithoutAddressHasPresets) {
    StoreDestination(kKey, "Manager (TCP_IP Out-of-Band)");
    const auto record = DirtyRecord("ID1");
    EXPECT_EQ(GetDestSetting(record.get()), 0);
    EXPECT_STREQ(record->szManagerIP, "0.0.0.0");
    EXPECT_EQ(record->dwPortNumber, 0U);
    EXPECT_STREQ(record->szTelNo, "0");
    EXPECT_STREQ(record->szUserName, "");
    EXPECT_STREQ(record->szPassWord, "0");
}

TEST_F(DestReadTest, OfOtherKindsNoAddressIsRead) {
    for (const char *method : {"Manager (SNMP)", "VeloxReport(Internet Mail)"}) {
        StoreDestination(kKey, method);
        StoreManager(kKey);
        fakes::StoreText(kKey + "\\Address", "CommandLine", "x");
        const auto record = DirtyRecord("ID1");
        EXPECT_EQ(GetDestSetting(record.get()), 0);
        EXPECT_STREQ(record->szMethod, method);
        ExpectNoAddress(*record);
        EXPECT_EQ(record->dwSchedule, 0x123U);
    }
}

TEST_F(DestReadTest, MissingValuesAreNoFailures) {
    fakes::CreateKey(kKey + "\\Address");
    fakes::CreateKey(kKey + "\\SCHEDULE");
    const auto record = DirtyRecord("ID1");
    EXPECT_EQ(GetDestSetting(record.get()), 0);
    EXPECT_STREQ(record->szMethod, "");
    ExpectNoAddress(*record);
    EXPECT_EQ(record->dwSchedule, 0U);
    EXPECT_EQ(record->dwRetryCount, 0U);
    EXPECT_EQ(record->dwRetryInterval, 0U);
}

TEST_F(DestReadTest, EachMissingKeyIsNamedAndWhatWasReadStays) {
    StoreDestination(kKey, "Manager (TCP_IP IN-BAND)");
    StoreManager(kKey);
    const auto record = DirtyRecord("ID1");

    fakes::DeleteTree(kKey + "\\SCHEDULE");
    EXPECT_EQ(GetDestSetting(record.get()), -1);
    EXPECT_STREQ(record->szManagerIP, "192.0.2.7");
    EXPECT_EQ(record->dwRetryCount, 0U);

    fakes::DeleteTree(kKey + "\\Address");
    EXPECT_EQ(GetDestSetting(record.get()), -1);
    EXPECT_STREQ(record->szMethod, "Manager (TCP_IP IN-BAND)");
    ExpectNoAddress(*record);

    fakes::DeleteTree(kKey);
    EXPECT_EQ(GetDestSetting(record.get()), -1);
    EXPECT_STREQ(record->szMethod, "");
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx " + kKey + "\\Schedule failed.return -1.",
                            "1 <RegOpenKeyEx " + kKey + "\\Address failed.return -1.",
                            "1 <RegOpenKeyEx " + kKey + " failed.return -1."));
}

TEST_F(DestReadTest, TextsAtAndOverTheirCapacity) {
    StoreDestination(kKey, "RUN COMMAND");
    const std::string longest(DEST_TEXT_CAPACITY - 1, 'x');
    fakes::StoreText(kKey + "\\Address", "CommandLine", longest);
    const auto record = DirtyRecord("ID1");
    EXPECT_EQ(GetDestSetting(record.get()), 0);
    EXPECT_EQ(record->szCommandLine, longest);

    // Full without a terminator: ended inside, at a whole character.
    fakes::StoreBytes(kKey + "\\Address", "CommandLine", REG_SZ,
                      std::string(DEST_TEXT_CAPACITY - 2, 'x') + "\xB4\xC1");
    EXPECT_EQ(GetDestSetting(record.get()), 0);
    EXPECT_EQ(record->szCommandLine, longest.substr(1));

    fakes::StoreText(kKey + "\\Address", "CommandLine", longest + "x");
    EXPECT_EQ(GetDestSetting(record.get()), 0);
    EXPECT_STREQ(record->szCommandLine, "");
}

TEST_F(DestReadTest, ShortTextsWithoutTerminatorAreEnded) {
    StoreDestination(kKey, "RUN COMMAND");
    fakes::StoreBytes(kKey + "\\Address", "CommandLine", REG_SZ, "bare");
    const auto record = DirtyRecord("ID1");
    EXPECT_EQ(GetDestSetting(record.get()), 0);
    EXPECT_STREQ(record->szCommandLine, "bare");
}

TEST_F(DestReadTest, EachRefusedCallOfAGet) {
    int result = 0;
    const auto record = DirtyRecord("ID1");
    sweep::RefuseEachCall(
        [] {
            StoreDestination(kKey, "Manager (TCP_IP Out-of-Band)");
            StoreManager(kKey);
        },
        [&] { result = GetDestSetting(record.get()); },
        [&](const fakes::Call &refused) {
            EXPECT_EQ(result, refused.function == "RegOpenKeyEx" ? -1 : 0);
        });
}

// ---- GetAllDestSetting --------------------------------------------------------------------------

class DestListTest : public DestReadTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        Prepare();
        for (const char *id : {"x", "y", "z", "untouched"}) {
            records_.push_back(DirtyRecord(id));
            pointers_.push_back(records_.back().get());
        }
    }

    static void Prepare() {
        StoreDestination(kList + "\\VELOXREPORT", "VeloxReport(Internet Mail)");
        StoreDestination(kList + "\\b", "Manager (TCP_IP IN-BAND)");
        StoreManager(kList + "\\b");
        fakes::CreateKey(kList + "\\A");
    }

    std::vector<std::unique_ptr<DEST_DATA>> records_;
    std::vector<DEST_DATA *> pointers_;
    DWORD count_ = 77;
};

TEST_F(DestListTest, ReadsEveryDestination) {
    EXPECT_EQ(GetAllDestSetting(pointers_.data(), &count_), 0);
    EXPECT_EQ(count_, 3U);
    EXPECT_STREQ(records_[0]->szDestID, "A");
    EXPECT_STREQ(records_[0]->szMethod, "");
    EXPECT_STREQ(records_[1]->szDestID, "b");
    EXPECT_STREQ(records_[1]->szManagerIP, "192.0.2.7");
    EXPECT_STREQ(records_[2]->szDestID, "VELOXREPORT");
    EXPECT_EQ(records_[2]->dwRetryCount, 3U);
    EXPECT_STREQ(records_[3]->szDestID, "untouched");
    EXPECT_THAT(
        fakes::TraceLinesOf("GetAllDestSetting"),
        ElementsAre(MatchesRegex("0 >lplpDestData=0x[0-9a-f]+,len=0x[0-9a-f]+"), "0 <return 0."));
    EXPECT_EQ(fakes::Calls()[0].detail, kList + " sam=0xF003F");
}

TEST_F(DestListTest, WithoutAListTheCountIsUntouched) {
    fakes::DeleteTree(kList);
    EXPECT_EQ(GetAllDestSetting(pointers_.data(), &count_), 0);
    EXPECT_EQ(count_, 77U);
    EXPECT_THAT(fakes::TraceLines(1), ::testing::IsEmpty());
}

TEST_F(DestListTest, TheBoundedVariantStopsAtItsCapacityAndTellsTheNeededCount) {
    EXPECT_EQ(GetAllDestSettingBounded(pointers_.data(), 1, &count_), 3);
    EXPECT_EQ(count_, 1U);
    EXPECT_STREQ(records_[0]->szDestID, "A");
    EXPECT_STREQ(records_[1]->szDestID, "y");
    EXPECT_EQ(fakes::Trace()[0].function, "GetAllDestSetting");

    EXPECT_EQ(GetAllDestSettingBounded(nullptr, 0, &count_), 3);
    EXPECT_EQ(count_, 0U);
    fakes::DeleteTree(kList);
    EXPECT_EQ(GetAllDestSettingBounded(pointers_.data(), 4, &count_), -1);
    EXPECT_EQ(count_, 0U);
}

TEST_F(DestListTest, ARecordWithoutNameIsEmpty) {
    fakes::FailCall("RegEnumKeyEx", 2);
    EXPECT_EQ(GetAllDestSetting(pointers_.data(), &count_), 0);
    EXPECT_EQ(count_, 3U);
    EXPECT_STREQ(records_[1]->szDestID, "");
    EXPECT_STREQ(records_[1]->szMethod, "");
    ExpectNoAddress(*records_[1]);
    EXPECT_STREQ(records_[2]->szDestID, "VELOXREPORT");
}

TEST_F(DestListTest, EachRefusedCallStaysInside) {
    int result = 0;
    sweep::RefuseEachCall(
        Prepare,
        [&] {
            count_ = 77;
            result = GetAllDestSetting(pointers_.data(), &count_);
        },
        [&](const fakes::Call &refused) {
            EXPECT_EQ(result, 0);
            const bool list = refused.detail.starts_with(kList + " ") || refused.detail == kList;
            const DWORD expected = !list                                   ? 3U
                                   : refused.function == "RegOpenKeyEx"    ? 77U
                                   : refused.function == "RegQueryInfoKey" ? 0U
                                                                           : 3U;
            EXPECT_EQ(count_, expected);
            EXPECT_STREQ(records_[3]->szDestID, "untouched");
        });
}

TEST_F(DestListTest, NamesOf255BytesAreHandedOut) {
    const std::string id(KES_REG_MAX_KEY_NAME, '0');
    StoreDestination(kList + "\\" + id, "Manager (SNMP)");
    EXPECT_EQ(GetAllDestSetting(pointers_.data(), &count_), 0);
    EXPECT_EQ(count_, 4U);
    EXPECT_EQ(records_[0]->szDestID, id);
    EXPECT_STREQ(records_[0]->szMethod, "Manager (SNMP)");
}

}  // namespace
