#include "uuencode.h"

#include <algorithm>
#include <string_view>

namespace agent {
namespace {

constexpr std::string_view kBegin = "begin 644 report.txt\n";
constexpr std::string_view kEnd = "`\nend\n";
constexpr std::size_t kBytesALine = 45;

// A zero is a grave accent, not a blank, which the way to the reader may strip.
char SixBitCharacter(unsigned bits) {
    const unsigned value = bits & 0x3Fu;
    return value != 0 ? static_cast<char>(' ' + value) : '`';
}

char *EncodeLine(const unsigned char *data, std::size_t size, char *out) {
    *out++ = SixBitCharacter(static_cast<unsigned>(size));
    for (std::size_t done = 0; done < size; done += 3) {
        unsigned char group[3] = {};
        std::copy_n(data + done, std::min<std::size_t>(3, size - done), group);
        const unsigned bits = unsigned{group[0]} << 16 | unsigned{group[1]} << 8 | group[2];
        for (int shift = 18; shift >= 0; shift -= 6) {
            *out++ = SixBitCharacter(bits >> shift);
        }
    }
    *out++ = '\n';
    return out;
}

// The length character, the groups, the line end.
constexpr std::size_t LineSize(std::size_t bytes) {
    return 1 + (bytes + 2) / 3 * 4 + 1;
}

}  // namespace

std::size_t UuEncodedSize(std::size_t size) {
    const std::size_t rest = size % kBytesALine;
    return kBegin.size() + size / kBytesALine * LineSize(kBytesALine) +
           (rest != 0 ? LineSize(rest) : 0) + kEnd.size();
}

void UuEncode(const void *data, std::size_t size, char *text) {
    char *out = std::copy(kBegin.begin(), kBegin.end(), text);
    const auto *bytes = static_cast<const unsigned char *>(data);
    for (std::size_t done = 0; done < size; done += kBytesALine) {
        out = EncodeLine(bytes + done, std::min(kBytesALine, size - done), out);
    }
    std::copy(kEnd.begin(), kEnd.end(), out);
}

}  // namespace agent
