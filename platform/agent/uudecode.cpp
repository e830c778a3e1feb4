#include "uudecode.h"

#include <sodium.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace agent {
namespace {

constexpr std::string_view kHistoricalBegin = "begin ";
constexpr std::string_view kHistoricalEnd = "end";
constexpr std::string_view kBase64Begin = "begin-base64 ";
constexpr std::string_view kBase64End = "====";
constexpr char kEndOfFile = '\x1A';

// Takes the lines of a text one after another, without their line ends.
class LineReader {
  public:
    explicit LineReader(std::string_view text) : rest_(text) {}

    std::optional<std::string_view> Next() {
        if (rest_.empty()) {
            return std::nullopt;
        }
        const std::size_t end = rest_.find('\n');
        std::string_view line = rest_.substr(0, end);
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        if (end != std::string_view::npos && !line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        return line;
    }

    std::string_view Rest() const { return rest_; }

  private:
    std::string_view rest_;
};

std::string_view WithoutTrailingBlanks(std::string_view line) {
    const std::size_t last = line.find_last_not_of(' ');
    return last == std::string_view::npos ? std::string_view{} : line.substr(0, last + 1);
}

// "<octal mode> <name>", the rest of a begin line.
bool IsModeAndName(std::string_view text) {
    const std::size_t mode_end = text.find(' ');
    if (mode_end == 0 || mode_end == std::string_view::npos || mode_end > 4) {
        return false;
    }
    const std::string_view mode = text.substr(0, mode_end);
    return mode.find_first_not_of("01234567") == std::string_view::npos &&
           !WithoutTrailingBlanks(text.substr(mode_end + 1)).empty();
}

std::optional<std::string_view> After(std::string_view text, std::string_view prefix) {
    if (text.substr(0, prefix.size()) != prefix) {
        return std::nullopt;
    }
    return text.substr(prefix.size());
}

// The last line ends the text, one 0x1A behind it allowed. It may stand in the end line itself,
// when that has no line end.
bool IsEnd(std::string_view line, std::string_view end, std::string_view rest) {
    if (rest.empty() && line.size() == end.size() + 1 && line.back() == kEndOfFile) {
        line.remove_suffix(1);
    } else if (rest.size() == 1 && rest.front() == kEndOfFile) {
        rest = {};
    }
    return line == end && rest.empty();
}

// The historical body: a length character and groups of four characters of six bits.
class HistoricalBody {
  public:
    explicit HistoricalBody(LineReader *lines) : lines_(lines) {}

    std::optional<std::string> Decode() {
        for (;;) {
            const auto line = lines_->Next();
            if (!line) {
                return std::nullopt;
            }
            const std::string_view encoded = WithoutTrailingBlanks(*line);
            const auto length = encoded.empty() ? 0 : SixBits(encoded.front());
            if (!length) {
                return std::nullopt;
            }
            if (*length == 0) {
                return encoded.size() <= 1 && AtEnd() ? std::optional(decoded_) : std::nullopt;
            }
            if (!DecodeLine(encoded.substr(1), *length)) {
                return std::nullopt;
            }
        }
    }

  private:
    static std::optional<unsigned> SixBits(char character) {
        if (character < ' ' || character > '`') {
            return std::nullopt;
        }
        return static_cast<unsigned>(character - ' ') & 0x3Fu;
    }

    bool AtEnd() {
        const auto line = lines_->Next();
        return line && IsEnd(*line, kHistoricalEnd, lines_->Rest());
    }

    // Trailing blanks, which stand for zeros, may have been stripped on the way. An encoder writes
    // all its zeros as blanks or all as grave accents, so that after one of those a short line is a
    // damaged one.
    bool DecodeLine(std::string_view encoded, unsigned length) {
        const std::size_t needed = (std::size_t{length} + 2) / 3 * 4;
        has_grave_ = has_grave_ || encoded.find('`') != std::string_view::npos;
        has_short_line_ = has_short_line_ || encoded.size() < needed;
        if (encoded.size() > needed || (has_grave_ && has_short_line_)) {
            return false;
        }
        std::string group(4, ' ');
        for (unsigned done = 0; done < length; done += 3) {
            const std::size_t at = std::min(std::size_t{done} / 3 * 4, encoded.size());
            const std::string_view present = encoded.substr(at, 4);
            std::fill(group.begin(), group.end(), ' ');
            std::copy(present.begin(), present.end(), group.begin());
            if (!DecodeGroup(group, std::min(3u, length - done))) {
                return false;
            }
        }
        return true;
    }

    bool DecodeGroup(std::string_view group, unsigned count) {
        unsigned bits = 0;
        for (const char character : group) {
            const auto value = SixBits(character);
            if (!value) {
                return false;
            }
            bits = bits << 6 | *value;
        }
        for (unsigned i = 0; i < count; ++i) {
            decoded_ += static_cast<char>(bits >> (16 - 8 * i));
        }
        return true;
    }

    LineReader *lines_;
    std::string decoded_;
    bool has_grave_ = false;
    bool has_short_line_ = false;
};

std::optional<std::string> DecodeBase64(const std::string &encoded) {
    std::string decoded(encoded.size() / 4 * 3 + 3, '\0');
    std::size_t size = 0;
    if (sodium_base642bin(reinterpret_cast<unsigned char *>(decoded.data()), decoded.size(),
                          encoded.data(), encoded.size(), nullptr, &size, nullptr,
                          sodium_base64_VARIANT_ORIGINAL) != 0) {
        return std::nullopt;
    }
    decoded.resize(size);
    return decoded;
}

std::optional<std::string> DecodeBase64Body(LineReader *lines) {
    std::string encoded;
    for (;;) {
        const auto line = lines->Next();
        if (!line) {
            return std::nullopt;
        }
        if (IsEnd(*line, kBase64End, lines->Rest())) {
            return DecodeBase64(encoded);
        }
        encoded += WithoutTrailingBlanks(*line);
    }
}

}  // namespace

std::optional<std::string> UuDecode(std::string_view text) {
    LineReader lines(text);
    const std::string_view first = lines.Next().value_or("");
    if (const auto rest = After(first, kHistoricalBegin); rest && IsModeAndName(*rest)) {
        return HistoricalBody(&lines).Decode();
    }
    if (const auto rest = After(first, kBase64Begin); rest && IsModeAndName(*rest)) {
        return DecodeBase64Body(&lines);
    }
    return std::nullopt;
}

}  // namespace agent
