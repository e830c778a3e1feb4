// The uuencode form: no input may crash the reader, and what it read must survive the writer.
#include <cstdint>
#include <cstdlib>

#include "uudecode.h"
#include "uuencode.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const auto decoded = agent::UuDecode({reinterpret_cast<const char *>(data), size});
    if (!decoded) {
        return 0;
    }
    std::string encoded(agent::UuEncodedSize(decoded->size()), '\0');
    agent::UuEncode(decoded->data(), decoded->size(), encoded.data());
    if (agent::UuDecode(encoded) != decoded) {
        std::abort();
    }
    return 0;
}
