// What the verification of a store refuses although every checksum holds.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regstore/record_check.h>
#include <regstore/value_list.h>
#include <support/title.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using namespace regstore;

constexpr KeyId kSubKey = kFirstKey;
const std::string kLongData(kMaxListedData + 1, 'x');

struct Record {
    RecordKey key;
    std::string bytes;
};

// The root with a sub-key "Below" and the values "first" and "Second", the second's data too long
// for the list.
class Store {
  public:
    StoreRecord store = {kFormatVersion, kFirstKey + 1};
    KeyRecord root = {.next_place = 2, .sub_keys = 1, .values = 2, .name = {}, .class_text = {}};
    KeyRecord below = {.parent = kRootKey, .depth = 1, .name = "Below", .class_text = "c"};
    std::string link;  // the sub-key's record, to be written over
    std::vector<ValueRecord> values = {{0, 1, "data"}, {1, 3, kLongData}};
    std::uint64_t list_place = 0;
    std::vector<ListedValue> list = {{0, "first", true, 1, "data"}, {1, "Second", false, 0, {}}};
    bool has_store_record = true;

    Store() { FormatSubKey(Link(), kSubKey, "c", "Below", &link); }

    static RecordKey Link() { return {kRootKey, RecordKind::kSubKey, "Below"}; }

    // Empty for a store that is sound, else what is wrong with it.
    std::string Verify() const {
        RecordCheck check;
        std::string damage;
        for (const Record &record : Records())
            if (!check.Visit(record.key.View(), record.bytes, &damage))
                return damage;
        (void)check.Finish(&damage);
        return damage;
    }

  private:
    std::vector<Record> Records() const {
        std::vector<Record> records;
        const auto add = [&](const RecordKey &key) -> std::string * {
            return &records.emplace_back(Record{key, ""}).bytes;
        };
        const RecordKey own(kStoreRecord, RecordKind::kKey);
        if (has_store_record)
            FormatStore(own, store, add(own));
        const RecordKey root_key(kRootKey, RecordKind::kKey);
        FormatKey(root_key, root, add(root_key));
        records.push_back({Link(), link});
        static constexpr const char *kNames[] = {"FIRST", "SECOND"};
        for (std::size_t i = 0; i < values.size(); ++i) {
            const RecordKey key(kRootKey, RecordKind::kValue, kNames[i]);
            FormatValue(key, values[i], add(key));
        }
        ListPartMaker part;
        part.Begin(list_place);
        for (const ListedValue &value : list)
            (void)part.Add(value);
        records.push_back({RecordKey(kRootKey, list_place), part.Seal(kRootKey)});
        const RecordKey below_key(kSubKey, RecordKind::kKey);
        FormatKey(below_key, below, add(below_key));
        return records;
    }
};

struct Damage {
    const char *title;
    std::function<void(Store *store)> make;
    const char *told;
};

constexpr char kList[] = "record of kind \"list of values\" contradicts the records beside it";
constexpr char kKey[] = "record of kind \"key\" contradicts the records beside it";
constexpr char kLink[] = "record of kind \"sub-key\" contradicts the records beside it";

// Rewrites the sub-key's record with these bytes behind its name's letters.
void SetLetters(Store *store, const std::string &letters) {
    store->link.resize(store->link.size() - 1);  // the letters of "Below": one byte
    store->link += letters;
    Seal(Store::Link(), &store->link);
}

class RecordCheckTest : public testing::TestWithParam<Damage> {};

TEST(RecordCheckTest, ASoundStoreIsSound) {
    EXPECT_EQ(Store().Verify(), "");
}

TEST_P(RecordCheckTest, Refuses) {
    Store store;
    GetParam().make(&store);
    EXPECT_THAT(store.Verify(), testing::HasSubstr(GetParam().told));
}

INSTANTIATE_TEST_SUITE_P(
    Store, RecordCheckTest,
    testing::Values(
        Damage{"NoRecordOfItsOwn", [](Store *store) { store->has_store_record = false; },
               "its first record is not the store's own: damaged, or made by another version"},
        Damage{"AnotherFormat", [](Store *store) { store->store.format = 3; },
               "it has format 3, this version keeps 2"},
        Damage{"NoNextId", [](Store *store) { store->store.next_id = 5; },
               "its own record says nothing that can be"},
        Damage{"AnIdThatWasNotGivenOut", [](Store *store) { store->store.next_id = kSubKey; },
               "a key has a number that was not yet given out"},
        Damage{"OneSubKeyTooMany", [](Store *store) { store->root.sub_keys = 2; }, kKey},
        Damage{"OneValueTooMany", [](Store *store) { store->root.values = 3; }, kKey},
        Damage{"APlaceToCome", [](Store *store) { store->root.next_place = 1; },
               "record of kind \"value\" contradicts the records beside it"},
        Damage{"AnotherName", [](Store *store) { store->list[0].name = "fourth"; }, kKey},
        Damage{"AnotherPlace", [](Store *store) { store->list[1].place = 5; }, kKey},
        Damage{"OtherData", [](Store *store) { store->list[0].data = "date"; }, kKey},
        Damage{"AnotherType", [](Store *store) { store->list[0].type = 2; }, kKey},
        Damage{"DataNotListed", [](Store *store) { store->list[0].has_data = false; }, kKey},
        Damage{"LongDataListed",
               [](Store *store) {
                   store->list[1] = {1, "Second", true, 3, kLongData};
               },
               kKey},
        Damage{"AValueMissing", [](Store *store) { store->list.pop_back(); }, kKey},
        Damage{"TheOrderTurned", [](Store *store) { std::swap(store->list[0], store->list[1]); },
               kList},
        Damage{"AnEmptyPart", [](Store *store) { store->list.clear(); }, kList},
        Damage{"AnotherSpelling", [](Store *store) { SetLetters(store, "\x0E"); },
               "a key does not hang below its parent"},
        Damage{"ASmallLetterBehindTheName", [](Store *store) { SetLetters(store, "\x3E"); }, kLink},
        Damage{"ZerosBehindTheLetters",
               [](Store *store) { SetLetters(store, std::string("\x1E\0", 2)); }, kLink},
        Damage{"AnotherClass", [](Store *store) { store->below.class_text = "d"; },
               "a key does not hang below its parent"}),
    test_support::Title());

}  // namespace
