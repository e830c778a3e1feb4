#include "queue/sender.h"

#include <records/queue_item.h>
#include <regfile/text.h>
#include <velox/alert_mail.h>
#include <velox/manager_alert.h>
#include <velox/report_method.h>

#include "failure.h"
#include "queue/alert_lines.h"
#include "registry.h"
#include "report/outcome.h"
#include "terminal.h"
#include "trace.h"

namespace veloxctl::queue {

namespace {

using queuestore::Entry;

std::string TextOf(const regfile::Value &value) {
    const std::string text(value.data.begin(), value.data.end());
    return text.substr(0, text.find('\0'));
}

std::string MailReason(int code, const char *answer) {
    std::string reason = std::string(report::MeaningOf(code)) + " (" + std::to_string(code) + ")";
    for (const std::string &cause : report::LikelyCauses(code)) {
        reason += "; " + cause;
    }
    const std::string said = code == VX_REPORT_POP_FAILED ? KeptFailure() : answer;
    return said.empty() ? reason : reason + "; " + regfile::NameToUtf8(said);
}

Outcome SendByMail(const Entry &entry) {
    const auto list = ReadValue(entry.item.destination + "\\Address", "ETo");
    char answer[VX_ALERT_ANSWER_CAPACITY];
    const int code = KesSendAlertByMail(entry.message_id.c_str(), list ? TextOf(*list).c_str() : "",
                                        ReportLines(entry).c_str(), answer);
    if (code == VX_REPORT_SENT) {
        return {true, {}};
    }
    return {false, MailReason(code, answer)};
}

Outcome SendToManager(const Entry &entry) {
    const std::string lines = ReportLines(entry);
    const queuestore::Item &item = entry.item;
    const VLX_MANAGER_ALERT alert = {
        .lpszEventId = entry.id.c_str(),
        .lpszLog = item.log.c_str(),
        .lpszSource = item.source.c_str(),
        .lpszComputer = item.computer.c_str(),
        .lpszMessage = item.message.c_str(),
        .lpszLines = lines.c_str(),
        .qwTime = item.time,
        .dwLevel = item.level,
        .dwCount = item.count,
    };
    char error[VLX_ALERT_ERROR_CAPACITY];
    const int code = KesSendAlertToManager(&alert, error);
    if (code == 0) {
        return {true, {}};
    }
    if (code == KES_MANAGER_NOT_CALLED && error[0] == '\0') {
        return {.reason =
                    "the module amrvxmn.dll cannot be used: " + regfile::NameToUtf8(KeptFailure())};
    }
    return {false, "the manager did not take the alert (" + std::to_string(code) + "); " +
                       regfile::NameToUtf8(error)};
}

// What no method can send; an empty text when there is nothing in the way.
std::string Obstacle(const Entry &entry) {
    if (entry.item.kind != AMQUE_KIND_ALERT) {
        return "an item of the kind " + std::to_string(entry.item.kind) + " is no alert";
    }
    if (entry.item.root != HKEY_LOCAL_MACHINE) {
        return "the destination is not below HKEY_LOCAL_MACHINE";
    }
    return {};
}

Outcome SendByMethod(LONG found, DWORD method, const Entry &entry) {
    if (std::string obstacle = Obstacle(entry); !obstacle.empty()) {
        return {false, std::move(obstacle)};
    }
    if (found != 0) {
        return {false, "no report method is selected"};
    }
    switch (method) {
        case VLX_METHOD_INTERNET_MAIL:
            return SendByMail(entry);
        case VLX_METHOD_TRANS_TO_MANAGER:
            return SendToManager(entry);
        default:
            return {false, "the selected method \"Dial-up\" cannot send alerts"};
    }
}

}  // namespace

Sender SelectedSender() {
    KES_REG_SERVER_INFO server = {};
    if (const LONG error = KesRegQueryServer(&server); error != ERROR_SUCCESS) {
        FailRegistry("the report method cannot be read", error);
    }
    (void)TerminalEncoding();  // before composing changes the locale
    KeepFailuresOf({"amrpop", "security"});
    DWORD method = 0;
    const LONG found = AMGetVlxMethod(&method);
    return [found, method](const Entry &entry) { return SendByMethod(found, method, entry); };
}

}  // namespace veloxctl::queue
