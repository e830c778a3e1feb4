// The one hash of the store, for checksums and for comparing names in little memory.
#ifndef REGSTORE_HASH_H
#define REGSTORE_HASH_H

#include <cstdint>
#include <string_view>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace regstore {

inline std::uint64_t Hash(std::string_view bytes, std::uint64_t seed = 0) noexcept {
    return XXH3_64bits_withSeed(bytes.data(), bytes.size(), seed);
}

}  // namespace regstore

#endif  // REGSTORE_HASH_H
