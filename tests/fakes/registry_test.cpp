// The fake registry must keep the real one's rules: these cases are also run against the real one.
#include "fakes/registry.h"

#include <ntwin32/registry.h>

#include "fakes/platform.h"

namespace {

using fakes::PlatformTest;

TEST_F(PlatformTest, NamesCompareWithoutCaseAndKeepTheirFirstSpelling) {
    fakes::StoreText("SOFTWARE\\XEV", "MailAdrs", "a");
    fakes::StoreText("software\\xev", "MAILADRS", "b");
    EXPECT_EQ(
        fakes::Dump("SOFTWARE"),
        (std::vector<std::string>{"SOFTWARE", "SOFTWARE\\XEV", "SOFTWARE\\XEV MailAdrs=REG_SZ:b"}));
}

TEST_F(PlatformTest, AKeyWithSubKeysIsNotDeleted) {
    fakes::CreateKey("A\\B");
    EXPECT_EQ(RegDeleteKey(HKEY_LOCAL_MACHINE, "A"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteKey(HKEY_LOCAL_MACHINE, "A\\B"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKey(HKEY_LOCAL_MACHINE, "A"), ERROR_SUCCESS);
}

TEST_F(PlatformTest, ACallOnAClosedHandleReachesItsKeyAndIsCounted) {
    HKEY key = 0;
    fakes::StoreNumber("A", "V", 7);
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "A", 0, KEY_READ, &key), ERROR_SUCCESS);
    ASSERT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValue(key, "V"), ERROR_SUCCESS);
    EXPECT_EQ(fakes::Number("A", "V"), std::nullopt);
    expected_closed_handle_calls_ = 1;
}

TEST_F(PlatformTest, PathsWithEmptyComponentsAreRefused) {
    HKEY key = 0;
    for (const char *path : {"\\A", "A\\", "A\\\\B"}) {
        EXPECT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, path, &key), ERROR_BAD_PATHNAME) << path;
    }
}

TEST_F(PlatformTest, FaultsComeWhereTheyWerePlanned) {
    HKEY key = 0;
    fakes::CreateKey("A");
    fakes::FailCall("RegOpenKeyEx", 2, ERROR_KEY_DELETED);
    EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "A", 0, KEY_READ, &key), ERROR_SUCCESS);
    EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "A", 0, KEY_READ, &key), ERROR_KEY_DELETED);
    EXPECT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, "A", 0, KEY_READ, &key), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}

}  // namespace
