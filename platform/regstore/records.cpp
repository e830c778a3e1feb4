#include "regstore/records.h"

#include "hash.h"

namespace regstore {

namespace {

constexpr std::string_view kMagic = "KESREG\r\n";

std::uint32_t Checksum(std::string_view key, std::string_view content) noexcept {
    return static_cast<std::uint32_t>(Hash(content, Hash(key)));
}

// Takes numbers and texts from the front of a record.
class Taker {
  public:
    explicit Taker(std::string_view bytes) noexcept : rest_(bytes) { Skip(kChecksumSize); }

    template <typename Number>
    Taker &Take(Number *number) noexcept {
        good_ = good_ && TakeNumber(&rest_, number);
        return *this;
    }
    template <typename Number>
    Taker &TakeFixed(Number *number) noexcept {
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

    Putter &Put(std::uint64_t number) {
        AppendNumber(number, &bytes_);
        return *this;
    }
    Putter &PutFixed(std::uint64_t number) {
        bytes_.append(reinterpret_cast<const char *>(&number), sizeof number);
        return *this;
    }
    // The size, below 256, of a text that follows somewhere.
    Putter &PutSize(std::string_view text) {
        bytes_.push_back(static_cast<char>(text.size()));
        return *this;
    }
    Putter &Put(std::string_view text) {
        bytes_.append(text);
        return *this;
    }
    void Seal(const RecordKey &key) { regstore::Seal(key, &bytes_); }

  private:
    std::string &bytes_;
};

constexpr unsigned kBitsAByte = 8;

void AppendSmallLetters(std::string_view name, std::string *bytes) {
    const std::size_t start = bytes->size();
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (FoldCharacter(name[i]) == name[i])
            continue;
        bytes->resize(std::max(bytes->size(), start + i / kBitsAByte + 1), '\0');
        auto bits = static_cast<unsigned char>((*bytes)[start + i / kBitsAByte]);
        bits = static_cast<unsigned char>(bits | 1U << i % kBitsAByte);
        (*bytes)[start + i / kBitsAByte] = static_cast<char>(bits);
    }
}

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
        case RecordKind::kValueList:
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
        .TakeFixed(&record->last_write)
        .Take(&record->next_place)
        .Take(&record->shape)
        .Take(&record->sub_keys)
        .Take(&record->values)
        .Take(&record->depth)
        .TakeFixed(&name_size)
        .TakeFixed(&class_size)
        .Take(name_size, &record->name)
        .Take(class_size, &record->class_text)
        .GoodAndEmpty();
}

void FormatKey(const RecordKey &key, const KeyRecord &record, std::string *bytes) {
    Putter(bytes)
        .Put(record.parent)
        .PutFixed(record.last_write)
        .Put(record.next_place)
        .Put(record.shape)
        .Put(record.sub_keys)
        .Put(record.values)
        .Put(record.depth)
        .PutSize(record.name)
        .PutSize(record.class_text)
        .Put(record.name)
        .Put(record.class_text)
        .Seal(key);
}

bool ParseSubKey(std::string_view bytes, SubKeyRecord *record) noexcept {
    std::uint8_t class_size = 0;
    Taker taker(bytes);
    taker.Take(&record->id).TakeFixed(&class_size).Take(class_size, &record->class_text);
    record->id += kFirstKey;
    record->small_letters = taker.Rest();
    return taker.Good();
}

void FormatSubKey(const RecordKey &key, KeyId id, std::string_view class_text,
                  std::string_view name, std::string *bytes) {
    Putter putter(bytes);
    putter.Put(id - kFirstKey).PutSize(class_text).Put(class_text);
    AppendSmallLetters(name, bytes);
    putter.Seal(key);
}

void AppendSpelledName(std::string_view folded, std::string_view small_letters, std::string *text) {
    const std::size_t start = text->size();
    text->append(folded);
    for (std::size_t byte = 0; byte < small_letters.size(); ++byte) {
        auto bits = static_cast<unsigned char>(small_letters[byte]);
        for (std::size_t i = byte * kBitsAByte; bits != 0 && i < folded.size(); ++i, bits >>= 1U) {
            if ((bits & 1U) != 0)
                (*text)[start + i] = static_cast<char>((*text)[start + i] + ('a' - 'A'));
        }
    }
}

void FormatValue(const RecordKey &key, const ValueRecord &record, std::string *bytes) {
    Putter(bytes).Put(record.place).Put(record.type).Put(record.data).Seal(key);
}

bool ParseStore(std::string_view bytes, StoreRecord *record) noexcept {
    std::string_view magic;
    return Taker(bytes)
               .Take(kMagic.size(), &magic)
               .TakeFixed(&record->format)
               .TakeFixed(&record->next_id)
               .GoodAndEmpty() &&
           magic == kMagic;
}

void FormatStore(const RecordKey &key, const StoreRecord &record, std::string *bytes) {
    Putter(bytes).Put(kMagic).PutFixed(record.format).PutFixed(record.next_id).Seal(key);
}

void Seal(const RecordKey &key, std::string *bytes) noexcept {
    const std::uint32_t checksum =
        Checksum(key.View(), std::string_view(*bytes).substr(kChecksumSize));
    std::memcpy(bytes->data(), &checksum, sizeof checksum);
}

bool ChecksumHolds(std::string_view key, std::string_view bytes) noexcept {
    if (bytes.size() < kChecksumSize)
        return false;
    std::uint32_t stored = 0;
    std::memcpy(&stored, bytes.data(), sizeof stored);
    return stored == Checksum(key, bytes.substr(kChecksumSize));
}

}  // namespace regstore
