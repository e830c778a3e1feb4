// The records of the store: how their keys are built and what their bytes mean.
//
// A record's key is the id of the registry key that it belongs to (8 bytes, big-endian, so that one
// key's records lie side by side), one byte for the kind, and what the kind adds:
//
//   kind        adds                        holds
//   kKey        -                           parent, time, counts, depth, spelled name, class
//   kSubKey     folded name of a sub-key    the sub-key's id, its class, which letters are small
//   kValue      folded name of a value      its place in the order, type, data
//   kValueList  place (8 bytes big-endian)  a part of the list of values, see value_list.h
//
// The first record of all, kStoreRecord's, tells the format and the next id to give out. Every
// record begins with a checksum of its key and of the bytes that follow it; reading does not look
// at the checksum, verification does. Numbers in records take as many bytes as they need, see
// number.h; records are small, so that what is read together fills few of the processor's lines.
#ifndef REGSTORE_RECORDS_H
#define REGSTORE_RECORDS_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "regstore/names.h"
#include "regstore/number.h"

namespace regstore {

static_assert(std::endian::native == std::endian::little);

inline constexpr std::uint64_t kFormatVersion = 2;
inline constexpr KeyId kStoreRecord = 0;

enum class RecordKind : unsigned char {
    kKey = 0,
    kSubKey = 1,
    kValue = 2,
    kValueList = 3,
    kEnd = 4
};

// The key of one record, on the stack.
class RecordKey {
  public:
    static constexpr std::size_t kPrefixSize = sizeof(KeyId) + 1;

    RecordKey(KeyId id, RecordKind kind) noexcept : size_(kPrefixSize) {
        StoreBigEndian(bytes_, id);
        bytes_[sizeof id] = static_cast<unsigned char>(kind);
    }
    // The name must be at most kMaxName bytes long.
    RecordKey(KeyId id, RecordKind kind, std::string_view name) noexcept : RecordKey(id, kind) {
        FoldName(name, bytes_ + kPrefixSize);
        size_ += name.size();
    }
    RecordKey(KeyId id, std::uint64_t place) noexcept : RecordKey(id, RecordKind::kValueList) {
        StoreBigEndian(bytes_ + kPrefixSize, place);
        size_ += sizeof place;
    }

    const unsigned char *Data() const noexcept { return bytes_; }
    std::size_t Size() const noexcept { return size_; }
    std::string_view View() const noexcept {
        return {reinterpret_cast<const char *>(bytes_), size_};
    }

    static void StoreBigEndian(unsigned char *to, std::uint64_t number) noexcept {
        const std::uint64_t swapped = __builtin_bswap64(number);
        std::memcpy(to, &swapped, sizeof swapped);
    }

  private:
    // Only the first size_ bytes ever hold anything.
    unsigned char bytes_[kPrefixSize + kMaxName];
    std::size_t size_;
};

// A record's key, taken apart.
struct RecordPlace {
    KeyId id = 0;
    RecordKind kind = RecordKind::kEnd;
    std::string_view rest;  // folded name, or the bytes of a place
};

// False for bytes that are no record's key.
bool ParseRecordKey(std::string_view key, RecordPlace *place) noexcept;

std::uint64_t LoadBigEndian(std::string_view bytes) noexcept;

// The fixed part of each kind of record, in the order of its bytes. The views point into the bytes
// that were parsed, or at what is to be stored.
struct KeyRecord {
    KeyId parent = 0;
    std::uint64_t last_write = 0;  // as FILETIME counts
    std::uint64_t next_place = 0;  // of the next new value
    std::uint64_t shape = 0;       // changes whenever the sets of sub-keys and values change
    std::uint32_t sub_keys = 0;
    std::uint32_t values = 0;
    std::uint16_t depth = 0;
    std::string_view name;
    std::string_view class_text;
};

// Class and name of a sub-key stand here too: a list of sub-keys reads none of those. The name is
// the folded one of the record's key, with the letters made small that `small_letters` tells of: a
// bit for each byte of the name, the lowest first, without zero bytes at the end.
struct SubKeyRecord {
    KeyId id = 0;
    std::string_view class_text;
    std::string_view small_letters;
};

struct ValueRecord {
    std::uint64_t place = 0;
    std::uint32_t type = 0;
    std::string_view data;
};

struct StoreRecord {
    std::uint64_t format = 0;
    KeyId next_id = 0;
};

inline constexpr std::size_t kChecksumSize = sizeof(std::uint32_t);

// Each gives false when the bytes are too few to be such a record.
bool ParseKey(std::string_view bytes, KeyRecord *record) noexcept;
bool ParseSubKey(std::string_view bytes, SubKeyRecord *record) noexcept;
bool ParseStore(std::string_view bytes, StoreRecord *record) noexcept;

inline bool ParseValue(std::string_view bytes, ValueRecord *record) noexcept {
    if (bytes.size() < kChecksumSize)
        return false;
    bytes.remove_prefix(kChecksumSize);
    if (!TakeNumber(&bytes, &record->place) || !TakeNumber(&bytes, &record->type))
        return false;
    record->data = bytes;
    return true;
}

// Adds the spelled name of a sub-key to a text.
void AppendSpelledName(std::string_view folded, std::string_view small_letters, std::string *text);

// Each replaces *bytes by the whole record, checksum included.
void FormatKey(const RecordKey &key, const KeyRecord &record, std::string *bytes);
void FormatSubKey(const RecordKey &key, KeyId id, std::string_view class_text,
                  std::string_view name, std::string *bytes);
void FormatValue(const RecordKey &key, const ValueRecord &record, std::string *bytes);
void FormatStore(const RecordKey &key, const StoreRecord &record, std::string *bytes);

// Completes a record whose content stands behind room for its checksum.
void Seal(const RecordKey &key, std::string *bytes) noexcept;

// Whether a record is the one that was stored under this key.
bool ChecksumHolds(std::string_view key, std::string_view bytes) noexcept;

}  // namespace regstore

#endif  // REGSTORE_RECORDS_H
