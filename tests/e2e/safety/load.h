// Clients that write to the registry in processes of their own, and the ledger in the test's
// process of what they were promised.
#ifndef SAFETY_LOAD_H
#define SAFETY_LOAD_H

#include <gtest/gtest.h>
#include <ntwin32/registry.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace safety {

inline constexpr int kClients = 8;
inline constexpr int kBatchValues = 10;

// What one client began and was promised, in memory that outlives it.
struct Entry {
    std::atomic<DWORD> begun;
    std::atomic<DWORD> acknowledged;
};

// Shared by the test and its clients.
class Ledger {
  public:
    Ledger()
        : entries_(static_cast<Entry *>(
              ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
    Ledger(const Ledger &) = delete;
    Ledger &operator=(const Ledger &) = delete;
    ~Ledger() { ::munmap(entries_, kSize); }

    Entry &operator[](int client) { return entries_[client]; }

  private:
    static constexpr std::size_t kSize = kClients * sizeof(Entry);
    Entry *entries_;
};

inline std::string ClientKey(int client) {
    return "LOAD\\CLIENT" + std::to_string(client);
}

// One durable step of a client: a batch of values that all hold the same number, or a single value.
inline bool WriteNumber(int client, DWORD number) {
    const std::string key = ClientKey(client);
    const auto *bytes = reinterpret_cast<const BYTE *>(&number);
    if (client % 2 == 0) {
        HKEY handle = 0;
        return RegCreateKey(HKEY_LOCAL_MACHINE, key.c_str(), &handle) == ERROR_SUCCESS &&
               RegSetValueEx(handle, "V0", 0, REG_DWORD, bytes, sizeof number) == ERROR_SUCCESS;
    }
    std::array<std::string, kBatchValues> names;
    std::vector<KES_REG_CHANGE> changes;
    for (int i = 0; i < kBatchValues; ++i) {
        names[static_cast<std::size_t>(i)] = "V" + std::to_string(i);
        changes.push_back({KES_REG_SET_VALUE, REG_DWORD, key.c_str(),
                           names[static_cast<std::size_t>(i)].c_str(), bytes, sizeof number, 0});
    }
    return KesRegApplyBatch(HKEY_LOCAL_MACHINE, changes.data(), static_cast<DWORD>(changes.size()),
                            nullptr) == ERROR_SUCCESS;
}

// Writes 1, 2, 3 ... for ever, each again until it is acknowledged.
[[noreturn]] inline void RunClient(int client, Entry &entry) {
    for (DWORD number = 1;; ++number) {
        entry.begun = number;
        while (!WriteNumber(client, number))
            ::usleep(1000);  // the server is down
        entry.acknowledged = number;
    }
}

inline std::optional<DWORD> ReadNumber(int client, int value) {
    HKEY key = 0;
    DWORD number = 0;
    DWORD size = sizeof number;
    const std::string name = "V" + std::to_string(value);
    if (RegOpenKeyEx(HKEY_LOCAL_MACHINE, ClientKey(client).c_str(), 0, KEY_READ, &key) !=
            ERROR_SUCCESS ||
        RegQueryValueEx(key, name.c_str(), nullptr, nullptr, reinterpret_cast<BYTE *>(&number),
                        &size) != ERROR_SUCCESS)
        return std::nullopt;
    return number;
}

// Child processes that are killed at the end whatever happens.
class Children {
  public:
    Children() = default;
    Children(const Children &) = delete;
    Children &operator=(const Children &) = delete;
    ~Children() { KillAll(); }

    template <typename Body>
    pid_t Start(const Body &body) {
        const pid_t process = ::fork();
        if (process == 0) {
            body();
            ::_exit(0);
        }
        processes_.push_back(process);
        return process;
    }
    void KillAll() {
        for (const pid_t process : processes_)
            ::kill(process, SIGKILL);
        for (const pid_t process : processes_)
            ::waitpid(process, nullptr, 0);
        processes_.clear();
    }

  private:
    std::vector<pid_t> processes_;
};

}  // namespace safety

#endif  // SAFETY_LOAD_H
