#include "regstore/snapshot.h"

#include <algorithm>

#include "cursor.h"

namespace regstore {

namespace {

// A single component below a key. Names beyond the limit exist nowhere.
Status FindSubKey(const Snapshot &snapshot, KeyId id, std::string_view name,
                  KeyId *found) noexcept {
    if (name.empty() || name.size() > kMaxName)
        return Status::kNotFound;
    std::string_view bytes;
    const Status status = FindRecord(snapshot, RecordKey(id, RecordKind::kSubKey, name), &bytes);
    if (status != Status::kSuccess)
        return status;
    SubKeyRecord record;
    if (!ParseSubKey(bytes, &record))
        return Status::kStoreFailed;
    *found = record.id;
    return Status::kSuccess;
}

// A look-up below a key failed: a missing key is the better reason.
Status AbsentBelow(const Snapshot &snapshot, KeyId id) noexcept {
    KeyRecord record;
    const Status status = FindKeyRecord(snapshot, id, &record);
    return status == Status::kSuccess ? Status::kNotFound : status;
}

std::uint32_t Size(std::string_view text) noexcept {
    return static_cast<std::uint32_t>(text.size());
}

Status MeasureSubKey(std::string_view name, std::string_view bytes,
                     KeyMeasures *measures) noexcept {
    SubKeyRecord record;
    if (!ParseSubKey(bytes, &record))
        return Status::kStoreFailed;
    measures->sub_key_name = std::max(measures->sub_key_name, Size(name));
    measures->sub_key_class = std::max(measures->sub_key_class, Size(record.class_text));
    return Status::kSuccess;
}

Status MeasureRecord(const RecordPlace &place, std::string_view bytes,
                     KeyMeasures *measures) noexcept {
    ValueRecord value;
    switch (place.kind) {
        case RecordKind::kSubKey:
            return MeasureSubKey(place.rest, bytes, measures);
        case RecordKind::kValue:
            if (!ParseValue(bytes, &value))
                return Status::kStoreFailed;
            measures->value_name = std::max(measures->value_name, Size(place.rest));
            measures->value_data = std::max(measures->value_data, Size(value.data));
            return Status::kSuccess;
        default:
            return Status::kSuccess;
    }
}

}  // namespace

Status FindRecord(const Snapshot &snapshot, const RecordKey &key,
                  std::string_view *bytes) noexcept {
    MDB_val wanted = {key.Size(), const_cast<unsigned char *>(key.Data())};
    MDB_val found;
    const int code = snapshot.cursor != nullptr
                         ? mdb_cursor_get(snapshot.cursor, &wanted, &found, MDB_SET)
                         : mdb_get(snapshot.transaction, snapshot.database, &wanted, &found);
    if (code != MDB_SUCCESS)
        return code == MDB_NOTFOUND ? Status::kNotFound : StatusFromLmdb(code);
    *bytes = {static_cast<const char *>(found.mv_data), found.mv_size};
    return Status::kSuccess;
}

Status WhyMissing(const Snapshot &snapshot, KeyId id) noexcept {
    std::string_view bytes;
    StoreRecord record;
    const Status status = FindRecord(snapshot, RecordKey(kStoreRecord, RecordKind::kKey), &bytes);
    if (status != Status::kSuccess || !ParseStore(bytes, &record))
        return Status::kStoreFailed;
    return id >= kFirstKey && id < record.next_id ? Status::kKeyDeleted : Status::kInvalidHandle;
}

Status FindKeyRecord(const Snapshot &snapshot, KeyId id, KeyRecord *record) noexcept {
    // The store's own record stands where a key's would; no handle reaches it.
    if (id == kStoreRecord)
        return Status::kInvalidHandle;
    std::string_view bytes;
    const Status status = FindRecord(snapshot, RecordKey(id, RecordKind::kKey), &bytes);
    if (status != Status::kSuccess)
        return status == Status::kNotFound ? WhyMissing(snapshot, id) : status;
    return ParseKey(bytes, record) ? Status::kSuccess : Status::kStoreFailed;
}

Status FindKey(const Snapshot &snapshot, KeyId id, std::string_view path, KeyId *found) noexcept {
    KeyId current = id;
    for (PathWalk walk(path); !walk.Done();) {
        const Status status = FindSubKey(snapshot, current, walk.Next(), &current);
        if (status != Status::kSuccess) {
            const Status form = CheckPath(path);
            if (form != Status::kSuccess)
                return form;
            return status == Status::kNotFound ? AbsentBelow(snapshot, id) : status;
        }
    }
    KeyRecord record;
    if (path.empty()) {
        const Status status = FindKeyRecord(snapshot, id, &record);
        if (status != Status::kSuccess)
            return status;
    }
    *found = current;
    return Status::kSuccess;
}

Status FindValue(const Snapshot &snapshot, KeyId id, std::string_view name,
                 ValueRecord *value) noexcept {
    if (name.size() > kMaxName)
        return Status::kInvalidParameter;
    std::string_view bytes;
    const Status status = FindRecord(snapshot, RecordKey(id, RecordKind::kValue, name), &bytes);
    if (status != Status::kSuccess)
        return status == Status::kNotFound ? AbsentBelow(snapshot, id) : status;
    return ParseValue(bytes, value) ? Status::kSuccess : Status::kStoreFailed;
}

Status MeasureKey(const Snapshot &snapshot, KeyId id, KeyMeasures *measures) noexcept {
    Cursor cursor(snapshot);
    std::string_view key;
    std::string_view bytes;
    KeyMeasures measured;
    Status status = cursor.Seek(RecordKey(id, RecordKind::kSubKey).View(), &key, &bytes);
    for (; status == Status::kSuccess; status = cursor.Next(&key, &bytes)) {
        RecordPlace place;
        if (!ParseRecordKey(key, &place))
            return Status::kStoreFailed;
        if (place.id != id || place.kind == RecordKind::kValueList)
            break;
        const Status record_status = MeasureRecord(place, bytes, &measured);
        if (record_status != Status::kSuccess)
            return record_status;
    }
    if (status != Status::kSuccess && status != Status::kNotFound)
        return status;
    *measures = measured;
    return Status::kSuccess;
}

}  // namespace regstore
