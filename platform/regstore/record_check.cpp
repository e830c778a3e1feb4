#include "regstore/record_check.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "hash.h"

namespace regstore {

namespace {

std::string Describe(const RecordPlace &place, const char *fault) {
    static constexpr const char *kKinds[] = {"key", "sub-key", "value", "order of values"};
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

}  // namespace

bool RecordCheck::Visit(std::string_view key, std::string_view bytes, std::string *damage) {
    RecordPlace place;
    if (!ParseRecordKey(key, &place)) {
        *damage = "a record's key has no known form";
        return false;
    }
    if (!ChecksumHolds(key, bytes)) {
        *damage = Describe(place, "does not hold its checksum");
        return false;
    }
    bool good = false;
    switch (place.kind) {
        case RecordKind::kKey:
            good = FinishKey() &&
                   (place.id == kStoreRecord ? VisitStore(place, bytes) : VisitKey(place, bytes));
            break;
        case RecordKind::kSubKey:
            good = VisitSubKey(place, bytes);
            break;
        case RecordKind::kValue:
            good = VisitValue(place, bytes);
            break;
        default:
            good = VisitOrder(place, bytes);
            break;
    }
    if (!good)
        *damage = Describe(place, "contradicts the records beside it");
    return good;
}

bool RecordCheck::Finish(std::string *damage) {
    if (!FinishKey() || !store_seen_ || !root_seen_) {
        *damage = "the store's last records are missing";
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

bool RecordCheck::VisitStore(const RecordPlace &, std::string_view bytes) {
    store_seen_ = true;
    return ParseStore(bytes, &store_) && store_.format == kFormatVersion &&
           store_.next_id >= kFirstKey && store_.next_id != kStoreRecord;
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
    if (!key_open_ || place.id != id_ || !ParseSubKey(bytes, &record) ||
        HashFolded(record.name.substr(0, kMaxName)) != Hash(place.rest) ||
        record.name.size() != place.rest.size())
        return false;
    ++sub_keys_;
    links_.push_back({record.id, id_, static_cast<std::uint16_t>(key_.depth + 1), Hash(record.name),
                      Hash(record.class_text)});
    return true;
}

bool RecordCheck::VisitValue(const RecordPlace &place, std::string_view bytes) {
    ValueRecord record;
    if (!key_open_ || place.id != id_ || !IsName(place.rest) || !ParseValue(bytes, &record) ||
        record.data.size() > kMaxData || record.place >= key_.next_place)
        return false;
    values_.push_back({record.place, Hash(place.rest)});
    ++totals_.values;
    return true;
}

bool RecordCheck::VisitOrder(const RecordPlace &place, std::string_view bytes) {
    std::string_view name;
    if (!key_open_ || place.id != id_ || !ParseValueOrder(bytes, &name) || !IsName(name))
        return false;
    order_.push_back({LoadBigEndian(place.rest), HashFolded(name)});
    return true;
}

// All records of one key have been seen.
bool RecordCheck::FinishKey() {
    if (store_seen_)
        return !key_open_;
    if (!key_open_)
        return true;
    key_open_ = false;
    std::sort(values_.begin(), values_.end());
    const bool good =
        sub_keys_ == key_.sub_keys && values_.size() == key_.values && values_ == order_;
    sub_keys_ = 0;
    values_.clear();
    order_.clear();
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
