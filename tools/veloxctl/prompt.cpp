#include "prompt.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "failure.h"

namespace veloxctl {

namespace {

volatile std::sig_atomic_t ending_signal = 0;

// Takes the echo away and gives it back at the end. A signal that would end the program is heard
// only while Wait() waits, which then fails, so that no terminal is left without echo.
class WithoutEcho {
  public:
    explicit WithoutEcho(int terminal) : terminal_(terminal) {
        sigset_t blocked;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGTSTP);
        struct sigaction note = {};
        note.sa_handler = [](int signal) { ending_signal = signal; };
        for (std::size_t i = 0; i < std::size(kEndingSignals); ++i) {
            sigaddset(&blocked, kEndingSignals[i]);
            sigaction(kEndingSignals[i], &note, &actions_[i]);
        }
        sigprocmask(SIG_BLOCK, &blocked, &mask_);
        tcgetattr(terminal_, &settings_);
        termios silent = settings_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(terminal_, TCSAFLUSH, &silent);
    }
    ~WithoutEcho() {
        tcsetattr(terminal_, TCSAFLUSH, &settings_);
        for (std::size_t i = 0; i < std::size(kEndingSignals); ++i) {
            sigaction(kEndingSignals[i], &actions_[i], nullptr);
        }
        sigprocmask(SIG_SETMASK, &mask_, nullptr);
    }
    WithoutEcho(const WithoutEcho &) = delete;
    WithoutEcho &operator=(const WithoutEcho &) = delete;

    // Waits for input.
    void Wait() const {
        pollfd input = {terminal_, POLLIN, 0};
        while (ppoll(&input, 1, nullptr, &mask_) < 0 && errno == EINTR) {
            if (ending_signal != 0) {
                Fail(EX_NOPERM, "given up");
            }
        }
    }

  private:
    static constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

    int terminal_;
    termios settings_{};
    sigset_t mask_{};
    struct sigaction actions_[std::size(kEndingSignals)] = {};
};

class OpenedFile {
  public:
    explicit OpenedFile(int descriptor) : descriptor_(descriptor) {}
    ~OpenedFile() {
        if (descriptor_ > STDERR_FILENO) {
            close(descriptor_);
        }
    }
    OpenedFile(const OpenedFile &) = delete;
    OpenedFile &operator=(const OpenedFile &) = delete;
    int Get() const { return descriptor_; }

  private:
    int descriptor_;
};

// One line without its end, byte by byte, so that nothing behind it is taken from a pipe. silence
// is null for what is no terminal.
Secret ReadLine(int descriptor, std::size_t longest, const std::string &source,
                const WithoutEcho *silence) {
    std::string line;
    line.reserve(longest + 2);
    for (;;) {
        if (silence != nullptr) {
            silence->Wait();
        }
        char byte = 0;
        const ssize_t got = read(descriptor, &byte, 1);
        if (got < 0 && errno != EINTR) {
            FailSystem(source, errno);
        }
        if (got == 0 || byte == '\n') {
            break;
        }
        if (got == 1 && line.size() <= longest) {
            line.push_back(byte);
        }
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    Secret secret(std::move(line));
    if (secret.Text().size() > longest) {
        Fail(EX_DATAERR, source + ": longer than " + std::to_string(longest) + " bytes");
    }
    return secret;
}

Secret AskWithoutEcho(int terminal, const WithoutEcho &silence, const std::string &prompt,
                      std::size_t longest) {
    dprintf(terminal, "%s: ", prompt.c_str());
    Secret answer = ReadLine(terminal, longest, prompt, &silence);
    dprintf(terminal, "\n");
    return answer;
}

}  // namespace

void Secret::Wipe() {
    // What a move left behind in a short text's own buffer goes too.
    explicit_bzero(text_.data(), text_.capacity());
    text_.clear();
}

void Confirm(const std::string &question, const char *advice) {
    if (isatty(STDIN_FILENO) == 0) {
        Fail(EX_USAGE, question + "; " + advice);
    }
    std::fprintf(stderr, "veloxctl: %s. Go on? (y/N) ", question.c_str());
    char answer[8] = "";
    if (std::fgets(answer, sizeof(answer), stdin) == nullptr ||
        (answer[0] != 'y' && answer[0] != 'Y')) {
        Fail(EX_NOPERM, "nothing was changed");
    }
}

Secret ReadSecret(const std::string &source, const std::string &prompt, std::size_t longest) {
    if (source == "-") {
        return ReadLine(STDIN_FILENO, longest, "standard input", nullptr);
    }
    if (!source.empty()) {
        const OpenedFile file(open(source.c_str(), O_RDONLY | O_CLOEXEC));
        if (file.Get() < 0) {
            FailSystem(source, errno);
        }
        return ReadLine(file.Get(), longest, source, nullptr);
    }
    const OpenedFile terminal(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
    if (terminal.Get() < 0) {
        Fail(EX_USAGE, prompt + ": there is no terminal to ask at; give a file");
    }
    // One silence for both: what is typed ahead is not echoed in between.
    const WithoutEcho silence(terminal.Get());
    Secret first = AskWithoutEcho(terminal.Get(), silence, prompt, longest);
    const Secret second = AskWithoutEcho(terminal.Get(), silence, prompt + " (again)", longest);
    if (first.Text() != second.Text()) {
        Fail(EX_DATAERR, "the two answers differ");
    }
    return first;
}

}  // namespace veloxctl
