// One alert of the queue and the JSON text in which its file holds it (docs/queue.md).
//
// Conventions
//  1. Texts of the item are as the registry stores them (EUC-JP, any bytes); every other text is
//     UTF-8. In the file everything is UTF-8; a byte that is no EUC-JP is U+F700 + byte.
//  2. Times are seconds since 1970-01-01 00:00 UTC.
//  3. No function throws anything but std::bad_alloc.
#ifndef QUEUESTORE_ENTRY_H
#define QUEUESTORE_ENTRY_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace queuestore {

// What AMQueNewAdd was given, slot by slot.
struct Item {
    std::uint32_t kind = 0;
    std::string log;
    std::string source;
    std::uint32_t level = 0;
    std::uint64_t root = 0;
    std::string destination;
    std::uint32_t time = 0;
    std::string computer;
    std::string message;
    std::string reporter;
    std::uint32_t report_level = 0;
    std::string data;   // bytes
    std::string extra;  // bytes
    std::array<std::string, 4> texts;
    std::uint32_t count = 0;
    std::uint32_t flags = 0;
    std::uint64_t context = 0;
    std::string note;

    bool operator==(const Item &) const = default;
};

// What became of the attempts to deliver it.
struct Delivery {
    std::uint32_t tries = 0;    // begun, whatever became of them
    std::int64_t last_try = 0;  // 0: none yet
    std::int64_t next_try = 0;  // not before this time
    std::string reason;         // why the last try failed; empty without one

    bool operator==(const Delivery &) const = default;
};

struct Entry {
    std::string id;          // the file's name without its ending; also the event's id
    std::string message_id;  // "<...>", the same for every try
    std::int64_t queued = 0;
    Item item;
    Delivery delivery;

    bool operator==(const Entry &) const = default;
};

// The most that a file may have, and the version of its form.
inline constexpr std::size_t kMaxFileSize = std::size_t{2} << 20;
inline constexpr int kFormat = 1;

// A new id: the time of its making and 64 random bits. Ids sort by time.
std::string NewId();

// True for a text that NewId could have made.
bool IsId(std::string_view text);

// "<id@computer>"; a computer whose name is no domain name is "localhost".
std::string MessageIdOf(std::string_view id, std::string_view computer);

// The file's text, ending with a line feed.
std::string Format(const Entry &entry);

// Reads a file's bytes. False with *problem filled (one sentence, no full stop) when anything is
// missing or wrong; *entry is then unspecified.
bool Parse(std::string_view bytes, Entry *entry, std::string *problem);

}  // namespace queuestore

#endif  // QUEUESTORE_ENTRY_H
