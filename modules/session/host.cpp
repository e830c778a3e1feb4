#include "session/host.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

#include <arpa/inet.h>

namespace session {

namespace {

constexpr std::size_t kLongestName = 253;
constexpr std::size_t kLongestLabel = 63;

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

bool IsNameCharacter(char character) {
    return IsDigit(character) || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z') || character == '-' || character == '_';
}

// The number in a field of one to three digits, leading zeros allowed; -1 for anything else.
int AddressField(std::string_view field) {
    if (field.empty() || field.size() > 3 || !std::all_of(field.begin(), field.end(), IsDigit))
        return -1;
    int number = 0;
    std::from_chars(field.data(), field.data() + field.size(), number);
    return number <= 255 ? number : -1;
}

std::optional<std::string> ParseIPv4(std::string_view text) {
    std::string shortest;
    for (int fields_left = 4; fields_left > 0; --fields_left) {
        const std::size_t end = fields_left > 1 ? text.find('.') : text.size();
        if (end == std::string_view::npos)
            return {};
        const int number = AddressField(text.substr(0, end));
        if (number < 0)
            return {};
        shortest += std::to_string(number);
        if (fields_left > 1) {
            shortest += '.';
            text.remove_prefix(end + 1);
        }
    }
    return shortest;
}

std::optional<std::string> ParseIPv6(std::string_view text) {
    in6_addr address{};
    std::array<char, INET6_ADDRSTRLEN> shortest{};
    if (::inet_pton(AF_INET6, std::string(text).c_str(), &address) != 1 ||
        ::inet_ntop(AF_INET6, &address, shortest.data(), shortest.size()) == nullptr)
        return {};
    return shortest.data();
}

bool IsLabel(std::string_view label) {
    return !label.empty() && label.size() <= kLongestLabel && label.front() != '-' &&
           label.back() != '-' && std::all_of(label.begin(), label.end(), IsNameCharacter);
}

// The system's resolver and URL parsers read "127.1", "0x7f.1" and the like as addresses.
bool LooksLikeNumber(std::string_view label) {
    return IsDigit(label.front()) && (std::all_of(label.begin(), label.end(), IsDigit) ||
                                      label.starts_with("0x") || label.starts_with("0X"));
}

bool IsName(std::string_view text) {
    if (text.empty() || text.size() > kLongestName)
        return false;
    for (;;) {
        const std::size_t dot = text.find('.');
        const std::string_view label = text.substr(0, dot);
        if (!IsLabel(label))
            return false;
        if (dot == std::string_view::npos)
            return !LooksLikeNumber(label);
        text.remove_prefix(dot + 1);
    }
}

}  // namespace

std::optional<Host> ParseHost(std::string_view text) {
    if (text.find('\0') != std::string_view::npos)
        return {};
    if (auto address = ParseIPv4(text))
        return Host{*std::move(address), true};
    if (auto address = ParseIPv6(text))
        return Host{*std::move(address), true};
    if (text.ends_with('.'))
        text.remove_suffix(1);
    if (IsName(text))
        return Host{std::string(text), false};
    return {};
}

}  // namespace session
