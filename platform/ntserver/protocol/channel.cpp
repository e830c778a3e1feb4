#include "ntserver/channel.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include "ntserver/wire.h"

namespace ntserver {

namespace {

constexpr std::size_t kStep = 16384;

Transfer FromErrno() noexcept {
    return errno == EAGAIN || errno == EWOULDBLOCK ? Transfer::kTimedOut : Transfer::kClosed;
}

}  // namespace

void Channel::Close() noexcept {
    socket_.Reset();
    start_ = end_ = 0;
    patience_ = {};
}

Transfer Channel::WaitFor(short events, Deadline deadline) const noexcept {
    while (true) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return Transfer::kTimedOut;
        struct pollfd wait = {socket_.Get(), events, 0};
        const int ready = ::poll(&wait, 1, static_cast<int>(std::min<long>(left, 60'000)));
        if (ready > 0)
            return Transfer::kDone;
        if (ready < 0 && errno != EINTR)
            return Transfer::kClosed;
    }
}

Transfer Channel::Send(std::string_view bytes, Deadline deadline) noexcept {
    while (!bytes.empty()) {
        const ssize_t sent =
            ::send(socket_.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
            // Many small pieces must not stretch the limit.
            if (!bytes.empty() && Clock::now() >= deadline)
                return Transfer::kTimedOut;
            continue;
        }
        if (errno == EINTR)
            continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK)
            return Transfer::kClosed;
        const Transfer waited = WaitFor(POLLOUT, deadline);
        if (waited != Transfer::kDone)
            return waited;
    }
    return Transfer::kDone;
}

bool Channel::SetPatience(std::chrono::milliseconds patience) noexcept {
    if (patience == patience_)
        return true;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(patience);
    struct timeval limit = {};
    limit.tv_sec = seconds.count();
    limit.tv_usec = std::chrono::microseconds(patience - seconds).count();
    if (::setsockopt(socket_.Get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit) != 0)
        return false;
    patience_ = patience;
    return true;
}

// Makes free space behind the pending bytes, and gives back what a large frame needed.
void Channel::MakeRoom() {
    if (start_ == end_) {
        start_ = end_ = 0;
        if (buffer_.size() != kStep) {
            buffer_.resize(kStep);
            buffer_.shrink_to_fit();
        }
    }
    if (end_ < buffer_.size())
        return;
    if (start_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + start_, end_ - start_);
        end_ -= start_;
        start_ = 0;
    }
    if (end_ == buffer_.size())
        buffer_.resize(buffer_.size() * 2);
}

Transfer Channel::ReceiveSome(int flags) {
    MakeRoom();
    while (true) {
        const ssize_t got =
            ::recv(socket_.Get(), buffer_.data() + end_, buffer_.size() - end_, flags);
        if (got > 0) {
            end_ += static_cast<std::size_t>(got);
            return Transfer::kDone;
        }
        if (got == 0)
            return Transfer::kClosed;
        if (errno != EINTR)
            return FromErrno();
    }
}

Transfer Channel::Receive(std::chrono::milliseconds limit, Frame *frame) {
    if (start_ == end_) {
        const Transfer first = ReceiveSome(0);
        if (first != Transfer::kDone)
            return first;
    }
    Deadline deadline{};
    FrameHeader header;
    while (true) {
        Decoder decoder(Pending());
        if (decoder.GetMessage(&header)) {
            if (header.size > kMaxPayload)
                return Transfer::kMalformed;
            if (Pending().size() >= kHeaderSize + header.size)
                break;
        }
        if (deadline == Deadline{})
            deadline = Clock::now() + limit;
        Transfer more = WaitFor(POLLIN, deadline);
        if (more == Transfer::kDone)
            more = ReceiveSome(MSG_DONTWAIT);
        if (more != Transfer::kDone)
            return more;
    }
    frame->operation = static_cast<Operation>(header.operation);
    frame->tag = header.tag;
    frame->payload = Pending().substr(kHeaderSize, header.size);
    start_ += kHeaderSize + header.size;
    return Transfer::kDone;
}

bool Channel::PeerHasClosed() const noexcept {
    char byte = 0;
    const ssize_t got = ::recv(socket_.Get(), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    // Bytes that wait where none were asked for belong to no answer: such a connection is no use.
    return got >= 0 || (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR);
}

}  // namespace ntserver
