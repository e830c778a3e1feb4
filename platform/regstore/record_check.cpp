#include "regstore/record_check.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "hash.h"
#include "regstore/value_list.h"

namespace regstore {

namespace {

std::string Describe(const RecordPlace &place, const char *fault) {
    static constexpr const char *kKinds[] = {"key", "sub-key", "value", "list of values"};
    char text[160];
    std::snprintf(text, sizeof text, "key %" PRIu64 ": record of kind \"%s\" %s", place.id,
                  kKinds[static_cast<std::size_t>(place.kind)], fault);
    return text;
}

std::uint64_t HashFolded(std::string_view name) noexcept {
    unsigned char folded[kMaxName];
    FoldName(name, folded);
    return Hash({reinterpret_cast<const char *>(folded), name.size()});
}

// What value and list must say alike.
std::uint64_t HashListed(const ListedValue &value) noexcept {
    return value.has_data ? Hash(value.data, value.type) : 0;
}

}  // namespace

bool RecordCheck::Visit(std::string_view key, std::string_view bytes, std::string *damage) {
    RecordPlace place;
    if (!ParseRecordKey(key, &place)) {
        *damage = "a record's key has no known form";
        return false;
    }
    if (!store_seen_ && place.id != kStoreRecord) {
        *damage = "its first record is not the store's own: damaged, or made by another version";
        return false;
    }
    if (!ChecksumHolds(key, bytes)) {
        *damage = Describe(place, "does not hold its checksum");
        return false;
    }
    bool good = false;
    switch (place.kind) {
        case RecordKind::kKey:
            if (place.id == kStoreRecord)
                return VisitStore(bytes, damage);
            good = FinishKey() && VisitKey(place, bytes);
            break;
        case RecordKind::kSubKey:
            good = VisitSubKey(place, bytes);
            break;
        case RecordKind::kValue:
            good = VisitValue(place, bytes);
            break;
        default:
            good = VisitList(place, bytes);
            break;
    }
    if (!good)
        *damage = Describe(place, "contradicts the records beside it");
    return good;
}

bool RecordCheck::Finish(std::string *damage) {
    if (!FinishKey() || !root_seen_) {
        *damage = "records of its last key are missing";
        return false;
    }
    if (largest_id_ >= store_.next_id) {
        *damage = "a key has a number that was not yet given out";
        return false;
    }
    if (!TiesAgree()) {
        *damage = "a key does not hang below its parent, or hangs there twice";
        return false;
    }
    return true;
}

bool RecordCheck::VisitStore(std::string_view bytes, std::string *damage) {
    store_seen_ = ParseStore(bytes, &store_);
    if (store_seen_ && store_.format != kFormatVersion)
        *damage = "it has format " + std::to_string(store_.format) + ", this version keeps " +
                  std::to_string(kFormatVersion);
    else if (!store_seen_ || store_.next_id < kFirstKey)
        *damage = "its own record says nothing that can be";
    else
        return true;
    return false;
}

bool RecordCheck::VisitKey(const RecordPlace &place, std::string_view bytes) {
    if (!ParseKey(bytes, &key_) || !IsName(key_.name) ||
        key_.name.find(kSeparator) != std::string_view::npos || key_.depth > kMaxDepth)
        return false;
    const bool root = place.id == kRootKey;
    if (root ? (key_.depth != 0 || !key_.name.empty() || key_.parent != 0)
             : (place.id < kFirstKey || key_.depth == 0 || key_.name.empty()))
        return false;
    id_ = place.id;
    key_open_ = true;
    root_seen_ = root_seen_ || root;
    if (!root) {
        largest_id_ = place.id;
        keys_.push_back(
            {place.id, key_.parent, key_.depth, Hash(key_.name), Hash(key_.class_text)});
        ++totals_.keys;
    }
    return true;
}

bool RecordCheck::VisitSubKey(const RecordPlace &place, std::string_view bytes) {
    SubKeyRecord record;
    if (!key_open_ || place.id != id_ || !ParseSubKey(bytes, &record))
        return false;
    std::string name;
    AppendSpelledName(place.rest, record.small_letters, &name);
    // The one way to write this record: no bit of another meaning.
    std::string same;
    FormatSubKey(RecordKey(id_, RecordKind::kSubKey, name), record.id, record.class_text, name,
                 &same);
    if (same != bytes)
        return false;
    ++sub_keys_;
    links_.push_back({record.id, id_, static_cast<std::uint16_t>(key_.depth + 1), Hash(name),
                      Hash(record.class_text)});
    return true;
}

bool RecordCheck::VisitValue(const RecordPlace &place, std::string_view bytes) {
    ValueRecord record;
    if (!key_open_ || place.id != id_ || !IsName(place.rest) || !ParseValue(bytes, &record) ||
        record.data.size() > kMaxData || record.place >= key_.next_place)
        return false;
    const ListedValue listed = Listed(record.place, place.rest, record.type, record.data);
    values_.push_back({record.place, Hash(place.rest), HashListed(listed)});
    ++totals_.values;
    return true;
}

bool RecordCheck::VisitList(const RecordPlace &place, std::string_view bytes) {
    if (!key_open_ || place.id != id_)
        return false;
    ListPart part(LoadBigEndian(place.rest), bytes);
    if (part.Count() == 0)
        return false;
    for (ListedValue value; part.Next(&value);) {
        if (!IsName(value.name) || (!list_.empty() && value.place <= list_.back().place))
            return false;
        list_.push_back({value.place, HashFolded(value.name), HashListed(value)});
    }
    return part.IsFinished();
}

// All records of one key have been seen.
bool RecordCheck::FinishKey() {
    if (!key_open_)
        return true;
    key_open_ = false;
    std::sort(values_.begin(), values_.end());
    const bool good =
        sub_keys_ == key_.sub_keys && values_.size() == key_.values && values_ == list_;
    sub_keys_ = 0;
    values_.clear();
    list_.clear();
    return good;
}

// What the keys say of themselves and what their parents say of them must be the same list. Depths
// that grow by one from the root leave no room for keys that hang below each other in a circle.
bool RecordCheck::TiesAgree() {
    const auto by_id = [](const Tie &left, const Tie &right) { return left.id < right.id; };
    const auto same = [](const Tie &left, const Tie &right) {
        return std::tie(left.id, left.parent, left.depth, left.name, left.class_text) ==
               std::tie(right.id, right.parent, right.depth, right.name, right.class_text);
    };
    std::sort(links_.begin(), links_.end(), by_id);
    return std::equal(keys_.begin(), keys_.end(), links_.begin(), links_.end(), same);
}

}  // namespace regstore
