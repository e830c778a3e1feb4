// What the writer of .reg files gives, and that the reader gives every byte of it back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ntwin32/registry.h>

#include <random>

#include "regfile_support.h"

namespace regfile {
namespace {

std::vector<std::uint8_t> Bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

std::vector<std::uint8_t> Terminated(std::string_view text) {
    std::vector<std::uint8_t> bytes = Bytes(text);
    bytes.push_back(0);
    return bytes;
}

struct Written {
    const char *what;
    Value value;
    std::string line;
};

void PrintTo(const Written &written, std::ostream *out) {
    *out << written.what;
}

class WrittenTest : public testing::TestWithParam<Written> {};

TEST_P(WrittenTest, IsTheLineAndComesBack) {
    const Value &value = GetParam().value;
    const std::string text = FormatKey("a", {value});
    EXPECT_EQ(text, "[HKEY_LOCAL_MACHINE\\a]\r\n" + GetParam().line + "\r\n\r\n");
    for (const std::string &file :
         {FormatHeader() + text, ToUtf16WithMark(FormatHeader() + text)}) {
        std::vector<Change> changes;
        Problem problem;
        ASSERT_TRUE(Parse(file, &changes, &problem)) << Describe(problem);
        ASSERT_EQ(changes.size(), 2u);
        EXPECT_EQ(changes[1].name, value.name);
        EXPECT_EQ(changes[1].type, value.type);
        EXPECT_EQ(changes[1].data, value.data);
    }
}

const Written kWritten[] = {
    {"text", {"v", REG_SZ, Terminated("xy")}, "\"v\"=\"xy\""},
    {"empty text", {"v", REG_SZ, Terminated("")}, "\"v\"=\"\""},
    {"text with escapes", {"v", REG_SZ, Terminated("a\\\"b")}, "\"v\"=\"a\\\\\\\"b\""},
    {"text in Japanese", {"v", REG_SZ, Terminated("\xC6\xFC\x8E\xB1")}, "\"v\"=\"日ｱ\""},
    {"text with a tab", {"v", REG_SZ, Terminated("\t")}, "\"v\"=\"\t\""},
    {"text without data", {"v", REG_SZ, {}}, "\"v\"=hex(1):"},
    {"text without terminator", {"v", REG_SZ, Bytes("a")}, "\"v\"=hex(1):61"},
    {"text with two terminators", {"v", REG_SZ, {0x61, 0, 0}}, "\"v\"=hex(1):61,00,00"},
    {"text with a line break", {"v", REG_SZ, Terminated("\n")}, "\"v\"=hex(1):0a,00"},
    {"text with half a character", {"v", REG_SZ, Terminated("\xC6")}, "\"v\"=hex(1):c6,00"},
    {"text that is not EUC-JP", {"v", REG_SZ, Terminated("\xFF")}, "\"v\"=hex(1):ff,00"},
    {"text with a control character beyond ASCII",
     {"v", REG_SZ, Terminated("\x85")},
     "\"v\"=hex(1):85,00"},
    {"a number", {"v", REG_DWORD, {0x78, 0x56, 0x34, 0x12}}, "\"v\"=dword:12345678"},
    {"zero", {"v", REG_DWORD, {0, 0, 0, 0}}, "\"v\"=dword:00000000"},
    {"a number of another size", {"v", REG_DWORD, {1, 2, 3}}, "\"v\"=hex(4):01,02,03"},
    {"bytes", {"v", REG_BINARY, {0, 0xFF}}, "\"v\"=hex:00,ff"},
    {"no bytes", {"v", REG_BINARY, {}}, "\"v\"=hex:"},
    {"another type", {"v", REG_EXPAND_SZ, Terminated("a")}, "\"v\"=hex(2):61,00"},
    {"no type", {"v", REG_NONE, {}}, "\"v\"=hex(0):"},
    {"the largest type", {"v", 0xFFFFFFFF, {1}}, "\"v\"=hex(ffffffff):01"},
    {"the default value", {"", REG_SZ, Terminated("x")}, "@=\"x\""},
    {"a value named @", {"@", REG_SZ, Terminated("x")}, "\"@\"=\"x\""},
    {"a name with escapes", {"\\\"", REG_BINARY, {}}, "\"\\\\\\\"\"=hex:"},
    {"a name with control characters", {"\n\t\x7F", REG_BINARY, {}}, "\"\uF70A\t\uF77F\"=hex:"},
    {"a name with bytes of no character",
     {"\xC6\xFC\xFF\xC6", REG_BINARY, {}},
     "\"日\uF7FF\uF7C6\"=hex:"},
};
INSTANTIATE_TEST_SUITE_P(Values, WrittenTest, testing::ValuesIn(kWritten));

TEST(FormatTest, BeginsWithTheHeader) {
    EXPECT_EQ(FormatHeader(), "Windows Registry Editor Version 5.00\r\n\r\n");
}

TEST(FormatTest, WritesKeys) {
    EXPECT_EQ(FormatKey("", {}), "[HKEY_LOCAL_MACHINE]\r\n\r\n");
    EXPECT_EQ(FormatKey("a\\\xC6\xFC\\]\x80", {}), "[HKEY_LOCAL_MACHINE\\a\\日\\]\uF780]\r\n\r\n");
}

TEST(FormatTest, BreaksLongByteLists) {
    const std::string text = FormatKey("a", {{"v", REG_BINARY, std::vector<std::uint8_t>(60, 7)}});
    std::string list;
    std::size_t lines = 0;
    for (std::size_t start = text.find('"'); start < text.size();) {
        const std::size_t end = text.find("\r\n", start);
        EXPECT_LE(end - start, 80u);
        ++lines;
        start = end + 2;
        if (text[end - 1] != '\\') {
            break;
        }
        EXPECT_EQ(text.substr(start, 2), "  ");
    }
    EXPECT_EQ(lines, 3u);
}

TEST(FormatTest, GivesUtf16) {
    EXPECT_EQ(ToUtf16WithMark("a日"), std::string("\xFF\xFE"
                                                  "a\0\xE5\x65",
                                                  6));
}

// Reads what was written of one key and compares it byte by byte.
void ExpectRoundTrip(const std::string &path, const std::vector<Value> &values) {
    std::vector<Change> changes;
    Problem problem;
    ASSERT_TRUE(Parse(FormatHeader() + FormatKey(path, values), &changes, &problem))
        << Describe(problem);
    ASSERT_EQ(changes.size(), values.size() + 1);
    EXPECT_EQ(*changes[0].path, path);
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(changes[i + 1].name, values[i].name);
        EXPECT_EQ(changes[i + 1].type, values[i].type);
        EXPECT_EQ(changes[i + 1].data, values[i].data);
    }
}

TEST(RoundTripTest, EveryByteAndPairOfBytes) {
    std::vector<Value> values;
    for (unsigned first = 1; first < 0x100; ++first) {
        const std::string single(1, static_cast<char>(first));
        values.push_back({single, REG_SZ, Terminated(single)});
        for (unsigned second = 1; second < 0x100; ++second) {
            const std::string pair = single + static_cast<char>(second);
            values.push_back({pair, REG_SZ, Terminated(pair)});
        }
    }
    ExpectRoundTrip("a", values);
}

TEST(RoundTripTest, EveryCharacterOfThreeBytes) {
    std::vector<Value> values;
    for (unsigned second = 0xA1; second < 0xFF; ++second) {
        for (unsigned third = 0xA1; third < 0xFF; ++third) {
            const std::string character = {'\x8F', static_cast<char>(second),
                                           static_cast<char>(third)};
            values.push_back({character, REG_SZ, Terminated(character)});
        }
    }
    ExpectRoundTrip("a", values);
}

TEST(RoundTripTest, RandomNamesAndData) {
    std::mt19937 random(20);
    const auto below = [&random](unsigned limit) {
        return static_cast<unsigned>(random() % limit);
    };
    const auto name = [&](unsigned longest) {
        std::string text;
        for (unsigned length = 1 + below(longest); text.size() < length;) {
            const char byte = static_cast<char>(1 + below(255));
            text += byte == '\\' ? '/' : byte;
        }
        return text;
    };
    for (int round = 0; round < 300; ++round) {
        std::vector<Value> values;
        for (unsigned i = below(6); i > 0; --i) {
            std::vector<std::uint8_t> data(below(300));
            for (std::uint8_t &byte : data) {
                byte = static_cast<std::uint8_t>(below(256));
            }
            values.push_back({name(255), below(13), std::move(data)});
        }
        ExpectRoundTrip(name(255) + "\\" + name(20), values);
    }
}

}  // namespace
}  // namespace regfile
