#include "regstore/status.h"

#include <cerrno>

#include <lmdb.h>

namespace regstore {

Status StatusFromLmdb(int code) noexcept {
    switch (code) {
        case MDB_SUCCESS:
            return Status::kSuccess;
        case ENOSPC:
        case EDQUOT:
        case MDB_MAP_FULL:
            return Status::kDiskFull;
        case ENOMEM:
        case MDB_TXN_FULL:
            return Status::kNoMemory;
        default:
            return Status::kStoreFailed;
    }
}

}  // namespace regstore
