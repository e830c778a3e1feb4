// Files that the commands read and write.
#ifndef VELOXCTL_FILES_H
#define VELOXCTL_FILES_H

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace veloxctl {

// The largest file that a command takes.
inline constexpr std::size_t kMaxFileBytes = std::size_t{512} << 20;

// A whole file; "-" is standard input. Fails, naming the file, when it cannot be read or is larger.
std::string ReadFile(const std::string &path, std::size_t limit = kMaxFileBytes);

// Writes a whole file: beside its place first, then moved there, so that there is never half a
// file. Fails (EX_CANTCREAT) when something stands there and replace is false. A device or a pipe
// is written to as it stands.
void WriteFile(const std::string &path, std::string_view bytes, mode_t mode, bool replace);

}  // namespace veloxctl

#endif  // VELOXCTL_FILES_H
