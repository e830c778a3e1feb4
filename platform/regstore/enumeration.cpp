#include "regstore/enumeration.h"

#include <algorithm>

#include "cursor.h"
#include "page.h"

namespace regstore {

namespace {

// How far a window goes: items, and bytes of their copies.
constexpr std::uint32_t kMaxReadAhead = 256;
constexpr std::size_t kMaxCopiedWindow = 16384;

// Where LMDB's pages begin on this machine matters for speed alone.
constexpr std::uintptr_t kPageSize = 4096;
constexpr std::size_t kCacheLine = 64;

std::uintptr_t PageOf(std::string_view bytes) noexcept {
    return reinterpret_cast<std::uintptr_t>(bytes.data()) / kPageSize;
}

void PrefetchLines(std::string_view bytes) noexcept {
    for (std::size_t line = 0; line < bytes.size(); line += kCacheLine)
        __builtin_prefetch(bytes.data() + line);
}

RecordKind After(RecordKind kind) noexcept {
    return static_cast<RecordKind>(static_cast<unsigned char>(kind) + 1);
}

std::uint32_t Size(std::string_view text) noexcept {
    return static_cast<std::uint32_t>(text.size());
}

}  // namespace

Status Enumerator::SubKeyAt(const Snapshot &snapshot, KeyId id, std::uint32_t index,
                            SubKeyItem *item) {
    const Status status = Load(snapshot, RecordKind::kSubKey, id, index);
    if (status != Status::kSuccess)
        return status;
    const Item &found = window_[index - first_];
    *item = {found.id, Text(found.name_start, found.name_size),
             Text(found.data_start, found.data_size)};
    return Status::kSuccess;
}

Status Enumerator::ValueAt(const Snapshot &snapshot, KeyId id, std::uint32_t index,
                           ValueItem *item) {
    Status status = Load(snapshot, RecordKind::kValueList, id, index);
    if (status != Status::kSuccess)
        return status;
    const Item &found = window_[index - first_];
    const std::string_view name = Text(found.name_start, found.name_size);
    if (found.has_data) {
        *item = {name, found.type, Text(found.data_start, found.data_size)};
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

// Replaces the window by one that has the item: whole records, the first of which lists it.
Status Enumerator::Fill(const Snapshot &snapshot, std::uint32_t index, std::uint32_t count) {
    Cursor cursor(snapshot);
    Position position;
    Status status = Begin(cursor, index, count, &position);
    if (status == Status::kSuccess)
        status = Walk(cursor, index, &position);
    window_.clear();
    arena_.clear();
    if (status != Status::kSuccess)
        return status;
    first_ = position.first;
    front_ = {std::string(position.key), position.first};
    const std::uint32_t end = std::min(index + read_ahead_, count);
    while (status == Status::kSuccess && position.first < end && arena_.size() < kMaxCopiedWindow) {
        status = Gather(cursor, end, count, &position);
        // What a listing reads next comes into the cache while this is copied, or handed out.
        if (status == Status::kSuccess && position.first < count && read_ahead_ > 1)
            Prefetch(position);
        if (status == Status::kSuccess)
            status = AppendGathered();
        if (status == Status::kSuccess && position.first < end)
            status = Count(&position);
    }
    back_ = {std::string(gathered_.back().key), gathered_.back().first};
    return status;
}

// Takes what is copied in one go into `gathered_`: a part of a list of values, or the sub-keys on
// the cursor's page as far as they are wanted. Goes on to the record behind, if there is one,
// without a look at its bytes.
Status Enumerator::Gather(Cursor &cursor, std::uint32_t end, std::uint32_t count,
                          Position *position) {
    const std::uintptr_t page = PageOf(position->key);
    gathered_.clear();
    for (;;) {
        gathered_.push_back(*position);
        position->first += position->count;
        if (position->first >= count)
            return Status::kSuccess;
        const Status status = cursor.Next(&position->key, &position->bytes);
        if (status != Status::kSuccess || kind_ == RecordKind::kValueList ||
            position->first >= end || PageOf(position->key) != page)
            return status;
    }
}

// Fetches a part of a list, or what is used of the page on which sub-keys stand.
void Enumerator::Prefetch(const Position &position) const {
    if (kind_ == RecordKind::kValueList) {
        PrefetchLines(position.bytes);
        return;
    }
    const char *const begin = position.key.data();
    const std::string_view page(begin - reinterpret_cast<std::uintptr_t>(begin) % kPageSize,
                                kPageSize);
    PrefetchLines(page.substr(0, PageLower(page)));
    PrefetchLines(page.substr(std::min<std::size_t>(PageUpper(page), kPageSize)));
}

// Takes the cursor to the record nearest to the item whose number is known: the last window's front
// or back, the key's first or last record.
Status Enumerator::Begin(Cursor &cursor, std::uint32_t index, std::uint32_t count,
                         Position *position) const {
    const auto distance = [index](const Listing &listing) {
        return listing.first > index ? listing.first - index : index - listing.first;
    };
    const Listing &near = distance(back_) <= distance(front_) ? back_ : front_;
    const std::uint32_t from_end = count - 1 - index;
    Status status = Status::kSuccess;
    if (!window_.empty() && distance(near) <= std::min(index, from_end)) {
        status = cursor.Find(near.key, &position->key, &position->bytes);
        position->first = near.first;
    } else if (index <= from_end) {
        status = cursor.Seek(RecordKey(id_, kind_).View(), &position->key, &position->bytes);
        position->first = 0;
    } else {
        status = cursor.Seek(RecordKey(id_, After(kind_)).View(), &position->key, &position->bytes);
        status = status == Status::kNotFound ? cursor.Last(&position->key, &position->bytes)
                                             : cursor.Previous(&position->key, &position->bytes);
        if (status == Status::kSuccess)
            status = Count(position);
        position->first = count - position->count;
    }
    return status == Status::kSuccess ? Count(position) : status;
}

// Goes on from record to record to the one that lists the item.
Status Enumerator::Walk(Cursor &cursor, std::uint32_t index, Position *position) const {
    Status status = Status::kSuccess;
    while (status == Status::kSuccess) {
        if (index < position->first) {
            status = cursor.Previous(&position->key, &position->bytes);
            if (status == Status::kSuccess)
                status = Count(position);
            position->first -= position->count;
        } else if (index - position->first >= position->count) {
            position->first += position->count;
            status = cursor.Next(&position->key, &position->bytes);
            if (status == Status::kSuccess)
                status = Count(position);
        } else {
            break;
        }
    }
    return status;
}

// How many items the record lists; kStoreFailed for one that lists none of this key.
Status Enumerator::Count(Position *position) const {
    RecordPlace place;
    position->count = 0;
    if (!ParseRecordKey(position->key, &place) || place.id != id_ || place.kind != kind_)
        return Status::kStoreFailed;
    position->count = kind_ == RecordKind::kSubKey ? 1 : ListPart(0, position->bytes).Count();
    return position->count == 0 ? Status::kStoreFailed : Status::kSuccess;
}

// The texts of the values are those of the part, which is copied whole: one stretch of bytes comes
// into the cache faster than pieces of it, each of which tells where the next one is.
Status Enumerator::AppendValues(std::string_view bytes) {
    const std::size_t start = arena_.size();
    arena_.append(bytes);
    ListPart part(0, std::string_view(arena_).substr(start));
    for (ListedValue value; part.Next(&value);) {
        if (value.name.size() > kMaxName)
            return Status::kStoreFailed;
        Item item = {};
        item.name_start = Start(value.name);
        item.name_size = Size(value.name);
        item.has_data = value.has_data;
        item.type = value.type;
        item.data_start = value.has_data ? Start(value.data) : 0;
        item.data_size = Size(value.data);
        window_.push_back(item);
    }
    return part.IsFinished() ? Status::kSuccess : Status::kStoreFailed;
}

// Copies the items of the gathered records to the end of the window.
Status Enumerator::AppendGathered() {
    Status status = Status::kSuccess;
    for (const Position &position : gathered_) {
        if (status == Status::kSuccess)
            status = Append(position);
    }
    return status;
}

Status Enumerator::Append(const Position &position) {
    RecordPlace place;
    if (!ParseRecordKey(position.key, &place) || place.id != id_ || place.kind != kind_)
        return Status::kStoreFailed;
    return kind_ == RecordKind::kSubKey ? AppendSubKey(place.rest, position.bytes)
                                        : AppendValues(position.bytes);
}

Status Enumerator::AppendSubKey(std::string_view folded_name, std::string_view bytes) {
    SubKeyRecord record;
    if (!ParseSubKey(bytes, &record))
        return Status::kStoreFailed;
    Item item = {};
    item.id = record.id;
    item.name_start = Size(arena_);
    item.name_size = Size(folded_name);
    AppendSpelledName(folded_name, record.small_letters, &arena_);
    item.data_start = Size(arena_);
    item.data_size = Size(record.class_text);
    arena_.append(record.class_text);
    window_.push_back(item);
    return Status::kSuccess;
}

}  // namespace regstore
