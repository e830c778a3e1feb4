// Listing: the order of sub-keys and values, while they change too; buffers; what is known of a
// key.
#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <random>
#include <utility>

#include "registry_support.h"

namespace {

using namespace registry_test;

class ListingTest : public BothWays {};
INSTANTIATE_TEST_SUITE_P(Registry, ListingTest, BothWaysToRead(), WayName());

using Names = std::vector<std::string>;

// A name of a fixed width, so that numbers and names have one order.
std::string Numbered(const char *prefix, std::size_t number) {
    const std::string digits = std::to_string(number);
    return prefix + std::string(5 - digits.size(), '0') + digits;
}

// A key with sub-keys K00000... and values V00000..., whose data are their names.
HKEY Fill(const char *path, std::size_t sub_keys, std::size_t values) {
    const HKEY key = CreateKey(kRoot, path);
    Names names;
    for (std::size_t i = 0; i < sub_keys; ++i)
        names.push_back(Numbered("K", i));
    for (std::size_t i = 0; i < values; ++i)
        names.push_back(Numbered("V", i));
    std::vector<KES_REG_CHANGE> changes;
    for (const std::string &name : names) {
        if (name[0] == 'K')
            changes.push_back({KES_REG_CREATE_KEY, 0, name.c_str(), nullptr, nullptr, 0, 0});
        else
            changes.push_back({KES_REG_SET_VALUE, REG_SZ, "", name.c_str(),
                               reinterpret_cast<const BYTE *>(name.c_str()),
                               static_cast<DWORD>(name.size()), 0});
    }
    EXPECT_EQ(KesRegApplyBatch(key, changes.data(), static_cast<DWORD>(changes.size()), nullptr),
              ERROR_SUCCESS);
    return key;
}

LONG SubKeyAt(HKEY key, std::size_t index, std::string *found) {
    char name[256];
    DWORD size = sizeof name;
    const LONG result = RegEnumKeyEx(key, static_cast<DWORD>(index), name, &size, nullptr, nullptr,
                                     nullptr, nullptr);
    if (result == ERROR_SUCCESS)
        found->assign(name, size);
    return result;
}
LONG ValueAt(HKEY key, std::size_t index, std::string *found, std::string *data) {
    char name[256];
    BYTE bytes[4096];
    DWORD size = sizeof name;
    DWORD data_size = sizeof bytes;
    DWORD type = 0;
    const LONG result = RegEnumValue(key, static_cast<DWORD>(index), name, &size, nullptr, &type,
                                     bytes, &data_size);
    if (result == ERROR_SUCCESS) {
        found->assign(name, size);
        data->assign(reinterpret_cast<const char *>(bytes), data_size);
    }
    return result;
}

TEST_P(ListingTest, SubKeysComeInFoldedAlphabeticalOrder) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "ORDER");
        for (const char *name : {"beta", "Alpha", "ALPHA2", "_", "Z", "a", "\xA4\xA2", "10", "9"})
            CreateKey(key, name);
        EXPECT_EQ(SubKeys(key),
                  (Names{"10", "9", "a", "Alpha", "ALPHA2", "beta", "Z", "_", "\xA4\xA2"}));
        EXPECT_TRUE(Values(key).empty());
    });
}

TEST_P(ListingTest, ValuesComeInTheOrderOfTheirCreation) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "CREATION");
        for (const char *name : {"zeta", "", "Alpha", "middle"})
            SetText(key, name, name);
        SetText(key, "zeta", "replaced, in its place");
        EXPECT_EQ(Values(key), (Names{"zeta", "", "Alpha", "middle"}));
        EXPECT_EQ(RegDeleteValue(key, "zeta"), ERROR_SUCCESS);
        SetText(key, "ZETA", "new, at the end");
        EXPECT_EQ(Values(key), (Names{"", "Alpha", "middle", "ZETA"}));
    });
}

TEST_P(ListingTest, AnyIndexFindsItsItem) {
    Run([] {
        constexpr std::size_t kCount = 1500;  // several of the windows that are read ahead
        const HKEY key = Fill("MANY", kCount, kCount);
        const HKEY other = Fill("OTHER", 3, 3);
        std::vector<std::size_t> indexes;
        for (std::size_t i = 0; i < kCount; ++i)
            indexes.push_back(i);
        for (std::size_t i = kCount; i > 0; i -= 10)
            indexes.push_back(i - 1);
        std::minstd_rand random(5);
        for (int i = 0; i < 200; ++i)
            indexes.push_back(random() % kCount);
        std::string name;
        std::string data;
        for (const std::size_t index : indexes) {
            ASSERT_EQ(SubKeyAt(key, index, &name), ERROR_SUCCESS) << index;
            ASSERT_EQ(name, Numbered("K", index));
            ASSERT_EQ(ValueAt(key, index, &name, &data), ERROR_SUCCESS) << index;
            ASSERT_EQ(name, Numbered("V", index));
            ASSERT_EQ(data, name);
            // Another key in between must not be taken for this one.
            if (index % 100 == 0) {
                ASSERT_EQ(SubKeyAt(other, 2, &name), ERROR_SUCCESS);
                ASSERT_EQ(name, "K00002");
            }
        }
        for (const std::size_t past : {kCount, kCount + 1, std::size_t{0xFFFFFFFFU}}) {
            EXPECT_EQ(SubKeyAt(key, past, &name), ERROR_NO_MORE_ITEMS);
            EXPECT_EQ(ValueAt(key, past, &name, &data), ERROR_NO_MORE_ITEMS);
        }
    });
}

// Callers empty a key by taking its first item again and again, or from the last to the first.
TEST_P(ListingTest, DeletingWhileListing) {
    Run([] {
        constexpr std::size_t kCount = 12;
        const HKEY key = Fill("EMPTIED", kCount, kCount);
        std::string name;
        std::string data;
        for (std::size_t i = 0; i < kCount; ++i) {
            ASSERT_EQ(SubKeyAt(key, 0, &name), ERROR_SUCCESS);
            EXPECT_EQ(name, Numbered("K", i));
            ASSERT_EQ(RegDeleteKey(key, name.c_str()), ERROR_SUCCESS);
            ASSERT_EQ(ValueAt(key, kCount - 1 - i, &name, &data), ERROR_SUCCESS);
            EXPECT_EQ(name, Numbered("V", kCount - 1 - i));
            ASSERT_EQ(RegDeleteValue(key, name.c_str()), ERROR_SUCCESS);
        }
        EXPECT_EQ(SubKeyAt(key, 0, &name), ERROR_NO_MORE_ITEMS);
        EXPECT_EQ(ValueAt(key, 0, &name, &data), ERROR_NO_MORE_ITEMS);
    });
}

// What changes between two calls is seen by the second.
TEST_P(ListingTest, ChangesWhileListingAreSeen) {
    Run([] {
        const HKEY key = Fill("CHANGED", 10, 10);
        std::string name;
        std::string data;
        ASSERT_EQ(SubKeyAt(key, 4, &name), ERROR_SUCCESS);
        ASSERT_EQ(ValueAt(key, 4, &name, &data), ERROR_SUCCESS);
        CreateKey(key, "K00000A");  // before the place that was reached
        ASSERT_EQ(SubKeyAt(key, 5, &name), ERROR_SUCCESS);
        EXPECT_EQ(name, "K00004");
        ASSERT_EQ(RegDeleteValue(key, "V00000"), ERROR_SUCCESS);
        ASSERT_EQ(ValueAt(key, 5, &name, &data), ERROR_SUCCESS);
        EXPECT_EQ(name, "V00006");
        EXPECT_EQ(SetBytes(key, "V00007", REG_SZ, "other data"), ERROR_SUCCESS);
        ASSERT_EQ(ValueAt(key, 6, &name, &data), ERROR_SUCCESS);
        EXPECT_EQ(name, "V00007");
        EXPECT_EQ(data, "other data");
        ASSERT_EQ(RegDeleteKey(key, "K00005"), ERROR_SUCCESS);
        ASSERT_EQ(SubKeyAt(key, 6, &name), ERROR_SUCCESS);
        EXPECT_EQ(name, "K00006");
    });
}

TEST_P(ListingTest, BuffersOfTheExactSizeAndSmaller) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "BUFFERS");
        CreateKey(key, "FIVE5");
        SetText(key, "SIX666", "data");
        struct {
            DWORD capacity;
            LONG result;
            DWORD told;
            const char *left;
        } const rows[] = {{6, ERROR_SUCCESS, 5, "FIVE5"},
                          {5, ERROR_MORE_DATA, 6, "xxxxxxxxxxxxxxx"},
                          {0, ERROR_MORE_DATA, 6, "xxxxxxxxxxxxxxx"}};
        for (const auto &row : rows) {
            char name[16] = "xxxxxxxxxxxxxxx";
            DWORD size = row.capacity;
            EXPECT_EQ(RegEnumKeyEx(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr),
                      row.result);
            EXPECT_EQ(size, row.told);
            EXPECT_STREQ(name, row.left);
        }
    });
}

TEST_P(ListingTest, AValueWhoseNameOrDataDoNotFitIsLeftAlone) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "VALUEBUFFERS");
        SetText(key, "SIX666", "data");
        struct {
            DWORD name_capacity;
            DWORD data_capacity;
            LONG result;
        } const rows[] = {{7, 5, ERROR_SUCCESS},
                          {6, 5, ERROR_MORE_DATA},
                          {7, 4, ERROR_MORE_DATA},
                          {0, 0, ERROR_MORE_DATA}};
        for (const auto &row : rows) {
            SCOPED_TRACE(row.name_capacity * 10 + row.data_capacity);
            char name[8] = "xxxxxxx";
            BYTE data[8] = "yyyyyyy";
            DWORD name_size = row.name_capacity;
            DWORD data_size = row.data_capacity;
            EXPECT_EQ(RegEnumValue(key, 0, name, &name_size, nullptr, nullptr, data, &data_size),
                      row.result);
            const bool whole = row.result == ERROR_SUCCESS;
            EXPECT_STREQ(name, whole ? "SIX666" : "xxxxxxx");
            EXPECT_STREQ(reinterpret_cast<char *>(data), whole ? "data" : "yyyyyyy");
            EXPECT_EQ(name_size, row.name_capacity >= 7 ? (whole ? 6U : 7U) : 7U);
            EXPECT_EQ(data_size, row.data_capacity >= 5 ? row.data_capacity : 5U);
        }
        DWORD size = 8;
        char name[8];
        DWORD type = 0;
        EXPECT_EQ(RegEnumValue(key, 0, name, &size, nullptr, &type, nullptr, nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(type, REG_SZ);
        EXPECT_EQ(RegEnumValue(key, 0, name, nullptr, nullptr, nullptr, nullptr, nullptr),
                  ERROR_INVALID_PARAMETER);
        EXPECT_EQ(RegEnumValue(key, 0, nullptr, &size, nullptr, nullptr, nullptr, nullptr),
                  ERROR_INVALID_PARAMETER);
        EXPECT_EQ(RegEnumKeyEx(key, 0, name, nullptr, nullptr, nullptr, nullptr, nullptr),
                  ERROR_INVALID_PARAMETER);
        BYTE data[8];
        EXPECT_EQ(RegEnumValue(key, 0, name, &size, nullptr, nullptr, data, nullptr),
                  ERROR_INVALID_PARAMETER);
    });
}

// Data that are too long to be kept beside the names of a window.
TEST_P(ListingTest, LargeDataAreListedToo) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "LARGE");
        for (const char letter : {'a', 'b', 'c'})
            EXPECT_EQ(SetBytes(key, std::string(1, letter).c_str(), REG_BINARY,
                               std::string(4000, letter)),
                      ERROR_SUCCESS);
        std::string name;
        std::string data;
        for (std::size_t index = 0; index < 3; ++index) {
            ASSERT_EQ(ValueAt(key, index, &name, &data), ERROR_SUCCESS);
            EXPECT_EQ(data, std::string(4000, static_cast<char>('a' + index)));
        }
    });
}

TEST_P(ListingTest, InformationOfAKey) {
    Run([] {
        HKEY key = 0;
        ASSERT_EQ(
            RegCreateKeyEx(kRoot, "INFO", 0, "class", 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
            ERROR_SUCCESS);
        HKEY sub_key = 0;
        ASSERT_EQ(RegCreateKeyEx(key, "LONGEST", 0, "longer class", 0, KEY_ALL_ACCESS, nullptr,
                                 &sub_key, nullptr),
                  ERROR_SUCCESS);
        CreateKey(key, "S\\BELOW IS NOT COUNTED");
        SetText(key, "name", "of seven");
        SetText(key, "n", "the longest data");
        char text[16] = "x";
        DWORD text_size = sizeof text;
        DWORD numbers[7] = {};
        FILETIME time = {};
        ASSERT_EQ(
            RegQueryInfoKey(key, text, &text_size, nullptr, &numbers[0], &numbers[1], &numbers[2],
                            &numbers[3], &numbers[4], &numbers[5], &numbers[6], &time),
            ERROR_SUCCESS);
        EXPECT_STREQ(text, "class");
        EXPECT_EQ(text_size, 5U);
        EXPECT_THAT(numbers, testing::ElementsAre(2, 7, 12, 2, 4, 17, 0));
        EXPECT_GT(time.dwHighDateTime, 0x01D90000U) << "2023 or later";
        text_size = 5;
        EXPECT_EQ(RegQueryInfoKey(key, text, &text_size, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr, nullptr),
                  ERROR_MORE_DATA);
        EXPECT_EQ(text_size, 6U);
        EXPECT_EQ(RegQueryInfoKey(key, text, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr),
                  ERROR_INVALID_PARAMETER);
    });
}

std::uint64_t ToNumber(const FILETIME &time) {
    return (std::uint64_t{time.dwHighDateTime} << 32U) | time.dwLowDateTime;
}

TEST_P(ListingTest, EachSubKeyIsListedWithItsClass) {
    Run([] {
        const std::string longest(255, 'c');
        const std::pair<std::string, std::string> sub_keys[] = {
            {"A", "one"}, {"B", ""}, {"C", longest}};
        const HKEY key = CreateKey(kRoot, "CLASSES");
        for (const auto &[name, class_text] : sub_keys) {
            HKEY made = 0;
            ASSERT_EQ(RegCreateKeyEx(key, name.c_str(), 0, class_text.c_str(), 0, KEY_ALL_ACCESS,
                                     nullptr, &made, nullptr),
                      ERROR_SUCCESS);
        }
        DWORD index = 0;
        for (const auto &[name, class_text] : sub_keys) {
            char found_name[16];
            char found_class[256];
            DWORD name_size = sizeof found_name;
            DWORD class_size = sizeof found_class;
            ASSERT_EQ(RegEnumKeyEx(key, index++, found_name, &name_size, nullptr, found_class,
                                   &class_size, nullptr),
                      ERROR_SUCCESS);
            EXPECT_EQ(found_name, name);
            EXPECT_EQ(found_class, class_text);
        }
        const auto longest_class = [&] {
            DWORD length = 0;
            EXPECT_EQ(RegQueryInfoKey(key, nullptr, nullptr, nullptr, nullptr, nullptr, &length,
                                      nullptr, nullptr, nullptr, nullptr, nullptr),
                      ERROR_SUCCESS);
            return length;
        };
        EXPECT_EQ(longest_class(), 255U);
        ASSERT_EQ(RegDeleteKey(key, "C"), ERROR_SUCCESS);
        EXPECT_EQ(longest_class(), 3U);
    });
}

TEST_P(ListingTest, TheTimeOfTheLastChangeMoves) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "TIME");
        CreateKey(key, "SUB");
        const auto times = [&] {
            FILETIME own = {};
            FILETIME of_sub_key = {};
            char name[16];
            char class_text[16] = "x";
            DWORD size = sizeof name;
            DWORD class_size = sizeof class_text;
            EXPECT_EQ(RegQueryInfoKey(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      nullptr, nullptr, nullptr, nullptr, &own),
                      ERROR_SUCCESS);
            EXPECT_EQ(
                RegEnumKeyEx(key, 0, name, &size, nullptr, class_text, &class_size, &of_sub_key),
                ERROR_SUCCESS);
            EXPECT_STREQ(class_text, "");
            return std::pair(ToNumber(own), ToNumber(of_sub_key));
        };
        const auto before = times();
        SetText(key, "V", "text");
        const auto after = times();
        EXPECT_GT(after.first, before.first);
        EXPECT_EQ(after.second, before.second);
        SetText(OpenKey(key, "SUB"), "V", "text");
        EXPECT_GT(times().second, after.second);
        EXPECT_EQ(times().first, after.first);
    });
}

}  // namespace
