// The list of a key's values and the spelling of names, whatever happened to them.
#include <algorithm>
#include <array>
#include <random>

#include "registry_support.h"

namespace {

using namespace registry_test;

struct Stored {
    std::string name;
    DWORD type;
    std::string data;
    friend bool operator==(const Stored &, const Stored &) = default;
};

// What a key should hold, in order, and the changes that were made to it.
class History {
  public:
    explicit History(unsigned seed) : random_(seed) {}

    // Some changes at once, or one after the other.
    void Change(HKEY key, std::size_t count, bool at_once) {
        std::vector<Stored> texts;
        std::vector<KES_REG_CHANGE> changes;
        texts.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            texts.push_back(Next());
            const Stored &text = texts.back();
            const bool deletes = text.type == kDelete;
            if (deletes)
                values_.erase(Find(text.name));
            else
                Set(text);
            changes.push_back({deletes ? DWORD{KES_REG_DELETE_VALUE} : DWORD{KES_REG_SET_VALUE},
                               deletes ? 0 : text.type, "", text.name.c_str(),
                               reinterpret_cast<const BYTE *>(text.data.data()),
                               static_cast<DWORD>(text.data.size()), 0});
        }
        const std::size_t step = at_once ? count : 1;
        for (std::size_t i = 0; i < count; i += step)
            ASSERT_EQ(KesRegApplyBatch(key, &changes[i], static_cast<DWORD>(step), nullptr),
                      ERROR_SUCCESS);
    }
    const std::vector<Stored> &Values() const { return values_; }

  private:
    static constexpr DWORD kDelete = ~DWORD{0};
    // Around what a list keeps, what a part of it keeps, and what a page keeps.
    static constexpr std::array<std::size_t, 10> kSizes = {0,   1,   31,  200,  255,
                                                           256, 257, 900, 2000, 5000};

    std::size_t Below(std::size_t limit) { return random_() % limit; }

    // One change: half of the names are new, and now and then one goes.
    Stored Next() {
        const bool exists = !values_.empty() && Below(2) == 0;
        if (exists && Below(3) == 0)
            return {values_[Below(values_.size())].name, kDelete, ""};
        const std::string name = exists
                                     ? values_[Below(values_.size())].name
                                     : std::string(1 + Below(40), 'n') + std::to_string(number_++);
        return {name, static_cast<DWORD>(Below(12)),
                std::string(kSizes[Below(kSizes.size())], static_cast<char>('a' + Below(26)))};
    }
    std::vector<Stored>::iterator Find(const std::string &name) {
        return std::find_if(values_.begin(), values_.end(),
                            [&](const Stored &value) { return value.name == name; });
    }
    void Set(const Stored &value) {
        const auto found = Find(value.name);
        if (found == values_.end())
            values_.push_back(value);
        else
            *found = value;
    }

    std::minstd_rand random_;
    std::vector<Stored> values_;
    int number_ = 0;
};

Stored ValueAt(HKEY key, std::size_t index) {
    char name[KES_REG_MAX_VALUE_NAME + 1];
    DWORD name_size = sizeof name;
    Stored value = {"", 0, std::string(8192, '\0')};
    auto size = static_cast<DWORD>(value.data.size());
    const LONG result =
        RegEnumValue(key, static_cast<DWORD>(index), name, &name_size, nullptr, &value.type,
                     reinterpret_cast<BYTE *>(value.data.data()), &size);
    if (result != ERROR_SUCCESS)
        return {"result " + std::to_string(result), 0, ""};
    value.name.assign(name, name_size);
    value.data.resize(size);
    return value;
}

void ExpectListed(HKEY key, const std::vector<Stored> &expected) {
    for (std::size_t i = 0; i < expected.size(); ++i)
        ASSERT_EQ(ValueAt(key, i), expected[i]) << i;
    for (std::size_t i = expected.size(); i > 0; i -= std::min<std::size_t>(i, 7))
        ASSERT_EQ(ValueAt(key, i - 1), expected[i - 1]) << i;
    ASSERT_EQ(ValueAt(key, expected.size()).name, "result 259");
}

class ValueListTest : public BothWays {};

INSTANTIATE_TEST_SUITE_P(Registry, ValueListTest, BothWaysToRead(), WayName());

TEST_P(ValueListTest, AnyHistoryIsListedInItsOrder) {
    constexpr std::size_t kSteps = 60;
    Run([] {
        History history(7);
        const HKEY key = CreateKey(kRoot, "HISTORY");
        const HKEY before = CreateKey(kRoot, "BEFORE\\BELOW");
        SetText(before, "A", "beside it");
        SetText(CreateKey(kRoot, "BEHIND"), "B", "beside it, too");
        for (std::size_t step = 0; step < kSteps; ++step) {
            history.Change(key, 1 + step % 50, step % 3 != 0);
            ExpectListed(key, history.Values());
        }
        EXPECT_GT(history.Values().size(), 300U);
        EXPECT_EQ(Values(before), (std::vector<std::string>{"A"}));
    });
    // A start verifies the whole store.
    server_.Stop();
    server_.Start();
    History history(7);
    // The same changes to another key: what both hold is the same.
    const HKEY again = CreateKey(kRoot, "AGAIN");
    for (std::size_t step = 0; step < kSteps; ++step)
        history.Change(again, 1 + step % 50, step % 3 != 0);
    ExpectListed(OpenKey(kRoot, "HISTORY"), history.Values());
}

// Enumerating goes on where it was while data, but no names, change under it.
TEST_P(ValueListTest, DataThatGrowWhileTheyAreListed) {
    Run([] {
        constexpr std::size_t kCount = 300;
        const HKEY key = CreateKey(kRoot, "GROWS");
        std::vector<Stored> expected;
        for (std::size_t i = 0; i < kCount; ++i) {
            expected.push_back({"V" + std::to_string(i), REG_SZ, "short"});
            ASSERT_EQ(SetBytes(key, expected[i].name.c_str(), REG_SZ, "short"), ERROR_SUCCESS);
        }
        for (std::size_t i = 0; i < kCount; ++i) {
            ASSERT_EQ(ValueAt(key, i), expected[i]) << i;
            Stored &other = expected[i * 7 % kCount];
            other = {other.name, REG_BINARY, std::string(i % 260, 'x')};
            ASSERT_EQ(SetBytes(key, other.name.c_str(), REG_BINARY, other.data), ERROR_SUCCESS);
        }
        ExpectListed(key, expected);
    });
}

// Only the letters of ASCII have a small and a capital form; a sub-key keeps the form it was made
// with.
TEST_P(ValueListTest, NamesOfSubKeysKeepTheirSpelling) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "SPELLED");
        std::vector<std::string> names = {"ABCDEFGHIJ",
                                          "abcdefghij0",
                                          "AutoSend",
                                          "x",
                                          "@[`{",
                                          "a\xE9\xC9z",
                                          "12345678a",
                                          "12345678A9",
                                          std::string(255, 'm'),
                                          std::string(254, 'N') + "n"};
        for (const std::string &name : names)
            (void)CreateKey(key, name);
        for (const std::string &name : names)
            (void)CreateKey(key, name + "\\BELOW");
        std::vector<std::string> listed = SubKeys(key);
        std::sort(names.begin(), names.end());
        std::sort(listed.begin(), listed.end());
        EXPECT_EQ(listed, names);
    });
}

}  // namespace
