// Listing a key's sub-keys and values by index.
//
// The store counts nothing inside its tree, so that an index must be walked to, from the nearer
// end. One thread's Enumerator therefore remembers where its last call ended and, when calls follow
// each other, reads ahead a window of items. State: `window_` holds copies of the items number
// `first_` and on of one key and kind, those of whole records from `front_` to `back_`, taken from
// the state `transaction_id_` of the store, when the key's shape was `shape_`. While the store's
// state is the same the items are handed out from there. When it is another, but the key's shape is
// not, the numbers of both records' first items still hold and only the items are read again. When
// the shape changed, nothing holds.
#ifndef REGSTORE_ENUMERATION_H
#define REGSTORE_ENUMERATION_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "regstore/snapshot.h"
#include "regstore/value_list.h"

namespace regstore {

// The views are valid until the next call of the same enumerator, data also until the snapshot
// ends.
struct SubKeyItem {
    KeyId id = 0;
    std::string_view name;
    std::string_view class_text;
};

struct ValueItem {
    std::string_view name;
    std::uint32_t type = 0;
    std::string_view data;
};

class Enumerator {
  public:
    // kNoMoreItems past the end; kKeyDeleted or kInvalidHandle without the key.
    Status SubKeyAt(const Snapshot &snapshot, KeyId id, std::uint32_t index, SubKeyItem *item);
    Status ValueAt(const Snapshot &snapshot, KeyId id, std::uint32_t index, ValueItem *item);

  private:
    // A copied item; its texts stand in `arena_`. Data that is too long for the list is looked up
    // by the item's name when it is handed out.
    struct Item {
        std::uint32_t name_start;
        std::uint32_t name_size;
        std::uint32_t data_start;  // of a sub-key its class
        std::uint32_t data_size;
        bool has_data;
        std::uint32_t type;
        KeyId id;
    };
    // A record that lists items, and the number of its first one.
    struct Listing {
        std::string key;
        std::uint32_t first = 0;
    };
    // The same while a cursor is at it.
    struct Position {
        std::string_view key;
        std::string_view bytes;
        std::uint32_t first = 0;
        std::uint32_t count = 0;
    };

    Status Load(const Snapshot &snapshot, RecordKind kind, KeyId id, std::uint32_t index);
    bool Holds(const Snapshot &snapshot, RecordKind kind, KeyId id, std::uint32_t index) const;
    Status Fill(const Snapshot &snapshot, std::uint32_t index, std::uint32_t count);
    Status Begin(class Cursor &cursor, std::uint32_t index, std::uint32_t count,
                 Position *position) const;
    Status Walk(class Cursor &cursor, std::uint32_t index, Position *position) const;
    Status Count(Position *position) const;
    Status Gather(class Cursor &cursor, std::uint32_t end, std::uint32_t count, Position *position);
    void Prefetch(const Position &position) const;
    Status AppendGathered();
    Status Append(const Position &position);
    Status AppendSubKey(std::string_view folded_name, std::string_view bytes);
    Status AppendValues(std::string_view bytes);
    std::uint32_t Start(std::string_view text) const {
        return static_cast<std::uint32_t>(text.data() - arena_.data());
    }
    std::string_view Text(std::uint32_t start, std::uint32_t size) const {
        return std::string_view(arena_).substr(start, size);
    }

    RecordKind kind_ = RecordKind::kEnd;
    KeyId id_ = 0;
    std::size_t transaction_id_ = 0;
    std::uint64_t shape_ = 0;
    std::uint32_t first_ = 0;
    std::uint32_t read_ahead_ = 1;
    Listing front_;
    Listing back_;
    std::vector<Item> window_;
    std::vector<Position> gathered_;  // while the window is filled
    std::string arena_;
};

}  // namespace regstore

#endif  // REGSTORE_ENUMERATION_H
