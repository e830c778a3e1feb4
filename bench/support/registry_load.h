// Registries of a known size for the benchmarks, and the same records in a bare LMDB environment.
#ifndef BENCH_SUPPORT_REGISTRY_LOAD_H
#define BENCH_SUPPORT_REGISTRY_LOAD_H

#include <lmdb.h>
#include <ntwin32/registry.h>
#include <support/temp_folder.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

inline constexpr char kProbeKey[] = "SOFTWARE\\XEV\\VLXService\\SETTING\\PROBE";
inline constexpr char kProbeValue[] = "SYSNMN";
inline constexpr char kText[] = "a server's name of some length";
inline constexpr long kValuesAKey = 100;
inline constexpr long kChangesABatch = 20000;

inline std::string FillerKey(long index) {
    return "SOFTWARE\\FILLER\\KEY" + std::to_string(index / kValuesAKey);
}
inline std::string FillerValue(long index) {
    return "VALUE" + std::to_string(index % kValuesAKey);
}

// Stores `values` values through batches, and the value that the benchmarks read.
inline void FillRegistry(long values) {
    std::vector<std::string> texts;
    std::vector<KES_REG_CHANGE> changes;
    const auto add = [&](const char *path, const char *name) {
        changes.push_back({KES_REG_SET_VALUE, REG_SZ, path, name,
                           reinterpret_cast<const BYTE *>(kText), sizeof kText, 0});
    };
    for (long begin = 0; begin < values; begin += kChangesABatch) {
        const long end = std::min(values, begin + kChangesABatch);
        texts.clear();
        changes.clear();
        texts.reserve(static_cast<std::size_t>(2 * kChangesABatch));
        for (long index = begin; index < end; ++index) {
            texts.push_back(FillerKey(index));
            texts.push_back(FillerValue(index));
            add(texts[texts.size() - 2].c_str(), texts.back().c_str());
        }
        add(kProbeKey, kProbeValue);
        if (KesRegApplyBatch(HKEY_LOCAL_MACHINE, changes.data(), static_cast<DWORD>(changes.size()),
                             nullptr) != ERROR_SUCCESS)
            throw std::runtime_error("the registry cannot be filled");
    }
}

// A bare LMDB environment with records as long as the registry's own, in one transaction a fill.
class BareStore {
  public:
    static constexpr std::size_t kMapSize = std::size_t{4} << 30;
    static constexpr std::size_t kRecordHeader = 7;  // what a value's record holds beside its data

    BareStore() {
        Check(mdb_env_create(&environment_));
        Check(mdb_env_set_mapsize(environment_, kMapSize));
        Check(mdb_env_open(environment_, folder_.Path().c_str(), 0, 0600));
        MDB_txn *transaction = nullptr;
        Check(mdb_txn_begin(environment_, nullptr, 0, &transaction));
        Check(mdb_dbi_open(transaction, nullptr, 0, &database_));
        Check(mdb_txn_commit(transaction));
    }
    BareStore(const BareStore &) = delete;
    BareStore &operator=(const BareStore &) = delete;
    ~BareStore() { mdb_env_close(environment_); }

    MDB_env *Environment() const { return environment_; }
    MDB_dbi Database() const { return database_; }

    static std::string Key(long index) {
        std::string key(9, '\0');
        const long owner = index / kValuesAKey;
        for (int byte = 0; byte < 8; ++byte)
            key[static_cast<std::size_t>(7 - byte)] = static_cast<char>(owner >> (8 * byte));
        return key + FillerValue(index);
    }

    // Puts the records [begin, end) in one durable transaction.
    void Fill(long begin, long end) {
        MDB_txn *transaction = nullptr;
        Check(mdb_txn_begin(environment_, nullptr, 0, &transaction));
        for (long index = begin; index < end; ++index)
            Put(transaction, Key(index));
        Check(mdb_txn_commit(transaction));
    }

    void Put(MDB_txn *transaction, const std::string &key) {
        char record[kRecordHeader + sizeof kText] = {};
        std::memcpy(record + kRecordHeader, kText, sizeof kText);
        MDB_val name = {key.size(), const_cast<char *>(key.data())};
        MDB_val data = {sizeof record, record};
        Check(mdb_put(transaction, database_, &name, &data, 0));
    }

    static void Check(int code) {
        if (code != MDB_SUCCESS)
            throw std::runtime_error(mdb_strerror(code));
    }

  private:
    test_support::TempFolder folder_;
    MDB_env *environment_ = nullptr;
    MDB_dbi database_ = 0;
};

}  // namespace bench

#endif  // BENCH_SUPPORT_REGISTRY_LOAD_H
