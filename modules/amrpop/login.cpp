#include "login.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include <curl/curl.h>
#include <poll.h>

namespace amrpop {

namespace {

constexpr unsigned kTlsPort = 995;
// The standard's limit for an answer is 512 bytes.
constexpr std::size_t kLongestAnswer = 1000;

bool IsControlByte(unsigned char byte) {
    return byte < 0x20 || byte == 0x7F;
}

// A text that ends inside its field.
template <std::size_t capacity>
std::string_view Field(const char (&field)[capacity], const char *name) {
    const std::size_t length = ::strnlen(field, capacity);
    if (length == capacity)
        throw std::invalid_argument(std::string(name) + " does not end inside its field");
    return {field, length};
}

// A line break inside would smuggle a command in; without account or password libcurl would not log
// in at all and call it a success.
template <std::size_t capacity>
std::string_view Credential(const char (&field)[capacity], const char *name) {
    const std::string_view text = Field(field, name);
    if (text.empty())
        throw std::invalid_argument(std::string(name) + " is empty");
    if (std::ranges::any_of(text, IsControlByte))
        throw std::invalid_argument(std::string(name) + " holds a control byte");
    return text;
}

session::Host Server(const TRANSPORTINFO &info) {
    auto host = session::ParseHost(Field(info.szServer, "server"));
    if (!host)
        throw std::invalid_argument("server is neither an address nor a host name");
    return *std::move(host);
}

unsigned Port(const TRANSPORTINFO &info) {
    if (info.dwPort == 0 || info.dwPort > UINT16_MAX)
        throw std::invalid_argument("port " + std::to_string(info.dwPort) + " does not exist");
    return info.dwPort;
}

}  // namespace

LogIn::LogIn(const TRANSPORTINFO &info)
    : server_(Server(info)),
      port_(Port(info)),
      account_(Credential(info.szAccount, "account")),
      password_(Credential(info.szPassword, "password")),
      discretion_(account_, password_.Text()),
      deadline_(session::milliseconds::zero()),
      allowance_(session::Allowance()),
      conversation_("amrpop", "TransportConnect", deadline_,
                    {Discretion::ShowCommand,
                     [this](std::string_view line) { return discretion_.ShowAnswer(line); }}) {}

session::Endpoint LogIn::MakeEndpoint() const {
    session::Endpoint endpoint;
    endpoint.protocol = "pop3";
    endpoint.host = server_.text;
    endpoint.port = port_;
    endpoint.protection = port_ == kTlsPort ? session::Protection::kFromTheFirstByte
                                            : session::Protection::kUpgradeWhenOffered;
    return endpoint;
}

bool LogIn::Connect() {
    conversation_.Enter("TransportConnect");
    if (connection_ != nullptr) {
        conversation_.Complain("already logged in");
        return false;
    }
    allowance_ = session::Allowance();
    deadline_ = session::Deadline(allowance_);
    auto connection = std::make_unique<session::Connection>(MakeEndpoint(), conversation_);
    connection->Set(CURLOPT_CONNECT_ONLY, 1L);
    connection->Set(CURLOPT_USERNAME, account_.c_str());
    connection->Set(CURLOPT_PASSWORD, password_.Text());
    const CURLcode result = connection->Perform();
    allowance_ = deadline_.Remaining();
    if (result != CURLE_OK) {
        conversation_.Complain("log-in failed, " + connection->Describe(result));
        return false;
    }
    conversation_.Note("logged in");
    connection_ = std::move(connection);
    return true;
}

bool LogIn::Disconnect() {
    conversation_.Enter("TransportDisconnect");
    if (connection_ == nullptr) {
        conversation_.Complain("not logged in");
        return false;
    }
    deadline_ = session::Deadline(allowance_);
    const bool acknowledged = SayGoodbye();
    connection_.reset();
    return acknowledged;
}

// libcurl ends a connection that it only made without a word.
bool LogIn::SayGoodbye() {
    conversation_.Restart();
    conversation_.Sent("QUIT");
    if (!SendAll("QUIT\r\n")) {
        conversation_.Complain("log-out failed, QUIT: it could not be sent");
        return false;
    }
    const auto line = ReadLine();
    if (!line) {
        conversation_.Complain("log-out failed, QUIT: no answer");
        return false;
    }
    conversation_.Received(*line);
    if (!line->starts_with("+OK")) {
        conversation_.Complain("log-out failed, QUIT: the server said \"" + conversation_.Answer() +
                               "\"");
        return false;
    }
    conversation_.Note("logged out");
    return true;
}

bool LogIn::SendAll(std::string_view text) {
    while (!text.empty()) {
        size_t sent = 0;
        const CURLcode result =
            curl_easy_send(connection_->Handle(), text.data(), text.size(), &sent);
        if (result == CURLE_OK)
            text.remove_prefix(sent);
        else if (result != CURLE_AGAIN || !Wait(POLLOUT))
            return false;
    }
    return true;
}

// A line without its end; nothing when none comes in time, or none so short.
std::optional<std::string> LogIn::ReadLine() {
    std::string line;
    while (line.size() < kLongestAnswer) {
        std::array<char, 256> buffer{};
        size_t received = 0;
        const CURLcode result =
            curl_easy_recv(connection_->Handle(), buffer.data(), buffer.size(), &received);
        if (result == CURLE_AGAIN && Wait(POLLIN))
            continue;
        if (result != CURLE_OK || received == 0)
            return {};
        line.append(buffer.data(), received);
        if (const std::size_t end = line.find('\n'); end != std::string::npos)
            return line.substr(0, end);
    }
    return {};
}

// Waits until the socket is ready; false when the deadline passes first.
bool LogIn::Wait(short events) {
    curl_socket_t socket = CURL_SOCKET_BAD;
    if (curl_easy_getinfo(connection_->Handle(), CURLINFO_ACTIVESOCKET, &socket) != CURLE_OK)
        return false;
    for (;;) {
        const auto remaining = deadline_.Remaining();
        if (remaining <= session::milliseconds::zero())
            return false;
        pollfd ready = {socket, events, 0};
        const int count = ::poll(&ready, 1, static_cast<int>(remaining.count()));
        if (count > 0)
            return true;
        if (count < 0 && errno != EINTR)
            return false;
    }
}

}  // namespace amrpop
