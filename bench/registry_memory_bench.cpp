// Memory of the daemon and of a mapping client when the registry holds a million values: after they
// were written, and after each of them was read. What is mapped from the store's file can be taken
// back by the system at any time; the rest is the process's own.
#include <ntwin32/registry.h>
#include <support/server.h>

#include <cstdio>
#include <fstream>

#include "support/registry_load.h"

namespace {

constexpr long kValues = 1000000;

// A line of a process's status, in kilobytes.
long StatusOf(pid_t process, const std::string &name) {
    std::ifstream file("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(file, line);)
        if (line.rfind(name + ":", 0) == 0)
            return std::strtol(line.c_str() + name.size() + 1, nullptr, 10);
    return 0;
}

void Print(const char *when, const char *who, pid_t process) {
    std::printf("%-24s %-8s own %6ld kB (at most %6ld kB resident), mapped %7ld kB\n", when, who,
                StatusOf(process, "RssAnon"), StatusOf(process, "VmHWM"),
                StatusOf(process, "RssFile"));
}

void PrintBoth(const char *when, const test_support::Server &server) {
    Print(when, "daemon", server.Process());
    Print(when, "client", ::getpid());
}

long ReadAll() {
    long read = 0;
    for (long index = 0; index < kValues; ++index) {
        HKEY key = 0;
        BYTE data[sizeof bench::kText];
        DWORD size = sizeof data;
        if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, bench::FillerKey(index).c_str(), 0, KEY_READ, &key) ==
                ERROR_SUCCESS &&
            RegQueryValueEx(key, bench::FillerValue(index).c_str(), nullptr, nullptr, data,
                            &size) == ERROR_SUCCESS)
            ++read;
    }
    return read;
}

}  // namespace

int main() {
    const test_support::Server server;
    PrintBoth("default registry", server);
    const pid_t writer = ::fork();
    if (writer == 0) {
        bench::FillRegistry(kValues);
        ::_exit(0);
    }
    ::waitpid(writer, nullptr, 0);
    PrintBoth("1,000,000 values written", server);
    const long read = ReadAll();
    PrintBoth("each value read", server);
    KES_REG_SERVER_INFO info = {};
    if (KesRegQueryServer(&info) != ERROR_SUCCESS || read != kValues)
        return 1;
    std::printf("the store's file: %llu kB\n",
                static_cast<unsigned long long>(info.qwStoreBytes / 1024));
    return 0;
}
