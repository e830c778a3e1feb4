// One end of a connection: frames out and in, within time limits.
#ifndef NTSERVER_CHANNEL_H
#define NTSERVER_CHANNEL_H

#include <chrono>
#include <cstdint>
#include <string_view>
#include <vector>

#include "base/descriptor.h"
#include "ntserver/protocol.h"

namespace ntserver {

using Clock = std::chrono::steady_clock;
using Deadline = Clock::time_point;

enum class [[nodiscard]] Transfer{kDone, kClosed, kTimedOut, kMalformed};

struct Frame {
    Operation operation{};
    std::uint16_t tag = 0;
    std::string_view payload;  // until the next Receive
};

class Channel {
  public:
    Channel() = default;
    explicit Channel(base::UniqueDescriptor socket) noexcept : socket_(std::move(socket)) {}

    bool IsOpen() const noexcept { return static_cast<bool>(socket_); }
    int Descriptor() const noexcept { return socket_.Get(); }
    void Close() noexcept;

    // Sends all of the bytes. Unless it gives kDone the other end has not received the last frame
    // whole, and so has not acted on it.
    Transfer Send(std::string_view bytes, Deadline deadline) noexcept;

    // How long Receive waits for the first byte of a frame; for ever without a call.
    bool SetPatience(std::chrono::milliseconds patience) noexcept;
    // Receives one frame; once it has begun it must be complete within `limit`. May throw
    // std::bad_alloc. Memory grows with the bytes that arrive, not with the size that they claim.
    Transfer Receive(std::chrono::milliseconds limit, Frame *frame);

    // Whether the other end is known to have ended a connection that rests.
    bool PeerHasClosed() const noexcept;

  private:
    Transfer ReceiveSome(int flags);
    Transfer WaitFor(short events, Deadline deadline) const noexcept;
    std::string_view Pending() const noexcept { return {buffer_.data() + start_, end_ - start_}; }
    void MakeRoom();

    base::UniqueDescriptor socket_;
    std::chrono::milliseconds patience_{0};
    std::vector<char> buffer_;  // holds received bytes from start_ to end_
    std::size_t start_ = 0;
    std::size_t end_ = 0;
};

}  // namespace ntserver

#endif  // NTSERVER_CHANNEL_H
