#include "mail/settings.h"

#include <amcrtcpy.h>
#include <records/mail_modules.h>
#include <unistd.h>
#include <velox/mail_base.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "registry.h"

namespace veloxctl::mail {

namespace {

std::optional<std::string> ReadText(const std::string &path, const char *name) {
    const auto value = ReadValue(path, name);
    if (!value || value->type != REG_SZ) {
        return std::nullopt;
    }
    const std::string bytes(value->data.begin(), value->data.end());
    return bytes.substr(0, bytes.find('\0'));
}

std::optional<std::uint32_t> ReadNumber(const std::string &path, const char *name) {
    const auto value = ReadValue(path, name);
    std::uint32_t number = 0;
    if (!value || value->type != REG_DWORD || value->data.size() != sizeof(number)) {
        return std::nullopt;
    }
    std::memcpy(&number, value->data.data(), sizeof(number));
    return number;
}

bool IsEmpty(const std::optional<std::string> &text) {
    return !text || text->empty();
}

}  // namespace

std::string BasePath() {
    char path[AMAM_BASE_PATH_CAPACITY];
    AMAMGetBaseRegPath(path);
    return path;
}

Settings ReadSettings(const std::string &path) {
    Settings settings;
    settings.server = ReadText(path, kServer);
    settings.address = ReadText(path, kAddress);
    settings.sender = ReadText(path, kSender);
    settings.port = ReadNumber(path, kPort);
    settings.option = ReadNumber(path, kOption);
    settings.pop_flag = ReadNumber(path, kPopFlag);
    settings.pop_port = ReadNumber(path, kPopPort);
    settings.pop_server = ReadText(path, kPopServer);
    settings.pop_user = ReadText(path, kPopUser);
    settings.pop_password = ReadText(path, kPopPassword);
    settings.pop_wait = ReadNumber(path, kPopWait);
    return settings;
}

bool WantsPop(const Settings &settings) {
    return settings.pop_flag.value_or(0) != 0;
}

const char *ProtectionOf(std::uint32_t option) {
    return kProtections[option & MAIL_OPTION_PROTECTION];
}

bool VerifiesCertificate(std::uint32_t option) {
    return (option & MAIL_OPTION_NO_VERIFICATION) == 0;
}

const char *DescribeProtection(std::uint32_t option) {
    switch (option & MAIL_OPTION_PROTECTION) {
        case MAIL_OPTION_TLS:
            return "TLS from the first byte";
        case MAIL_OPTION_STARTTLS_REQUIRED:
            return "STARTTLS, required";
        case MAIL_OPTION_STARTTLS_OFFERED:
            return "STARTTLS when the server offers it, else clear text";
        default:
            return "clear text";
    }
}

// Only root has the key, so that only root can tell a useless password.
PasswordState StateOfPassword(const Settings &settings) {
    if (IsEmpty(settings.pop_password)) {
        return PasswordState::kMissing;
    }
    if (geteuid() != 0) {
        return PasswordState::kStored;
    }
    std::string text = *settings.pop_password;
    const bool decodes = text.size() < RAS_ENCODED_CAPACITY &&
                         Ras_Decode(text.data(), static_cast<int>(text.size())) != FALSE;
    explicit_bzero(text.data(), text.size());
    return decodes ? PasswordState::kStored : PasswordState::kUseless;
}

std::vector<std::string> PopProblems(const Settings &settings) {
    const std::string end = ": the POP log-in fails, and no report goes out (-18)";
    if (!settings.pop_flag) {
        return {"POPFlag is missing" + end};
    }
    std::vector<std::string> problems;
    if (!WantsPop(settings)) {
        return problems;
    }
    if (!settings.pop_port) {
        problems.push_back("POPPort is missing" + end);
    }
    if (IsEmpty(settings.pop_server)) {
        problems.push_back("POPServer is missing or empty" + end);
    }
    if (IsEmpty(settings.pop_user)) {
        problems.push_back("POPUser is missing or empty" + end);
    }
    const PasswordState password = StateOfPassword(settings);
    if (password == PasswordState::kMissing) {
        problems.push_back("POPPass is missing or empty" + end);
    } else if (password == PasswordState::kUseless) {
        problems.push_back("POPPass does not decode on this host, store it again" + end);
    }
    return problems;
}

std::vector<std::string> Problems(const Settings &settings) {
    std::vector<std::string> problems;
    if (IsEmpty(settings.server)) {
        problems.emplace_back("Server is missing or empty: store it with \"veloxctl mail set\"");
    }
    if (IsEmpty(settings.address)) {
        problems.emplace_back("IP is missing or empty: no report goes out (-7)");
    }
    if (IsEmpty(settings.sender)) {
        problems.emplace_back("Address is missing or empty: no report goes out (-8)");
    }
    if (!settings.option) {
        problems.emplace_back("Option is missing: reports go out plain");
    }
    std::ranges::move(PopProblems(settings), std::back_inserter(problems));
    return problems;
}

}  // namespace veloxctl::mail
