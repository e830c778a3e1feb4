#include "environment_text.h"

#include <base/folders.h>
#include <climits>
#include <cstdlib>

namespace win32 {
namespace {

constexpr char kSign = '%';
constexpr char kProductVariable[] = "KesDir";

std::optional<std::string> ProductRoot() {
    char root[PATH_MAX];
    if (!base::FolderPath(base::kProductRoot, root, sizeof root)) {
        return std::nullopt;
    }
    return root;
}

// Appends what %name% stands for. False when that cannot be told.
bool AppendVariable(const std::string &name, std::string *expanded) {
    const char *value = ::secure_getenv(name.c_str());
    if (name == kProductVariable && (value == nullptr || *value == '\0')) {
        const auto root = ProductRoot();
        *expanded += root.value_or("");
        return root.has_value();
    }
    *expanded += value != nullptr ? value : kSign + name + kSign;
    return true;
}

}  // namespace

std::optional<std::string> ExpandEnvironment(std::string_view text) {
    std::string expanded;
    for (;;) {
        const std::size_t first = text.find(kSign);
        const std::size_t second =
            first == std::string_view::npos ? first : text.find(kSign, first + 1);
        if (second == std::string_view::npos) {
            return expanded += text;
        }
        expanded += text.substr(0, first);
        if (!AppendVariable(std::string(text.substr(first + 1, second - first - 1)), &expanded)) {
            return std::nullopt;
        }
        text.remove_prefix(second + 1);
    }
}

}  // namespace win32
