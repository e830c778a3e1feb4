// What the reader of .reg files refuses: the place in line and character, and the cause.
#include <gtest/gtest.h>
#include <ntwin32/registry.h>

#include "regfile_support.h"

namespace regfile {
namespace {

struct Refused {
    const char *what;
    std::string bytes;
    const char *problem;
};

void PrintTo(const Refused &refused, std::ostream *out) {
    *out << refused.what;
}

class RefusedTest : public testing::TestWithParam<Refused> {};

TEST_P(RefusedTest, TellsPlaceAndCauseAndLeavesTheChanges) {
    std::vector<Change> changes(1);
    changes[0].name = "untouched";
    Problem problem;
    EXPECT_FALSE(Parse(GetParam().bytes, &changes, &problem));
    EXPECT_EQ(Describe(problem), GetParam().problem);
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(changes[0].name, "untouched");
}

// A file of header, one key and the given line, which is line 3.
std::string Value(const std::string &line) {
    return WithHeader("[HKLM\\a]\n" + line);
}

std::string Repeated(const std::string &text, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

const Refused kFiles[] = {
    {"an empty file", "", "1:1: The first line is not \"Windows Registry Editor Version 5.00\""},
    {"another first line", "\nWindows Registry Editor Version 5.00\n",
     "1:1: The first line is not \"Windows Registry Editor Version 5.00\""},
    {"another version", "Windows Registry Editor Version 6.00\n",
     "1:1: The first line is not \"Windows Registry Editor Version 5.00\""},
    {"more behind the version", "Windows Registry Editor Version 5.001\n",
     "1:37: Nothing but a comment may follow here"},
    {"version 4", "REGEDIT4\r\n",
     "1:1: Files of version 4 are not read, only those of version 5.00"},
    {"UTF-16 in big-endian order", std::string("\xFE\xFF\0W", 4),
     "1:1: UTF-16 in big-endian order is not read"},
    {"UTF-16LE without mark", std::string("W\0i\0", 4),
     "1:1: UTF-16 is read only with a byte order mark"},
    {"UTF-16BE without mark", std::string("\0W\0i", 4),
     "1:1: UTF-16 is read only with a byte order mark"},
    {"half a UTF-16 unit", ToUtf16WithMark(WithHeader("; ")) + "x",
     "2:3: The bytes are not UTF-16"},
    {"an unpaired UTF-16 surrogate",
     ToUtf16WithMark(WithHeader("\n;日")) + std::string("\x00\xD8x\0", 4),
     "3:3: The bytes are not UTF-16"},
    {"EUC-JP bytes", Value("\"日\"=\"\xC6\xFC\"\n"), "3:6: The bytes are not UTF-8"},
    {"a cut UTF-8 character", WithHeader("; \xE3\x81"), "2:3: The bytes are not UTF-8"},
    {"an overlong UTF-8 character", WithHeader("\xC0\x80"), "2:1: The bytes are not UTF-8"},
    {"an overlong UTF-8 character of three bytes", WithHeader("\xE0\x80\x80"),
     "2:1: The bytes are not UTF-8"},
    {"a surrogate in UTF-8", WithHeader("\xED\xA0\x80"), "2:1: The bytes are not UTF-8"},
    {"UTF-8 beyond Unicode", WithHeader("\xF4\x90\x80\x80"), "2:1: The bytes are not UTF-8"},
    {"a zero byte", WithHeader(std::string("; a\0", 4)), "2:4: A zero byte stands in the text"},
    {"a zero character in UTF-16", ToUtf16WithMark(WithHeader("\n")) + std::string("\0\0", 2),
     "3:1: A zero byte stands in the text"},
};
INSTANTIATE_TEST_SUITE_P(Files, RefusedTest, testing::ValuesIn(kFiles));

const Refused kKeys[] = {
    {"another root", WithHeader("[HKEY_CURRENT_USER\\a]"),
     "2:2: The key does not begin with HKEY_LOCAL_MACHINE"},
    {"a longer root", WithHeader("[HKEY_LOCAL_MACHINES]"),
     "2:2: The key does not begin with HKEY_LOCAL_MACHINE"},
    {"no root", WithHeader("  []"), "2:4: The key does not begin with HKEY_LOCAL_MACHINE"},
    {"a key without end", WithHeader("[HKLM\\a"), "2:1: The key is not closed by a bracket"},
    {"text behind a key", WithHeader("[HKLM\\a] b"), "2:10: Nothing but a comment may follow here"},
    {"a path that begins with two separators", WithHeader("[HKLM\\\\a]"),
     "2:7: A name in the key's path is empty"},
    {"a path with two separators", WithHeader("[HKLM\\日\\\\b]"),
     "2:9: A name in the key's path is empty"},
    {"a path that ends with a separator", WithHeader("[HKLM\\a\\]"),
     "2:9: A name in the key's path is empty"},
    {"the root deleted", WithHeader("[-HKLM]"), "2:2: The root cannot be deleted"},
    {"a character that EUC-JP lacks", WithHeader("[HKLM\\日é\\€]"),
     "2:10: EUC-JP lacks the character U+20AC"},
    {"a separator in the form of a byte", WithHeader("[HKLM\\a\uF75C]"),
     "2:8: EUC-JP lacks the character U+F75C"},
    {"a zero byte in the form of a byte", WithHeader("[HKLM\\a\uF700]"),
     "2:8: EUC-JP lacks the character U+F700"},
    {"a long name", WithHeader("[HKLM\\a\\" + std::string(256, 'k') + "\\b]"),
     "2:9: The key's name exceeds 255 bytes"},
    {"a name that is long in EUC-JP", WithHeader("[HKLM\\" + Repeated("日", 128) + "]"),
     "2:7: The key's name exceeds 255 bytes"},
    {"a deep path", WithHeader("[HKLM" + Repeated("\\a", 513) + "]"),
     "2:1031: The key lies deeper than 512 keys"},
};
INSTANTIATE_TEST_SUITE_P(Keys, RefusedTest, testing::ValuesIn(kKeys));

const Refused kValues[] = {
    {"a line that is nothing", Value(" v=1"),
     "3:2: The line is neither a key, a value nor a comment"},
    {"a value before the first key", WithHeader("\"v\"=-"),
     "2:1: The value stands before the first key"},
    {"a value of a deleted key", WithHeader("[-HKLM\\a]\n @=-"),
     "3:2: The value stands below a key that is deleted"},
    {"a name without end", Value("\"v=-"), "3:1: The quoted text is not closed on its line"},
    {"no equals sign", Value("\"v\" dword:1"),
     "3:5: An equals sign is missing after the value's name"},
    {"no data", Value("\"v\"="),
     "3:5: The data is neither quoted text, dword:, hex:, hex(n): nor -"},
    {"unknown data", Value("\"日\"=qword:1"),
     "3:5: The data is neither quoted text, dword:, hex:, hex(n): nor -"},
    {"text without end", Value("\"v\"=\"a\\\""), "3:5: The quoted text is not closed on its line"},
    {"text over two lines", Value("\"v\"=\"a\nb\""),
     "3:5: The quoted text is not closed on its line"},
    {"an unknown escape", Value("\"v\"=\"日\\n\""),
     "3:7: A backslash in quoted text must precede a backslash or a quotation mark"},
    {"a backslash at the end of a line", Value("\"v\"=\"a\\"),
     "3:7: A backslash in quoted text must precede a backslash or a quotation mark"},
    {"more behind text", Value("\"v\"=\"a\" \"b\""), "3:9: Nothing but a comment may follow here"},
    {"more behind a deletion", Value("\"v\"=-1"), "3:6: Nothing but a comment may follow here"},
    {"a character that EUC-JP lacks", Value("\"v\"=\"a\\\\日€\""),
     "3:10: EUC-JP lacks the character U+20AC"},
    {"a character beyond the first plane", Value("\"v\"=\"😀\""),
     "3:6: EUC-JP lacks the character U+1F600"},
    {"a byte's form in text", Value("\"v\"=\"\uF780\""), "3:6: EUC-JP lacks the character U+F780"},
    {"a number without digits", Value("\"v\"=dword:"), "3:11: A hexadecimal digit is missing"},
    {"a number that is none", Value("\"v\"=dword:x"), "3:11: A hexadecimal digit is missing"},
    {"a long number", Value("\"v\"=dword:123456789"),
     "3:19: The number has more than eight hexadecimal digits"},
    {"more behind a number", Value("\"v\"=dword:1g"),
     "3:12: Nothing but a comment may follow here"},
    {"a type without digits", Value("\"v\"=hex():"), "3:9: A hexadecimal digit is missing"},
    {"a type without end", Value("\"v\"=hex(1:00"), "3:10: The type is not closed by \"):\""},
    {"a long type", Value("\"v\"=hex(000000001):"),
     "3:17: The number has more than eight hexadecimal digits"},
    {"a byte that is none", Value("\"v\"=hex:00,x"),
     "3:12: A byte of two hexadecimal digits is missing"},
    {"a comma at the end", Value("\"v\"=hex:00,"),
     "3:12: A byte of two hexadecimal digits is missing"},
    {"a long byte", Value("\"v\"=hex:001"), "3:11: A byte has more than two hexadecimal digits"},
    {"bytes without comma", Value("\"v\"=hex:00 01"),
     "3:12: Nothing but a comment may follow here"},
    {"a continued line that begins with a comma", Value("\"v\"=hex:00,\\\n ,01"),
     "4:2: A byte of two hexadecimal digits is missing"},
    {"text behind the backslash", Value("\"v\"=hex:00,\\ 01"),
     "3:13: Nothing may follow the backslash that continues a line"},
    {"nothing behind the backslash", Value("\"v\"=hex:00,\\"),
     "3:13: The file ends where a continued line was to follow"},
    {"a long value name", Value("\"" + std::string(256, 'v') + "\"=-"),
     "3:1: The value's name exceeds 255 bytes"},
    {"long text", Value("@=\"" + std::string(KES_REG_MAX_DATA, 't') + "\""),
     "3:3: The value's data exceeds 1048576 bytes"},
    {"too many bytes", Value("@=hex:00" + Repeated(",\\\n00", KES_REG_MAX_DATA)),
     "1048579:1: The value's data exceeds 1048576 bytes"},
};
INSTANTIATE_TEST_SUITE_P(Values, RefusedTest, testing::ValuesIn(kValues));

}  // namespace
}  // namespace regfile
