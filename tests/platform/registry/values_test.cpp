// Values: types, sizes, buffers, names and limits.
#include <ntwin32/registry.h>

#include "registry_support.h"

namespace {

using namespace registry_test;

class ValuesTest : public BothWays {};
INSTANTIATE_TEST_SUITE_P(Registry, ValuesTest, BothWaysToRead(), WayName());

struct Answer {
    LONG result;
    DWORD type;
    DWORD size;
    std::string buffer;  // all of it
};

// Reads with a buffer of so many bytes, filled with 'x' before.
Answer Query(HKEY key, const char *name, DWORD capacity) {
    Answer answer = {0, 77, capacity, std::string(capacity + 4, 'x')};
    answer.result = RegQueryValueEx(key, name, nullptr, &answer.type,
                                    reinterpret_cast<BYTE *>(answer.buffer.data()), &answer.size);
    EXPECT_EQ(answer.buffer.substr(capacity), "xxxx") << "written past the buffer";
    answer.buffer.resize(capacity);
    return answer;
}

TEST_P(ValuesTest, ABufferOfTheExactSizeIsEnough) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "EXACT");
        SetText(key, "TEXT", "nine more");
        const Answer exact = Query(key, "TEXT", 10);
        EXPECT_EQ(exact.result, ERROR_SUCCESS);
        EXPECT_EQ(exact.type, REG_SZ);
        EXPECT_EQ(exact.size, 10U);
        EXPECT_EQ(exact.buffer, std::string("nine more\0", 10));
        const Answer larger = Query(key, "TEXT", 128);
        EXPECT_EQ(larger.size, 10U);
        EXPECT_EQ(larger.buffer.substr(10), std::string(118, 'x')) << "nothing is padded";
    });
}

TEST_P(ValuesTest, ATooSmallBufferIsLeftAlone) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "SMALL");
        SetText(key, "TEXT", "nine more");
        for (const DWORD capacity : {0U, 1U, 9U}) {
            const Answer answer = Query(key, "TEXT", capacity);
            EXPECT_EQ(answer.result, ERROR_MORE_DATA);
            EXPECT_EQ(answer.type, REG_SZ);
            EXPECT_EQ(answer.size, 10U);
            EXPECT_EQ(answer.buffer, std::string(capacity, 'x'));
        }
    });
}

TEST_P(ValuesTest, WithoutABufferTypeAndSizeAreTold) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "NULLS");
        EXPECT_EQ(SetBytes(key, "DWORD", REG_DWORD, {"\x01\0\0\0", 4}), ERROR_SUCCESS);
        DWORD type = 0;
        DWORD size = 3;  // means nothing without a buffer
        EXPECT_EQ(RegQueryValueEx(key, "DWORD", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
        EXPECT_EQ(type, REG_DWORD);
        EXPECT_EQ(size, 4U);
        EXPECT_EQ(RegQueryValueEx(key, "DWORD", nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
        BYTE data[4] = {};
        EXPECT_EQ(RegQueryValueEx(key, "DWORD", nullptr, nullptr, data, nullptr),
                  ERROR_INVALID_PARAMETER);
        size = sizeof data;
        EXPECT_EQ(RegQueryValueEx(key, "DWORD", nullptr, nullptr, data, &size), ERROR_SUCCESS);
        EXPECT_EQ(data[0], 1);
    });
}

TEST_P(ValuesTest, AMissingValueTouchesNothing) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "MISSING");
        const Answer answer = Query(key, "ABSENT", 8);
        EXPECT_EQ(answer.result, ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(answer.type, 77U);
        EXPECT_EQ(answer.size, 8U);
        EXPECT_EQ(answer.buffer, std::string(8, 'x'));
        EXPECT_EQ(RegDeleteValue(key, "ABSENT"), ERROR_FILE_NOT_FOUND);
    });
}

// Text that was stored without terminator comes without, and data are any bytes.
TEST_P(ValuesTest, BytesComeAsTheyWereStored) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "BYTES");
        EXPECT_EQ(SetBytes(key, "UNENDED", REG_SZ, "abc"), ERROR_SUCCESS);
        EXPECT_EQ(ReadBytes(key, "UNENDED"), "abc");
        EXPECT_EQ(Query(key, "UNENDED", 3).result, ERROR_SUCCESS);
        const std::string zeros("a\0b\0\0", 5);
        EXPECT_EQ(SetBytes(key, "ZEROS", REG_MULTI_SZ, zeros), ERROR_SUCCESS);
        EXPECT_EQ(ReadBytes(key, "ZEROS"), zeros);
        EXPECT_EQ(SetBytes(key, "ODD", REG_DWORD, "12345"), ERROR_SUCCESS);
        EXPECT_EQ(ReadBytes(key, "ODD"), "12345");
        EXPECT_EQ(SetBytes(key, "TYPE", 0xFFFFFFFFU, "x"), ERROR_SUCCESS);
        EXPECT_EQ(Query(key, "TYPE", 1).type, 0xFFFFFFFFU);
    });
}

TEST_P(ValuesTest, AnEmptyValueIsAValue) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "EMPTY");
        EXPECT_EQ(RegSetValueEx(key, "NULL", 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
        EXPECT_EQ(RegSetValueEx(key, "NEVER", 0, REG_BINARY, nullptr, 1), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(SetBytes(key, "", REG_SZ, ""), ERROR_SUCCESS);
        const Answer answer = Query(key, "NULL", 0);
        EXPECT_EQ(answer.result, ERROR_SUCCESS);
        EXPECT_EQ(answer.type, REG_BINARY);
        EXPECT_EQ(answer.size, 0U);
        EXPECT_EQ(ReadBytes(key, "NEVER"), std::nullopt);
        EXPECT_EQ(Values(key), (std::vector<std::string>{"NULL", ""}));
    });
}

TEST_P(ValuesTest, NoNameIsTheDefaultValue) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "DEFAULT");
        EXPECT_EQ(ReadBytes(key, nullptr), std::nullopt);
        EXPECT_EQ(SetBytes(key, nullptr, REG_BINARY, "null"), ERROR_SUCCESS);
        EXPECT_EQ(ReadBytes(key, ""), "null");
        EXPECT_EQ(SetBytes(key, "", REG_BINARY, "empty"), ERROR_SUCCESS);
        EXPECT_EQ(ReadBytes(key, nullptr), "empty");
        EXPECT_EQ(RegDeleteValue(key, nullptr), ERROR_SUCCESS);
        EXPECT_EQ(ReadBytes(key, ""), std::nullopt);
    });
}

TEST_P(ValuesTest, NamesCompareWithoutCaseAndKeepTheirSpelling) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "CASE");
        SetText(key, "CommandLine", "first");
        SetText(key, "COMMANDLINE", "second");
        EXPECT_EQ(ReadBytes(key, "commandline"), std::string("second") + '\0');
        EXPECT_EQ(Values(key), std::vector<std::string>{"CommandLine"});
        EXPECT_EQ(RegDeleteValue(key, "cOMMANDlINE"), ERROR_SUCCESS);
        EXPECT_TRUE(Values(key).empty());
        SetText(key, "a\\b", "a separator is a letter here");
        EXPECT_EQ(Values(key), std::vector<std::string>{"a\\b"});
    });
}

TEST_P(ValuesTest, ReplacingChangesTypeAndSize) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "REPLACED");
        EXPECT_EQ(SetBytes(key, "V", REG_BINARY, std::string(5000, 'l')), ERROR_SUCCESS);
        EXPECT_EQ(SetBytes(key, "V", REG_SZ, "s"), ERROR_SUCCESS);
        const Answer answer = Query(key, "V", 8);
        EXPECT_EQ(answer.type, REG_SZ);
        EXPECT_EQ(answer.size, 1U);
        EXPECT_EQ(answer.buffer, "sxxxxxxx");
    });
}

TEST_P(ValuesTest, TheLongestNameWorksAndALongerOneIsRefused) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "LONGNAME");
        const std::string longest(KES_REG_MAX_VALUE_NAME, 'n');
        const std::string longer = longest + "n";
        SetText(key, longest, "text");
        EXPECT_EQ(ReadBytes(key, longest.c_str()), std::string("text") + '\0');
        EXPECT_EQ(Values(key), std::vector<std::string>{longest});
        EXPECT_EQ(SetBytes(key, longer.c_str(), REG_SZ, "t"), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(Query(key, longer.c_str(), 8).result, ERROR_INVALID_PARAMETER);
        EXPECT_EQ(RegDeleteValue(key, longer.c_str()), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(Values(key), std::vector<std::string>{longest});
    });
}

TEST_P(ValuesTest, TheLargestDataWorkAndLargerOnesAreRefused) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "LARGE");
        std::string largest(KES_REG_MAX_DATA, 'd');
        largest.front() = 'f';
        largest.back() = 'b';
        EXPECT_EQ(SetBytes(key, "V", REG_BINARY, largest), ERROR_SUCCESS);
        EXPECT_EQ(ReadBytes(key, "V"), largest);
        EXPECT_EQ(SetBytes(key, "V", REG_BINARY, largest + "d"), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(ReadBytes(key, "V"), largest);
        EXPECT_EQ(Query(key, "V", KES_REG_MAX_DATA - 1).result, ERROR_MORE_DATA);
    });
}

// Sizes around every boundary of pages and frames.
TEST_P(ValuesTest, EverySizeComesBack) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "SIZES");
        std::vector<std::string> names;
        std::vector<KES_REG_CHANGE> changes;
        std::vector<std::string> contents;
        for (const std::size_t size : {1U, 15U, 511U, 512U, 513U, 2000U, 2047U, 4050U, 4095U, 4096U,
                                       8192U, 16383U, 16384U, 65536U, 262144U, 300000U}) {
            names.push_back("V" + std::to_string(size));
            contents.emplace_back(size, static_cast<char>('a' + size % 26));
        }
        for (std::size_t i = 0; i < names.size(); ++i)
            changes.push_back({KES_REG_SET_VALUE, REG_BINARY, "", names[i].c_str(),
                               reinterpret_cast<const BYTE *>(contents[i].data()),
                               static_cast<DWORD>(contents[i].size()), 0});
        ASSERT_EQ(
            KesRegApplyBatch(key, changes.data(), static_cast<DWORD>(changes.size()), nullptr),
            ERROR_SUCCESS);
        for (std::size_t i = 0; i < names.size(); ++i)
            EXPECT_EQ(ReadBytes(key, names[i].c_str()), contents[i]) << names[i];
    });
}

}  // namespace
