// Server names and addresses as they stand in the registry.
#ifndef SESSION_HOST_H
#define SESSION_HOST_H

#include <optional>
#include <string>
#include <string_view>

namespace session {

struct Host {
    std::string text;  // an address in its shortest form, or a name without final dot
    bool is_address = false;
};

// Reads an IPv4 address (three dots, each number decimal with leading zeros allowed, as the
// settings check it), an IPv6 address, or a host name of letters, digits, '-' and '_'. Nothing for
// any other text, above all for one that would mean something inside an URL, and for a name that
// ends with a number, which libraries take for an address in a form of its own.
std::optional<Host> ParseHost(std::string_view text);

}  // namespace session

#endif  // SESSION_HOST_H
