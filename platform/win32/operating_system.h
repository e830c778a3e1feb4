// The system's language and distribution, as the operating system's files name them.
#ifndef WIN32_OPERATING_SYSTEM_H
#define WIN32_OPERATING_SYSTEM_H

#include <ntwin32/types.h>

#include <string>
#include <string_view>

namespace win32 {

// The name of the system's language: `variable` (the content of KES_LANG, or null), else LANG of
// <root>/etc/locale.conf, else LANG of <root>/etc/default/locale, else "en_US". Empty counts as
// absent. `root` is empty for the system itself.
std::string LanguageSetting(const char *variable, const std::string &root);

LANGID LanguageIdOf(std::string_view setting);

// The locale's name for setlocale(): every Japanese setting becomes the EUC-JP locale.
std::string LocaleNameOf(std::string_view setting);

// The first line of the distribution's release file below `root`, else PRETTY_NAME of os-release,
// else empty.
std::string DistributionLine(const std::string &root);

}  // namespace win32

#endif  // WIN32_OPERATING_SYSTEM_H
