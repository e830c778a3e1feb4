// The daemon at work: takes connections, gives each a thread, and looks after the store meanwhile.
//
// State: `clients_` holds every connection that is served, and those whose threads have ended until
// the main thread joins them. Locks: `lock_` over that list; nothing else is locked under it.
#ifndef NTSERVER_SERVER_H
#define NTSERVER_SERVER_H

#include <atomic>
#include <list>
#include <mutex>
#include <thread>

#include "commit_queue.h"
#include "notify.h"
#include "session.h"
#include "store.h"

namespace ntserver {

class Server {
  public:
    Server(Store *store, const Notifier &notifier);
    ~Server();
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

    // Serves the clients of a listening socket until a signal arrives at `signals` (a signalfd).
    void Run(int listener, int signals);

  private:
    struct Client {
        std::unique_ptr<Session> session;
        std::thread thread;
        std::atomic<bool> ended{false};
    };

    void Accept(int listener);
    void Begin(base::UniqueDescriptor socket);
    bool EndLongestResting();
    std::size_t JoinEnded();
    void LookAfterStore();
    std::uint32_t CountClients();

    Store &store_;
    const Notifier &notifier_;
    std::atomic<bool> ending_{false};
    CommitQueue commits_;
    Service service_;
    std::size_t most_clients_;
    std::mutex lock_;
    std::list<Client> clients_;
    Clock::time_point next_care_;
};

}  // namespace ntserver

#endif  // NTSERVER_SERVER_H
