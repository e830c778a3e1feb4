#include "manager.h"

#include <strings.h>

#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include <session/host.h>

#include "failure.h"

namespace amrvxmn {

namespace {

constexpr char kPath[] = "velox/events";
constexpr std::string_view kWithTls = "https://";
constexpr std::string_view kWithoutTls = "http://";

// A text of the record, which may lack its end. Null counts as empty.
std::string_view TextOf(const char *text) {
    return text == nullptr ? std::string_view()
                           : std::string_view(text, strnlen(text, VLX_MANAGER_TEXT_CAPACITY));
}

bool TakePrefix(std::string_view prefix, std::string_view *text) {
    if (text->size() < prefix.size() ||
        ::strncasecmp(text->data(), prefix.data(), prefix.size()) != 0)
        return false;
    text->remove_prefix(prefix.size());
    return true;
}

// The text without the slash that ends an URL and the brackets around an IPv6 address in it.
std::string_view WithoutUrlSigns(std::string_view text) {
    if (text.ends_with('/'))
        text.remove_suffix(1);
    if (text.starts_with('[') && text.ends_with(']'))
        text = text.substr(1, text.size() - 2);
    return text;
}

[[noreturn]] void Refuse(const std::string &reason) {
    throw Failure(Result::kNotPrepared, reason);
}

}  // namespace

session::Endpoint ReadManager(const VLX_MANAGER_PARAM &parameters) {
    const std::string_view address = TextOf(parameters.lpszManagerIP);
    std::string_view text = TextOf(parameters.lpszHost);
    const bool has_host = !text.empty();
    session::Endpoint endpoint;
    if (!has_host)
        text = address;
    else if (TakePrefix(kWithTls, &text))
        endpoint.protection = session::Protection::kFromTheFirstByte;
    else
        (void)TakePrefix(kWithoutTls, &text);
    if (!has_host && (text.empty() || text == VLX_MANAGER_NO_ADDRESS))
        Refuse("no manager is set");
    const std::optional<session::Host> host = session::ParseHost(WithoutUrlSigns(text));
    if (!host)
        Refuse("the manager's host is neither a host name nor an address");
    if (parameters.dwPort < 1 || parameters.dwPort > 65535)
        Refuse("the manager's port is not between 1 and 65535");
    endpoint.protocol = "http";
    endpoint.host = host->text;
    endpoint.port = parameters.dwPort;
    endpoint.path = kPath;
    return endpoint;
}

}  // namespace amrvxmn
