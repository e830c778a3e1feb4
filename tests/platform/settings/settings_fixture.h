// The alert manager's part of a real registry, empty before each test but for its four tables.
#ifndef SETTINGS_FIXTURE_H
#define SETTINGS_FIXTURE_H

#include <gmock/gmock.h>
#include <ntwin32/registry.h>
#include <support/server.h>

#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace settings_test {

inline const std::string kAlertManager = "SOFTWARE\\XEV\\KESALERTMAN";
inline const std::string kReport = kAlertManager + "\\BASESETTING\\REPORT";
inline const std::string kTraps = kReport + "\\MANAGER (SNMP)\\SETTING";
inline const std::string kShutdown = kAlertManager + "\\BASESETTING\\OTHER\\SHUTDOWN DELAY";
inline const std::string kDestinations = kAlertManager + "\\DESTINATION\\ID_LIST";
inline const std::string kAgentSources =
    kAlertManager + "\\REPORTTABLE\\USEREPORTAPI_EVENTLOG\\SYSTEM";
inline const std::string kSyslogSources = kAlertManager + "\\REPORTTABLE\\EVENTLOG\\APPLICATION";

inline void Apply(const KES_REG_CHANGE &change) {
    ASSERT_EQ(KesRegApplyBatch(HKEY_LOCAL_MACHINE, &change, 1, nullptr), ERROR_SUCCESS);
}
inline void CreateKey(const std::string &path) {
    Apply({KES_REG_CREATE_KEY, 0, path.c_str(), nullptr, nullptr, 0, 0});
}
inline void DeleteTree(const std::string &path) {
    Apply({KES_REG_DELETE_TREE, 0, path.c_str(), nullptr, nullptr, 0, 0});
}
inline void StoreText(const std::string &path, const char *name, const std::string &text) {
    Apply({KES_REG_SET_VALUE, REG_SZ, path.c_str(), name,
           reinterpret_cast<const BYTE *>(text.c_str()), static_cast<DWORD>(text.size() + 1), 0});
}
inline void StoreNumber(const std::string &path, const char *name, DWORD number) {
    Apply({KES_REG_SET_VALUE, REG_DWORD, path.c_str(), name,
           reinterpret_cast<const BYTE *>(&number), sizeof number, 0});
}

inline bool KeyExists(const std::string &path) {
    HKEY key = 0;
    return RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS;
}

// "name=text", "name=0x1f" or, for what is no single text, "name=(4096 bytes)".
inline std::string ValueLine(const char *name, DWORD type, const std::string &data) {
    std::string line = std::string(name) + "=";
    if (type == REG_DWORD && data.size() == sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, data.data(), sizeof number);
        char shown[16];
        (void)std::snprintf(shown, sizeof shown, "0x%x", number);
        return line + shown;
    }
    return data.find('\0') == data.size() - 1
               ? line + data.c_str()
               : line + "(" + std::to_string(data.size()) + " bytes)";
}

// The key's values in their order, and below them its sub-keys with theirs, as "sub-key name=...".
inline void AppendLines(const std::string &path, const std::string &prefix,
                        std::vector<std::string> *lines) {
    HKEY key = 0;
    ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key), ERROR_SUCCESS)
        << path;
    char name[256];
    char data[8192];
    DWORD type = 0;
    DWORD length = sizeof name;
    DWORD size = sizeof data;
    for (DWORD i = 0; RegEnumValue(key, i, name, &length, nullptr, &type,
                                   reinterpret_cast<BYTE *>(data), &size) == ERROR_SUCCESS;
         ++i) {
        lines->push_back(prefix + ValueLine(name, type, std::string(data, size)));
        length = sizeof name;
        size = sizeof data;
    }
    for (DWORD i = 0;
         RegEnumKeyEx(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++i) {
        lines->push_back(prefix + name);
        AppendLines(path + "\\" + name, prefix + name + " ", lines);
        length = sizeof name;
    }
    RegCloseKey(key);
}
inline std::vector<std::string> Lines(const std::string &path) {
    std::vector<std::string> lines;
    AppendLines(path, "", &lines);
    return lines;
}

// Copies a text into a record's array.
template <std::size_t N>
void Fill(char (&field)[N], const std::string &text) {
    ASSERT_LT(text.size(), N);
    std::memcpy(field, text.c_str(), text.size() + 1);
}

class SettingsTest : public testing::Test {
  protected:
    void SetUp() override {
        static const test_support::Server server;
        DeleteTree(kAlertManager);
        for (const std::string &table : {kTraps, kDestinations, kAgentSources, kSyslogSources}) {
            CreateKey(table);
        }
        StoreNumber(kShutdown, "ENABLED", 0);
        StoreNumber(kShutdown + "\\SETTING", "SHUTDOWNTIME", 0);
    }
};

}  // namespace settings_test

#endif  // SETTINGS_FIXTURE_H
