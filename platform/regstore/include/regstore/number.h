// Numbers in records: seven bits a byte, the lowest first, the eighth bit set in all but the last
// (the unsigned LEB128 of the DWARF standard).
#ifndef REGSTORE_NUMBER_H
#define REGSTORE_NUMBER_H

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace regstore {

inline void AppendNumber(std::uint64_t number, std::string *bytes) {
    for (; number >= 0x80U; number >>= 7U)
        bytes->push_back(static_cast<char>(number | 0x80U));
    bytes->push_back(static_cast<char>(number));
}

// Takes a number from the front of *bytes; false when they end within it or it does not fit.
template <std::unsigned_integral Number>
bool TakeNumber(std::string_view *bytes, Number *number) noexcept {
    constexpr std::size_t kLongest = (std::numeric_limits<std::uint64_t>::digits + 6) / 7;
    std::uint64_t value = 0;
    const std::size_t most = std::min(bytes->size(), kLongest);
    for (std::size_t i = 0; i < most; ++i) {
        const auto byte = static_cast<unsigned char>((*bytes)[i]);
        if (i + 1 == kLongest && byte > 1)
            return false;
        value |= std::uint64_t{byte & 0x7FU} << (7 * i);
        if (byte < 0x80U) {
            bytes->remove_prefix(i + 1);
            *number = static_cast<Number>(value);
            return value <= std::numeric_limits<Number>::max();
        }
    }
    return false;
}

}  // namespace regstore

#endif  // REGSTORE_NUMBER_H
