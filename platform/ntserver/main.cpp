// KESntserver, the registry server: options, start and end.
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include <getopt.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sysexits.h>
#include <unistd.h>

#include "folders.h"
#include "listener.h"
#include "log.h"
#include "notify.h"
#include "server.h"
#include "store.h"

namespace {

using namespace ntserver;

constexpr char kHelp[] =
    "Usage: KESntserver [--help] [--version]\n"
    "\n"
    "Keeps the registry of the server agent and serves it on a Unix socket, in the\n"
    "foreground, until it receives SIGTERM or SIGINT. Messages go to stderr.\n"
    "\n"
    "  -h, --help     print this text and end\n"
    "  -V, --version  print the version and end\n"
    "\n"
    "Environment:\n"
    "  KES_ROOT   product root, whose data/defaults.reg fills a new registry\n"
    "             (/opt/xev/kestro_sa)\n"
    "  KES_STATE  state folder, whose registry/ holds the store\n"
    "             (/var/opt/xev/kestro_sa)\n"
    "  KES_RUN    folder of the socket ntserver.sock (/run/kestro_sa)\n";

// An exit status, or -1 to go on.
int ParseOptions(int count, char **arguments) {
    static constexpr struct option kOptions[] = {{"help", no_argument, nullptr, 'h'},
                                                 {"version", no_argument, nullptr, 'V'},
                                                 {nullptr, 0, nullptr, 0}};
    const int chosen = ::getopt_long(count, arguments, "hV", kOptions, nullptr);
    if (chosen == 'h') {
        std::fputs(kHelp, stdout);
        return EX_OK;
    }
    if (chosen == 'V') {
        std::puts("KESntserver " VELOX_VERSION);
        return EX_OK;
    }
    if (chosen == -1 && ::optind == count)
        return -1;
    std::fputs("Try \"KESntserver --help\".\n", stderr);
    return EX_USAGE;
}

// Signals that end the service arrive as bytes of a descriptor; threads inherit that they are
// blocked.
base::UniqueDescriptor CatchSignals() noexcept {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaddset(&signals, signal);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return base::UniqueDescriptor(::signalfd(-1, &signals, SFD_CLOEXEC));
}

int Refuse(const Notifier &notifier, const std::string &problem) {
    Log(Priority::kError, "%s", problem.c_str());
    notifier.Send("STATUS=" + problem);
    return EX_UNAVAILABLE;
}

int Serve(const Notifier &notifier) {
    Folders folders;
    std::string problem;
    const base::UniqueDescriptor signals = CatchSignals();
    if (!signals)
        return Refuse(notifier, std::string("no signalfd: ") + std::strerror(errno));
    if (!FindFolders(&folders, &problem) || !PrepareFolders(folders, &problem))
        return Refuse(notifier, problem);
    notifier.Send("STATUS=Verifying the store");
    const auto go_on = [&] {
        struct pollfd signal = {signals.Get(), POLLIN, 0};
        notifier.Send("EXTEND_TIMEOUT_USEC=30000000");
        return ::poll(&signal, 1, 0) <= 0;
    };
    const std::unique_ptr<Store> store = Store::Open(folders, go_on, &problem);
    if (store == nullptr)
        return Refuse(notifier, problem);
    {
        Listener listener;
        if (!listener.Open(folders.run, &problem))
            return Refuse(notifier, problem);
        store->Announce(true);
        Log(Priority::kNotice, "serving %s in %s", folders.store.c_str(), folders.run.c_str());
        notifier.Send("READY=1\nSTATUS=Serving " + folders.store);
        Server server(store.get(), notifier);
        server.Run(listener.Descriptor(), signals.Get());
        notifier.Send("STOPPING=1\nSTATUS=Ending");
    }
    store->Announce(false);
    Log(Priority::kNotice, "ended");
    return EX_OK;
}

}  // namespace

int main(int count, char **arguments) {
    const int status = ParseOptions(count, arguments);
    if (status >= 0)
        return status;
    try {
        return Serve(Notifier());
    } catch (const std::exception &error) {
        Log(Priority::kError, "cannot go on: %s", error.what());
        return EX_SOFTWARE;
    }
}
