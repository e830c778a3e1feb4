#include "mail_support/process.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <system_error>
#include <thread>

#include <base/descriptor.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace mail_support {

namespace {

using base::UniqueDescriptor;

// Starts a command with these standard streams, in a process group of its own.
pid_t Start(const std::vector<std::string> &command, int input, int output) {
    std::vector<char *> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t streams{};
    posix_spawn_file_actions_init(&streams);
    posix_spawn_file_actions_adddup2(&streams, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&streams, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&streams, output, STDERR_FILENO);
    posix_spawnattr_t attributes{};
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    pid_t id = -1;
    const int error =
        ::posix_spawnp(&id, arguments[0], &streams, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&streams);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), command[0]);
    return id;
}

UniqueDescriptor InputOf(const std::string &text) {
    UniqueDescriptor file(::memfd_create("input", MFD_CLOEXEC));
    if (!file || ::write(file.Get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        throw std::system_error(errno, std::generic_category(), "memfd");
    ::lseek(file.Get(), 0, SEEK_SET);
    return file;
}

std::string ReadToEnd(int descriptor) {
    std::string text;
    std::array<char, 4096> buffer{};
    for (;;) {
        const auto count = ::read(descriptor, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return text;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

}  // namespace

Finished Run(const std::vector<std::string> &command, const std::string &input) {
    const UniqueDescriptor file = InputOf(input);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    const UniqueDescriptor output(ends[0]);
    UniqueDescriptor writer(ends[1]);
    const pid_t id = Start(command, file.Get(), writer.Get());
    writer.Reset();
    Finished finished;
    finished.output = ReadToEnd(output.Get());
    int status = 0;
    while (::waitpid(id, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status))
        finished.status = WEXITSTATUS(status);
    return finished;
}

BackgroundProcess::BackgroundProcess(const std::vector<std::string> &command,
                                     const std::string &log_file) {
    const UniqueDescriptor log(
        ::open(log_file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    const UniqueDescriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (!log || !nothing)
        throw std::system_error(errno, std::generic_category(), log_file);
    id_ = Start(command, nothing.Get(), log.Get());
}

bool BackgroundProcess::IsRunning() {
    siginfo_t state{};
    return ::waitid(P_PID, static_cast<id_t>(id_), &state, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           state.si_pid == 0;
}

// The leader is waited for last, so that its group's number is not anybody else's meanwhile.
BackgroundProcess::~BackgroundProcess() {
    ::kill(-id_, SIGTERM);
    for (int tries = 0; tries < 100 && IsRunning(); ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ::kill(-id_, SIGKILL);
    while (::waitpid(id_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

bool ProgramExists(const std::string &program) {
    if (program.starts_with('/'))
        return ::access(program.c_str(), X_OK) == 0;
    const char *path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "/usr/bin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');)
        if (::access(folder.append("/").append(program).c_str(), X_OK) == 0)
            return true;
    return false;
}

}  // namespace mail_support
