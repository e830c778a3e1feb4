// Items of the system log's table in a real registry.
#include <velox/syslog_item.h>
#include <velox/syslog_setting.h>

#include <memory>

#include "settings_fixture.h"

namespace settings_test {
namespace {

using ::testing::ElementsAreArray;
using ::testing::IsSupersetOf;

class SyslogItems : public SettingsTest {
  protected:
    static int Add(const std::string &source, const std::string &item) {
        auto record = std::make_unique<SYSLOG_DATA>();
        Fill(record->szSourceName, source);
        Fill(record->szEventID, item);
        Fill(record->szKeyWord, "panic");
        Fill(record->szTrapName, "Kernel panic");
        Fill(record->szRecoveryAction, "Call");
        return AddSyslogItem(record.get());
    }
    static std::string Source(const std::string &source) { return kSyslogSources + "\\" + source; }
};

TEST_F(SyslogItems, AnAddedItemIsReadBackWithItsDefaults) {
    ASSERT_EQ(Add("kernel", "1000"), 1);
    EXPECT_EQ(Add("KERNEL", "1000"), -3);
    EXPECT_THAT(
        Lines(Source("kernel")),
        IsSupersetOf({"CREATEVERSION=0003,0008,0000", "SYSTEMDEFINED=0x0",
                      "1000 DESTINATIONSETTING GID_LIST", "1000 EVENTSETTING ALERTTYPE=kernel",
                      "1000 EVENTSETTING RECOVERYACTION=Call", "1000 WATCHSETTING THRESHOLD=0x1"}));
    auto record = std::make_unique<SYSLOG_DATA>();
    Fill(record->szSourceName, "kernel");
    Fill(record->szEventID, "1000");
    ASSERT_EQ(GetSyslogSetting(record.get()), 0);
    EXPECT_EQ(record->nAction, 0U);
    EXPECT_EQ(record->ObstacleKind, 3U);
    EXPECT_EQ(record->AliveLevel, 7U);
    EXPECT_STREQ(record->szKeyWord, "panic");
    EXPECT_EQ(record->dwWatchTime, 0xFFFFFFU);
    EXPECT_STREQ(record->szTrapName, "Kernel panic");
}

TEST_F(SyslogItems, TheLastItemTakesItsSourceAlong) {
    ASSERT_EQ(Add("kernel", "1"), 1);
    ASSERT_EQ(Add("kernel", "2"), 1);
    CreateKey(Source("kernel") + "\\1\\DESTINATIONSETTING\\ID_LIST\\ID1");
    EXPECT_EQ(DelSyslogItem("kernel", "1"), 1);
    EXPECT_FALSE(KeyExists(Source("kernel") + "\\1"));
    EXPECT_TRUE(KeyExists(Source("kernel") + "\\2"));
    EXPECT_EQ(DelSyslogItem("kernel", "2"), 1);
    EXPECT_FALSE(KeyExists(Source("kernel")));
    EXPECT_TRUE(KeyExists(kSyslogSources));
}

TEST_F(SyslogItems, AWholeSourceIsDeletedWhenItWasAdded) {
    ASSERT_EQ(Add("kernel", "1"), 1);
    ASSERT_EQ(Add("kernel", "2"), 1);
    EXPECT_EQ(DelSyslogItem("kernel", ""), 1);
    EXPECT_FALSE(KeyExists(Source("kernel")));
}

TEST_F(SyslogItems, WhatTheSystemDefinedStays) {
    ASSERT_EQ(Add("kernel", "1"), 1);
    StoreNumber(Source("kernel") + "\\1\\EVENTSETTING", "SYSTEMDEFINED", 1);
    CreateKey(Source("system") + "\\1\\EVENTSETTING");
    const std::vector<std::string> before = Lines(kSyslogSources);
    EXPECT_EQ(DelSyslogItem("kernel", "1"), -2);
    EXPECT_EQ(DelSyslogItem("system", ""), -3);
    for (const char *source : {"", "\\", "kernel\\1", "missing"}) {
        EXPECT_EQ(DelSyslogItem(source, ""), -1);
        EXPECT_EQ(DelSyslogItem(source, "1"), -1);
    }
    EXPECT_EQ(DelSyslogItem("kernel", nullptr), -1);
    EXPECT_THAT(Lines(kSyslogSources), ElementsAreArray(before));
}

}  // namespace
}  // namespace settings_test
