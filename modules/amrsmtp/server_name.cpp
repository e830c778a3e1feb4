#include "server_name.h"

#include <array>
#include <cstddef>

#include <amcregac.h>
#include <ntwin32/registry.h>

namespace amrsmtp {

namespace {

// A text as the settings hold it: at most 256 bytes; nothing when it is missing or no text.
std::optional<std::string> ReadText(HKEY key, const char *name) {
    std::array<char, 257> text{};
    DWORD type = REG_NONE;
    auto size = static_cast<DWORD>(text.size() - 1);
    if (RegQueryValueEx(key, name, nullptr, &type, reinterpret_cast<BYTE *>(text.data()), &size) !=
            ERROR_SUCCESS ||
        type != REG_SZ)
        return {};
    return text.data();
}

std::optional<std::string> SettingsPath() {
    HKEY root = 0;
    DWORD size = 0;
    std::array<char, 512> path{};
    constexpr char kCategory[] = "Report";
    constexpr char kMethod[] = "VeloxReport(Internet Mail)";
    if (!AMACBSGetMethodRegistryPath(kCategory, kMethod, &root, path.data(), &size) ||
        size > path.size() ||
        !AMACBSGetMethodRegistryPath(kCategory, kMethod, &root, path.data(), &size))
        return {};
    return path.data();
}

std::optional<session::Host> ReadHost(HKEY key, const char *name) {
    const auto text = ReadText(key, name);
    return text ? session::ParseHost(*text) : std::nullopt;
}

}  // namespace

std::optional<std::string> StoredNameOf(const session::Host &server) {
    const auto path = SettingsPath();
    HKEY key = 0;
    if (!server.is_address || !path ||
        RegOpenKeyEx(HKEY_LOCAL_MACHINE, path->c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return {};
    const auto name = ReadHost(key, "Server");
    const auto address = ReadHost(key, "IP");
    RegCloseKey(key);
    if (!name || name->is_address || !address || address->text != server.text)
        return {};
    return name->text;
}

}  // namespace amrsmtp
