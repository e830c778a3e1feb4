#include "regstore/enumeration.h"

#include <algorithm>

#include "cursor.h"

namespace regstore {

namespace {

// How far a window goes: items, and bytes of their copies.
constexpr std::uint32_t kMaxReadAhead = 512;
constexpr std::size_t kMaxCopiedWindow = 32768;
constexpr std::size_t kMaxCopiedData = 512;
// How many records the search for a value steps to before it goes down the tree.
constexpr int kMostSteps = 2;

RecordKind After(RecordKind kind) noexcept {
    return static_cast<RecordKind>(static_cast<unsigned char>(kind) + 1);
}

std::uint32_t Size(std::string_view text) noexcept {
    return static_cast<std::uint32_t>(text.size());
}

// Goes on from a cursor's position, unless it was not reached.
Status Step(Cursor &cursor, Status status, bool backwards, std::uint32_t steps,
            std::string_view *key, std::string_view *bytes) {
    for (; steps > 0 && status == Status::kSuccess; --steps)
        status = backwards ? cursor.Previous(key, bytes) : cursor.Next(key, bytes);
    return status;
}

}  // namespace

Status Enumerator::SubKeyAt(const Snapshot &snapshot, KeyId id, std::uint32_t index,
                            SubKeyItem *item) {
    const Status status = Load(snapshot, RecordKind::kSubKey, id, index);
    if (status != Status::kSuccess)
        return status;
    const Item &found = window_[index - first_];
    const std::uint32_t name_start = found.key_start + found.key_size;
    *item = {found.id, Text(name_start, found.name_size),
             Text(name_start + found.name_size, found.data_size)};
    return Status::kSuccess;
}

Status Enumerator::ValueAt(const Snapshot &snapshot, KeyId id, std::uint32_t index,
                           ValueItem *item) {
    Status status = Load(snapshot, RecordKind::kValueOrder, id, index);
    if (status != Status::kSuccess)
        return status;
    const Item &found = window_[index - first_];
    const std::uint32_t name_start = found.key_start + found.key_size;
    const std::string_view name = Text(name_start, found.name_size);
    if (found.data_copied) {
        *item = {name, found.type, Text(name_start + found.name_size, found.data_size)};
        return Status::kSuccess;
    }
    ValueRecord value;
    status = FindValue(snapshot, id, name, &value);
    if (status == Status::kSuccess)
        *item = {name, value.type, value.data};
    return status == Status::kNotFound ? Status::kStoreFailed : status;
}

bool Enumerator::Holds(const Snapshot &snapshot, RecordKind kind, KeyId id,
                       std::uint32_t index) const {
    return kind == kind_ && id == id_ && index - first_ < window_.size() &&
           mdb_txn_id(snapshot.transaction) == transaction_id_;
}

// Sees to it that the window holds the item.
Status Enumerator::Load(const Snapshot &snapshot, RecordKind kind, KeyId id, std::uint32_t index) {
    if (Holds(snapshot, kind, id, index))
        return Status::kSuccess;
    KeyRecord record;
    Status status = FindKeyRecord(snapshot, id, &record);
    if (status != Status::kSuccess)
        return status;
    const std::uint32_t count = kind == RecordKind::kSubKey ? record.sub_keys : record.values;
    if (index >= count)
        return Status::kNoMoreItems;
    const bool same = kind == kind_ && id == id_ && record.shape == shape_;
    const bool consecutive = same && index == first_ + window_.size();
    read_ahead_ = consecutive ? std::min(read_ahead_ * 2, kMaxReadAhead) : 1;
    if (!same)
        window_.clear();
    kind_ = kind;
    id_ = id;
    shape_ = record.shape;
    transaction_id_ = mdb_txn_id(snapshot.transaction);
    status = Fill(snapshot, index, count);
    if (status != Status::kSuccess)
        window_.clear();
    return status == Status::kNotFound ? Status::kStoreFailed : status;
}

// Replaces the window by one that begins with the item.
Status Enumerator::Fill(const Snapshot &snapshot, std::uint32_t index, std::uint32_t count) {
    Cursor cursor(snapshot);
    Cursor values(snapshot);
    std::string_view key;
    std::string_view bytes;
    Status status = Walk(cursor, index, count, &key, &bytes);
    window_.clear();
    arena_.clear();
    first_ = index;
    const std::uint32_t wanted = std::min(read_ahead_, count - index);
    while (status == Status::kSuccess) {
        status = Append(values, key, bytes);
        if (status != Status::kSuccess || window_.size() == wanted ||
            arena_.size() >= kMaxCopiedWindow)
            break;
        status = cursor.Next(&key, &bytes);
    }
    return status;
}

// Takes the cursor to the item from the nearest place that is known: the last window, the first or
// the last item.
Status Enumerator::Walk(Cursor &cursor, std::uint32_t index, std::uint32_t count,
                        std::string_view *key, std::string_view *bytes) {
    const auto size = static_cast<std::uint32_t>(window_.size());
    const std::uint32_t near =
        size == 0 ? 0 : std::clamp(index, first_, first_ + size - 1);  // within the window
    const std::uint32_t from_window = near > index ? near - index : index - near;
    const std::uint32_t from_end = count - 1 - index;
    if (size != 0 && from_window <= std::min(index, from_end)) {
        const Item &item = window_[near - first_];
        const Status status = cursor.Find(Text(item.key_start, item.key_size), key, bytes);
        return Step(cursor, status, near > index, from_window, key, bytes);
    }
    if (index <= from_end) {
        const Status status = cursor.Seek(RecordKey(id_, kind_).View(), key, bytes);
        return Step(cursor, status, false, index, key, bytes);
    }
    Status status = cursor.Seek(RecordKey(id_, After(kind_)).View(), key, bytes);
    status = status == Status::kNotFound ? cursor.Last(key, bytes) : cursor.Previous(key, bytes);
    return Step(cursor, status, true, from_end, key, bytes);
}

void Enumerator::AppendText(std::string_view text, std::uint32_t *size) {
    *size = Size(text);
    arena_.append(text);
}

// Copies one item to the end of the window.
Status Enumerator::Append(Cursor &values, std::string_view key, std::string_view bytes) {
    RecordPlace place;
    if (!ParseRecordKey(key, &place) || place.id != id_ || place.kind != kind_)
        return Status::kStoreFailed;
    Item item = {};
    item.key_start = Size(arena_);
    item.key_size = Size(key);
    arena_.append(key);
    if (kind_ == RecordKind::kSubKey) {
        SubKeyRecord record;
        if (!ParseSubKey(bytes, &record))
            return Status::kStoreFailed;
        item.id = record.id;
        AppendText(record.name, &item.name_size);
        AppendText(record.class_text, &item.data_size);
    } else {
        std::string_view name;
        if (!ParseValueOrder(bytes, &name))
            return Status::kStoreFailed;
        AppendText(name, &item.name_size);
        const Status status = AppendValue(values, name, &item);
        if (status != Status::kSuccess)
            return status;
    }
    window_.push_back(item);
    return Status::kSuccess;
}

// Takes the cursor to the record with this key. Values that were created in the order of their
// names, or with counted names, lie side by side or with another one between them: a step costs a
// fraction of a search.
Status Enumerator::FindNear(Cursor &cursor, std::string_view wanted, std::string_view *key,
                            std::string_view *bytes) const {
    Status status = window_.empty() ? Status::kNotFound : Status::kSuccess;
    for (int steps = 0; steps < kMostSteps && status == Status::kSuccess; ++steps) {
        status = cursor.Next(key, bytes);
        const int order = status == Status::kSuccess ? key->compare(wanted) : 1;
        if (order == 0)
            return Status::kSuccess;
        if (order > 0)
            break;
    }
    return cursor.Find(wanted, key, bytes);
}

// Type and data of a value.
Status Enumerator::AppendValue(Cursor &values, std::string_view name, Item *item) {
    if (name.size() > kMaxName)
        return Status::kStoreFailed;
    std::string_view key;
    std::string_view bytes;
    ValueRecord value;
    const RecordKey wanted(id_, RecordKind::kValue, name);
    const Status status = FindNear(values, wanted.View(), &key, &bytes);
    if (status != Status::kSuccess)
        return status;
    if (!ParseValue(bytes, &value))
        return Status::kStoreFailed;
    item->type = value.type;
    item->data_size = Size(value.data);
    item->data_copied = value.data.size() <= kMaxCopiedData;
    if (item->data_copied)
        arena_.append(value.data);
    return Status::kSuccess;
}

}  // namespace regstore
