// Texts of the registry and of queued alerts, which are EUC-JP, for JSON, which is UTF-8.
#ifndef AMRVXMN_TEXT_H
#define AMRVXMN_TEXT_H

#include <string>
#include <string_view>

namespace amrvxmn {

// A byte that begins no character becomes U+FFFD.
std::string ToUtf8(std::string_view stored);

}  // namespace amrvxmn

#endif  // AMRVXMN_TEXT_H
