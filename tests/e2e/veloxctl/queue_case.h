// A registry server, a host whose reports can be sent to a mail server on loopback, and its alert
// queue.
#ifndef VELOXCTL_TEST_QUEUE_CASE_H
#define VELOXCTL_TEST_QUEUE_CASE_H

#include <amcrtcpy.h>
#include <gtest/gtest.h>
#include <mail_support/smtp_server.h>
#include <ntwin32/memory.h>
#include <ntwin32/module.h>
#include <ntwin32/registry.h>
#include <queuestore/queue.h>
#include <records/queue_item.h>
#include <sysexits.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "command.h"
#include "support/server.h"

namespace veloxctl_test {

// The header's value, or an empty text.
inline std::string HeaderOf(const mail_support::ReceivedMail &mail, const std::string &name) {
    const std::size_t at = mail.text.find("\n" + name + ": ");
    if (at == std::string::npos) {
        return {};
    }
    const std::size_t begin = at + name.size() + 3;
    return mail.text.substr(begin, mail.text.find('\r', begin) - begin);
}

// The report inside the mail, decoded.
inline std::string ReportIn(const mail_support::ReceivedMail &mail) {
    const std::string body = mail.text.substr(mail.text.find("\r\n\r\n") + 4);
    HGLOBAL block = nullptr;
    DWORD size = 0;
    if (UUCdDeCodingFromMemory(body.data(), static_cast<DWORD>(body.size()), &block, &size) ==
        FALSE) {
        return {};
    }
    std::string report(static_cast<const char *>(block), size);
    GlobalFree(block);
    return report;
}

class QueueTest : public testing::Test {
  protected:
    static constexpr char kDestination[] =
        "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT";
    static constexpr char kBase[] = "SOFTWARE\\XEV\\KESALERTMAN\\BASESETTING\\REPORT\\";

    void SetUp() override {
        Import(std::string("[HKEY_LOCAL_MACHINE\\") + kBase +
               "VeloxReport(Internet Mail)\\Setting]\n\"IP\"=\"127.0.0.1\"\n"
               "\"Address\"=\"agent@server.example\"\n\"Option\"=dword:0\n"
               "[HKEY_LOCAL_MACHINE\\SOFTWARE\\XEV\\VLXService\\SETTING]\n"
               "\"KAISHAKBN\"=dword:1\n\"OPTCDN\"=dword:0\n\"MAIL\"=\"customer@server.example\"\n"
               "[HKEY_LOCAL_MACHINE\\" +
               kDestination + "\\Address]\n\"ETo\"=\"centre@maintenance.example\"\n");
    }

    static void Import(const std::string &lines) {
        const Result result =
            Veloxctl({"reg", "import", "-"},
                     {.input = "Windows Registry Editor Version 5.00\r\n\r\n" + lines});
        ASSERT_EQ(result.status, 0) << result.errors;
    }
    void UsePort(unsigned port) {
        char line[32];
        (void)std::snprintf(line, sizeof(line), "\"SMTPPort\"=dword:%x\n", port);
        Import(std::string("[HKEY_LOCAL_MACHINE\\") + kBase +
               "VeloxReport(Internet Mail)\\Setting]\n" + line);
    }
    void Select(const std::string &method) {
        Import(std::string("[HKEY_LOCAL_MACHINE\\") + kBase +
               "VELOXREPORT\\SETTING]\n\"SelectedMethod\"=\"" + method + "\"\n");
    }

    // Queues an alert as other programs do and gives its id.
    std::string Add(const std::string &message) {
        AMQUE_ITEM item = {};
        item.qwKind = AMQUE_KIND_ALERT;
        item.lpszLog = "SYSTEM";
        item.lpszSource = "KESHeartBeatDll";
        item.qwLevel = 2;
        item.qwRoot = HKEY_LOCAL_MACHINE;
        item.lpszDestination = kDestination;
        item.qwTime = 1709600000;
        item.lpszComputer = "host01";
        item.lpszMessage = message.c_str();
        item.lpszReporter = "";
        for (const char *&text : item.lpszText) {
            text = "";
        }
        item.qwCount = 1;
        item.lpszNote = "";
        const std::vector<std::string> before = Ids();
        const HMODULE module = LoadLibrary(AMVMQUE_MODULE);
        auto *add = reinterpret_cast<AMQUENEWADD *>(GetProcAddress(module, AMQUENEWADD_NAME));
        EXPECT_TRUE(add != nullptr && add(&item) != FALSE);
        FreeLibrary(module);
        for (const std::string &id : Ids()) {
            if (std::find(before.begin(), before.end(), id) == before.end()) {
                return id;
            }
        }
        return {};
    }

    std::string Folder() const { return server_.StateFolder() + "/queue"; }

    std::vector<std::string> Ids() const {
        std::vector<std::string> ids;
        std::string problem;
        queuestore::Queue queue;
        if (queue.Open(Folder(), false, &problem)) {
            EXPECT_TRUE(queue.List(&ids, &problem)) << problem;
        }
        return ids;
    }
    queuestore::Entry Load(const std::string &id) const {
        queuestore::Entry entry;
        std::string problem;
        queuestore::Queue queue;
        EXPECT_TRUE(queue.Open(Folder(), false, &problem) && queue.Load(id, &entry, &problem))
            << problem;
        return entry;
    }

    test_support::Server server_;
};

}  // namespace veloxctl_test

#endif  // VELOXCTL_TEST_QUEUE_CASE_H
