// Registry writes and paths while no registry server runs.
#include <amcregac.h>
#include <amcrtcpy.h>
#include <gtest/gtest.h>
#include <ntwin32/registry.h>
#include <support/server.h>

namespace {

TEST(WithoutAServer, EveryCallFails) {
    const test_support::Server server(test_support::Server::Begin::kNotStarted);
    char path[512] = "former";
    DWORD size = sizeof path;
    EXPECT_EQ(AMACRERegCreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE"), FALSE);
    EXPECT_EQ(AMACRERegWriteSz(HKEY_LOCAL_MACHINE, "SOFTWARE", "NAME", "text"), FALSE);
    EXPECT_EQ(AMACRERegWriteDword(HKEY_LOCAL_MACHINE, "SOFTWARE", "NAME", 1), FALSE);
    EXPECT_EQ(AMACBSGetMethodRegistryPath("Report", "VELOXREPORT", nullptr, path, &size), FALSE);
    EXPECT_EQ(AMACDSGetIDRegistryPath("VELOXREPORT", nullptr, path, &size), FALSE);
    EXPECT_STREQ(path, "former");
}

}  // namespace
