#include "mail_support/channel.h"

#include <array>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <openssl/err.h>
#include <poll.h>
#include <sys/socket.h>

namespace mail_support {

Channel::Channel(base::UniqueDescriptor socket, int stop)
    : socket_(std::move(socket)), stop_(stop) {
    ::fcntl(socket_.Get(), F_SETFL, O_NONBLOCK);
}

Channel::~Channel() {
    if (tls_)
        SSL_shutdown(tls_.get());
}

bool Channel::Wait(short events, int milliseconds) {
    std::array<pollfd, 2> ready = {{{socket_.Get(), events, 0}, {stop_, POLLIN, 0}}};
    int count = 0;
    do
        count = ::poll(ready.data(), ready.size(), milliseconds);
    while (count < 0 && errno == EINTR);
    return count > 0 && ready[1].revents == 0;
}

bool Channel::WaitForTls(int result) {
    const int error = SSL_get_error(tls_.get(), result);
    ERR_clear_error();
    if (error == SSL_ERROR_WANT_READ)
        return Wait(POLLIN);
    return error == SSL_ERROR_WANT_WRITE && Wait(POLLOUT);
}

long Channel::Receive(char *buffer, std::size_t capacity) {
    for (;;) {
        if (tls_) {
            const int count = SSL_read(tls_.get(), buffer, static_cast<int>(capacity));
            if (count > 0 || !WaitForTls(count))
                return count;
            continue;
        }
        const auto count = ::recv(socket_.Get(), buffer, capacity, 0);
        if (count >= 0 || errno != EAGAIN || !Wait(POLLIN))
            return count;
    }
}

long Channel::Send(std::string_view text) {
    for (;;) {
        if (tls_) {
            const int count = SSL_write(tls_.get(), text.data(), static_cast<int>(text.size()));
            if (count > 0 || !WaitForTls(count))
                return count;
            continue;
        }
        const auto count = ::send(socket_.Get(), text.data(), text.size(), MSG_NOSIGNAL);
        if (count >= 0 || errno != EAGAIN || !Wait(POLLOUT))
            return count;
    }
}

bool Channel::ReceiveMore() {
    std::array<char, 4096> buffer{};
    const long count = Receive(buffer.data(), buffer.size());
    if (count <= 0)
        return false;
    unread_.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
}

std::optional<std::string> Channel::ReadLine() {
    for (;;) {
        if (const auto end = unread_.find('\n'); end != std::string::npos) {
            std::string line = unread_.substr(0, end);
            unread_.erase(0, end + 1);
            if (line.ends_with('\r'))
                line.pop_back();
            return line;
        }
        if (!ReceiveMore())
            return {};
    }
}

std::optional<std::string> Channel::Read(std::size_t size) {
    while (unread_.size() < size)
        if (!ReceiveMore())
            return {};
    std::string text = unread_.substr(0, size);
    unread_.erase(0, size);
    return text;
}

bool Channel::Write(std::string_view text) {
    while (!text.empty()) {
        const long count = Send(text);
        if (count <= 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool Channel::StartTls(SSL_CTX *context) {
    tls_.reset(SSL_new(context));
    SSL_set_fd(tls_.get(), socket_.Get());
    for (;;) {
        const int result = SSL_accept(tls_.get());
        if (result == 1)
            return true;
        if (!WaitForTls(result)) {
            tls_.reset();
            return false;
        }
    }
}

void Channel::Stall() {
    std::array<char, 4096> ignored{};
    while (Wait(POLLIN) && ::recv(socket_.Get(), ignored.data(), ignored.size(), 0) > 0) {
    }
}

bool Channel::Pause(int milliseconds) {
    pollfd stop = {stop_, POLLIN, 0};
    return ::poll(&stop, 1, milliseconds) == 0;
}

}  // namespace mail_support
