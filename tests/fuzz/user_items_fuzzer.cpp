// The user-information reader's parser, on any text: no read past its size, and only whole texts
// within their limit are handed out.
#include <records/key_disk.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "registry/handles.h"
#include "support/key_disk.h"
#include "user_items.h"
#include "velox/user_information.h"

using fuzz_support::Expect;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    // A copy of exactly its size, so that a read past it is seen.
    const AutoMemory<char> text(static_cast<char *>(std::malloc(size)));
    std::memcpy(text.Get(), data, size);

    char *information[USR_INFO_ITEM_COUNT] = {};
    const auto length = static_cast<DWORD>(strnlen(text.Get(), size));
    const LONG result = ReadUserItems(text.Get(), length, information);
    Expect(result == USR_INFO_JAPANESE || result == USR_INFO_ENGLISH || result == USR_INFO_FAILED);
    for (char *value : information) {
        if (value != nullptr) {
            const std::size_t value_length = std::strlen(value);
            Expect(value_length > 0 && value_length <= KEYDISK_MAX_VALUE);
        }
        std::free(value);
    }
    return 0;
}
