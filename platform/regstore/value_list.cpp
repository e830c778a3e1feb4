#include "regstore/value_list.h"

namespace regstore {

namespace {

std::uint16_t CountAt(const char *where) noexcept {
    std::uint16_t count = 0;
    std::memcpy(&count, where, sizeof count);
    return count;
}

}  // namespace

ListPart::ListPart(std::uint64_t first_place, std::string_view bytes) noexcept
    : first_place_(first_place) {
    if (bytes.size() < kChecksumSize + sizeof count_)
        return;
    count_ = CountAt(bytes.data() + kChecksumSize);
    rest_ = bytes.substr(kChecksumSize + sizeof count_);
}

bool ListPart::Next(ListedValue *value) noexcept {
    std::size_t name_size = 0;
    std::size_t data_mark = 0;
    if (taken_ == count_ || !TakeNumber(&rest_, &value->place) || !TakeNumber(&rest_, &name_size) ||
        name_size > rest_.size())
        return false;
    value->place += first_place_;
    value->name = rest_.substr(0, name_size);
    rest_.remove_prefix(name_size);
    if (!TakeNumber(&rest_, &data_mark))
        return false;
    value->has_data = data_mark != 0;
    value->data = {};
    if (value->has_data) {
        if (!TakeNumber(&rest_, &value->type) || data_mark - 1 > rest_.size())
            return false;
        value->data = rest_.substr(0, data_mark - 1);
        rest_.remove_prefix(data_mark - 1);
    }
    ++taken_;
    return true;
}

void ListPartMaker::Begin(std::uint64_t first_place) {
    first_place_ = first_place;
    bytes_.assign(kHeaderSize, '\0');
}

bool ListPartMaker::Resume(std::uint64_t first_place, std::string_view bytes) {
    first_place_ = first_place;
    bytes_ = bytes;
    return bytes_.size() >= kHeaderSize;
}

bool ListPartMaker::Add(const ListedValue &value) {
    const std::size_t size_before = bytes_.size();
    AppendNumber(value.place - first_place_, &bytes_);
    AppendNumber(value.name.size(), &bytes_);
    bytes_.append(value.name);
    AppendNumber(value.has_data ? value.data.size() + 1 : 0, &bytes_);
    if (value.has_data) {
        AppendNumber(value.type, &bytes_);
        bytes_.append(value.data);
    }
    if (bytes_.size() > kMaxListPart) {
        bytes_.resize(size_before);
        return false;
    }
    const auto count = static_cast<std::uint16_t>(CountAt(bytes_.data() + kChecksumSize) + 1);
    std::memcpy(bytes_.data() + kChecksumSize, &count, sizeof count);
    return true;
}

const std::string &ListPartMaker::Seal(KeyId id) noexcept {
    regstore::Seal(RecordKey(id, first_place_), &bytes_);
    return bytes_;
}

ListedValue Listed(std::uint64_t place, std::string_view name, std::uint32_t type,
                   std::string_view data) noexcept {
    if (data.size() > kMaxListedData)
        return {place, name, false, 0, {}};
    return {place, name, true, type, data};
}

}  // namespace regstore
