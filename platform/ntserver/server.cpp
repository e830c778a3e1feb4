#include "server.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include "log.h"

namespace ntserver {

namespace {

constexpr std::size_t kMostClients = 1024;
// Descriptors that are not clients': the store's, sockets, pipes of a verification.
constexpr std::size_t kOwnDescriptors = 32;
constexpr std::chrono::milliseconds kCareInterval{5000};
// The most connections that are taken before signals and watchdog have their turn.
constexpr int kAtOnce = 64;
// When no more connections can be taken: for one that rests to end, or for any to end.
constexpr std::chrono::milliseconds kBriefPause{2};
constexpr std::chrono::milliseconds kPause{50};

// As many clients as descriptors allow, with the soft limit raised to the hard one.
std::size_t MostClients() noexcept {
    struct rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return kMostClients;
    const rlim_t soft = limit.rlim_cur;
    limit.rlim_cur = limit.rlim_max;
    if (::setrlimit(RLIMIT_NOFILE, &limit) != 0)
        limit.rlim_cur = soft;
    const std::size_t descriptors =
        limit.rlim_cur == RLIM_INFINITY ? kMostClients + kOwnDescriptors : limit.rlim_cur;
    return std::clamp(descriptors, kOwnDescriptors + 1, kMostClients + kOwnDescriptors) -
           kOwnDescriptors;
}

bool LacksResources(int error) noexcept {
    return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

}  // namespace

Server::Server(Store *store, const Notifier &notifier)
    : store_(*store),
      notifier_(notifier),
      commits_(store),
      service_{*store, commits_, [this] { return CountClients(); }, ending_},
      most_clients_(MostClients()) {}

// Ends every connection; changes that are under way are committed and answered if the client
// listens.
Server::~Server() {
    ending_ = true;
    {
        const std::scoped_lock held(lock_);
        for (Client &client : clients_)
            client.session->End();
    }
    for (Client &client : clients_)
        client.thread.join();
}

void Server::Run(int listener, int signals) {
    const std::chrono::milliseconds watchdog = notifier_.WatchdogInterval();
    const std::chrono::milliseconds beat =
        watchdog.count() > 0 ? std::min(watchdog, kCareInterval) : kCareInterval;
    Clock::time_point next_beat = Clock::now();
    while (true) {
        const auto now = Clock::now();
        if (now >= next_beat) {
            next_beat = now + beat;
            if (watchdog.count() > 0)
                notifier_.Send("WATCHDOG=1");
            LookAfterStore();
        }
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(next_beat - now);
        struct pollfd ready[] = {{signals, POLLIN, 0}, {listener, POLLIN, 0}};
        if (::poll(ready, 2, static_cast<int>(std::max<long>(wait.count(), 1))) <= 0)
            continue;
        if (ready[0].revents != 0)
            return;
        Accept(listener);
    }
}

void Server::Accept(int listener) {
    for (int i = 0; i < kAtOnce; ++i) {
        const bool room = JoinEnded() < most_clients_ || EndLongestResting();
        base::UniqueDescriptor socket;
        if (room)
            socket.Reset(::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC));
        if (!socket) {
            if (!room || LacksResources(errno))
                std::this_thread::sleep_for(EndLongestResting() ? kBriefPause : kPause);
            return;
        }
        Begin(std::move(socket));
    }
}

void Server::Begin(base::UniqueDescriptor socket) {
    const std::scoped_lock held(lock_);
    Client &client = clients_.emplace_back();
    try {
        client.session = std::make_unique<Session>(std::move(socket), service_);
        client.thread = std::thread([&client] {
            try {
                client.session->Run();
            } catch (...) {
                Log(Priority::kError, "no memory to serve a client");
            }
            // The client sees the end at once; the thread itself is joined later.
            client.session->End();
            client.ended = true;
        });
    } catch (const std::exception &) {
        Log(Priority::kError, "no thread or memory to serve a client");
        clients_.pop_back();
    }
}

// Makes room: a client that rests finds its connection ended and opens another when it needs one.
bool Server::EndLongestResting() {
    const std::scoped_lock held(lock_);
    Client *longest = nullptr;
    std::chrono::milliseconds rest{-1};
    for (Client &client : clients_) {
        const std::chrono::milliseconds its = client.session->Rest();
        if (!client.ended && its.count() > 0 && its > rest) {
            longest = &client;
            rest = its;
        }
    }
    if (longest == nullptr)
        return false;
    longest->session->EndRest();
    return true;
}

// Joins the threads that have ended; gives how many clients are left.
std::size_t Server::JoinEnded() {
    const std::scoped_lock held(lock_);
    for (auto client = clients_.begin(); client != clients_.end();) {
        if (!client->ended) {
            ++client;
            continue;
        }
        client->thread.join();
        client = clients_.erase(client);
    }
    return clients_.size();
}

void Server::LookAfterStore() {
    JoinEnded();
    store_.ForgetDeadReaders();
}

std::uint32_t Server::CountClients() {
    const std::scoped_lock held(lock_);
    return static_cast<std::uint32_t>(std::count_if(
        clients_.begin(), clients_.end(), [](const Client &client) { return !client.ended; }));
}

}  // namespace ntserver
