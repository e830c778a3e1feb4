#include "regstore/names.h"

#include <algorithm>

namespace regstore {

bool EqualFolded(std::string_view left, std::string_view right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return FoldCharacter(a) == FoldCharacter(b); });
}

Status CheckPath(std::string_view path) noexcept {
    bool refused = false;
    std::size_t depth = 0;
    for (PathWalk walk(path); !walk.Done();) {
        const std::string_view component = walk.Next();
        if (component.empty())
            return Status::kBadPath;
        refused = refused || !IsName(component) || ++depth > kMaxDepth;
    }
    return refused ? Status::kInvalidParameter : Status::kSuccess;
}

}  // namespace regstore
