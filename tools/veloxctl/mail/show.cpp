// "veloxctl mail show".
#include <regfile/text.h>
#include <velox/mail_base.h>

#include <nlohmann/json.hpp>

#include "failure.h"
#include "mail/commands.h"
#include "mail/settings.h"
#include "terminal.h"
#include "values.h"

namespace veloxctl::mail {

namespace {

using Json = nlohmann::ordered_json;

std::string Shown(const std::optional<std::string> &text) {
    return !text ? "(missing)" : text->empty() ? "(empty)" : StoredToTerminal(*text);
}

std::string Shown(const std::optional<std::uint32_t> &number, const char *otherwise) {
    return number ? std::to_string(*number) : otherwise;
}

std::string ShownOption(const Settings &settings) {
    if (!settings.option) {
        return "(missing: reports go out plain)";
    }
    const std::uint32_t option = *settings.option;
    std::string text = DescribeProtection(option);
    if (option % 4 != 0) {
        text +=
            VerifiesCertificate(option) ? ", certificate verified" : ", certificate not verified";
    }
    return text + " (option " + std::to_string(option) + ")";
}

const char *ShownPassword(PasswordState state) {
    switch (state) {
        case PasswordState::kStored:
            return "stored";
        case PasswordState::kUseless:
            return "stored, but it does not decode on this host";
        case PasswordState::kMissing:
            break;
    }
    return "(missing)";
}

void PrintRow(const char *title, const std::string &text) {
    char padded[32];
    (void)std::snprintf(padded, sizeof(padded), "%-16s ", title);
    Print(padded + text + "\n");
}

void PrintSettings(const Settings &settings) {
    PrintRow("SMTP server:", Shown(settings.server));
    PrintRow("Its address:", Shown(settings.address));
    PrintRow("Port:", Shown(settings.port, "25 (missing)"));
    PrintRow("Sender:", Shown(settings.sender));
    PrintRow("Protection:", ShownOption(settings));
    PrintRow("POP log-in:", !settings.pop_flag   ? "(missing)"
                            : WantsPop(settings) ? "before every report"
                                                 : "none");
    PrintRow("POP server:", Shown(settings.pop_server));
    PrintRow("POP port:", Shown(settings.pop_port, "(missing)"));
    PrintRow("POP user:", Shown(settings.pop_user));
    PrintRow("POP password:", ShownPassword(StateOfPassword(settings)));
    PrintRow("POP wait:", Shown(settings.pop_wait, "0") + " s");
    for (const std::string &problem : Problems(settings)) {
        PrintRow("Problem:", Utf8ToTerminal(problem));
    }
}

Json AsJson(const std::optional<std::string> &text) {
    return text ? Json(regfile::NameToUtf8(*text)) : Json(nullptr);
}

Json AsJson(const std::optional<std::uint32_t> &number) {
    return number ? Json(*number) : Json(nullptr);
}

Json AsJson(const Settings &settings) {
    Json protection = nullptr;
    Json verify = nullptr;
    if (settings.option) {
        protection = ProtectionOf(*settings.option);
        verify = VerifiesCertificate(*settings.option);
    }
    const PasswordState password = StateOfPassword(settings);
    return {{"server", AsJson(settings.server)},
            {"address", AsJson(settings.address)},
            {"port", AsJson(settings.port)},
            {"sender", AsJson(settings.sender)},
            {"option", AsJson(settings.option)},
            {"protection", protection},
            {"verify", verify},
            {"pop",
             {{"flag", AsJson(settings.pop_flag)},
              {"server", AsJson(settings.pop_server)},
              {"port", AsJson(settings.pop_port)},
              {"user", AsJson(settings.pop_user)},
              {"password", password == PasswordState::kMissing   ? "missing"
                           : password == PasswordState::kUseless ? "useless"
                                                                 : "stored"},
              {"wait", AsJson(settings.pop_wait)}}},
            {"problems", Problems(settings)}};
}

}  // namespace

int RunShow(const Arguments &arguments) {
    const Settings settings = ReadSettings(BasePath());
    if (arguments.Has("json")) {
        PrintJson(AsJson(settings));
    } else {
        PrintSettings(settings);
    }
    return EX_OK;
}

}  // namespace veloxctl::mail
