// The surroundings of every test of amrvxmn.dll: a deadline, and one registry server for the whole
// program with the data that an event tells.
#ifndef MANAGER_FIXTURE_H
#define MANAGER_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include <mail_support/handing_over.h>
#include <ntwin32/registry.h>
#include <support/encoding.h>
#include <support/environment.h>
#include <support/server.h>

inline constexpr char kReportKey[] = "SOFTWARE\\XEV\\KESALERTMAN\\ALERTREPORT";
inline constexpr char kSettingKey[] = "SOFTWARE\\XEV\\VLXService\\SETTING";

// Starts with the first test that needs it and ends with the program.
class RegistryServer : public testing::Environment {
  public:
    static void Need() {
        if (!server_)
            server_.emplace();
    }
    void TearDown() override { server_.reset(); }

  private:
    inline static std::optional<test_support::Server> server_;
};

class ManagerTest : public testing::Test {
  protected:
    static constexpr std::chrono::seconds kAmple{20};
    static constexpr std::chrono::seconds kShort{1};

    void SetUp() override {
        RegistryServer::Need();
        SetText(kReportKey, "ReportProduct", "N8100-0001");
        SetText(kSettingKey, "TOKUINMA", test_support::ToEuc("株式会社例"));
        SetNumber(kSettingKey, "KAISHAKBN", 1);
    }

    void SetDeadline(std::chrono::seconds deadline) {
        deadline_.Set(std::to_string(deadline.count()));
    }

    static void SetValue(const char *path, const char *name, DWORD type, const void *data,
                         std::size_t size) {
        HKEY key = 0;
        ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, path, 0, KEY_ALL_ACCESS, &key), ERROR_SUCCESS);
        EXPECT_EQ(RegSetValueEx(key, name, 0, type, static_cast<const BYTE *>(data),
                                static_cast<DWORD>(size)),
                  ERROR_SUCCESS);
        RegCloseKey(key);
    }
    static void SetText(const char *path, const char *name, const std::string &text) {
        SetValue(path, name, REG_SZ, text.c_str(), text.size() + 1);
    }
    static void SetNumber(const char *path, const char *name, DWORD number) {
        SetValue(path, name, REG_DWORD, &number, sizeof number);
    }
    static void DeleteValue(const char *path, const char *name) {
        HKEY key = 0;
        ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, path, 0, KEY_ALL_ACCESS, &key), ERROR_SUCCESS);
        EXPECT_EQ(RegDeleteValue(key, name), ERROR_SUCCESS);
        RegCloseKey(key);
    }

    test_support::EnvironmentVariable authority_{"KES_CAFILE"};
    test_support::EnvironmentVariable language_{"KES_LANG", "en_US"};
    test_support::EnvironmentVariable deadline_{"KES_MANAGER_DEADLINE",
                                                std::to_string(kAmple.count())};
};

#endif  // MANAGER_FIXTURE_H
