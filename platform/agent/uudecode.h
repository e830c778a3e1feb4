// Reading the uuencode form.
#ifndef AGENT_UUDECODE_H
#define AGENT_UUDECODE_H

#include <optional>
#include <string>
#include <string_view>

namespace agent {

// What a whole encoded text holds; none when it is truncated, malformed or followed by anything but
// one 0x1A. The form is the uuencode form of POSIX with a historical or a base64 body; lines end
// with LF or CR LF.
std::optional<std::string> UuDecode(std::string_view text);

}  // namespace agent

#endif  // AGENT_UUDECODE_H
