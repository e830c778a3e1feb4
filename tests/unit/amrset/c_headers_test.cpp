// The settings as a C program calls them.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "fakes/platform.h"
#include "fakes/registry.h"
#include "velox/base_setting.h"

extern "C" int ReadKindFromC(BASE_DATA *record);
extern "C" int ReadTablesFromC(void);

namespace {

const std::string kManager = "SOFTWARE\\XEV\\KESALERTMAN";

class CHeadersTest : public fakes::PlatformTest {};

TEST_F(CHeadersTest, RecordsHaveOneLayoutInBothLanguages) {
    fakes::StoreNumber(kManager + "\\BASESETTING\\REPORT\\RUN COMMAND", "ENABLED", 1);
    const auto record = std::make_unique<BASE_DATA>();
    std::memcpy(record->szKindName, "RUN COMMAND", sizeof "RUN COMMAND");
    EXPECT_EQ(ReadKindFromC(record.get()), 0);
    EXPECT_EQ(record->dwEnabled, 1U);
}

TEST_F(CHeadersTest, TablesAreReadAndReleased) {
    EXPECT_EQ(ReadTablesFromC(), -2);
    fakes::CreateKey(kManager + "\\REPORTTABLE\\USEREPORTAPI_EVENTLOG\\SYSTEM\\S\\1\\EVENTSETTING");
    fakes::CreateKey(kManager + "\\REPORTTABLE\\EVENTLOG\\APPLICATION\\S\\1\\EVENTSETTING");
    EXPECT_EQ(ReadTablesFromC(), 0);
}

}  // namespace
