#include "report/outcome.h"

#include <regfile/text.h>
#include <velox/mail_report.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "failure.h"
#include "mail/settings.h"
#include "registry.h"
#include "terminal.h"

namespace veloxctl::report {

namespace {

constexpr char kSetupKey[] = "SOFTWARE\\XEV\\VLXService\\SETUP";
constexpr char kSettingKey[] = "SOFTWARE\\XEV\\VLXService\\SETTING";
constexpr char kDestinationKey[] =
    "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT\\Address";
constexpr std::size_t kVersionSize = 20;  // that a report reads

struct Row {
    int code;
    int status;
    const char *meaning;
};

constexpr Row kRows[] = {
    {VX_REPORT_SENT, EX_OK, "the server accepted the report"},
    {VX_REPORT_NO_DESTINATION, EX_CONFIG, "the destination list holds no address"},
    {VX_REPORT_DESTINATION_TOO_LONG, EX_CONFIG,
     "the destination list is over 512 bytes, has more than 100 addresses, or one over 80 bytes"},
    {VX_REPORT_DESTINATION_INVALID, EX_CONFIG,
     "an address of the destination list has a blank inside"},
    {VX_REPORT_NO_SERVER, EX_CONFIG, "no SMTP server address is set"},
    {VX_REPORT_NO_SENDER, EX_CONFIG, "no sender address is set"},
    {VX_REPORT_NO_CUSTOMER_MAIL, EX_CONFIG, "the contract data hold no mail address"},
    {VX_REPORT_NOT_COMPOSED, EX_CONFIG, "the report cannot be composed"},
    {VX_REPORT_NOT_ENCODED, EX_OSERR, "the report cannot be encoded"},
    {VX_REPORT_NO_MODULE, EX_OSFILE, "the module amrsmtp.dll cannot be loaded"},
    {VX_REPORT_NO_FUNCTION, EX_OSFILE, "the module amrsmtp.dll lacks its function"},
    {VX_REPORT_CONNECTION_FAILED, EX_UNAVAILABLE,
     "the SMTP server cannot be reached, or not with the protection that is set"},
    {VX_REPORT_ENVELOPE_REFUSED, EX_PROTOCOL,
     "the SMTP server refused the sender or a destination"},
    {VX_REPORT_DATA_REFUSED, EX_PROTOCOL, "the SMTP server refused the report's text"},
    {VX_REPORT_SEND_FAILED, EX_SOFTWARE, "the module amrsmtp.dll refused the mail"},
    {VX_REPORT_POP_FAILED, EX_UNAVAILABLE, "the log-in to the POP server failed"},
    {VX_REPORT_NO_PRODUCT_FOLDER, EX_CONFIG, "the product's folder cannot be told"},
};

const Row *Find(int code) {
    const auto *found = std::ranges::find(kRows, code, &Row::code);
    return found == std::end(kRows) ? nullptr : found;
}

// "missing", "empty", or nothing when the value has content.
std::string Lack(const char *key, const char *name) {
    const auto value = ReadValue(key, name);
    if (!value) {
        return "missing";
    }
    return value->data.empty() || value->data[0] == 0 ? "empty" : "";
}

void AddLack(const char *key, const char *name, std::vector<std::string> *causes) {
    if (const std::string lack = Lack(key, name); !lack.empty()) {
        causes->push_back(std::string(name) + " of " + KeyInUtf8(key) + " is " + lack);
    }
}

std::optional<std::uint32_t> Number(const char *name) {
    const auto value = ReadValue(kSettingKey, name);
    std::uint32_t number = 0;
    if (!value || value->data.size() != sizeof(number)) {
        return std::nullopt;
    }
    std::memcpy(&number, value->data.data(), sizeof(number));
    return number;
}

void AddCompositionCauses(std::vector<std::string> *causes) {
    const auto version = ReadValue(kSetupKey, "VERSION");
    if (!version) {
        causes->emplace_back("VERSION of " + KeyInUtf8(kSetupKey) + " is missing");
    } else if (version->data.size() > kVersionSize) {
        const std::string text(version->data.begin(), version->data.end());
        causes->emplace_back(
            "VERSION is \"" + regfile::NameToUtf8(text.substr(0, text.find('\0'))) +
            "\" and may have 19 bytes: every import of a key disk lengthens it; shorten it with "
            "\"veloxctl reg add " +
            KeyInUtf8(kSetupKey) + " -v VERSION -d ...\"");
    }
    const auto kind = Number("KAISHAKBN");
    if (!kind || (*kind != 1 && *kind != 99)) {
        causes->emplace_back("KAISHAKBN of " + KeyInUtf8(kSettingKey) + " is " +
                             (kind ? std::to_string(*kind) : "missing") +
                             " and must be 1 or 99: import a key disk");
    }
    if (!Number("OPTCDN")) {
        causes->emplace_back("OPTCDN of " + KeyInUtf8(kSettingKey) + " is missing");
    }
    if (causes->empty()) {
        causes->emplace_back("the service information is over 10239 bytes, or memory is short");
    }
}

}  // namespace

const char *MeaningOf(int code) {
    const Row *row = Find(code);
    return row != nullptr ? row->meaning : "this result is unknown";
}

int StatusOf(int code) {
    const Row *row = Find(code);
    return row != nullptr ? row->status : EX_SOFTWARE;
}

std::vector<std::string> LikelyCauses(int code) {
    std::vector<std::string> causes;
    const std::string base = mail::BasePath();
    switch (code) {
        case VX_REPORT_NO_DESTINATION:
            AddLack(kDestinationKey, "ETo", &causes);
            break;
        case VX_REPORT_NO_SERVER:
            AddLack(base.c_str(), mail::kAddress, &causes);
            break;
        case VX_REPORT_NO_SENDER:
            AddLack(base.c_str(), mail::kSender, &causes);
            break;
        case VX_REPORT_NO_CUSTOMER_MAIL:
            AddLack(kSettingKey, "MAIL", &causes);
            break;
        case VX_REPORT_NOT_COMPOSED:
            AddCompositionCauses(&causes);
            break;
        case VX_REPORT_POP_FAILED:
            causes = mail::PopProblems(mail::ReadSettings(base));
            break;
        default:
            break;
    }
    return causes;
}

void FailReport(int code, const std::string &reason) {
    std::string message = std::string(MeaningOf(code)) + " (" + std::to_string(code) + ")";
    for (const std::string &cause : LikelyCauses(code)) {
        message += "; " + Utf8ToTerminal(cause);
    }
    if (!reason.empty()) {
        message += "; " + StoredToTerminal(reason);
    }
    Fail(StatusOf(code), message);
}

}  // namespace veloxctl::report
