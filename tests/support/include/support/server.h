// A registry server on private folders. Programs that use it link NTwin32.
#ifndef SUPPORT_SERVER_H
#define SUPPORT_SERVER_H

#include <fcntl.h>
#include <ntwin32/system.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

#include "support/environment.h"
#include "support/temp_folder.h"

namespace test_support {

// The product tree of the build that is tested.
inline std::string ProductRoot() {
    const char *root = std::getenv("KES_ROOT");
    if (root == nullptr)
        throw std::runtime_error("KES_ROOT must name the product tree");
    return root;
}

// Starts KESntserver for the time of its own life, with KES_STATE and KES_RUN set to private
// folders, and ends it whatever happens. What the server says goes to Log().
class Server {
  public:
    static constexpr std::chrono::seconds kPatience{60};  // for a loaded machine

    enum class Begin { kStarted, kNotStarted };

    explicit Server(Begin begin = Begin::kStarted)
        : state_("KES_STATE", folder_ / "state"), run_("KES_RUN", folder_ / "run") {
        if (begin == Begin::kStarted)
            Start();
    }
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;
    ~Server() {
        Stop();
        // What a sanitizer finds in the server fails the test, whatever else it looks at.
        if (Log().find("Sanitizer") != std::string::npos) {
            std::fprintf(stderr, "%s\n", Log().c_str());
            std::abort();
        }
    }

    std::string StateFolder() const { return folder_ / "state"; }
    std::string RunFolder() const { return folder_ / "run"; }
    std::string StoreFolder() const { return StateFolder() + "/registry"; }
    std::string SocketPath() const { return RunFolder() + "/ntserver.sock"; }
    std::string Log() const { return ReadWholeFile(folder_ / "server.log"); }
    void ForgetLog() const { ::unlink((folder_ / "server.log").c_str()); }
    pid_t Process() const { return process_; }

    // Starts the process without waiting for it to be ready.
    void Spawn() {
        const std::string program = ProductRoot() + "/bin/KESntserver";
        const std::string log = folder_ / "server.log";
        process_ = ::fork();
        if (process_ == 0) {
            const int file = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
            ::dup2(file, STDERR_FILENO);
            ::dup2(file, STDOUT_FILENO);
            ::execl(program.c_str(), program.c_str(), nullptr);
            ::_exit(127);
        }
    }

    // Starts the server and waits until it answers.
    void Start() {
        Spawn();
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
        while (CheckNTserverReady() != 0) {
            const bool has_ended = ::waitpid(process_, nullptr, WNOHANG) == process_;
            if (has_ended || std::chrono::steady_clock::now() > deadline) {
                if (has_ended)
                    process_ = -1;
                Kill();
                throw std::runtime_error("KESntserver did not start: " + Log());
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    // Ends the server as an init system does and gives its wait status.
    int Stop() { return Signal(SIGTERM); }
    // Ends it as a crash does.
    int Kill() { return Signal(SIGKILL); }

    // Waits until the server has ended by itself and gives its wait status.
    int Wait() {
        int status = 0;
        if (process_ > 0)
            ::waitpid(process_, &status, 0);
        process_ = -1;
        return status;
    }

  private:
    int Signal(int signal) {
        if (process_ > 0)
            ::kill(process_, signal);
        return Wait();
    }

    TempFolder folder_;
    EnvironmentVariable state_;
    EnvironmentVariable run_;
    pid_t process_ = -1;
};

}  // namespace test_support

#endif  // SUPPORT_SERVER_H
