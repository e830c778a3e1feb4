// The parameters of the manager to which reports are handed.
#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"
#include "velox/report_method.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::StartsWith;

constexpr char kAddressKey[] =
    "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT\\Address";

class ManagerParametersTest : public fakes::PlatformTest {
  protected:
    // A record full of what must not survive.
    VLX_MANAGER_PARAM Dirty() {
        VLX_MANAGER_PARAM record;
        std::memset(&record, 0x5A, sizeof record);
        return record;
    }
};

TEST_F(ManagerParametersTest, GetManagerIPReadsTheAddress) {
    fakes::StoreText(kAddressKey, "ManagerIP", "192.0.2.1");
    char buffer[VLX_MANAGER_IP_CAPACITY];
    EXPECT_EQ(GetManagerIP(buffer), 0);
    EXPECT_STREQ(buffer, "192.0.2.1");
    EXPECT_TRUE(fakes::HasTrace(0, "<ManagerIP = 192.0.2.1"));
    // The key is spelt in capitals here, and only here.
    EXPECT_THAT(
        fakes::Calls()[0].detail,
        StartsWith("SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT\\ADDRESS "));
}

TEST_F(ManagerParametersTest, GetManagerIPWithoutAnAddressGivesNone) {
    char buffer[VLX_MANAGER_IP_CAPACITY] = "old";
    EXPECT_EQ(GetManagerIP(buffer), 0);
    EXPECT_STREQ(buffer, "0.0.0.0");
}

TEST_F(ManagerParametersTest, GetManagerIPKeepsWithin33Bytes) {
    struct {
        std::string stored;
        std::string read;
    } const cases[] = {
        {std::string(32, '1') + '\0', std::string(32, '1')},
        {std::string(33, '1'), "0.0.0.0"},         // no terminator: as long as the buffer
        {std::string(33, '1') + '\0', "0.0.0.0"},  // one too long
    };
    for (const auto &[stored, read] : cases) {
        fakes::StoreBytes(kAddressKey, "ManagerIP", 1, stored);
        char buffer[VLX_MANAGER_IP_CAPACITY + 1];
        std::memset(buffer, 0x5A, sizeof buffer);
        EXPECT_EQ(GetManagerIP(buffer), 0);
        EXPECT_EQ(buffer, read);
        EXPECT_EQ(buffer[VLX_MANAGER_IP_CAPACITY], 0x5A);
    }
}

TEST_F(ManagerParametersTest, GetManagerIPRefusesANullBuffer) {
    EXPECT_EQ(GetManagerIP(nullptr), -1);
    EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <ManagerIP == NULL.return -1."));
}

TEST_F(ManagerParametersTest, GetReadsAddressHostAndPort) {
    fakes::StoreText(kAddressKey, "ManagerIP", "192.0.2.1");
    fakes::StoreText(kAddressKey, "IPorHost", "manager.example");
    fakes::StoreNumber(kAddressKey, "PortNumber", 8080);
    VLX_MANAGER_PARAM record = Dirty();
    EXPECT_EQ(GetManagerParam(&record), 1);
    EXPECT_STREQ(record.lpszManagerIP, "192.0.2.1");
    EXPECT_STREQ(record.lpszHost, "manager.example");
    EXPECT_EQ(record.dwPort, 8080U);
    EXPECT_EQ(record.lpszText[0], nullptr);
    EXPECT_EQ(record.lpszText[1], nullptr);
    EXPECT_EQ(record.lpszText[2], nullptr);
    EXPECT_EQ(record.qwReserved[0], 0U);
    EXPECT_EQ(record.qwReserved[1], 0U);
    FreeManagerParam(&record);
}

TEST_F(ManagerParametersTest, GetWithoutAnAddressKeyGivesTheDefaults) {
    VLX_MANAGER_PARAM record = Dirty();
    EXPECT_EQ(GetManagerParam(&record), 1);
    EXPECT_STREQ(record.lpszManagerIP, "0.0.0.0");
    EXPECT_STREQ(record.lpszHost, "");
    EXPECT_EQ(record.dwPort, 31136U);
    FreeManagerParam(&record);
}

TEST_F(ManagerParametersTest, GetDropsTheHostWithoutAnAddress) {
    fakes::StoreText(kAddressKey, "ManagerIP", "0.0.0.0");
    fakes::StoreText(kAddressKey, "IPorHost", "manager.example");
    VLX_MANAGER_PARAM record = Dirty();
    EXPECT_EQ(GetManagerParam(&record), 1);
    EXPECT_STREQ(record.lpszHost, "");
    FreeManagerParam(&record);
}

TEST_F(ManagerParametersTest, GetKeepsTextsWithoutTerminatorInside) {
    fakes::StoreBytes(kAddressKey, "ManagerIP", 1, std::string(513, '1'));
    fakes::StoreBytes(kAddressKey, "IPorHost", 1, std::string(513, 'h'));
    VLX_MANAGER_PARAM record = Dirty();
    EXPECT_EQ(GetManagerParam(&record), 1);
    EXPECT_EQ(std::string(record.lpszManagerIP), std::string(513, '1'));
    EXPECT_EQ(std::string(record.lpszHost), std::string(513, 'h'));
    FreeManagerParam(&record);
}

TEST_F(ManagerParametersTest, EachFailedAllocationGivesAZeroedRecord) {
    for (int nth : {1, 2}) {
        fakes::ClearTrace();
        fakes::FailAllocation(nth);
        VLX_MANAGER_PARAM record = Dirty();
        EXPECT_EQ(GetManagerParam(&record), 0);
        const VLX_MANAGER_PARAM zero = {};
        EXPECT_EQ(std::memcmp(&record, &zero, sizeof record), 0);
        EXPECT_TRUE(fakes::HasTrace(2, "malloc lpsWork failed."));
    }
}

TEST_F(ManagerParametersTest, EveryFailedCallOfAGetGivesADefault) {
    const auto get = [] {
        fakes::StoreText(kAddressKey, "ManagerIP", "192.0.2.1");
        fakes::StoreText(kAddressKey, "IPorHost", "manager.example");
        fakes::StoreNumber(kAddressKey, "PortNumber", 8080);
        VLX_MANAGER_PARAM record = {};
        EXPECT_EQ(GetManagerParam(&record), 1);
        EXPECT_TRUE(std::strcmp(record.lpszManagerIP, "192.0.2.1") == 0 ||
                    std::strcmp(record.lpszManagerIP, "0.0.0.0") == 0);
        FreeManagerParam(&record);
    };
    get();
    const int calls = static_cast<int>(fakes::Calls().size());
    for (int nth = 1; nth <= calls; ++nth) {
        fakes::Reset();
        fakes::FailAnyCall(nth);
        get();
    }
}

class PutManagerParametersTest : public ManagerParametersTest {
  protected:
    void SetUp() override {
        ManagerParametersTest::SetUp();
        fakes::CreateKey(kAddressKey);
    }

    char address_[16] = "192.0.2.1";
    char host_[16] = "manager.example";
    VLX_MANAGER_PARAM record_ = {address_, host_, 8080, 0, {}, {}};
};

TEST_F(PutManagerParametersTest, StoresAddressHostPortAndTheHostAsComment) {
    EXPECT_EQ(PutManagerParam(&record_), 1);
    EXPECT_THAT(fakes::ValueNames(kAddressKey),
                ElementsAre("ManagerIP", "IPorHost", "PortNumber", "Comment"));
    EXPECT_EQ(fakes::Text(kAddressKey, "ManagerIP"), "192.0.2.1");
    EXPECT_EQ(fakes::Text(kAddressKey, "IPorHost"), "manager.example");
    EXPECT_EQ(fakes::Number(kAddressKey, "PortNumber"), 8080U);
    EXPECT_EQ(fakes::Text(kAddressKey, "Comment"), "manager.example");
    EXPECT_TRUE(fakes::HasTrace(0, "<return 1"));
}

TEST_F(PutManagerParametersTest, StopsAtTheFirstRefusedWrite) {
    for (int nth = 1; nth <= 4; ++nth) {
        fakes::Reset();
        fakes::CreateKey(kAddressKey);
        fakes::FailCall("RegSetValueEx", nth);
        EXPECT_EQ(PutManagerParam(&record_), 0);
        EXPECT_EQ(fakes::ValueNames(kAddressKey).size(), static_cast<std::size_t>(nth - 1));
    }
}

TEST_F(PutManagerParametersTest, RefusesWhatIsMissing) {
    VLX_MANAGER_PARAM without_address = record_;
    without_address.lpszManagerIP = nullptr;
    VLX_MANAGER_PARAM without_host = record_;
    without_host.lpszHost = nullptr;
    for (const VLX_MANAGER_PARAM *record :
         {static_cast<const VLX_MANAGER_PARAM *>(nullptr),
          static_cast<const VLX_MANAGER_PARAM *>(&without_address),
          static_cast<const VLX_MANAGER_PARAM *>(&without_host)}) {
        fakes::ClearTrace();
        EXPECT_EQ(PutManagerParam(record), 0);
        EXPECT_THAT(fakes::TraceLines(1), ElementsAre("1 <Manager Parameter is NULL.return 0."));
    }
    EXPECT_TRUE(fakes::ValueNames(kAddressKey).empty());
}

TEST_F(ManagerParametersTest, FreeReleasesEveryTextAndZeroesTheRecord) {
    VLX_MANAGER_PARAM record = {};
    record.lpszManagerIP = strdup("a");
    record.lpszHost = strdup("b");
    record.dwPort = 7;
    for (char *&text : record.lpszText) {
        text = strdup("c");
    }
    record.qwReserved[1] = 9;
    FreeManagerParam(&record);
    const VLX_MANAGER_PARAM zero = {};
    EXPECT_EQ(std::memcmp(&record, &zero, sizeof record), 0);
    EXPECT_THAT(fakes::TraceLines(), Contains("0 <"));
}

}  // namespace
