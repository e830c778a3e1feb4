// What the registry's tests share: short forms of the calls, and the two ways to read.
#ifndef REGISTRY_SUPPORT_H
#define REGISTRY_SUPPORT_H

#include <gtest/gtest.h>
#include <ntwin32/registry.h>
#include <sched.h>
#include <support/server.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace registry_test {

inline constexpr HKEY kRoot = HKEY_LOCAL_MACHINE;

inline HKEY CreateKey(HKEY above, const std::string &path) {
    HKEY key = 0;
    EXPECT_EQ(RegCreateKey(above, path.c_str(), &key), ERROR_SUCCESS) << path;
    return key;
}
inline LONG OpenResult(HKEY above, const std::string &path) {
    HKEY key = 0;
    return RegOpenKeyEx(above, path.c_str(), 0, KEY_READ, &key);
}
inline HKEY OpenKey(HKEY above, const std::string &path) {
    HKEY key = 0;
    EXPECT_EQ(RegOpenKeyEx(above, path.c_str(), 0, KEY_READ, &key), ERROR_SUCCESS) << path;
    return key;
}

inline LONG SetBytes(HKEY key, const char *name, DWORD type, std::string_view bytes) {
    return RegSetValueEx(key, name, 0, type, reinterpret_cast<const BYTE *>(bytes.data()),
                         static_cast<DWORD>(bytes.size()));
}
// A text with its terminator.
inline void SetText(HKEY key, const std::string &name, const std::string &text) {
    EXPECT_EQ(SetBytes(key, name.c_str(), REG_SZ, {text.c_str(), text.size() + 1}), ERROR_SUCCESS)
        << name;
}

// A value's bytes as they are stored; nothing when it cannot be read.
inline std::optional<std::string> ReadBytes(HKEY key, const char *name) {
    DWORD size = 0;
    if (RegQueryValueEx(key, name, nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS)
        return std::nullopt;
    std::string bytes(size, '\0');
    if (RegQueryValueEx(key, name, nullptr, nullptr, reinterpret_cast<BYTE *>(bytes.data()),
                        &size) != ERROR_SUCCESS)
        return std::nullopt;
    return bytes;
}

// The names that an enumeration gives out, from the first to the last.
inline std::vector<std::string> SubKeys(HKEY key) {
    std::vector<std::string> names;
    char name[KES_REG_MAX_KEY_NAME + 1];
    DWORD size = sizeof name;
    while (RegEnumKeyEx(key, static_cast<DWORD>(names.size()), name, &size, nullptr, nullptr,
                        nullptr, nullptr) == ERROR_SUCCESS) {
        names.emplace_back(name, size);
        size = sizeof name;
    }
    return names;
}
inline std::vector<std::string> Values(HKEY key) {
    std::vector<std::string> names;
    char name[KES_REG_MAX_VALUE_NAME + 1];
    DWORD size = sizeof name;
    while (RegEnumValue(key, static_cast<DWORD>(names.size()), name, &size, nullptr, nullptr,
                        nullptr, nullptr) == ERROR_SUCCESS) {
        names.emplace_back(name, size);
        size = sizeof name;
    }
    return names;
}

// Whether this process has the store in its own memory.
inline bool HasMappedStore() {
    return test_support::ReadWholeFile("/proc/self/maps").find("data.mdb") != std::string::npos;
}

// Runs a body in a child process; its failed expectations become the caller's.
template <typename Body>
void InChild(const Body &body) {
    const pid_t child = ::fork();
    if (child == 0) {
        body();
        std::fflush(nullptr);
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "expectations failed in the child";
}

// How a process reads: from its own map of the store, or by asking the server, as everybody does
// who is not root. For the tests that is a root process in a namespace of process numbers of its
// own: it may write, too.
enum class Way { kMaps, kAsks };

template <typename Body>
void InWay(Way way, const Body &body) {
    if (way == Way::kMaps)
        return body();
    InChild([&] {
        ASSERT_EQ(::unshare(CLONE_NEWPID), 0) << "root is needed";
        InChild(body);
    });
}

// A test whose cases hold both ways, with a server of its own.
class BothWays : public testing::TestWithParam<Way> {
  protected:
    template <typename Body>
    void Run(const Body &body) {
        InWay(GetParam(), body);
    }
    test_support::Server server_;
};

struct WayName {
    std::string operator()(const testing::TestParamInfo<Way> &info) const {
        return info.param == Way::kMaps ? "maps" : "asks";
    }
};
inline auto BothWaysToRead() {
    return testing::Values(Way::kMaps, Way::kAsks);
}

}  // namespace registry_test

#endif  // REGISTRY_SUPPORT_H
