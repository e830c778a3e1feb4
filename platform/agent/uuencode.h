// Writing the uuencode form.
#ifndef AGENT_UUENCODE_H
#define AGENT_UUENCODE_H

#include <cstddef>

namespace agent {

// The size of the encoded form of `size` bytes.
std::size_t UuEncodedSize(std::size_t size);

// Writes the encoded form, exactly UuEncodedSize() bytes, to `text`.
void UuEncode(const void *data, std::size_t size, char *text);

}  // namespace agent

#endif  // AGENT_UUENCODE_H
