#include "mail_support/server.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <system_error>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace mail_support {

namespace {

void Require(bool condition, const char *what) {
    if (!condition)
        throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_in SocketAddress(const std::string &address, unsigned port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(static_cast<std::uint16_t>(port));
    Require(::inet_pton(AF_INET, address.c_str(), &result.sin_addr) == 1, "inet_pton");
    return result;
}

// A client that goes while it is written to must not end the test program.
void BlockPipeSignal() {
    sigset_t pipe{};
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
}

}  // namespace

std::string OwnLoopbackAddress() {
    const auto pid = static_cast<std::uint32_t>(::getpid());
    in_addr address{};
    address.s_addr = htonl(0x7F400000U | (pid & 0x3FFFFFU));
    std::array<char, INET_ADDRSTRLEN> text{};
    ::inet_ntop(AF_INET, &address, text.data(), text.size());
    return text.data();
}

base::UniqueDescriptor BindSocket(const std::string &address, unsigned port) {
    base::UniqueDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    Require(static_cast<bool>(socket), "socket");
    const int yes = 1;
    ::setsockopt(socket.Get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    const sockaddr_in where = SocketAddress(address, port);
    Require(::bind(socket.Get(), reinterpret_cast<const sockaddr *>(&where), sizeof where) == 0,
            "bind");
    return socket;
}

unsigned PortOf(int socket) {
    sockaddr_in where{};
    socklen_t size = sizeof where;
    Require(::getsockname(socket, reinterpret_cast<sockaddr *>(&where), &size) == 0, "getsockname");
    return ntohs(where.sin_port);
}

Server::Server(Dialogue dialogue, const std::string &address, unsigned port)
    : dialogue_(std::move(dialogue)),
      listener_(BindSocket(address, port)),
      stop_(::eventfd(0, EFD_CLOEXEC)) {
    Require(::listen(listener_.Get(), 16) == 0, "listen");
    port_ = PortOf(listener_.Get());
    thread_ = std::thread([this] { Serve(); });
}

void Server::Stop() noexcept {
    if (!thread_.joinable())
        return;
    ::eventfd_write(stop_.Get(), 1);
    thread_.join();
    listener_.Reset();
    stop_.Reset();
}

void Server::Serve() {
    BlockPipeSignal();
    for (;;) {
        std::array<pollfd, 2> ready = {{{listener_.Get(), POLLIN, 0}, {stop_.Get(), POLLIN, 0}}};
        if (::poll(ready.data(), ready.size(), -1) < 0 && errno != EINTR)
            return;
        if (ready[1].revents != 0)
            return;
        if (ready[0].revents == 0)
            continue;
        base::UniqueDescriptor socket(::accept4(listener_.Get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!socket)
            continue;
        Channel channel(std::move(socket), stop_.Get());
        dialogue_(channel);
    }
}

DeafPort::DeafPort() : listener_(BindSocket("127.0.0.1", 0)), port_(PortOf(listener_.Get())) {
    Require(::listen(listener_.Get(), 0) == 0, "listen");
    const sockaddr_in where = SocketAddress("127.0.0.1", port_);
    for (auto &client : waiting_) {
        client.Reset(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        static_cast<void>(
            ::connect(client.Get(), reinterpret_cast<const sockaddr *>(&where), sizeof where));
    }
}

}  // namespace mail_support
