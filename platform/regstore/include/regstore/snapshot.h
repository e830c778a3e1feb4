// Reading the store in one snapshot. Daemon and mapping clients read through these functions alone.
//
// Views that are handed out point into the map and are valid until the snapshot ends. A record that
// is too short to be one gives kStoreFailed; nothing is ever read past a record's end.
#ifndef REGSTORE_SNAPSHOT_H
#define REGSTORE_SNAPSHOT_H

#include <cstdint>
#include <string_view>

#include <lmdb.h>

#include "regstore/names.h"
#include "regstore/records.h"
#include "regstore/status.h"

namespace regstore {

struct Snapshot {
    MDB_txn *transaction;
    MDB_dbi database;
    // With one, a look-up begins on the page of the one before, which spares most of the way when
    // several records that lie close are looked up. It is moved.
    MDB_cursor *cursor = nullptr;
};

// Looks one record up: kNotFound, or *bytes.
Status FindRecord(const Snapshot &snapshot, const RecordKey &key, std::string_view *bytes) noexcept;

// Why a key that was asked for has no record: kKeyDeleted or kInvalidHandle.
Status WhyMissing(const Snapshot &snapshot, KeyId id) noexcept;

// The key's own record; kKeyDeleted or kInvalidHandle without one.
Status FindKeyRecord(const Snapshot &snapshot, KeyId id, KeyRecord *record) noexcept;

// The key at a path below another; an empty path is the key itself.
Status FindKey(const Snapshot &snapshot, KeyId id, std::string_view path, KeyId *found) noexcept;

// A value of a key; the empty name is the default value's.
Status FindValue(const Snapshot &snapshot, KeyId id, std::string_view name,
                 ValueRecord *value) noexcept;

// The longest of what a key holds, in bytes.
struct KeyMeasures {
    std::uint32_t sub_key_name = 0;
    std::uint32_t sub_key_class = 0;
    std::uint32_t value_name = 0;
    std::uint32_t value_data = 0;
};

// Measures every sub-key and value of a key.
Status MeasureKey(const Snapshot &snapshot, KeyId id, KeyMeasures *measures) noexcept;

}  // namespace regstore

#endif  // REGSTORE_SNAPSHOT_H
