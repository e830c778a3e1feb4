// Names and paths of the registry: limits, comparison without regard to ASCII case, walking a path.
#ifndef REGSTORE_NAMES_H
#define REGSTORE_NAMES_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "regstore/status.h"

namespace regstore {

// A key's number: never given to another key, and the handle that callers hold.
using KeyId = std::uint64_t;

// The root has its handle's number; every other key has one that no 32-bit handle can be.
inline constexpr KeyId kRootKey = 0x80000002U;
inline constexpr KeyId kFirstKey = 0x100000000U;

inline constexpr std::size_t kMaxName = 255;
inline constexpr std::size_t kMaxClass = 255;
inline constexpr std::size_t kMaxDepth = 512;
inline constexpr std::size_t kMaxData = 0x100000;
inline constexpr std::size_t kMaxPath = kMaxDepth * (kMaxName + 1) - 1;
inline constexpr char kSeparator = '\\';

// ASCII letters become capitals, as the order of a Windows registry has it; other bytes stay.
constexpr char FoldCharacter(char c) noexcept {
    return static_cast<unsigned char>(c - 'a') < 26U ? static_cast<char>(c - ('a' - 'A')) : c;
}

// Stores the folded name; the buffer holds name.size() bytes.
inline void FoldName(std::string_view name, unsigned char *folded) noexcept {
    for (std::size_t i = 0; i < name.size(); ++i)
        folded[i] = static_cast<unsigned char>(FoldCharacter(name[i]));
}

// What a name may be: within the limit, and without the byte that ends texts for callers.
inline bool IsName(std::string_view name) noexcept {
    return name.size() <= kMaxName && name.find('\0') == std::string_view::npos;
}

bool EqualFolded(std::string_view left, std::string_view right) noexcept;

// Takes a path's components from its front. A component may come out empty or too long: such a path
// finds no key, and CheckPath tells why.
class PathWalk {
  public:
    explicit PathWalk(std::string_view path) noexcept : rest_(path), done_(path.empty()) {}

    bool Done() const noexcept { return done_; }

    std::string_view Next() noexcept {
        const std::size_t end = rest_.find(kSeparator);
        const std::string_view component = rest_.substr(0, end);
        done_ = end == std::string_view::npos;
        rest_.remove_prefix(done_ ? rest_.size() : end + 1);
        return component;
    }

  private:
    std::string_view rest_;
    bool done_;
};

// kBadPath for an empty component, kInvalidParameter for what is no name and for a depth beyond the
// limit.
Status CheckPath(std::string_view path) noexcept;

}  // namespace regstore

#endif  // REGSTORE_NAMES_H
