#include "command.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "support/server.h"

namespace veloxctl_test {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience{60};

std::string Program(const std::string &asked) {
    return asked.empty() ? test_support::ProductRoot() + "/bin/veloxctl" : asked;
}

[[noreturn]] void Execute(const std::string &program, const std::vector<std::string> &words) {
    std::vector<char *> pointers = {const_cast<char *>(program.c_str())};
    for (const std::string &word : words) {
        pointers.push_back(const_cast<char *>(word.c_str()));
    }
    pointers.push_back(nullptr);
    ::execv(program.c_str(), pointers.data());
    ::_exit(127);
}

int WaitFor(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

void SetVariables(const Surroundings &surroundings) {
    ::setenv("LC_ALL", "C.UTF-8", 1);
    for (const auto &[name, value] : surroundings.variables) {
        if (value) {
            ::setenv(name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
}

// A file without a name that holds text and is read from its beginning.
int FileWith(const std::string &text) {
    const int file = ::memfd_create("input", MFD_CLOEXEC);
    if (file < 0 || ::write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
        ::lseek(file, 0, SEEK_SET) != 0) {
        throw std::runtime_error("cannot make the input");
    }
    return file;
}

std::string ReadAll(int file) {
    std::string text;
    char block[4096];
    ::lseek(file, 0, SEEK_SET);
    for (ssize_t got = 0; (got = ::read(file, block, sizeof(block))) > 0;) {
        text.append(block, static_cast<std::size_t>(got));
    }
    ::close(file);
    return text;
}

// Types the answers whose questions appeared; false when the terminal ended or nothing came in
// time.
bool Converse(int terminal, const std::vector<Answer> &answers, std::string *shown) {
    std::size_t next = 0;
    std::size_t read_up_to = 0;
    const auto deadline = Clock::now() + kPatience;
    for (;;) {
        pollfd input = {terminal, POLLIN, 0};
        if (Clock::now() > deadline) {
            return false;
        }
        if (::poll(&input, 1, 100) <= 0) {
            continue;
        }
        char block[512];
        const ssize_t got = ::read(terminal, block, sizeof(block));
        if (got <= 0) {
            return true;
        }
        shown->append(block, static_cast<std::size_t>(got));
        const std::size_t at = next < answers.size()
                                   ? shown->find(answers[next].question, read_up_to)
                                   : std::string::npos;
        if (at != std::string::npos) {
            read_up_to = at + answers[next].question.size();
            const std::string &typed = answers[next++].typed;
            if (::write(terminal, typed.data(), typed.size()) < 0) {
                return false;
            }
        }
    }
}

}  // namespace

Result Veloxctl(const std::vector<std::string> &words, const Surroundings &surroundings) {
    const std::string program = Program(surroundings.program);
    const int input = FileWith(surroundings.input);
    const int output = FileWith("");
    const int errors = FileWith("");
    const pid_t process = ::fork();
    if (process == 0) {
        ::dup2(input, STDIN_FILENO);
        ::dup2(output, STDOUT_FILENO);
        ::dup2(errors, STDERR_FILENO);
        SetVariables(surroundings);
        Execute(program, words);
    }
    ::close(input);
    Result result;
    result.status = WaitFor(process);
    result.output = ReadAll(output);
    result.errors = ReadAll(errors);
    return result;
}

Result VeloxctlInTerminal(const std::vector<std::string> &words, const std::vector<Answer> &answers,
                          const std::string &program) {
    const std::string path = Program(program);
    int terminal = -1;
    const pid_t process = ::forkpty(&terminal, nullptr, nullptr, nullptr);
    if (process == 0) {
        SetVariables({});
        Execute(path, words);
    }
    Result result;
    if (!Converse(terminal, answers, &result.output)) {
        ::kill(process, SIGKILL);
    }
    result.status = WaitFor(process);
    ::close(terminal);
    return result;
}

}  // namespace veloxctl_test
