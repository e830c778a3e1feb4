// One thread's connection to the registry daemon.
#ifndef WIN32_REGISTRY_CONNECTION_H
#define WIN32_REGISTRY_CONNECTION_H

#include <chrono>
#include <string>
#include <string_view>

#include "ntserver/channel.h"
#include "ntserver/messages.h"
#include "ntserver/wire.h"
#include "regstore/status.h"

namespace win32 {

// What the daemon's hello told.
struct ServerHello {
    ntserver::HelloAnswer answer;  // its text points at `folder`
    std::string folder;
};

class Connection {
  public:
    bool IsOpen() const noexcept { return channel_.IsOpen(); }
    void Close() noexcept { channel_.Close(); }

    // Connects and says hello, within `limit`. kNotActive: nobody is there; kAccessDenied: the
    // socket may not be used; kNoAnswer: no answer in time.
    regstore::Status Open(std::chrono::milliseconds limit);
    // Sees to it that the connection is open, and not one that the daemon has ended since.
    regstore::Status MakeReady();
    // Changes with each hello, so that who acted on one knows when there is another.
    unsigned HelloNumber() const noexcept { return hello_number_; }
    const ServerHello &Hello() const noexcept { return hello_; }

    // Asks for something that changes nothing: when the connection ends, once more on a new one.
    // Texts of the answer are valid until the next request.
    template <typename Request, typename Answer>
    regstore::Status Read(ntserver::Operation operation, const Request &request, Answer *answer,
                          std::chrono::milliseconds limit = ntserver::kCallLimit) {
        for (int attempt = 0;; ++attempt) {
            const regstore::Status ready = MakeReady();
            if (ready != regstore::Status::kSuccess)
                return ready;
            const Exchange exchange = Ask(operation, request, answer, limit);
            if (exchange.outcome == Outcome::kAnswered || exchange.outcome == Outcome::kTimedOut ||
                attempt > 0)
                return exchange.status;
        }
    }

    // Asks for a change. It is sent again only when it is certain that the daemon did not get it
    // whole; a change that was sent and not answered gives kNoAnswer, and may have been made.
    template <typename Request, typename Answer>
    regstore::Status Change(ntserver::Operation operation, const Request &request, Answer *answer) {
        for (int attempt = 0;; ++attempt) {
            const regstore::Status ready = MakeReady();
            if (ready != regstore::Status::kSuccess)
                return ready;
            const Exchange exchange = Ask(operation, request, answer, ntserver::kCallLimit);
            if (exchange.outcome != Outcome::kNotSent || attempt > 0)
                return exchange.status;
        }
    }

    // The pieces of a batch: sends what `bytes` holds; receives the answer of its end.
    bool SendRaw(std::string_view bytes, ntserver::Deadline deadline) noexcept;
    std::uint16_t NextTag() noexcept { return ++tag_; }
    template <typename Answer>
    regstore::Status ReceiveAnswer(ntserver::Operation operation, Answer *answer,
                                   std::chrono::milliseconds limit) {
        regstore::Status status{};
        return Receive(operation, limit, answer, &status) == Outcome::kAnswered
                   ? status
                   : regstore::Status::kNoAnswer;
    }

  private:
    // The memory of a larger request is given back with the next.
    static constexpr std::size_t kKeptRequest = 16384;

    enum class Outcome { kAnswered, kNotSent, kTimedOut, kLost };
    struct Exchange {
        Outcome outcome;
        regstore::Status status;
    };

    template <typename Request, typename Answer>
    Exchange Ask(ntserver::Operation operation, const Request &request, Answer *answer,
                 std::chrono::milliseconds limit) {
        if (request_.capacity() > kKeptRequest)
            request_ = {};
        request_.clear();
        ntserver::FrameBuilder frame(&request_, operation, NextTag());
        frame.Payload().PutMessage(request);
        frame.Finish();
        if (!SendRaw(request_, ntserver::Clock::now() + limit))
            return {Outcome::kNotSent, regstore::Status::kNoAnswer};
        Exchange exchange = {Outcome::kLost, regstore::Status::kNoAnswer};
        exchange.outcome = Receive(operation, limit, answer, &exchange.status);
        return exchange;
    }

    // Receives the answer to the request with the present tag. Anything else ends the connection.
    template <typename Answer>
    Outcome Receive(ntserver::Operation operation, std::chrono::milliseconds limit, Answer *answer,
                    regstore::Status *status) {
        std::string_view payload;
        const Outcome outcome = ReceivePayload(operation, limit, &payload);
        if (outcome != Outcome::kAnswered)
            return outcome;
        ntserver::Decoder decoder(payload);
        std::uint32_t code = 0;
        if (!decoder.Get(&code) ||
            (!decoder.AtEnd() && !(decoder.GetMessage(answer) && decoder.AtEnd())) ||
            (code == 0 && payload.size() == sizeof code && !IsEmpty(*answer))) {
            Close();
            return Outcome::kLost;
        }
        *status = static_cast<regstore::Status>(code);
        return Outcome::kAnswered;
    }
    template <typename Answer>
    static constexpr bool IsEmpty(Answer &answer) {
        return std::tuple_size_v<decltype(Answer::Fields(answer))> == 0;
    }
    Outcome ReceivePayload(ntserver::Operation operation, std::chrono::milliseconds limit,
                           std::string_view *payload);
    regstore::Status Connect(std::chrono::milliseconds limit);

    ntserver::Channel channel_;
    std::string request_;
    std::uint16_t tag_ = 0;
    unsigned hello_number_ = 0;
    ServerHello hello_;
};

}  // namespace win32

#endif  // WIN32_REGISTRY_CONNECTION_H
