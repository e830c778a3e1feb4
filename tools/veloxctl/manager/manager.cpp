// "veloxctl manager".
#include "manager/manager.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <registry/keys.h>
#include <velox/report_method.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "failure.h"
#include "groups.h"
#include "registry.h"
#include "settings/fields.h"
#include "terminal.h"

namespace veloxctl {

namespace manager {

namespace {

using settings::Json;

constexpr char kAddressKey[] = AM_KEY_VELOXREPORT "\\Address";
constexpr std::size_t kMaxAddress = VLX_MANAGER_IP_CAPACITY - 1;
constexpr std::size_t kMaxHost = 253;
constexpr const char *kSchemes[] = {"https://", "http://"};

struct Parameters {
    std::string host;  // texts as stored
    std::string address;
    std::uint32_t port = 0;
};

Parameters Read() {
    // The library gives the defaults without the key, and also without a registry: that fails here.
    (void)ReadKey(kAddressKey);
    VLX_MANAGER_PARAM record = {};
    if (GetManagerParam(&record) == FALSE) {
        Fail(EX_OSERR, "there is not enough memory");
    }
    const std::unique_ptr<VLX_MANAGER_PARAM, decltype(&FreeManagerParam)> owner(&record,
                                                                                &FreeManagerParam);
    return {record.lpszHost, record.lpszManagerIP, record.dwPort};
}

void Store(Parameters parameters) {
    VLX_MANAGER_PARAM record = {};
    record.lpszHost = parameters.host.data();
    record.lpszManagerIP = parameters.address.data();
    record.dwPort = parameters.port;
    if (PutManagerParam(&record) == FALSE) {
        settings::FailToStore("the manager");
    }
}

Json AsJson(const Parameters &parameters) {
    return {{"host", settings::FromStored(parameters.host.c_str())},
            {"address", settings::FromStored(parameters.address.c_str())},
            {"port", parameters.port}};
}

std::string_view WithoutScheme(std::string_view host) {
    for (const std::string_view scheme : kSchemes) {
        if (Folded(host.substr(0, scheme.size())) == scheme) {
            return host.substr(scheme.size());
        }
    }
    return host;
}

bool IsAddress(const std::string &text) {
    in6_addr ignored = {};
    return inet_pton(AF_INET, text.c_str(), &ignored) == 1 ||
           inet_pton(AF_INET6, text.c_str(), &ignored) == 1;
}

bool IsNameCharacter(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' ||
           c == '_' || c == '.';
}

bool IsName(std::string_view text) {
    return !text.empty() && text.size() <= kMaxHost && std::ranges::all_of(text, IsNameCharacter);
}

void CheckLength(const std::string &address) {
    if (address.size() > kMaxAddress) {
        Fail(EX_DATAERR, address + ": an address may have " + std::to_string(kMaxAddress) +
                             " characters; give a host name and an IPv4 address");
    }
}

// The host's address; IPv4 before IPv6, whose texts may be too long.
std::string Resolve(const std::string &name) {
    char text[INET6_ADDRSTRLEN];
    for (const int family : {AF_INET, AF_INET6}) {
        addrinfo wanted = {};
        wanted.ai_family = family;
        wanted.ai_socktype = SOCK_STREAM;
        addrinfo *found = nullptr;
        if (getaddrinfo(name.c_str(), nullptr, &wanted, &found) != 0) {
            continue;
        }
        const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, &freeaddrinfo);
        if (getnameinfo(found->ai_addr, found->ai_addrlen, text, sizeof text, nullptr, 0,
                        NI_NUMERICHOST) == 0) {
            return text;
        }
    }
    Fail(EX_NOHOST, name + ": the name does not resolve; give its address with --address");
}

std::string AddressAsked(const Arguments &arguments) {
    const std::string &address = arguments.Get("address");
    CheckLength(address);
    if (!IsAddress(address)) {
        Fail(EX_DATAERR, "--address " + address + ": an IPv4 or IPv6 address is wanted");
    }
    return address;
}

// Takes a host, which is kept only beside an address other than 0.0.0.0.
void TakeHost(const Arguments &arguments, Parameters *parameters) {
    parameters->host = arguments.Get("host");
    const std::string name(WithoutScheme(parameters->host));
    if (parameters->host.empty()) {
        return;
    }
    if (!IsName(name) && !IsAddress(name)) {
        Fail(EX_DATAERR, "--host " + parameters->host +
                             ": a host name or an address is wanted, with https:// before it for "
                             "TLS");
    }
    if (arguments.Has("address")) {
        return;
    }
    parameters->address = IsAddress(name) ? name : Resolve(name);
    CheckLength(parameters->address);
}

Parameters Plan(const Arguments &arguments, Parameters parameters) {
    if (arguments.Has("host")) {
        TakeHost(arguments, &parameters);
    }
    if (arguments.Has("address")) {
        parameters.address = AddressAsked(arguments);
    }
    (void)settings::TakeNumber(arguments, "port", 1, 65535, &parameters.port);
    if (parameters.address == VLX_MANAGER_NO_ADDRESS) {
        if (arguments.Has("host") && !parameters.host.empty()) {
            Fail(EX_USAGE, std::string("with the address ") + VLX_MANAGER_NO_ADDRESS +
                               " there is no manager: the host would be dropped");
        }
        parameters.host.clear();
    }
    return parameters;
}

// A host that is stored in vain.
std::optional<std::string> DroppedHost(const Parameters &parameters) {
    const auto value = ReadValue(kAddressKey, "IPorHost");
    if (!value || parameters.address != VLX_MANAGER_NO_ADDRESS) {
        return std::nullopt;
    }
    const std::string text(value->data.begin(), value->data.end());
    const std::string host = text.substr(0, text.find('\0'));
    return host.empty() ? std::nullopt : std::optional(host);
}

int RunShow(const Arguments &arguments) {
    const Parameters parameters = Read();
    Json record = AsJson(parameters);
    if (const std::string url = Url(); !url.empty()) {
        record["url"] = url;
    } else if (arguments.Has("json")) {
        record["url"] = nullptr;
    }
    settings::ShowRecord(arguments, record);
    if (const auto host = DroppedHost(parameters)) {
        Complain("the stored host " + StoredToTerminal(*host) +
                 " counts for nothing, because the address is " + VLX_MANAGER_NO_ADDRESS +
                 "; set the host again");
    }
    return EX_OK;
}

int RunSet(const Arguments &arguments) {
    if (!arguments.Has("host") && !arguments.Has("address") && !arguments.Has("port")) {
        Fail(EX_USAGE, "nothing is to be set; see \"veloxctl manager set --help\"");
    }
    const Parameters before = Read();
    const Parameters wanted = Plan(arguments, before);
    (void)ReadExistingKey(kAddressKey);
    Store(wanted);
    const Json after = AsJson(Read());
    settings::RequireStored(AsJson(wanted), after, "manager");
    settings::ReportChanges(arguments, "manager", AsJson(before), after);
    return EX_OK;
}

constexpr Option kShowOptions[] = {kJsonOption};
constexpr Option kSetOptions[] = {
    {.long_name = "host",
     .argument = "HOST",
     .summary = "a name or an address, with https:// before it for TLS; empty: the address alone"},
    {.long_name = "address",
     .argument = "ADDRESS",
     .summary = "its address, of at most 32 characters; 0.0.0.0: there is no manager"},
    {.short_name = 'p', .long_name = "port", .argument = "NUMBER", .summary = "its port"},
    kJsonOption,
};
constexpr Example kSetExamples[] = {
    {.command = "veloxctl manager set --host https://manager.example.com --port 443",
     .effect = "Has reports handed to this server over TLS."},
};

constexpr Command kCommands[] = {
    {.name = "show",
     .summary = "shows the management server",
     .description = "Shows the management server to which reports are handed, and the URL that "
                    "follows from host, address and port.",
     .options = kShowOptions,
     .run = RunShow},
    {.name = "set",
     .summary = "changes the management server",
     .description =
         "Changes what is given and leaves the rest. A host is resolved now and its address stored "
         "with it, because a host beside the address 0.0.0.0 counts for nothing; --address gives "
         "the address instead.\n\n"
         "Reports go there once \"veloxctl method set manager\" has selected it.",
     .options = kSetOptions,
     .examples = kSetExamples,
     .run = RunSet},
};

}  // namespace

std::string Url() {
    const Parameters parameters = Read();
    const bool has_host = !parameters.host.empty();
    const std::string text = has_host ? parameters.host : parameters.address;
    if (text.empty() || text == VLX_MANAGER_NO_ADDRESS) {
        return "";
    }
    const std::string name(WithoutScheme(text));
    const bool tls = has_host && Folded(text).starts_with(kSchemes[0]);
    const bool brackets = name.find(':') != std::string::npos;
    return std::string(kSchemes[tls ? 0 : 1]) + (brackets ? "[" + name + "]" : name) + ":" +
           std::to_string(parameters.port);
}

}  // namespace manager

extern const Group kManagerGroup = {.name = "manager",
                                    .summary = "shows and changes the management server",
                                    .commands = manager::kCommands};

}  // namespace veloxctl
