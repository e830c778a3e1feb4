// Results of the registry store: the numbers that the registry's public functions hand out.
#ifndef REGSTORE_STATUS_H
#define REGSTORE_STATUS_H

#include <cstdint>

namespace regstore {

enum class [[nodiscard]] Status : std::uint32_t{
    kSuccess = 0,       kNotFound = 2,     kAccessDenied = 5,      kInvalidHandle = 6,
    kNoMemory = 8,      kInvalidData = 13, kInvalidParameter = 87, kDiskFull = 112,
    kBadPath = 161,     kMoreData = 234,   kNoMoreItems = 259,     kStoreFailed = 1016,
    kKeyDeleted = 1018, kNotActive = 1062, kNoAnswer = 1460,
};

// What an LMDB or errno code means to a caller of the registry. MDB_NOTFOUND is the business of
// those who look records up: here it counts as a failed store, like everything that has no number
// of its own.
Status StatusFromLmdb(int code) noexcept;

}  // namespace regstore

#endif  // REGSTORE_STATUS_H
