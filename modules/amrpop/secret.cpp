#include "secret.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include <string.h>

namespace amrpop {

namespace {

void Wipe(std::string &text) noexcept {
    ::explicit_bzero(text.data(), text.size());
}

std::string Base64(std::string_view bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t index = 0; index < bytes.size(); index += 3) {
        std::uint32_t group = 0;
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - index);
        for (std::size_t offset = 0; offset < 3; ++offset)
            group = group << 8U |
                    (offset < count ? static_cast<unsigned char>(bytes[index + offset]) : 0U);
        for (std::size_t digit = 0; digit < 4; ++digit)
            text += digit <= count ? kDigits[group >> (18U - 6U * digit) & 0x3FU] : '=';
    }
    return text;
}

}  // namespace

Password::~Password() {
    Wipe(text_);
}

Discretion::Discretion(std::string_view account, std::string_view password) {
    std::string both;
    both.reserve(account.size() + password.size() + 2);
    both.append(1, '\0').append(account).append(1, '\0').append(password);
    forms_.reserve(3);
    forms_.emplace_back(password);
    forms_.push_back(Base64(password));
    forms_.push_back(Base64(both));
    Wipe(both);
}

Discretion::~Discretion() {
    std::ranges::for_each(forms_, Wipe);
}

std::string Discretion::ShowCommand(std::string_view line) {
    constexpr std::array<std::string_view, 7> kCommands = {"CAPA", "STLS", "USER", "PASS",
                                                           "APOP", "AUTH", "QUIT"};
    const std::string_view word = line.substr(0, line.find(' '));
    if (std::ranges::find(kCommands, word) == kCommands.end())
        return "(authentication data)";
    if (word == "AUTH")
        return std::string(line.substr(0, line.find(' ', word.size() + 1)));
    return std::string(word);
}

std::string Discretion::ShowAnswer(std::string_view line) const {
    const bool repeats = std::ranges::any_of(
        forms_, [&](const std::string &form) { return line.find(form) != std::string_view::npos; });
    return repeats ? "(an answer that repeats the password)" : std::string(line);
}

}  // namespace amrpop
