#include "regstore/records.h"

#include "hash.h"

namespace regstore {

namespace {

constexpr std::string_view kMagic = "KESREG\r\n";

std::uint64_t Checksum(std::string_view key, std::string_view content) noexcept {
    return Hash(content, Hash(key));
}

// Takes fixed-width numbers and texts from the front of a record.
class Taker {
  public:
    explicit Taker(std::string_view bytes) noexcept : rest_(bytes) { Skip(kChecksumSize); }

    template <typename Number>
    Taker &Take(Number *number) noexcept {
        if (rest_.size() >= sizeof *number)
            std::memcpy(number, rest_.data(), sizeof *number);
        Skip(sizeof *number);
        return *this;
    }
    Taker &Take(std::size_t size, std::string_view *text) noexcept {
        *text = rest_.substr(0, size);
        Skip(size);
        return *this;
    }
    std::string_view Rest() const noexcept { return rest_; }
    bool Good() const noexcept { return good_; }
    bool GoodAndEmpty() const noexcept { return good_ && rest_.empty(); }

  private:
    void Skip(std::size_t size) noexcept {
        good_ = good_ && rest_.size() >= size;
        rest_.remove_prefix(good_ ? size : rest_.size());
    }

    std::string_view rest_;
    bool good_ = true;
};

// Writes a record and, at the end, the checksum before it.
class Putter {
  public:
    explicit Putter(std::string *bytes) : bytes_(*bytes) { bytes_.assign(kChecksumSize, '\0'); }

    template <typename Number>
    Putter &Put(Number number) {
        bytes_.append(reinterpret_cast<const char *>(&number), sizeof number);
        return *this;
    }
    Putter &Put(std::string_view text) {
        bytes_.append(text);
        return *this;
    }
    void Seal(const RecordKey &key) {
        const std::uint64_t checksum =
            Checksum(key.View(), std::string_view(bytes_).substr(kChecksumSize));
        std::memcpy(bytes_.data(), &checksum, sizeof checksum);
    }

  private:
    std::string &bytes_;
};

}  // namespace

std::uint64_t LoadBigEndian(std::string_view bytes) noexcept {
    std::uint64_t number = 0;
    std::memcpy(&number, bytes.data(), sizeof number);
    return __builtin_bswap64(number);
}

bool ParseRecordKey(std::string_view key, RecordPlace *place) noexcept {
    if (key.size() < RecordKey::kPrefixSize || key.size() > RecordKey::kPrefixSize + kMaxName)
        return false;
    place->id = LoadBigEndian(key);
    place->kind = static_cast<RecordKind>(key[sizeof place->id]);
    place->rest = key.substr(RecordKey::kPrefixSize);
    switch (place->kind) {
        case RecordKind::kKey:
            return place->rest.empty();
        case RecordKind::kSubKey:
            return !place->rest.empty();
        case RecordKind::kValue:
            return true;
        case RecordKind::kValueOrder:
            return place->rest.size() == sizeof(std::uint64_t);
        default:
            return false;
    }
}

bool ParseKey(std::string_view bytes, KeyRecord *record) noexcept {
    std::uint8_t name_size = 0;
    std::uint8_t class_size = 0;
    return Taker(bytes)
        .Take(&record->parent)
        .Take(&record->last_write)
        .Take(&record->next_place)
        .Take(&record->shape)
        .Take(&record->sub_keys)
        .Take(&record->values)
        .Take(&record->depth)
        .Take(&name_size)
        .Take(&class_size)
        .Take(name_size, &record->name)
        .Take(class_size, &record->class_text)
        .GoodAndEmpty();
}

void FormatKey(const RecordKey &key, const KeyRecord &record, std::string *bytes) {
    Putter(bytes)
        .Put(record.parent)
        .Put(record.last_write)
        .Put(record.next_place)
        .Put(record.shape)
        .Put(record.sub_keys)
        .Put(record.values)
        .Put(record.depth)
        .Put(static_cast<std::uint8_t>(record.name.size()))
        .Put(static_cast<std::uint8_t>(record.class_text.size()))
        .Put(record.name)
        .Put(record.class_text)
        .Seal(key);
}

bool ParseSubKey(std::string_view bytes, SubKeyRecord *record) noexcept {
    std::uint8_t class_size = 0;
    Taker taker(bytes);
    taker.Take(&record->id).Take(&class_size).Take(class_size, &record->class_text);
    record->name = taker.Rest();
    return taker.Good();
}

void FormatSubKey(const RecordKey &key, const SubKeyRecord &record, std::string *bytes) {
    Putter(bytes)
        .Put(record.id)
        .Put(static_cast<std::uint8_t>(record.class_text.size()))
        .Put(record.class_text)
        .Put(record.name)
        .Seal(key);
}

void FormatValue(const RecordKey &key, const ValueRecord &record, std::string *bytes) {
    Putter(bytes).Put(record.place).Put(record.type).Put(record.data).Seal(key);
}

bool ParseValueOrder(std::string_view bytes, std::string_view *name) noexcept {
    const Taker taker(bytes);
    *name = taker.Rest();
    return taker.Good();
}

void FormatValueOrder(const RecordKey &key, std::string_view name, std::string *bytes) {
    Putter(bytes).Put(name).Seal(key);
}

bool ParseStore(std::string_view bytes, StoreRecord *record) noexcept {
    std::string_view magic;
    return Taker(bytes)
               .Take(kMagic.size(), &magic)
               .Take(&record->format)
               .Take(&record->next_id)
               .GoodAndEmpty() &&
           magic == kMagic;
}

void FormatStore(const RecordKey &key, const StoreRecord &record, std::string *bytes) {
    Putter(bytes).Put(kMagic).Put(record.format).Put(record.next_id).Seal(key);
}

bool ChecksumHolds(std::string_view key, std::string_view bytes) noexcept {
    if (bytes.size() < kChecksumSize)
        return false;
    std::uint64_t stored = 0;
    std::memcpy(&stored, bytes.data(), sizeof stored);
    return stored == Checksum(key, bytes.substr(kChecksumSize));
}

}  // namespace regstore
