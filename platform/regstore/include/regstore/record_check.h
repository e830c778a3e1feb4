// The rules that all records of a store keep together.
#ifndef REGSTORE_RECORD_CHECK_H
#define REGSTORE_RECORD_CHECK_H

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "regstore/records.h"
#include "regstore/tree_check.h"
#include "regstore/writer.h"

namespace regstore {

// Sees every record once, in the order of the keys, then tells whether they agree. Memory grows
// with the number of keys and with the values of the largest key.
class RecordCheck : public RecordVisitor {
  public:
    bool Visit(std::string_view key, std::string_view bytes, std::string *damage) override;
    bool Finish(std::string *damage);
    Totals Counted() const noexcept { return totals_; }

  private:
    // What a key says of itself, or its parent of it.
    struct Tie {
        KeyId id;
        KeyId parent;
        std::uint16_t depth;
        std::uint64_t name;        // hash of the spelled name
        std::uint64_t class_text;  // hash
    };
    struct Placed {
        std::uint64_t place;
        std::uint64_t name;  // hash of the folded name
        std::uint64_t data;  // hash of type and data, when they stand in the list
        friend bool operator==(const Placed &, const Placed &) = default;
        friend bool operator<(const Placed &left, const Placed &right) noexcept {
            return std::tie(left.place, left.name, left.data) <
                   std::tie(right.place, right.name, right.data);
        }
    };

    bool VisitStore(std::string_view bytes, std::string *damage);
    bool VisitKey(const RecordPlace &place, std::string_view bytes);
    bool VisitSubKey(const RecordPlace &place, std::string_view bytes);
    bool VisitValue(const RecordPlace &place, std::string_view bytes);
    bool VisitList(const RecordPlace &place, std::string_view bytes);
    bool FinishKey();
    bool TiesAgree();

    bool store_seen_ = false;
    bool root_seen_ = false;
    StoreRecord store_;
    KeyRecord key_;  // the one whose records are being seen; its texts are not kept
    KeyId id_ = 0;
    bool key_open_ = false;
    KeyId largest_id_ = 0;
    std::uint32_t sub_keys_ = 0;
    std::vector<Placed> values_;
    std::vector<Placed> list_;
    std::vector<Tie> keys_;   // by themselves
    std::vector<Tie> links_;  // by their parents
    Totals totals_;
};

}  // namespace regstore

#endif  // REGSTORE_RECORD_CHECK_H
