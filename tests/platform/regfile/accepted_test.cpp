// What the reader of .reg files takes, and the changes that it gives.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ntwin32/registry.h>

#include "regfile_support.h"

namespace regfile {
namespace {

struct Accepted {
    const char *what;
    std::string lines;
    std::vector<std::string> changes;
};

void PrintTo(const Accepted &accepted, std::ostream *out) {
    *out << accepted.what;
}

class AcceptedTest : public testing::TestWithParam<Accepted> {};

TEST_P(AcceptedTest, GivesTheChanges) {
    std::vector<Change> changes;
    Problem problem;
    ASSERT_TRUE(Parse(WithHeader(GetParam().lines), &changes, &problem)) << Describe(problem);
    EXPECT_EQ(Describe(changes), GetParam().changes);
}

const Accepted kAccepted[] = {
    {"no lines", "", {}},
    {"empty lines, blanks and comments", "\r\n  \t\r\n; a comment\r\n  ; \"a\"=-\r\n", {}},
    {"a key", "[HKEY_LOCAL_MACHINE\\SOFTWARE\\XEV]", {"create SOFTWARE\\XEV"}},
    {"the short root", "[HKLM\\a]", {"create a"}},
    {"the root in small letters", "[hkey_local_machine\\a]", {"create a"}},
    {"the root itself", "[HKEY_LOCAL_MACHINE]\n@=\"\"", {"create ", "set ||1|00"}},
    {"blanks around a key", "  [HKLM\\a]  ; comment", {"create a"}},
    {"brackets in a key's name", "[HKLM\\a]b[c]", {"create a]b[c"}},
    {"blanks in a key's name", "[HKLM\\ a \\b c]", {"create  a \\b c"}},
    {"a key's name in Japanese", "[HKLM\\日本]", {"create \xC6\xFC\xCB\xDC"}},
    {"a key that is deleted", "[-HKLM\\a\\b]", {"delete a\\b"}},
    {"a key deleted and made again",
     "[-HKLM\\a]\n[HKLM\\a]\n\"v\"=-",
     {"delete a", "create a", "remove a|v"}},
    {"text", "[HKLM\\a]\n\"v\"=\"xy\"", {"create a", "set a|v|1|787900"}},
    {"empty text", "[HKLM\\a]\n\"v\"=\"\"", {"create a", "set a|v|1|00"}},
    {"text with escapes", "[HKLM\\a]\n\"v\"=\"\\\\\\\"\\\\\"", {"create a", "set a|v|1|5c225c00"}},
    {"text in Japanese",
     "[HKLM\\a]\n\"v\"=\"x日\\\\本ｱ\"",
     {"create a", "set a|v|1|78c6fc5ccbdc8eb100"}},
    {"text with what begins a comment", "[HKLM\\a]\n\"v\"=\";\"", {"create a", "set a|v|1|3b00"}},
    {"text with a tab", "[HKLM\\a]\n\"v\"=\"\t\"", {"create a", "set a|v|1|0900"}},
    {"the default value", "[HKLM\\a]\n@=\"x\"", {"create a", "set a||1|7800"}},
    {"a value named @", "[HKLM\\a]\n\"@\"=\"x\"", {"create a", "set a|@|1|7800"}},
    {"a value's name with escapes", "[HKLM\\a]\n\"\\\"=\\\\\"=-", {"create a", "remove a|\"=\\"}},
    {"a value's name in Japanese", "[HKLM\\a]\n\"日\"=-", {"create a", "remove a|\xC6\xFC"}},
    {"a byte without a character in names",
     "[HKLM\\a\uF7FFb]\n\"\uF701\uF78Ec\uF77F\"=-",
     {"create a\xFF"
      "b",
      "remove a\xFF"
      "b|\x01\x8E"
      "c\x7F"}},
    {"a number", "[HKLM\\a]\n\"v\"=dword:12abCDef", {"create a", "set a|v|4|efcdab12"}},
    {"a short number", "[HKLM\\a]\n\"v\"=dword:f", {"create a", "set a|v|4|0f000000"}},
    {"a number in capital letters", "[HKLM\\a]\n\"v\"=DWORD:1", {"create a", "set a|v|4|01000000"}},
    {"blanks around the equals sign",
     "[HKLM\\a]\n  \"v\" =\t dword:1 ; one",
     {"create a", "set a|v|4|01000000"}},
    {"bytes", "[HKLM\\a]\n\"v\"=hex:00,ff,1A", {"create a", "set a|v|3|00ff1a"}},
    {"bytes with blanks", "[HKLM\\a]\n\"v\"=hex: 0 , 1 ", {"create a", "set a|v|3|0001"}},
    {"no bytes",
     "[HKLM\\a]\n\"v\"=hex:\n\"w\"=hex: ; none",
     {"create a", "set a|v|3|", "set a|w|3|"}},
    {"bytes of another type", "[HKLM\\a]\n\"v\"=hex(7):61,00", {"create a", "set a|v|7|6100"}},
    {"the largest type", "[HKLM\\a]\n\"v\"=hex(FFFFFFFF):", {"create a", "set a|v|4294967295|"}},
    {"bytes over several lines",
     "[HKLM\\a]\r\n\"v\"=hex:01,\\\r\n  02,\\\r\n03\r\n\"w\"=-",
     {"create a", "set a|v|3|010203", "remove a|w"}},
    {"bytes that begin on the second line",
     "[HKLM\\a]\n\"v\"=hex(b):\\\n \\\n  05",
     {"create a", "set a|v|11|05"}},
    {"a value that is deleted", "[HKLM\\a]\n\"v\"=-\n@=-", {"create a", "remove a|v", "remove a|"}},
    {"a value set twice",
     "[HKLM\\a]\n\"v\"=dword:1\n\"V\"=dword:2",
     {"create a", "set a|v|4|01000000", "set a|V|4|02000000"}},
    {"two keys",
     "[HKLM\\a]\n\"v\"=-\n\n[HKLM\\b]\n\"v\"=-\n",
     {"create a", "remove a|v", "create b", "remove b|v"}},
};

INSTANTIATE_TEST_SUITE_P(Lines, AcceptedTest, testing::ValuesIn(kAccepted));

TEST(ParseTest, TellsTheLineOfEachChange) {
    std::vector<Change> changes;
    Problem problem;
    ASSERT_TRUE(Parse(WithHeader("\n[HKLM\\a]\n\"v\"=hex:1,\\\n2\n\"w\"=-\n"), &changes, &problem));
    ASSERT_EQ(changes.size(), 3u);
    EXPECT_EQ(changes[0].line, 3u);
    EXPECT_EQ(changes[1].line, 4u);
    EXPECT_EQ(changes[2].line, 6u);
}

TEST(ParseTest, SharesThePathOfAKeysLines) {
    std::vector<Change> changes;
    Problem problem;
    ASSERT_TRUE(Parse(WithHeader("[HKLM\\a]\n\"v\"=-\n\"w\"=-"), &changes, &problem));
    EXPECT_EQ(changes[0].path.get(), changes[1].path.get());
    EXPECT_EQ(changes[0].path.get(), changes[2].path.get());
}

class EncodingTest : public testing::TestWithParam<const char *> {
  protected:
    static std::string Encode(const std::string &form, const std::string &utf8) {
        if (form == "UTF-16LE with mark") {
            return ToUtf16WithMark(utf8);
        }
        return (form == "UTF-8 with mark" ? "\xEF\xBB\xBF" : "") + utf8;
    }
};

TEST_P(EncodingTest, IsRead) {
    for (const char *line_end : {"\n", "\r\n"}) {
        const std::string text = std::string("Windows Registry Editor Version 5.00 ") + line_end +
                                 line_end + "[HKLM\\日]" + line_end + "\"髙\"=\"ア\"";
        std::vector<Change> changes;
        Problem problem;
        ASSERT_TRUE(Parse(Encode(GetParam(), text), &changes, &problem)) << Describe(problem);
        EXPECT_THAT(Describe(changes),
                    testing::ElementsAre("create \xC6\xFC", "set \xC6\xFC|\x8F\xF4\xFB|1|a5a200"));
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, EncodingTest,
                         testing::Values("UTF-8", "UTF-8 with mark", "UTF-16LE with mark"));

TEST(LimitsTest, TheLargestOfEverythingIsRead) {
    const std::string name(KES_REG_MAX_KEY_NAME, 'k');
    std::string path = name;
    for (unsigned depth = 1; depth < KES_REG_MAX_DEPTH; ++depth) {
        path += "\\" + name;
    }
    const std::string text(KES_REG_MAX_DATA - 1, 't');
    std::string bytes = "00";
    for (unsigned i = 1; i < KES_REG_MAX_DATA; ++i) {
        bytes += ",00";
    }
    const std::string value_name(KES_REG_MAX_VALUE_NAME, 'v');
    std::vector<Change> changes;
    Problem problem;
    ASSERT_TRUE(Parse(WithHeader("[HKLM\\" + path + "]\n\"" + value_name + "\"=\"" + text +
                                 "\"\n@=hex:" + bytes + "\n"),
                      &changes, &problem))
        << Describe(problem);
    ASSERT_EQ(changes.size(), 3u);
    EXPECT_EQ(*changes[0].path, path);
    EXPECT_EQ(changes[1].name, value_name);
    EXPECT_EQ(changes[1].data.size(), KES_REG_MAX_DATA);
    EXPECT_EQ(changes[2].data.size(), KES_REG_MAX_DATA);
}

}  // namespace
}  // namespace regfile
