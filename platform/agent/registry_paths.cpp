// The registry paths of report methods and report destinations.
#include <amcregac.h>
#include <strings.h>

#include <array>
#include <cstring>
#include <string>

#include "boundary.h"
#include "registry_key.h"

namespace {

// A category of base settings and the key that holds its methods.
struct Category {
    const char *name;
    const char *path;
};

constexpr std::array kCategories = {
    Category{"Report", "SOFTWARE\\XEV\\KESAlertMan\\BaseSetting\\Report"},
};
constexpr char kSettingKey[] = "\\Setting";
constexpr char kDestinations[] = "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST";

const Category *FindCategory(const char *name) {
    for (const Category &category : kCategories) {
        if (::strcasecmp(category.name, name) == 0) {
            return &category;
        }
    }
    return nullptr;
}

// The path of the key `name` below `parent`, empty when it does not exist. A name is one key: with
// a separator in it it would reach another key than the one asked for.
std::string ChildPath(const char *parent, const char *name) {
    if (*name == '\0' || std::strchr(name, '\\') != nullptr) {
        return {};
    }
    std::string path = std::string(parent) + "\\" + name;
    agent::RegistryKey key;
    return key.Open(HKEY_LOCAL_MACHINE, path.c_str(), KEY_READ) ? path : std::string();
}

bool Deliver(const std::string &path, HKEY *key, char *buffer, DWORD *size) {
    const std::size_t needed = path.size() + 1;
    if (*size != 0) {
        if (needed > *size || buffer == nullptr) {
            return false;
        }
        std::memcpy(buffer, path.c_str(), needed);
    }
    *size = static_cast<DWORD>(needed);
    if (key != nullptr) {
        *key = HKEY_LOCAL_MACHINE;
    }
    return true;
}

}  // namespace

extern "C" {

BOOL AMACBSGetMethodRegistryPath(const char *lpCategory, const char *lpMethod, HKEY *lphKey,
                                 char *lpPath, DWORD *lpdwSize) noexcept {
    return agent::AtBoundary([&] {
        if (lpCategory == nullptr || lpMethod == nullptr || lpdwSize == nullptr) {
            return false;
        }
        const Category *category = FindCategory(lpCategory);
        const std::string method =
            category != nullptr ? ChildPath(category->path, lpMethod) : std::string();
        return !method.empty() && Deliver(method + kSettingKey, lphKey, lpPath, lpdwSize);
    });
}

BOOL AMACDSGetIDRegistryPath(const char *lpDestinationId, HKEY *lphKey, char *lpPath,
                             DWORD *lpdwSize) noexcept {
    return agent::AtBoundary([&] {
        if (lpDestinationId == nullptr || lpdwSize == nullptr) {
            return false;
        }
        const std::string path = ChildPath(kDestinations, lpDestinationId);
        return !path.empty() && Deliver(path, lphKey, lpPath, lpdwSize);
    });
}

BOOL AMACEXSetRegistryNumber(DWORD dwNumber) noexcept {
    return dwNumber == 0 ? TRUE : FALSE;
}

}  // extern "C"
