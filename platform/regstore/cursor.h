// An LMDB cursor that closes itself.
#ifndef REGSTORE_CURSOR_H
#define REGSTORE_CURSOR_H

#include <string_view>

#include <lmdb.h>

#include "regstore/snapshot.h"

namespace regstore {

class Cursor {
  public:
    explicit Cursor(const Snapshot &snapshot) noexcept
        : opened_(mdb_cursor_open(snapshot.transaction, snapshot.database, &cursor_)) {}
    ~Cursor() {
        if (opened_ == MDB_SUCCESS)
            mdb_cursor_close(cursor_);
    }
    Cursor(const Cursor &) = delete;
    Cursor &operator=(const Cursor &) = delete;

    // The first record at or after a key; kNotFound past the last.
    Status Seek(std::string_view at, std::string_view *key, std::string_view *bytes) noexcept {
        MDB_val wanted = {at.size(), const_cast<char *>(at.data())};
        return Get(&wanted, MDB_SET_RANGE, key, bytes);
    }
    Status Find(std::string_view at, std::string_view *key, std::string_view *bytes) noexcept {
        MDB_val wanted = {at.size(), const_cast<char *>(at.data())};
        return Get(&wanted, MDB_SET_KEY, key, bytes);
    }
    Status Next(std::string_view *key, std::string_view *bytes) noexcept {
        MDB_val wanted = {};
        return Get(&wanted, MDB_NEXT, key, bytes);
    }
    Status Previous(std::string_view *key, std::string_view *bytes) noexcept {
        MDB_val wanted = {};
        return Get(&wanted, MDB_PREV, key, bytes);
    }
    Status Last(std::string_view *key, std::string_view *bytes) noexcept {
        MDB_val wanted = {};
        return Get(&wanted, MDB_LAST, key, bytes);
    }
    MDB_cursor *Handle() const noexcept { return cursor_; }

  private:
    Status Get(MDB_val *wanted, MDB_cursor_op operation, std::string_view *key,
               std::string_view *bytes) noexcept {
        if (opened_ != MDB_SUCCESS)
            return StatusFromLmdb(opened_);
        MDB_val found;
        const int code = mdb_cursor_get(cursor_, wanted, &found, operation);
        if (code != MDB_SUCCESS)
            return code == MDB_NOTFOUND ? Status::kNotFound : StatusFromLmdb(code);
        *key = {static_cast<const char *>(wanted->mv_data), wanted->mv_size};
        *bytes = {static_cast<const char *>(found.mv_data), found.mv_size};
        return Status::kSuccess;
    }

    MDB_cursor *cursor_ = nullptr;
    int opened_;
};

}  // namespace regstore

#endif  // REGSTORE_CURSOR_H
