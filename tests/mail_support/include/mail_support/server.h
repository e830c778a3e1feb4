// A server on loopback that runs a dialogue with each client, one client after the other.
#ifndef MAIL_SUPPORT_SERVER_H
#define MAIL_SUPPORT_SERVER_H

#include <functional>
#include <string>
#include <thread>

#include <base/descriptor.h>

#include "mail_support/channel.h"

namespace mail_support {

// An address of the loopback network that no other process of these tests uses, so that its
// well-known ports are free.
std::string OwnLoopbackAddress();

// A stream socket bound to the address; port 0 picks a free one. Throws std::system_error.
base::UniqueDescriptor BindSocket(const std::string &address, unsigned port);
unsigned PortOf(int socket);

class Server {
  public:
    using Dialogue = std::function<void(Channel &)>;

    // Starts to listen at once. Port 0 picks a free one.
    explicit Server(Dialogue dialogue, const std::string &address = "127.0.0.1", unsigned port = 0);
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;
    ~Server() { Stop(); }

    unsigned Port() const { return port_; }
    // Ends every dialogue and waits for the last one.
    void Stop() noexcept;

  private:
    void Serve();

    Dialogue dialogue_;
    base::UniqueDescriptor listener_;
    base::UniqueDescriptor stop_;
    unsigned port_ = 0;
    std::thread thread_;
};

// A port that answers nothing: its queue of connections is full, so that connecting stalls.
class DeafPort {
  public:
    DeafPort();
    unsigned Port() const { return port_; }

  private:
    base::UniqueDescriptor listener_;
    base::UniqueDescriptor waiting_[8];
    unsigned port_ = 0;
};

// A port that refuses connections and stays ours.
class ClosedPort {
  public:
    explicit ClosedPort(const std::string &address = "127.0.0.1")
        : socket_(BindSocket(address, 0)) {}
    unsigned Port() const { return PortOf(socket_.Get()); }

  private:
    base::UniqueDescriptor socket_;
};

}  // namespace mail_support

#endif  // MAIL_SUPPORT_SERVER_H
