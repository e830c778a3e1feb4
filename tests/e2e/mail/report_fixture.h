// A registry server whose registry holds a whole contract, and the reports that it calls for.
#ifndef REPORT_FIXTURE_H
#define REPORT_FIXTURE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include <mail_support/certificates.h>
#include <mail_support/server.h>
#include <support/environment.h>
#include <support/server.h>
#include <support/temp_folder.h>

#include "veloxctl/command.h"

inline constexpr char kRecipients[] = " centre@maintenance.example , second@maintenance.example";

class ReportTest : public testing::Test {
  protected:
    static constexpr char kSetupKey[] = "SOFTWARE\\XEV\\VLXService\\SETUP";
    static constexpr char kContractKey[] = "SOFTWARE\\XEV\\VLXService\\SETTING";
    static constexpr char kDestinationKey[] =
        "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT\\Address";
    static constexpr char kMailKey[] =
        "SOFTWARE\\XEV\\KESAlertMan\\BaseSetting\\Report\\VeloxReport(Internet Mail)\\Setting";

    // Stores the contract, two destinations and an address for error replies.
    ReportTest();

    // Makes the changes of .reg lines, written in UTF-8.
    static void Import(const std::string &lines);
    static void Remove(const std::string &key, const std::string &name) {
        Import("[HKLM\\" + key + "]\n\"" + name + "\"=-\n");
    }
    static void StoreText(const std::string &key, const std::string &name, const std::string &text);
    // 0xFFFFFFFF when it is missing.
    static std::uint32_t Number(const std::string &key, const std::string &name);
    static std::uint32_t Opening() { return Number(kDestinationKey, "EOpening"); }
    static std::uint32_t Registered() { return Number(kSetupKey, "SETTING"); }

    // Runs veloxctl and expects it to succeed; gives what it printed.
    static std::string MustSucceed(const std::vector<std::string> &words,
                                   const std::string &input = "");
    // Stores server, port and protection as a person does.
    static void UseServer(const std::string &address, unsigned port,
                          const std::string &protection = "plain");
    static void UsePop(const std::string &address, unsigned port, const std::string &account,
                       const std::string &password);

    test_support::TempFolder folder_;
    test_support::EnvironmentVariable language_{"KES_LANG", "en_US"};
    test_support::EnvironmentVariable deadline_{"KES_MAIL_DEADLINE"};
    mail_support::Authority known_;
    mail_support::Certificate certificate_ =
        known_.Issue("IP:127.0.0.1,IP:" + mail_support::OwnLoopbackAddress());
    test_support::EnvironmentVariable authority_{"KES_CAFILE", known_.File()};
    test_support::Server server_;
};

// The text that a report carries, in UTF-8 and with lines ended by CR LF: the identifier line and,
// behind the service information, the opening message.
std::string ExpectedReport(bool japanese, const std::string &identifier,
                           const std::string &message = "");

// Lines ended by LF, as a terminal shows them.
std::string Shown(std::string text);

#endif  // REPORT_FIXTURE_H
