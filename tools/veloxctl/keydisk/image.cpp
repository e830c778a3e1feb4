#include "keydisk/image.h"

#include <fcntl.h>
#include <ntwin32/file.h>
#include <poll.h>
#include <records/key_disk.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "failure.h"
#include "files.h"
#include "keydisk/media.h"
#include "registry.h"

namespace veloxctl::keydisk {

namespace {

constexpr std::size_t kMaxImageBytes = std::size_t{64} << 20;
constexpr std::size_t kMaxOutputBytes = std::size_t{1} << 20;
// A damaged image may send a program round in circles.
constexpr rlim_t kMaxCpuSeconds = 20;

struct Outcome {
    bool succeeded = false;
    std::string output;
    std::string messages;  // the first line of standard error
};

// Becomes the program; in the child, where only system calls are allowed.
[[noreturn]] void Execute(char *const *words, int output, int messages) {
    // The caller's configuration must not move what is read or written.
    static char *const kEnvironment[] = {const_cast<char *>("PATH=/usr/bin:/bin"),
                                         const_cast<char *>("MTOOLSRC=/dev/null"),
                                         const_cast<char *>("LC_ALL=C"), nullptr};
    const rlimit file_limit = {KES_MAX_MEDIA_FILE + 1, KES_MAX_MEDIA_FILE + 1};
    const rlimit cpu_limit = {kMaxCpuSeconds, kMaxCpuSeconds};
    setrlimit(RLIMIT_FSIZE, &file_limit);
    setrlimit(RLIMIT_CPU, &cpu_limit);
    dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(messages, STDERR_FILENO);
    execvpe(words[0], words, kEnvironment);
    _exit(127);
}

// Reads both pipes to their ends, at most kMaxOutputBytes of each.
void Collect(int output, int messages, Outcome *outcome) {
    pollfd pipes[] = {{output, POLLIN, 0}, {messages, POLLIN, 0}};
    std::string *const texts[] = {&outcome->output, &outcome->messages};
    while (pipes[0].fd >= 0 || pipes[1].fd >= 0) {
        if (poll(pipes, 2, -1) < 0 && errno != EINTR) {
            FailSystem("poll", errno);
        }
        for (int i = 0; i < 2; ++i) {
            if (pipes[i].fd < 0 || pipes[i].revents == 0) {
                continue;
            }
            char block[4096];
            const ssize_t got = read(pipes[i].fd, block, sizeof(block));
            if (got <= 0) {
                close(pipes[i].fd);
                pipes[i].fd = -1;
            } else if (texts[i]->size() < kMaxOutputBytes) {
                texts[i]->append(block, static_cast<std::size_t>(got));
            }
        }
    }
    outcome->messages.resize(std::min(outcome->messages.find('\n'), outcome->messages.size()));
}

Outcome Run(std::vector<std::string> words) {
    std::vector<char *> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string &word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    int output[2];
    int messages[2];
    if (pipe2(output, O_CLOEXEC) != 0 || pipe2(messages, O_CLOEXEC) != 0) {
        FailSystem("pipe", errno);
    }
    const pid_t child = fork();
    if (child == 0) {
        Execute(pointers.data(), output[1], messages[1]);
    }
    close(output[1]);
    close(messages[1]);
    if (child < 0) {
        FailSystem(words[0], errno);
    }
    Outcome outcome;
    Collect(output[0], messages[0], &outcome);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 127) {
        Fail(EX_OSFILE, words[0] + " cannot be started; it belongs to the package mtools");
    }
    outcome.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return outcome;
}

// The program's own words, or that it was stopped.
std::string Reason(const Outcome &outcome) {
    return outcome.messages.empty() ? "it could not be read within the limits" : outcome.messages;
}

// The file of a key disk that a line of the listing ("::/NAME", a folder with a slash behind)
// names.
const char *DiskFileListed(std::string line, bool *is_folder) {
    line.erase(0, line.find_last_of(':') + 1);
    line.erase(0, line.find_first_not_of('/'));
    *is_folder = line.ends_with('/');
    if (*is_folder) {
        line.pop_back();
    }
    for (const char *name : {KEYDISK_CUSTOMER_FILE, KEYDISK_ADDRESS_FILE, KEYDISK_HEARTBEAT_FILE}) {
        if (Folded(line) == Folded(name)) {
            return name;
        }
    }
    return nullptr;
}

void ExtractFile(const std::string &image, const char *name, bool is_folder,
                 const std::string &folder) {
    const std::string target = folder + "/" + name;
    if (is_folder) {
        mkdir(target.c_str(), 0700);
        return;
    }
    const Outcome outcome = Run({"mcopy", "-n", "-i", image, "::" + std::string(name), target});
    if (!outcome.succeeded) {
        Fail(EX_DATAERR, image + ": " + name + ": " + Reason(outcome));
    }
}

}  // namespace

std::string MakeImage(const std::string &folder) {
    const PrivateFolder work;
    const std::string image = work.Path() + "/image";
    const Outcome formatted = Run({"mformat", "-C", "-f", "1440", "-i", image, "::"});
    if (!formatted.succeeded) {
        Fail(EX_CANTCREAT, "mformat: " + Reason(formatted));
    }
    std::vector<std::string> words = {"mcopy", "-i", image};
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        words.push_back(entry.path());
    }
    words.emplace_back("::");
    const Outcome copied = Run(std::move(words));
    if (!copied.succeeded) {
        Fail(EX_CANTCREAT, "mcopy: " + Reason(copied));
    }
    return ReadFile(image);
}

void ExtractImage(const std::string &image, const std::string &folder) {
    struct stat status = {};
    if (stat(image.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
        static_cast<std::size_t>(status.st_size) > kMaxImageBytes) {
        Fail(EX_DATAERR, image + ": larger than 64 MiB, so no image of a floppy disk");
    }
    const Outcome listed = Run({"mdir", "-b", "-i", image, "::"});
    if (!listed.succeeded) {
        Fail(EX_DATAERR, image + ": " + Reason(listed));
    }
    for (std::size_t start = 0; start < listed.output.size();) {
        const std::size_t end = std::min(listed.output.find('\n', start), listed.output.size());
        bool is_folder = false;
        const char *name = DiskFileListed(listed.output.substr(start, end - start), &is_folder);
        if (name != nullptr) {
            ExtractFile(image, name, is_folder, folder);
        }
        start = end + 1;
    }
}

}  // namespace veloxctl::keydisk
