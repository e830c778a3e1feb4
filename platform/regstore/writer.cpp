#include "regstore/writer.h"

#include <ctime>

#include "cursor.h"

namespace regstore {

namespace {

// More keys are written back and forgotten, so that a large batch needs no large memory.
constexpr std::size_t kMaxOpenKeys = 256;
// Beyond the place of any value.
constexpr std::uint64_t kLastPlace = ~std::uint64_t{0};

// The time as FILETIME counts it.
std::uint64_t Now() noexcept {
    constexpr std::uint64_t kSecondsFrom1601To1970 = 11644473600U;
    struct timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return (static_cast<std::uint64_t>(now.tv_sec) + kSecondsFrom1601To1970) * 10'000'000U +
           static_cast<std::uint64_t>(now.tv_nsec) / 100U;
}

MDB_val ToValue(std::string_view bytes) noexcept {
    return {bytes.size(), const_cast<char *>(bytes.data())};
}

bool IsGood(Status status) noexcept {
    return status == Status::kSuccess;
}

}  // namespace

int Writer::Begin() noexcept {
    GiveUp();
    const int code = mdb_txn_begin(environment_.Handle(), nullptr, 0, &transaction_);
    if (code != MDB_SUCCESS)
        transaction_ = nullptr;
    now_ = Now();
    return code;
}

void Writer::GiveUp() noexcept {
    if (transaction_ != nullptr)
        mdb_txn_abort(transaction_);
    transaction_ = nullptr;
    keys_.clear();
    growth_ = {};
    changed_ = false;
    next_id_ = 0;
    next_id_changed_ = false;
}

Status Writer::Commit(int *code) {
    *code = MDB_SUCCESS;
    Status status = Flush();
    if (IsGood(status)) {
        MDB_txn *const transaction = transaction_;
        transaction_ = nullptr;
        *code = mdb_txn_commit(transaction);
        status = StatusFromLmdb(*code);
    }
    GiveUp();
    return status;
}

Status Writer::Put(const RecordKey &key, const std::string &bytes) {
    changed_ = true;
    MDB_val place = ToValue(key.View());
    MDB_val content = ToValue(bytes);
    return StatusFromLmdb(mdb_put(transaction_, Environment::kDatabase, &place, &content, 0));
}

Status Writer::Remove(const RecordKey &key) {
    changed_ = true;
    MDB_val place = ToValue(key.View());
    return StatusFromLmdb(mdb_del(transaction_, Environment::kDatabase, &place, nullptr));
}

// The record of a key, from the store or as this transaction changed it.
Status Writer::Load(KeyId id, OpenKey **key) {
    const auto known = keys_.find(id);
    if (known != keys_.end()) {
        *key = &known->second;
        return Status::kSuccess;
    }
    if (keys_.size() >= kMaxOpenKeys) {
        const Status status = Flush();
        if (!IsGood(status))
            return status;
    }
    KeyRecord record;
    const Status status = FindKeyRecord(Current(), id, &record);
    if (!IsGood(status))
        return status;
    OpenKey &loaded = keys_[id];
    loaded.name = record.name;
    loaded.class_text = record.class_text;
    loaded.record = record;
    *key = &loaded;
    return Status::kSuccess;
}

// Marks a key as changed now; with `shape` its sets of sub-keys and values change.
Writer::OpenKey &Writer::Touch(OpenKey *key, bool shape) {
    key->changed = true;
    key->record.last_write = now_;
    if (shape)
        ++key->record.shape;
    return *key;
}

Status Writer::WriteBack(KeyId id, OpenKey *key) {
    const RecordKey place(id, RecordKind::kKey);
    key->record.name = key->name;
    key->record.class_text = key->class_text;
    FormatKey(place, key->record, &scratch_);
    key->changed = false;
    return Put(place, scratch_);
}

Status Writer::WriteBackAll(KeyId id, OpenKey *key) {
    const Status status = StoreListEnd(id, key);
    return IsGood(status) && key->changed ? WriteBack(id, key) : status;
}

// Writes back what this transaction holds in memory.
Status Writer::Flush() {
    for (auto &[id, key] : keys_) {
        const Status status = WriteBackAll(id, &key);
        if (!IsGood(status))
            return status;
    }
    keys_.clear();
    if (!next_id_changed_)
        return Status::kSuccess;
    const RecordKey place(kStoreRecord, RecordKind::kKey);
    FormatStore(place, {kFormatVersion, next_id_}, &scratch_);
    next_id_changed_ = false;
    return Put(place, scratch_);
}

Status Writer::NextId(KeyId *id) {
    if (next_id_ == 0) {
        std::string_view bytes;
        StoreRecord record;
        const Status status =
            FindRecord(Current(), RecordKey(kStoreRecord, RecordKind::kKey), &bytes);
        if (!IsGood(status) || !ParseStore(bytes, &record))
            return Status::kStoreFailed;
        next_id_ = record.next_id;
    }
    *id = next_id_++;
    next_id_changed_ = true;
    return Status::kSuccess;
}

Status Writer::Initialise() {
    next_id_ = kFirstKey;
    next_id_changed_ = true;
    OpenKey &root = keys_[kRootKey];
    Touch(&root, true);
    return Flush();
}

Status Writer::CreateKey(KeyId id, std::string_view path, std::string_view class_text, KeyId *found,
                         bool *created) {
    Status status = CheckPath(path);
    if (!IsGood(status))
        return status;
    if (class_text.size() > kMaxClass || !IsName(class_text))
        return Status::kInvalidParameter;
    OpenKey *start = nullptr;
    status = Load(id, &start);
    if (!IsGood(status))
        return status;
    // The depth is checked before the first key is made, so that a refusal changes nothing.
    std::size_t depth = start->record.depth;
    for (PathWalk walk(path); !walk.Done(); walk.Next())
        ++depth;
    if (depth > kMaxDepth)
        return Status::kInvalidParameter;
    KeyId current = id;
    bool made = false;
    for (PathWalk walk(path); !walk.Done() && IsGood(status);) {
        const std::string_view name = walk.Next();
        const KeyId parent = current;
        if (!made)
            status = FindKey(parent, name, &current);
        made = made || status == Status::kNotFound;
        if (made)
            status = CreateSubKey(parent, name, class_text, &current);
    }
    if (!IsGood(status))
        return status;
    *found = current;
    *created = made;
    return Status::kSuccess;
}

Status Writer::CreateSubKey(KeyId parent, std::string_view name, std::string_view class_text,
                            KeyId *created) {
    KeyId id = 0;
    OpenKey *above = nullptr;
    Status status = NextId(&id);
    if (IsGood(status))
        status = Load(parent, &above);
    if (!IsGood(status))
        return Status::kStoreFailed;
    const RecordKey place(parent, RecordKind::kSubKey, name);
    FormatSubKey(place, id, class_text, name, &scratch_);
    status = Put(place, scratch_);
    if (!IsGood(status))
        return status;
    ++Touch(above, true).record.sub_keys;
    const auto depth = static_cast<std::uint16_t>(above->record.depth + 1);
    OpenKey &key = keys_[id];
    key.record.parent = parent;
    key.record.depth = depth;
    key.name = name;
    key.class_text = class_text;
    Touch(&key, true);
    ++growth_.keys;
    *created = id;
    // At once, because look-ups below the key ask the store whether it is there.
    return WriteBack(id, &key);
}

Status Writer::SetValue(KeyId id, std::string_view name, std::uint32_t type,
                        std::string_view data) {
    if (!IsName(name) || data.size() > kMaxData)
        return Status::kInvalidParameter;
    OpenKey *key = nullptr;
    Status status = Load(id, &key);
    if (!IsGood(status))
        return status;
    // A new value takes its place in the order and one step down the tree; the record of one that
    // exists is handed back instead, and keeps its place.
    const RecordKey place(id, RecordKind::kValue, name);
    FormatValue(place, {key->record.next_place, type, data}, &scratch_);
    MDB_val where = ToValue(place.View());
    MDB_val content = ToValue(scratch_);
    const int code =
        mdb_put(transaction_, Environment::kDatabase, &where, &content, MDB_NOOVERWRITE);
    if (code == MDB_SUCCESS)
        return AddValue(id, key, name, type, data);
    if (code != MDB_KEYEXIST)
        return StatusFromLmdb(code);
    ValueRecord stored;
    if (!ParseValue({static_cast<const char *>(content.mv_data), content.mv_size}, &stored))
        return Status::kStoreFailed;
    const std::uint64_t place_in_list = stored.place;
    FormatValue(place, {place_in_list, type, data}, &scratch_);
    Touch(key, false);
    status = Put(place, scratch_);
    const ValueRecord changed = {place_in_list, type, data};
    return IsGood(status) ? ChangeInList(id, key, place_in_list, &changed) : status;
}

// The second half of a new value: its place at the end of the key's list.
Status Writer::AddValue(KeyId id, OpenKey *key, std::string_view name, std::uint32_t type,
                        std::string_view data) {
    changed_ = true;
    KeyRecord &record = Touch(key, true).record;
    ++record.values;
    ++growth_.values;
    return AddToList(id, key, Listed(record.next_place++, name, type, data));
}

// The part of a key's list that has this place, or would have it; kNotFound without any before it.
Status Writer::FindListPart(KeyId id, std::uint64_t place, std::uint64_t *first_place,
                            std::string_view *bytes) {
    Cursor cursor(Current());
    std::string_view key;
    const RecordKey wanted(id, place);
    Status status = cursor.Seek(wanted.View(), &key, bytes);
    if (status == Status::kNotFound)
        status = cursor.Last(&key, bytes);
    else if (IsGood(status) && key != wanted.View())
        status = cursor.Previous(&key, bytes);
    RecordPlace found;
    if (!IsGood(status) || !ParseRecordKey(key, &found))
        return IsGood(status) ? Status::kStoreFailed : status;
    if (found.id != id || found.kind != RecordKind::kValueList)
        return Status::kNotFound;
    *first_place = LoadBigEndian(found.rest);
    return Status::kSuccess;
}

Status Writer::LoadListEnd(KeyId id, OpenKey *key) {
    std::uint64_t first_place = 0;
    std::string_view bytes;
    const Status status = FindListPart(id, kLastPlace, &first_place, &bytes);
    if (status == Status::kNotFound)
        key->list_end.Begin(0);
    else if (!IsGood(status))
        return status;
    else if (!key->list_end.Resume(first_place, bytes))
        return Status::kStoreFailed;
    key->has_list_end = true;
    return Status::kSuccess;
}

Status Writer::StorePart(KeyId id, ListPartMaker *part) {
    return Put(RecordKey(id, part->FirstPlace()), part->Seal(id));
}

// Stores the end of the list if it was changed, and forgets it.
Status Writer::StoreListEnd(KeyId id, OpenKey *key) {
    const bool changed = key->list_end_changed;
    key->has_list_end = false;
    key->list_end_changed = false;
    return changed ? StorePart(id, &key->list_end) : Status::kSuccess;
}

Status Writer::AddToList(KeyId id, OpenKey *key, const ListedValue &value) {
    Status status = key->has_list_end ? Status::kSuccess : LoadListEnd(id, key);
    if (!IsGood(status))
        return status;
    if (key->list_end.IsEmpty())
        key->list_end.Begin(value.place);
    if (!key->list_end.Add(value)) {
        status = StoreListEnd(id, key);
        if (!IsGood(status))
            return status;
        key->list_end.Begin(value.place);
        key->has_list_end = true;
        if (!key->list_end.Add(value))
            return Status::kStoreFailed;
    }
    key->list_end_changed = true;
    return Status::kSuccess;
}

// Replaces a value of the list, or takes it out of it when `changed` is null. What no longer fits
// becomes a part of its own.
Status Writer::ChangeInList(KeyId id, OpenKey *key, std::uint64_t place,
                            const ValueRecord *changed) {
    Status status = StoreListEnd(id, key);
    std::uint64_t first_place = 0;
    std::string_view bytes;
    if (IsGood(status))
        status = FindListPart(id, place, &first_place, &bytes);
    if (!IsGood(status))
        return status == Status::kNotFound ? Status::kStoreFailed : status;
    const std::string stored(bytes);  // the map's bytes may move when a part is stored
    ListPart old_part(first_place, stored);
    ListPartMaker part;
    part.Begin(first_place);
    ListedValue value;
    bool found = false;
    while (IsGood(status) && old_part.Next(&value)) {
        const bool is_the_one = value.place == place;
        found = found || is_the_one;
        if (is_the_one && changed == nullptr)
            continue;
        // A value keeps the name that it was created with.
        if (is_the_one)
            value = Listed(place, value.name, changed->type, changed->data);
        if (part.Add(value))
            continue;
        status = StorePart(id, &part);
        part.Begin(value.place);
        if (!part.Add(value))
            status = Status::kStoreFailed;
    }
    if (!IsGood(status))
        return status;
    if (!found || !old_part.IsFinished())
        return Status::kStoreFailed;
    return part.IsEmpty() ? Remove(RecordKey(id, first_place)) : StorePart(id, &part);
}

Status Writer::DeleteValue(KeyId id, std::string_view name) {
    OpenKey *key = nullptr;
    Status status = Load(id, &key);
    if (!IsGood(status))
        return status;
    ValueRecord value;
    status = FindValue(Current(), id, name, &value);
    if (!IsGood(status))
        return status;
    const std::uint64_t place = value.place;
    status = Remove(RecordKey(id, RecordKind::kValue, name));
    if (IsGood(status))
        status = ChangeInList(id, key, place, nullptr);
    --Touch(key, true).record.values;
    --growth_.values;
    return status;
}

Status Writer::DeleteKey(KeyId id, std::string_view path) {
    KeyId found = 0;
    OpenKey *key = nullptr;
    Status status = FindKey(id, path, &found);
    if (IsGood(status))
        status = Load(found, &key);
    if (!IsGood(status))
        return status;
    if (found == kRootKey || key->record.sub_keys > 0)
        return Status::kAccessDenied;
    return RemoveKey(found);
}

Status Writer::DeleteTree(KeyId id, std::string_view path) {
    KeyId top = 0;
    Status status = FindKey(id, path, &top);
    if (!IsGood(status))
        return status;
    if (top == kRootKey)
        return Status::kAccessDenied;
    // Down to the first key without sub-keys, away with it, and up to its parent again.
    for (KeyId current = top; IsGood(status);) {
        OpenKey *key = nullptr;
        status = Load(current, &key);
        if (!IsGood(status))
            break;
        if (key->record.sub_keys > 0) {
            status = FirstSubKey(current, &current);
            continue;
        }
        const KeyId above = key->record.parent;
        status = RemoveKey(current);
        if (current == top)
            break;
        current = above;
    }
    return status;
}

Status Writer::FirstSubKey(KeyId id, KeyId *found) {
    Cursor cursor(Current());
    std::string_view key;
    std::string_view bytes;
    RecordPlace place;
    SubKeyRecord record;
    const Status status = cursor.Seek(RecordKey(id, RecordKind::kSubKey).View(), &key, &bytes);
    if (!IsGood(status) || !ParseRecordKey(key, &place) || place.id != id ||
        place.kind != RecordKind::kSubKey || !ParseSubKey(bytes, &record))
        return Status::kStoreFailed;
    *found = record.id;
    return Status::kSuccess;
}

// Takes a key without sub-keys out of the store.
Status Writer::RemoveKey(KeyId id) {
    OpenKey *key = nullptr;
    OpenKey *above = nullptr;
    Status status = Load(id, &key);
    if (!IsGood(status))
        return status;
    const KeyId parent = key->record.parent;
    const std::string name = key->name;
    growth_.values -= key->record.values;
    --growth_.keys;
    keys_.erase(id);
    status = Load(parent, &above);
    if (IsGood(status))
        status = Remove(RecordKey(parent, RecordKind::kSubKey, name));
    if (!IsGood(status))
        return Status::kStoreFailed;
    --Touch(above, true).record.sub_keys;
    return RemoveRecords(id);
}

// Removes every record of a key, its own first.
Status Writer::RemoveRecords(KeyId id) {
    Cursor cursor(Current());
    std::string_view key;
    std::string_view bytes;
    Status status = cursor.Seek(RecordKey(id, RecordKind::kKey).View(), &key, &bytes);
    while (IsGood(status)) {
        RecordPlace place;
        if (!ParseRecordKey(key, &place))
            return Status::kStoreFailed;
        if (place.id != id)
            break;
        changed_ = true;
        const int code = mdb_cursor_del(cursor.Handle(), 0);
        if (code != MDB_SUCCESS)
            return StatusFromLmdb(code);
        status = cursor.Next(&key, &bytes);
    }
    return status == Status::kNotFound ? Status::kSuccess : status;
}

}  // namespace regstore
