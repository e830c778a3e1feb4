// Changing the store: one write transaction.
//
// A call that gives kNotFound, kKeyDeleted, kInvalidHandle, kBadPath, kInvalidParameter or
// kAccessDenied has changed nothing, and the transaction may go on. After any other failure the
// transaction is broken and can only be given up. Only one thread of one process writes at a time.
#ifndef REGSTORE_WRITER_H
#define REGSTORE_WRITER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "regstore/environment.h"
#include "regstore/snapshot.h"
#include "regstore/value_list.h"

namespace regstore {

// How many keys (without the root) and values there are, or how many more.
struct Totals {
    std::int64_t keys = 0;
    std::int64_t values = 0;
};

class Writer {
  public:
    explicit Writer(const Environment &environment) noexcept : environment_(environment) {}
    ~Writer() { GiveUp(); }
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    // Waits for the write lock and begins; gives LMDB's code.
    int Begin() noexcept;
    // Makes everything durable, or nothing. Without any change it writes nothing. *code is LMDB's.
    Status Commit(int *code);
    void GiveUp() noexcept;

    // Makes an empty store: its own record and the root. For a new environment only.
    Status Initialise();

    // The key at a path, as this transaction has it.
    Status FindKey(KeyId id, std::string_view path, KeyId *found) const noexcept {
        return regstore::FindKey(Current(), id, path, found);
    }
    // Opens or creates the key and every missing one on the way.
    Status CreateKey(KeyId id, std::string_view path, std::string_view class_text, KeyId *found,
                     bool *created);
    Status SetValue(KeyId id, std::string_view name, std::uint32_t type, std::string_view data);
    Status DeleteValue(KeyId id, std::string_view name);
    // Refuses the root and a key with sub-keys.
    Status DeleteKey(KeyId id, std::string_view path);
    // Deletes a key with everything below it; refuses the root.
    Status DeleteTree(KeyId id, std::string_view path);

    // Whether anything was changed since Begin, and by how much the store grew.
    bool Changed() const noexcept { return changed_; }
    Totals Growth() const noexcept { return growth_; }
    // The state that Commit makes; smaller numbers are older states.
    std::size_t TransactionId() const noexcept { return mdb_txn_id(transaction_); }

  private:
    // A key while it is being changed; written back by Flush. `list_end` is the last part of its
    // list of values while values are added, so that many new ones do not store it again each time.
    struct OpenKey {
        KeyRecord record;
        std::string name;
        std::string class_text;
        bool changed = false;
        ListPartMaker list_end;
        bool has_list_end = false;
        bool list_end_changed = false;
    };

    Snapshot Current() const noexcept { return {transaction_, Environment::kDatabase}; }
    Status Put(const RecordKey &key, const std::string &bytes);
    Status Remove(const RecordKey &key);
    Status Load(KeyId id, OpenKey **key);
    OpenKey &Touch(OpenKey *key, bool shape);
    Status WriteBack(KeyId id, OpenKey *key);
    Status WriteBackAll(KeyId id, OpenKey *key);
    Status Flush();
    Status NextId(KeyId *id);
    Status CreateSubKey(KeyId parent, std::string_view name, std::string_view class_text,
                        KeyId *created);
    Status AddValue(KeyId id, OpenKey *key, std::string_view name, std::uint32_t type,
                    std::string_view data);
    Status FindListPart(KeyId id, std::uint64_t place, std::uint64_t *first_place,
                        std::string_view *bytes);
    Status LoadListEnd(KeyId id, OpenKey *key);
    Status StoreListEnd(KeyId id, OpenKey *key);
    Status AddToList(KeyId id, OpenKey *key, const ListedValue &value);
    Status ChangeInList(KeyId id, OpenKey *key, std::uint64_t place, const ValueRecord *changed);
    Status StorePart(KeyId id, ListPartMaker *part);
    Status RemoveKey(KeyId id);
    Status RemoveRecords(KeyId id);
    Status FirstSubKey(KeyId id, KeyId *found);

    const Environment &environment_;
    MDB_txn *transaction_ = nullptr;
    std::uint64_t now_ = 0;
    bool changed_ = false;
    Totals growth_;
    KeyId next_id_ = 0;  // 0: not yet read
    bool next_id_changed_ = false;
    std::unordered_map<KeyId, OpenKey> keys_;
    std::string scratch_;
};

}  // namespace regstore

#endif  // REGSTORE_WRITER_H
