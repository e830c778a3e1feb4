// Code conversion of Shift-JIS texts.
#ifndef AGENT_CONVERSION_H
#define AGENT_CONVERSION_H

#include <optional>
#include <string>
#include <string_view>

namespace agent {

// The half-width katakana of a Shift-JIS text as full-width ones, everything else as it stands. A
// lead byte at the end of the text stands for itself.
std::string WidenKatakana(std::string_view sjis);

// A text of code page 932 in EUC-JP-MS; none when it is not well formed.
std::optional<std::string> SjisToEuc(std::string_view sjis);

}  // namespace agent

#endif  // AGENT_CONVERSION_H
