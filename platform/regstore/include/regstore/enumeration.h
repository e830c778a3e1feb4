// Listing a key's sub-keys and values by index.
//
// The store counts nothing inside its tree, so that an index must be walked to, from the nearer
// end. One thread's Enumerator therefore remembers where its last call ended and, when calls follow
// each other, reads ahead a window of items. State: `window_` holds copies of the items number
// `first_` and on of one key and kind, taken from the state `transaction_id_` of the store, when
// the key's shape was `shape_`. While the store's state is the same the items are handed out from
// there. When it is another, but the key's shape is not, the numbers still hold and only the items
// are read again. When the shape changed, nothing holds.
#ifndef REGSTORE_ENUMERATION_H
#define REGSTORE_ENUMERATION_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "regstore/snapshot.h"

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
    // A copied item; its texts stand in `arena_`. Data that is too large for a copy is looked up by
    // the item's name when it is handed out.
    struct Item {
        std::uint32_t key_start;  // of the record that lists the item
        std::uint32_t key_size;
        std::uint32_t name_size;  // follows the key
        std::uint32_t data_size;  // follows the name, when copied; of a sub-key its class
        bool data_copied;
        std::uint32_t type;
        KeyId id;
    };

    Status Load(const Snapshot &snapshot, RecordKind kind, KeyId id, std::uint32_t index);
    bool Holds(const Snapshot &snapshot, RecordKind kind, KeyId id, std::uint32_t index) const;
    Status Fill(const Snapshot &snapshot, std::uint32_t index, std::uint32_t count);
    Status Walk(class Cursor &cursor, std::uint32_t index, std::uint32_t count,
                std::string_view *key, std::string_view *bytes);
    void AppendText(std::string_view text, std::uint32_t *size);
    Status Append(class Cursor &values, std::string_view key, std::string_view bytes);
    Status FindNear(class Cursor &cursor, std::string_view wanted, std::string_view *key,
                    std::string_view *bytes) const;
    Status AppendValue(class Cursor &values, std::string_view name, Item *item);
    std::string_view Text(std::uint32_t start, std::uint32_t size) const {
        return std::string_view(arena_).substr(start, size);
    }

    RecordKind kind_ = RecordKind::kEnd;
    KeyId id_ = 0;
    std::size_t transaction_id_ = 0;
    std::uint64_t shape_ = 0;
    std::uint32_t first_ = 0;
    std::uint32_t read_ahead_ = 1;
    std::vector<Item> window_;
    std::string arena_;
};

}  // namespace regstore

#endif  // REGSTORE_ENUMERATION_H
