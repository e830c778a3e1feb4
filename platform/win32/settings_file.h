// Small settings files of the operating system: assignments as a shell reads them, and first lines.
#ifndef WIN32_SETTINGS_FILE_H
#define WIN32_SETTINGS_FILE_H

#include <optional>
#include <string>
#include <string_view>

namespace win32 {

// The first 64 KiB of a regular file; empty when it cannot be read. Links are followed:
// distributions ship some of these files as links.
std::string ReadSettingsFile(const std::string &path);

// The value that the last assignment to `name` in a shell fragment gives it: "name=value", "export"
// before it or not, the value bare, in single or double quotes, or pieced together from these. None
// when there is no such assignment; one that a shell would not accept is passed over.
std::optional<std::string> FindAssignment(std::string_view content, std::string_view name);

// The first line without trailing blanks.
std::string_view FirstLine(std::string_view content);

}  // namespace win32

#endif  // WIN32_SETTINGS_FILE_H
