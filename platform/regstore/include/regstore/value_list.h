// The list of a key's values, in the order of their creation.
//
// It stands in parts: records that hold values which lie beside each other. A part's bytes are,
// after the checksum, their count (two bytes, little-endian) and then for each value
//
//   its place, less the place in the record's key
//   the size of its name, and the name as it was spelled
//   0, or the size of its data and 1; then also its type, and the data
//
// so that a listing reads one stretch of bytes. Data longer than kMaxListedData stand in the
// value's own record only.
#ifndef REGSTORE_VALUE_LIST_H
#define REGSTORE_VALUE_LIST_H

#include <cstdint>
#include <string>
#include <string_view>

#include "regstore/records.h"

namespace regstore {

inline constexpr std::size_t kMaxListedData = 256;
// A part of this size fills a page of its own, without a byte of the next one: what comes next in a
// long list is known, and can be fetched, before it is looked at.
inline constexpr std::size_t kMaxListPart = 4096 - 16;

struct ListedValue {
    std::uint64_t place = 0;
    std::string_view name;
    bool has_data = false;  // whether type and data stand in the list
    std::uint32_t type = 0;
    std::string_view data;
};

// Takes the values of a part one after the other. The views point into its bytes.
class ListPart {
  public:
    // `first_place` is the place in the record's key.
    ListPart(std::uint64_t first_place, std::string_view bytes) noexcept;

    // How many values there are, as the part itself tells; 0 for what is no part.
    std::uint32_t Count() const noexcept { return count_; }
    // The next value; false behind the last and at bytes that are none.
    bool Next(ListedValue *value) noexcept;
    // Whether all values have been taken and no byte is left.
    bool IsFinished() const noexcept { return taken_ == count_ && rest_.empty(); }

  private:
    std::uint64_t first_place_;
    std::uint16_t count_ = 0;
    std::uint16_t taken_ = 0;
    std::string_view rest_;
};

// A part that is being made.
class ListPartMaker {
  public:
    // Begins an empty part whose key has this place.
    void Begin(std::uint64_t first_place);
    // Begins with what a stored part holds; false when that is no part.
    bool Resume(std::uint64_t first_place, std::string_view bytes);

    // Adds a value behind the last. False, with nothing added, when the part would become too
    // large.
    bool Add(const ListedValue &value);

    std::uint64_t FirstPlace() const noexcept { return first_place_; }
    bool IsEmpty() const noexcept { return bytes_.size() <= kHeaderSize; }
    // The whole record, sealed for the key with that place.
    const std::string &Seal(KeyId id) noexcept;

  private:
    static constexpr std::size_t kHeaderSize = kChecksumSize + sizeof(std::uint16_t);

    std::uint64_t first_place_ = 0;
    std::string bytes_;
};

// How a value stands in the list: with its data, or without when they are long.
ListedValue Listed(std::uint64_t place, std::string_view name, std::uint32_t type,
                   std::string_view data) noexcept;

}  // namespace regstore

#endif  // REGSTORE_VALUE_LIST_H
