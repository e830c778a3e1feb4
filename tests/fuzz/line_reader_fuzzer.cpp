// The line reader and the two plain text files that are read through it, from any bytes: no byte
// past a capacity, an end after finitely many calls, intervals and values within their limits.
#include <keyfd/disk_lines.h>
#include <keyfd/heartbeat_text.h>
#include <keyfd/item_parser.h>
#include <keyfd/keyfd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "support/key_disk.h"

using fuzz_support::Expect;

namespace {

constexpr LONG kFile = 0x100;

void ReadLines(DWORD capacity, std::size_t size) {
    const AutoMemory<char> line(static_cast<char *>(std::malloc(capacity)));
    DWORD position = 0;
    DWORD stored = 0;
    Expect(GetFileLine(READER_RESET, nullptr, nullptr, nullptr) != FALSE);
    for (std::size_t calls = 0; position < size; ++calls) {
        stored = capacity;
        Expect(GetFileLine(kFile, line.Get(), &stored, &position) != FALSE);
        Expect(stored >= 1 && stored <= capacity);
        Expect(calls <= 2 * size + 2);
    }
}

bool TakeItem(const ITEM_VALUE &value, void *) noexcept {
    Expect(std::strlen(value.lpszText) <= KEYDISK_MAX_VALUE);
    return true;
}

// The lines of a file to a parser, as the import hands them on.
template <typename Take>
void WalkFile(Take take) {
    DISK_LINES lines = {{}, "", "", "", false, {}};
    Expect(OpenDiskLines(&lines, "file"));
    while (NextDiskLine(&lines) == DISK_LINE_READ && take(lines.szText)) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 3) {
        return 0;
    }
    const std::string_view file(reinterpret_cast<const char *>(data) + 3, size - 3);
    const std::size_t read_size = data[1];
    const ITEM_LANGUAGE language = data[2] % 2 == 0 ? ITEM_ENGLISH : ITEM_JAPANESE;

    fuzz_support::SetFile(file, read_size);
    ReadLines(1 + static_cast<DWORD>(data[0]), file.size());

    fuzz_support::SetFile(file, read_size);
    ITEM_PARSER items;
    StartItems(&items, ADDRESS_RULES, language, TakeItem, nullptr);
    WalkFile([&](const char *line) { return TakeItemLine(&items, line, std::strlen(line)); });
    (void)TakeItemsEnd(&items);

    fuzz_support::SetFile(file, read_size);
    HEARTBEAT_PARSER interval = HEARTBEAT_START;
    WalkFile([&](const char *line) { return TakeHeartbeatLine(&interval, line); });
    Expect(interval.nLines <= 3);
    return 0;
}
