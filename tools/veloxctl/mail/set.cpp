// "veloxctl mail set": everything is checked first, then stored as one change of the registry.
#include <amcrtcpy.h>
#include <arpa/inet.h>
#include <netdb.h>
#include <records/mail_modules.h>
#include <velox/mail_base.h>
#include <velox/mail_report.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>

#include "failure.h"
#include "mail/commands.h"
#include "mail/settings.h"
#include "prompt.h"
#include "registry.h"
#include "terminal.h"

namespace veloxctl::mail {

namespace {

constexpr std::uint32_t kLongestWait = 86400;

// The changes that belong together, and the settings as they will be.
struct Plan {
    std::string path;
    Settings settings;
    std::vector<regfile::Change> changes;

    void SetText(const char *name, const std::string &text, std::optional<std::string> *setting) {
        Add(name, REG_SZ, text.c_str(), text.size() + 1);
        *setting = text;
    }
    void SetNumber(const char *name, std::uint32_t number, std::optional<std::uint32_t> *setting) {
        Add(name, REG_DWORD, &number, sizeof(number));
        *setting = number;
    }

  private:
    void Add(const char *name, std::uint32_t type, const void *data, std::size_t size) {
        const auto *bytes = static_cast<const std::uint8_t *>(data);
        regfile::Change change;
        change.kind = regfile::Change::Kind::kSetValue;
        change.path = std::make_shared<const std::string>(path);
        change.name = name;
        change.type = type;
        change.data.assign(bytes, bytes + size);
        changes.push_back(std::move(change));
    }
};

std::uint32_t NumberFrom(const Arguments &arguments, const char *option, std::uint32_t lowest,
                         std::uint32_t highest) {
    const std::string &word = arguments.Get(option);
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size() || number < lowest ||
        number > highest) {
        Fail(EX_USAGE, "--" + std::string(option) + " " + word + ": a number from " +
                           std::to_string(lowest) + " to " + std::to_string(highest) +
                           " is wanted");
    }
    return number;
}

// A name or an address that goes to a server as it is: printable ASCII without blanks.
const std::string &WordFrom(const Arguments &arguments, const char *option, std::size_t longest) {
    const std::string &word = arguments.Get(option);
    const std::string subject = "--" + std::string(option) + " " + word;
    if (word.empty() || word.size() > longest) {
        Fail(EX_DATAERR, subject + ": 1 to " + std::to_string(longest) + " characters are wanted");
    }
    if (!std::ranges::all_of(word, [](char c) { return c > 0x20 && c < 0x7F; })) {
        Fail(EX_DATAERR, subject + ": only printable ASCII characters without blanks are possible");
    }
    return word;
}

std::string Resolve(const std::string &server) {
    addrinfo wanted = {};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    const int error = getaddrinfo(server.c_str(), nullptr, &wanted, &found);
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, &freeaddrinfo);
    if (error != 0) {
        Fail(EX_NOHOST, server + ": the name does not resolve (" + gai_strerror(error) +
                            "); give its IPv4 address");
    }
    sockaddr_in address = {};
    std::memcpy(&address, found->ai_addr, sizeof(address));
    char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &address.sin_addr, text, sizeof(text));
}

void PlanServer(const Arguments &arguments, Plan *plan) {
    const std::string &server = WordFrom(arguments, "server", sizeof(VXML_BASE_DATA::szServer) - 1);
    std::string address = server;
    switch (AMBIMyIPCheck(server.c_str())) {
        case AMBI_IP_ADDRESS:
            break;
        case AMBI_IP_HOST_NAME:
            address = Resolve(server);
            break;
        default:
            Fail(EX_DATAERR,
                 server +
                     ": it is read as an IPv4 address that is wrong, because none of its first "
                     "parts has four characters; give a longer name of the same server, such "
                     "as mx1.example.com for mx1, or its address");
    }
    plan->SetText(kServer, server, &plan->settings.server);
    plan->SetText(kAddress, address, &plan->settings.address);
}

void PlanSender(const Arguments &arguments, Plan *plan) {
    const std::string &sender =
        WordFrom(arguments, "sender", sizeof(VXML_BASE_DATA::szAddress) - 1);
    if (sender.find_first_of("<>") != std::string::npos || sender.find('@') == std::string::npos) {
        Fail(EX_DATAERR, "--sender " + sender + ": an address such as name@host.example is wanted");
    }
    plan->SetText(kSender, sender, &plan->settings.sender);
}

// Bits that have no meaning stay as they are.
void PlanOption(const Arguments &arguments, Plan *plan) {
    std::uint32_t option = plan->settings.option.value_or(AMAM_DEFAULT_OPTION);
    if (arguments.Has("protection")) {
        const auto *chosen = std::ranges::find(kProtections, arguments.Get("protection"));
        option = (option & ~MAIL_OPTION_PROTECTION) |
                 static_cast<std::uint32_t>(chosen - std::begin(kProtections));
    }
    if (arguments.Has("verify")) {
        option &= ~MAIL_OPTION_NO_VERIFICATION;
        option |= arguments.Get("verify") == "off" ? MAIL_OPTION_NO_VERIFICATION : 0;
    }
    plan->SetNumber(kOption, option, &plan->settings.option);
}

void PlanPassword(const std::string &source, Plan *plan) {
    const Secret password = ReadSecret(source, "POP password", RAS_MAX_PASSWORD);
    if (password.Text().empty()) {
        Fail(EX_DATAERR, "the POP password is empty");
    }
    char encoded[RAS_ENCODED_CAPACITY];
    if (Ras_Encode(password.Text().c_str(), encoded, sizeof(encoded)) == FALSE) {
        Fail(EX_NOPERM, "the POP password cannot be encoded; see the trace with -v");
    }
    plan->SetText(kPopPassword, encoded, &plan->settings.pop_password);
}

void PlanPop(const Arguments &arguments, Plan *plan) {
    Settings &settings = plan->settings;
    if (arguments.Has("pop")) {
        plan->SetNumber(kPopFlag, arguments.Get("pop") == "on" ? 1 : 0, &settings.pop_flag);
    }
    if (arguments.Has("pop-server")) {
        plan->SetText(kPopServer,
                      WordFrom(arguments, "pop-server", sizeof(TRANSPORTINFO::szServer) - 1),
                      &settings.pop_server);
    }
    if (arguments.Has("pop-port")) {
        plan->SetNumber(kPopPort, NumberFrom(arguments, "pop-port", 1, 65535), &settings.pop_port);
    }
    if (arguments.Has("pop-user")) {
        plan->SetText(kPopUser,
                      WordFrom(arguments, "pop-user", sizeof(TRANSPORTINFO::szAccount) - 1),
                      &settings.pop_user);
    }
    if (arguments.Has("pop-wait")) {
        plan->SetNumber(kPopWait, NumberFrom(arguments, "pop-wait", 0, kLongestWait),
                        &settings.pop_wait);
    }
    if (arguments.Has("pop-password-file") && arguments.Has("pop-password")) {
        Fail(EX_USAGE, "--pop-password and --pop-password-file exclude each other");
    }
    if (arguments.Has("pop-password-file") || arguments.Has("pop-password")) {
        PlanPassword(arguments.GetOr("pop-password-file", ""), plan);
    }
}

}  // namespace

int RunSet(const Arguments &arguments) {
    Plan plan;
    plan.path = BasePath();
    plan.settings = ReadSettings(plan.path);
    if (arguments.Has("server")) {
        PlanServer(arguments, &plan);
    }
    if (arguments.Has("sender")) {
        PlanSender(arguments, &plan);
    }
    if (arguments.Has("port")) {
        plan.SetNumber(kPort, NumberFrom(arguments, "port", 1, 65535), &plan.settings.port);
    }
    if (arguments.Has("protection") || arguments.Has("verify")) {
        PlanOption(arguments, &plan);
    }
    PlanPop(arguments, &plan);
    if (plan.changes.empty()) {
        Fail(EX_USAGE, "nothing is to be set; see \"veloxctl mail set --help\"");
    }
    ApplyChanges(plan.changes, [&](std::size_t index) {
        return ShownKey(plan.path) + " " + plan.changes[index].name;
    });
    for (const std::string &problem : Problems(plan.settings)) {
        Complain("stored; note: " + Utf8ToTerminal(problem));
    }
    return EX_OK;
}

}  // namespace veloxctl::mail
