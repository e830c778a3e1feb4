#include "operating_system.h"

#include <ntwin32/system.h>

#include <array>
#include <optional>

#include "settings_file.h"

namespace win32 {
namespace {

constexpr std::array kLocaleFiles = {"/etc/locale.conf", "/etc/default/locale"};

// The makers' own files come first: their systems bring a redhat-release for compatibility, too.
constexpr std::array kReleaseFiles = {"/etc/turbolinux-release", "/etc/miraclelinux-release",
                                      "/etc/redhat-release",     "/etc/fedora-release",
                                      "/etc/SuSE-release",       "/etc/UnitedLinux-release"};

constexpr std::array kOsReleaseFiles = {"/etc/os-release", "/usr/lib/os-release"};

constexpr char kDefaultLanguage[] = "en_US";
constexpr char kJapanese[] = "ja";
constexpr char kJapaneseLocale[] = "ja_JP.eucJP";

// The first of the files that assigns something to `name`.
template <typename Files>
std::string FirstAssignment(const Files &files, const std::string &root, std::string_view name) {
    for (const char *file : files) {
        const auto value = FindAssignment(ReadSettingsFile(root + file), name);
        if (value && !value->empty()) {
            return *value;
        }
    }
    return {};
}

bool IsJapanese(std::string_view setting) {
    return setting.substr(0, std::string_view(kJapanese).size()) == kJapanese;
}

}  // namespace

std::string LanguageSetting(const char *variable, const std::string &root) {
    if (variable != nullptr && *variable != '\0') {
        return variable;
    }
    const std::string setting = FirstAssignment(kLocaleFiles, root, "LANG");
    return !setting.empty() ? setting : kDefaultLanguage;
}

LANGID LanguageIdOf(std::string_view setting) {
    return IsJapanese(setting) ? LANGID_JAPANESE : LANGID_ENGLISH_US;
}

std::string LocaleNameOf(std::string_view setting) {
    return IsJapanese(setting) ? kJapaneseLocale : std::string(setting);
}

std::string DistributionLine(const std::string &root) {
    for (const char *file : kReleaseFiles) {
        const std::string content = ReadSettingsFile(root + file);
        const std::string_view line = FirstLine(content);
        if (!line.empty()) {
            return std::string(line);
        }
    }
    return std::string(FirstLine(FirstAssignment(kOsReleaseFiles, root, "PRETTY_NAME")));
}

}  // namespace win32
