// The customer file's text, decoded and converted, from any bytes: no read past its size, values
// and numbers within their limits, and only rows of the table.
#include <keyfd/customer_text.h>
#include <records/customer_items.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "support/key_disk.h"

using fuzz_support::Expect;

namespace {

struct Seen {
    int items = 0;
    bool last = false;
};

bool TakeItem(const ITEM_VALUE &value, void *context) noexcept {
    auto &seen = *static_cast<Seen *>(context);
    Expect(!seen.last);
    Expect(value.lpRow >= CUSTOMER_ITEMS && value.lpRow < CUSTOMER_ITEMS + CUSTOMER_ITEM_COUNT);
    Expect(std::strlen(value.lpszText) <= KEYDISK_MAX_VALUE);
    const std::size_t digits = std::strlen(value.lpszNumber);
    Expect(digits == (value.lpRow->eMatch == ITEM_NUMBERED ? 2U : 0U));
    seen.last = value.bLast;
    return ++seen.items < 1000;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const ITEM_LANGUAGE language = data[0] % 2 == 0 ? ITEM_ENGLISH : ITEM_JAPANESE;
    // A copy of exactly its size, so that a read past it is seen.
    const AutoMemory<char> text(static_cast<char *>(std::malloc(size - 1)));
    std::memcpy(text.Get(), data + 1, size - 1);

    Seen seen;
    ITEM_PARSER parser;
    StartItems(&parser, CUSTOMER_RULES, language, TakeItem, &seen);
    const bool whole = WalkCustomerText(text.Get(), static_cast<DWORD>(size - 1), &parser);
    Expect(!whole || (parser.eError == ITEM_ERROR_NONE && seen.last));
    Expect(parser.dwValueLength <= KEYDISK_MAX_VALUE && parser.line.dwLength <= KEYDISK_MAX_LINE);
    return 0;
}
