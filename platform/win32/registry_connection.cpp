#include "registry_connection.h"

#include <cerrno>
#include <cstdio>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include "base/folders.h"

namespace win32 {

namespace {

using regstore::Status;

bool SocketAddress(struct sockaddr_un *address) noexcept {
    char folder[sizeof address->sun_path];
    if (!base::FolderPath(base::kRunFolder, folder, sizeof folder))
        return false;
    *address = {};
    address->sun_family = AF_UNIX;
    const int length = std::snprintf(address->sun_path, sizeof address->sun_path, "%s/%s", folder,
                                     ntserver::kSocketName);
    return length > 0 && static_cast<std::size_t>(length) < sizeof address->sun_path;
}

Status FromConnectError(int error) noexcept {
    switch (error) {
        case EACCES:
        case EPERM:
            return Status::kAccessDenied;
        case EAGAIN:
        case ETIMEDOUT:
            return Status::kNoAnswer;
        case ENOMEM:
        case ENOBUFS:
            return Status::kNoMemory;
        default:
            return Status::kNotActive;
    }
}

}  // namespace

Status Connection::Connect(std::chrono::milliseconds limit) {
    struct sockaddr_un address;
    if (!SocketAddress(&address))
        return Status::kNotActive;
    base::UniqueDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!socket)
        return errno == ENOMEM || errno == ENOBUFS ? Status::kNoMemory : Status::kNotActive;
    // Bounds the wait for a place in the daemon's queue; sending itself never blocks.
    struct timeval patience = {};
    patience.tv_sec = limit.count() / 1000;
    patience.tv_usec = limit.count() % 1000 * 1000;
    ::setsockopt(socket.Get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    if (TEMP_FAILURE_RETRY(::connect(socket.Get(), reinterpret_cast<struct sockaddr *>(&address),
                                     sizeof address)) != 0)
        return FromConnectError(errno);
    channel_ = ntserver::Channel(std::move(socket));
    return Status::kSuccess;
}

Status Connection::Open(std::chrono::milliseconds limit) {
    Close();
    const ntserver::Deadline deadline = ntserver::Clock::now() + limit;
    const Status connected = Connect(limit);
    if (connected != Status::kSuccess)
        return connected;
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - ntserver::Clock::now());
    ntserver::HelloAnswer answer;
    const Exchange exchange =
        Ask(ntserver::Operation::kHello,
            ntserver::HelloRequest{ntserver::kMagic, ntserver::kProtocolVersion}, &answer,
            std::max(left, std::chrono::milliseconds(1)));
    if (exchange.status != Status::kSuccess) {
        Close();
        return exchange.status;
    }
    hello_.folder = answer.folder;
    hello_.answer = answer;
    hello_.answer.folder = hello_.folder;
    ++hello_number_;
    return Status::kSuccess;
}

Status Connection::MakeReady() {
    if (IsOpen() && channel_.PeerHasClosed())
        Close();
    return IsOpen() ? Status::kSuccess : Open(ntserver::kCallLimit);
}

bool Connection::SendRaw(std::string_view bytes, ntserver::Deadline deadline) noexcept {
    if (channel_.Send(bytes, deadline) == ntserver::Transfer::kDone)
        return true;
    Close();
    return false;
}

Connection::Outcome Connection::ReceivePayload(ntserver::Operation operation,
                                               std::chrono::milliseconds limit,
                                               std::string_view *payload) {
    ntserver::Frame frame;
    ntserver::Transfer transfer = ntserver::Transfer::kClosed;
    if (channel_.SetPatience(limit))
        transfer = channel_.Receive(limit, &frame);
    if (transfer == ntserver::Transfer::kDone && frame.operation == operation &&
        frame.tag == tag_) {
        *payload = frame.payload;
        return Outcome::kAnswered;
    }
    Close();
    return transfer == ntserver::Transfer::kTimedOut ? Outcome::kTimedOut : Outcome::kLost;
}

}  // namespace win32
