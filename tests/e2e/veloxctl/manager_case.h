// What tests of the report method and the management server begin with.
#ifndef VELOXCTL_TEST_MANAGER_CASE_H
#define VELOXCTL_TEST_MANAGER_CASE_H

#include <gmock/gmock.h>
#include <sysexits.h>

#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

#include "reg_fixture.h"
#include "support/title.h"

namespace veloxctl_test {

inline constexpr char kDestination[] =
    "HKLM\\SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT\\Address";
inline constexpr char kMethodKey[] =
    "HKLM\\SOFTWARE\\XEV\\KESAlertMan\\BaseSetting\\REPORT\\VELOXREPORT\\SETTING";
inline constexpr char kSetupKey[] = "HKLM\\SOFTWARE\\XEV\\VLXService\\SETUP";
inline constexpr char kAlertReport[] = "HKLM\\SOFTWARE\\XEV\\KESALERTMAN\\ALERTREPORT";

// Before each test: no manager, the method mail, nothing opened, contract data that a report needs.
class ManagerCommandTest : public RegTest {
  protected:
    void SetUp() override {
        Import("[-" + std::string(kDestination) + "]\n[" + kDestination +
               "]\n\"ETo\"=\"centre@maintenance.example\"\n\"EOpening\"=dword:00000000\n[" +
               kMethodKey + "]\n\"SelectedMethod\"=\"Internet Mail\"\n[" + kSetupKey +
               "]\n\"SETTING\"=dword:00000000\n"
               "[HKLM\\SOFTWARE\\XEV\\VLXService\\SETTING]\n\"KAISHAKBN\"=dword:00000001\n[" +
               kAlertReport + "]\n");
    }

    static void Put(const std::string &key, const std::string &value) {
        Import("[" + key + "]\n" + value + "\n");
    }
    // Has reports handed to a manager on loopback.
    static void Select(unsigned port, const std::string &host = "") {
        Put(kMethodKey, "\"SelectedMethod\"=\"TransToManager\"");
        char number[16];
        std::snprintf(number, sizeof number, "%08x", port);
        Put(kDestination, "\"ManagerIP\"=\"127.0.0.1\"\n\"IPorHost\"=\"" + host +
                              "\"\n\"PortNumber\"=dword:" + number);
    }
    // The values of a key as .reg lines.
    static std::string Values(const std::string &key) {
        const std::string text = Exported(key);
        return text.substr(text.find('\n') + 1, text.find("\n\n") - text.find('\n'));
    }
};

}  // namespace veloxctl_test

#endif  // VELOXCTL_TEST_MANAGER_CASE_H
