#include "conversion.h"

#include <iconv.h>
#include <ntwin32/system.h>

#include <cstddef>
#include <cstdint>

#include "katakana.h"

namespace agent {
namespace {

constexpr char kFrom[] = "CP932";
constexpr char kTo[] = "EUC-JP-MS";

void AppendCharacter(std::uint16_t character, std::string *text) {
    *text += static_cast<char>(character >> 8);
    *text += static_cast<char>(character & 0xFF);
}

// The joined character of a katakana and the mark behind it; 0 when they do not join.
std::uint16_t Joined(const Katakana &katakana, std::string_view behind) {
    const auto mark = behind.empty() ? '\0' : static_cast<unsigned char>(behind.front());
    if (mark == kVoicedMark) {
        return katakana.voiced;
    }
    return mark == kSemiVoicedMark ? katakana.semi_voiced : 0;
}

// Appends the full-width form of what begins `text` and gives the number of bytes that it took.
std::size_t AppendKatakana(std::string_view text, std::string *wide) {
    const Katakana &katakana =
        kKatakana[static_cast<unsigned char>(text.front()) - std::size_t{kFirstKatakana}];
    const std::uint16_t joined = Joined(katakana, text.substr(1));
    AppendCharacter(joined != 0 ? joined : katakana.plain, wide);
    return joined != 0 ? 2 : 1;
}

class Iconv {
  public:
    Iconv() noexcept : handle_(::iconv_open(kTo, kFrom)) {}
    ~Iconv() {
        if (IsOpen()) {
            ::iconv_close(handle_);
        }
    }
    Iconv(const Iconv &) = delete;
    Iconv &operator=(const Iconv &) = delete;

    bool IsOpen() const noexcept { return handle_ != reinterpret_cast<iconv_t>(-1); }
    iconv_t Get() const noexcept { return handle_; }

  private:
    iconv_t handle_;
};

}  // namespace

std::string WidenKatakana(std::string_view sjis) {
    std::string wide;
    wide.reserve(sjis.size() * 2);
    while (!sjis.empty()) {
        const auto byte = static_cast<unsigned char>(sjis.front());
        std::size_t taken = 0;
        if (IsKatakana(byte)) {
            taken = AppendKatakana(sjis, &wide);
        } else {
            taken = IsDBCSLeadByte(byte) != FALSE && sjis.size() > 1 ? 2 : 1;
            wide += sjis.substr(0, taken);
        }
        sjis.remove_prefix(taken);
    }
    return wide;
}

std::optional<std::string> SjisToEuc(std::string_view sjis) {
    const Iconv conversion;
    if (!conversion.IsOpen()) {
        return std::nullopt;
    }
    // No character grows to more than twice its size: one byte to two, two bytes to three.
    std::string euc(sjis.size() * 2, '\0');
    std::string source(sjis);
    char *in = source.data();
    char *out = euc.data();
    std::size_t in_left = source.size();
    std::size_t out_left = euc.size();
    const std::size_t result = ::iconv(conversion.Get(), &in, &in_left, &out, &out_left);
    if (result == static_cast<std::size_t>(-1)) {
        return std::nullopt;
    }
    euc.resize(euc.size() - out_left);
    return euc;
}

}  // namespace agent
