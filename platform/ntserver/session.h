// One client's connection, served by a thread of its own.
#ifndef NTSERVER_SESSION_H
#define NTSERVER_SESSION_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include <sys/types.h>

#include "batch.h"
#include "commit_queue.h"
#include "ntserver/channel.h"
#include "ntserver/wire.h"
#include "store.h"

namespace ntserver {

// What sessions share.
struct Service {
    Store &store;
    CommitQueue &commits;
    std::function<std::uint32_t()> count_clients;
    const std::atomic<bool> &ending;
};

class Session {
  public:
    Session(base::UniqueDescriptor socket, const Service &service);

    // Serves the client until it goes or misbehaves.
    void Run();

    // From any thread: how long the client has rested, zero while it is being served (who has not
    // said hello rests); the end of it; its end with what it has sent still answered, so that a
    // client knows that nothing was done when it can send no more.
    std::chrono::milliseconds Rest() const noexcept;
    void End() noexcept;
    void EndRest() noexcept;

  private:
    bool Handshake();
    bool Serve(const Frame &frame);
    template <typename Request, typename Answer>
    bool ServeRead(const Frame &frame);
    bool ServeChange(const Frame &frame);
    template <typename Request, typename Function>
    bool Change(const Frame &frame, Function function);
    bool CreateKey(const Frame &frame);
    bool AddToBatch(const Frame &frame);
    bool CommitBatch(const Frame &frame);
    bool QueryServer(const Frame &frame);
    bool Verify(const Frame &frame);

    template <typename Answer>
    void BuildReply(const Frame &frame, regstore::Status status, const Answer &answer);
    bool SendReply() noexcept;
    template <typename Answer>
    bool Reply(const Frame &frame, regstore::Status status, const Answer &answer);
    bool ReplyStatus(const Frame &frame, regstore::Status status);

    Channel channel_;
    const Service &service_;
    StoreReader reader_;
    bool may_write_ = false;
    Batch batch_;
    std::string reply_;
    std::atomic<Clock::rep> resting_since_;
};

}  // namespace ntserver

#endif  // NTSERVER_SESSION_H
