// Registry writes and registry paths, against a registry server of their own.
#include <amcregac.h>
#include <amcrtcpy.h>
#include <gtest/gtest.h>
#include <ntwin32/module.h>
#include <ntwin32/registry.h>
#include <support/environment.h>
#include <support/server.h>
#include <support/title.h>

#include <cstring>
#include <memory>
#include <string>

namespace {

class Registry : public testing::Test {
  protected:
    static void SetUpTestSuite() { server_ = std::make_unique<test_support::Server>(); }
    static void TearDownTestSuite() { server_.reset(); }

    static bool Exists(const std::string &path) {
        HKEY key = 0;
        return RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS;
    }
    // "<type>:<bytes>", or empty when there is no such value.
    static std::string Value(const std::string &path, const char *name) {
        HKEY key = 0;
        DWORD type = 0;
        char data[512];
        DWORD size = sizeof data;
        if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS ||
            RegQueryValueEx(key, name, nullptr, &type, reinterpret_cast<BYTE *>(data), &size) !=
                ERROR_SUCCESS) {
            return {};
        }
        return std::to_string(type) + ":" + std::string(data, size);
    }

    static std::unique_ptr<test_support::Server> server_;
};

std::unique_ptr<test_support::Server> Registry::server_;

const HKEY kRoot = HKEY_LOCAL_MACHINE;

TEST_F(Registry, KeysAreCreatedOrFound) {
    EXPECT_FALSE(Exists("SOFTWARE\\XEV\\New\\Deep"));
    EXPECT_NE(AMACRERegCreateKey(kRoot, "SOFTWARE\\XEV\\New\\Deep"), FALSE);
    EXPECT_TRUE(Exists("SOFTWARE\\XEV\\New\\Deep"));
    EXPECT_NE(AMACRERegCreateKey(kRoot, "SOFTWARE\\XEV\\new\\DEEP"), FALSE);
}

TEST_F(Registry, KeysAreNotCreatedFromBadPaths) {
    EXPECT_EQ(AMACRERegCreateKey(kRoot, "SOFTWARE\\\\XEV"), FALSE);
    EXPECT_EQ(AMACRERegCreateKey(kRoot, nullptr), FALSE);
    EXPECT_EQ(AMACRERegCreateKey(0, "SOFTWARE\\XEV\\New"), FALSE);
}

TEST_F(Registry, TextsAreStoredWithTheirTerminator) {
    ASSERT_NE(AMACRERegCreateKey(kRoot, "SOFTWARE\\Text"), FALSE);
    EXPECT_NE(AMACRERegWriteSz(kRoot, "SOFTWARE\\Text", "NAME", "some text"), FALSE);
    EXPECT_EQ(Value("SOFTWARE\\Text", "name"), std::string("1:some text\0", 12));
    EXPECT_NE(AMACRERegWriteSz(kRoot, "SOFTWARE\\TEXT", "Name", ""), FALSE);
    EXPECT_EQ(Value("SOFTWARE\\Text", "NAME"), std::string("1:\0", 3));
}

TEST_F(Registry, NumbersAreStoredInFourBytes) {
    ASSERT_NE(AMACRERegCreateKey(kRoot, "SOFTWARE\\Number"), FALSE);
    EXPECT_NE(AMACRERegWriteDword(kRoot, "SOFTWARE\\Number", "NAME", 0x04030201), FALSE);
    EXPECT_EQ(Value("SOFTWARE\\Number", "NAME"), "4:\x01\x02\x03\x04");
}

TEST_F(Registry, WritesNeverCreateAKey) {
    EXPECT_EQ(AMACRERegWriteSz(kRoot, "SOFTWARE\\Missing", "NAME", "text"), FALSE);
    EXPECT_EQ(AMACRERegWriteDword(kRoot, "SOFTWARE\\Missing", "NAME", 1), FALSE);
    EXPECT_FALSE(Exists("SOFTWARE\\Missing"));
}

TEST_F(Registry, WritesNeedTheirPointers) {
    ASSERT_NE(AMACRERegCreateKey(kRoot, "SOFTWARE\\Null"), FALSE);
    EXPECT_EQ(AMACRERegWriteSz(kRoot, nullptr, "NAME", "text"), FALSE);
    EXPECT_EQ(AMACRERegWriteSz(kRoot, "SOFTWARE\\Null", nullptr, "text"), FALSE);
    EXPECT_EQ(AMACRERegWriteSz(kRoot, "SOFTWARE\\Null", "NAME", nullptr), FALSE);
    EXPECT_EQ(AMACRERegWriteDword(kRoot, nullptr, "NAME", 1), FALSE);
    EXPECT_EQ(AMACRERegWriteDword(kRoot, "SOFTWARE\\Null", nullptr, 1), FALSE);
    EXPECT_EQ(Value("SOFTWARE\\Null", "NAME"), "");
}

TEST_F(Registry, ATextAboveTheLimitIsNotStored) {
    ASSERT_NE(AMACRERegCreateKey(kRoot, "SOFTWARE\\Large"), FALSE);
    const std::string text(KES_REG_MAX_DATA, 'x');
    EXPECT_EQ(AMACRERegWriteSz(kRoot, "SOFTWARE\\Large", "NAME", text.c_str()), FALSE);
    EXPECT_NE(AMACRERegWriteSz(kRoot, "SOFTWARE\\Large", "NAME", text.c_str() + 1), FALSE);
}

// The functions of libamcregac, directly or through the module.
using MethodPath = BOOL (*)(const char *, const char *, HKEY *, char *, DWORD *) noexcept;
using DestinationPath = BOOL (*)(const char *, HKEY *, char *, DWORD *) noexcept;

constexpr char kMailMethod[] = "VeloxReport(Internet Mail)";
constexpr char kMailPath[] =
    "SOFTWARE\\XEV\\KESAlertMan\\BaseSetting\\Report\\VeloxReport(Internet Mail)\\Setting";
constexpr char kDestinationPath[] = "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT";

void ExpectMethod(MethodPath get, const char *category, const char *method, const char *path) {
    HKEY key = 0;
    char buffer[512] = "former";
    DWORD size = sizeof buffer;
    EXPECT_NE(get(category, method, &key, buffer, &size), FALSE) << method;
    EXPECT_STRCASEEQ(buffer, path);
    EXPECT_EQ(size, std::strlen(path) + 1);
    EXPECT_EQ(key, HKEY_LOCAL_MACHINE);
}

TEST_F(Registry, MethodsHaveASettingsKey) {
    ExpectMethod(AMACBSGetMethodRegistryPath, "Report", kMailMethod, kMailPath);
    ExpectMethod(AMACBSGetMethodRegistryPath, "REPORT", "VELOXREPORT(INTERNET MAIL)", kMailPath);
    ExpectMethod(AMACBSGetMethodRegistryPath, "report", "MANAGER (SNMP)",
                 "SOFTWARE\\XEV\\KESAlertMan\\BaseSetting\\Report\\MANAGER (SNMP)\\Setting");
    char exact[sizeof kMailPath];
    DWORD size = sizeof exact;
    EXPECT_NE(AMACBSGetMethodRegistryPath("Report", kMailMethod, nullptr, exact, &size), FALSE);
    EXPECT_STREQ(exact, kMailPath);
    EXPECT_NE(Value(exact, "SMTPPort"), "") << "the path leads to the settings";
}

TEST_F(Registry, DestinationsHaveAKey) {
    HKEY key = 0;
    char path[sizeof kDestinationPath];
    DWORD size = sizeof path;
    EXPECT_NE(AMACDSGetIDRegistryPath("VELOXREPORT", &key, path, &size), FALSE);
    EXPECT_STREQ(path, kDestinationPath);
    EXPECT_EQ(size, sizeof path);
    EXPECT_EQ(key, HKEY_LOCAL_MACHINE);
    EXPECT_NE(AMACDSGetIDRegistryPath("VeloxReport", nullptr, path, &size), FALSE);
    EXPECT_STRCASEEQ(path, kDestinationPath);
    EXPECT_NE(Value(path, "METHOD"), "");
}

struct UnknownCase {
    const char *title;
    const char *category;
    const char *name;
};

class Unknown : public Registry, public testing::WithParamInterface<UnknownCase> {};

TEST_P(Unknown, HasNoPath) {
    const UnknownCase &row = GetParam();
    HKEY key = 77;
    char path[512] = "former";
    for (const DWORD capacity : {DWORD{0}, DWORD{sizeof path}}) {
        DWORD size = capacity;
        const BOOL found =
            row.category != nullptr
                ? AMACBSGetMethodRegistryPath(row.category, row.name, &key, path, &size)
                : AMACDSGetIDRegistryPath(row.name, &key, path, &size);
        EXPECT_EQ(found, FALSE);
        EXPECT_EQ(size, capacity);
        EXPECT_EQ(key, 77u);
        EXPECT_STREQ(path, "former");
    }
}

const std::string kLongName(300, 'x');

INSTANTIATE_TEST_SUITE_P(
    Rows, Unknown,
    testing::Values(
        UnknownCase{"Category", "Event", kMailMethod},
        UnknownCase{"EmptyCategory", "", kMailMethod}, UnknownCase{"Method", "Report", "Telegraph"},
        UnknownCase{"EmptyMethod", "Report", ""}, UnknownCase{"NullMethod", "Report", nullptr},
        UnknownCase{"PathAsMethod", "Report", "VELOXREPORT\\SETTING"},
        UnknownCase{"SeparatorBehindMethod", "Report", "VELOXREPORT\\"},
        UnknownCase{"LongMethod", "Report", kLongName.c_str()},
        UnknownCase{"Destination", nullptr, "NOBODY"}, UnknownCase{"EmptyDestination", nullptr, ""},
        UnknownCase{"NullDestination", nullptr, nullptr},
        UnknownCase{"PathAsDestination", nullptr, "VELOXREPORT\\Address"}),
    test_support::Title());

// The size protocol, which both functions share.
template <typename Get>
void ExpectSizes(Get get, DWORD needed) {
    HKEY key = 0;
    char path[512] = "former";
    DWORD size = 0;
    EXPECT_NE(get(&key, path, &size), FALSE) << "a size of 0 asks for the size";
    EXPECT_EQ(size, needed);
    EXPECT_STREQ(path, "former");
    EXPECT_EQ(key, HKEY_LOCAL_MACHINE);
    size = 0;
    EXPECT_NE(get(&key, static_cast<char *>(nullptr), &size), FALSE);
    size = needed - 1;
    EXPECT_EQ(get(&key, path, &size), FALSE);
    EXPECT_EQ(size, needed - 1);
    size = 1;
    EXPECT_EQ(get(&key, path, &size), FALSE);
    EXPECT_STREQ(path, "former");
    size = needed;
    EXPECT_EQ(get(&key, static_cast<char *>(nullptr), &size), FALSE);
    EXPECT_EQ(get(&key, path, static_cast<DWORD *>(nullptr)), FALSE);
    EXPECT_NE(get(&key, path, &size), FALSE);
    EXPECT_EQ(std::strlen(path) + 1, needed);
}

TEST_F(Registry, PathsFollowTheSizeProtocol) {
    ExpectSizes(
        [](HKEY *key, char *path, DWORD *size) {
            return AMACBSGetMethodRegistryPath("Report", kMailMethod, key, path, size);
        },
        sizeof kMailPath);
    ExpectSizes([](HKEY *key, char *path,
                   DWORD *size) { return AMACDSGetIDRegistryPath("VELOXREPORT", key, path, size); },
                sizeof kDestinationPath);
}

TEST(RegistryNumber, IsTheLocalOneOnly) {
    EXPECT_NE(AMACEXSetRegistryNumber(0), FALSE);
    EXPECT_EQ(AMACEXSetRegistryNumber(1), FALSE);
    EXPECT_EQ(AMACEXSetRegistryNumber(0xFFFFFFFF), FALSE);
}

TEST_F(Registry, PathsComeFromTheModuleToo) {
    for (int round = 0; round < 3; ++round) {
        HMODULE module = LoadLibrary("amcregac.dll");
        ASSERT_NE(module, nullptr);
        const auto method =
            reinterpret_cast<MethodPath>(GetProcAddress(module, "AMACBSGetMethodRegistryPath"));
        const auto destination =
            reinterpret_cast<DestinationPath>(GetProcAddress(module, "AMACDSGetIDRegistryPath"));
        ASSERT_NE(method, nullptr);
        ASSERT_NE(destination, nullptr);
        EXPECT_NE(GetProcAddress(module, "AMACEXSetRegistryNumber"), nullptr);
        ExpectMethod(method, "Report", kMailMethod, kMailPath);
        char path[512] = "";
        DWORD size = sizeof path;
        EXPECT_NE(destination("VELOXREPORT", nullptr, path, &size), FALSE);
        EXPECT_STREQ(path, kDestinationPath);
        EXPECT_NE(FreeLibrary(module), FALSE);
    }
}

}  // namespace
