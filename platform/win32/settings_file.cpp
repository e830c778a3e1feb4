#include "settings_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <base/descriptor.h>
#include <cstddef>

namespace win32 {
namespace {

constexpr std::size_t kMaxSettingsFile = std::size_t{64} * 1024;
constexpr std::string_view kBlanks = " \t\r";

bool IsBlank(char byte) {
    return kBlanks.find(byte) != std::string_view::npos;
}

std::string_view SkipBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? std::string_view{} : text.substr(first);
}

// What follows `prefix` in `text`; none when it begins otherwise.
std::optional<std::string_view> After(std::string_view text, std::string_view prefix) {
    if (text.substr(0, prefix.size()) != prefix) {
        return std::nullopt;
    }
    return text.substr(prefix.size());
}

// Reads one value as a shell does, piece by piece.
class ValueReader {
  public:
    explicit ValueReader(std::string_view text) : rest_(text) {}

    // None when a quote or an escape has no end, or when a second word follows.
    std::optional<std::string> Read() {
        while (!rest_.empty() && !IsBlank(rest_.front()) && rest_.front() != ';') {
            if (!ReadPiece()) {
                return std::nullopt;
            }
        }
        const std::string_view after = SkipBlanks(rest_);
        if (!after.empty() && after.front() != '#' && after.front() != ';') {
            return std::nullopt;
        }
        return value_;
    }

  private:
    char Next() {
        const char byte = rest_.front();
        rest_.remove_prefix(1);
        return byte;
    }

    bool ReadPiece() {
        const char byte = Next();
        switch (byte) {
            case '\'':
                return ReadSingleQuoted();
            case '"':
                return ReadDoubleQuoted();
            case '\\':
                return ReadEscaped();
            default:
                value_ += byte;
                return true;
        }
    }

    bool ReadEscaped() {
        if (rest_.empty()) {
            return false;
        }
        value_ += Next();
        return true;
    }

    bool ReadSingleQuoted() {
        const std::size_t end = rest_.find('\'');
        if (end == std::string_view::npos) {
            return false;
        }
        value_ += rest_.substr(0, end);
        rest_.remove_prefix(end + 1);
        return true;
    }

    bool ReadDoubleQuoted() {
        while (!rest_.empty()) {
            char byte = Next();
            if (byte == '"') {
                return true;
            }
            // Before any other character the backslash stands for itself.
            if (byte == '\\' && !rest_.empty() &&
                std::string_view("\"\\$`").find(rest_.front()) != std::string_view::npos) {
                byte = Next();
            }
            value_ += byte;
        }
        return false;
    }

    std::string_view rest_;
    std::string value_;
};

std::optional<std::string> AssignmentOfLine(std::string_view line, std::string_view name) {
    std::string_view text = SkipBlanks(line);
    if (const auto exported = After(text, "export");
        exported && !exported->empty() && IsBlank(exported->front())) {
        text = SkipBlanks(*exported);
    }
    const auto behind_name = After(text, name);
    const auto value = behind_name ? After(*behind_name, "=") : std::nullopt;
    return value ? ValueReader(*value).Read() : std::nullopt;
}

}  // namespace

std::string ReadSettingsFile(const std::string &path) {
    const base::UniqueDescriptor file(
        ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status;
    if (!file || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return {};
    }
    std::string content(kMaxSettingsFile, '\0');
    const ssize_t count = ::pread(file.Get(), content.data(), content.size(), 0);
    content.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return content;
}

std::optional<std::string> FindAssignment(std::string_view content, std::string_view name) {
    std::optional<std::string> found;
    while (!content.empty()) {
        const std::size_t end = content.find('\n');
        if (auto value = AssignmentOfLine(content.substr(0, end), name)) {
            found = std::move(value);
        }
        content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
    }
    return found;
}

std::string_view FirstLine(std::string_view content) {
    const std::string_view line = content.substr(0, content.find('\n'));
    const std::size_t last = line.find_last_not_of(kBlanks);
    return last == std::string_view::npos ? std::string_view{} : line.substr(0, last + 1);
}

}  // namespace win32
