// "veloxctl reg query" and "veloxctl reg compare".
#include "reg_case.h"

namespace veloxctl_test {
namespace {

class RegReadTest : public RegCaseTest {};

TEST_P(RegReadTest, PrintsEndsAndLeaves) {
    Check();
}

constexpr char kValues[] =
    "[HKLM\\test]\n\"n\"=dword:0000001f\n@=\"text\"\n\"m\"=hex(7):61,00,62,00,00\n"
    "\"b\"=hex:00,ff\n\"q\"=hex(b):ff,ff,ff,ff,00,00,00,00\n\"x\"=hex(2):25,00\n"
    "\"e\"=hex(5):00,00,00,01\n\"z\"=hex(0):\n\"o\"=hex(c):01\n\"r\"=hex(1):61\n"
    "[HKLM\\test\\sub]\n\"n\"=dword:2\n[HKLM\\test\\日本]\n\"名\"=\"値\"\n";

const Case kQueries[] = {
    {"Key",
     kValues,
     {"query", "HKLM\\test"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\n"
     "    n    REG_DWORD    0x1f\n"
     "    (Default)    REG_SZ    text\n"
     "    m    REG_MULTI_SZ    a\\0b\n"
     "    b    REG_BINARY    00ff\n"
     "    q    REG_QWORD    0xffffffff\n"
     "    x    REG_EXPAND_SZ    %\n"
     "    e    REG_DWORD_BIG_ENDIAN    0x1\n"
     "    z    REG_NONE    \n"
     "    o    REG_TYPE(12)    01\n"
     "    r    REG_SZ    61\n"
     "\n"
     "HKEY_LOCAL_MACHINE\\test\\sub\n"
     "HKEY_LOCAL_MACHINE\\test\\日本\n",
     "",
     "="},
    {"KeyWithoutSubKeys",
     "[HKLM\\test]\n",
     {"query", "test"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\n",
     "",
     "="},
    {"LongRoot",
     "[HKLM\\test]\n",
     {"query", "hkey_local_machine\\test"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\n",
     "",
     "="},
    {"Slashes",
     "[HKLM\\test\\a]\n",
     {"query", "hklm/test/a"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\\a\n",
     "",
     "="},
    {"SlashesBesideBackslashesAreNames",
     "[HKLM\\test\\a/b]\n",
     {"query", "test\\a/b"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\\a/b\n",
     "",
     "="},
    {"Value",
     kValues,
     {"query", "test", "-v", "N"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\n    N    REG_DWORD    0x1f\n",
     "",
     "="},
    {"LongOptions",
     kValues,
     {"query", "--value=m", "test"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\n    m    REG_MULTI_SZ    a\\0b\n",
     "",
     "="},
    {"DefaultValue",
     kValues,
     {"query", "test", "--ve"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\n    (Default)    REG_SZ    text\n",
     "",
     "="},
    {"JapaneseValue",
     kValues,
     {"query", "test/日本", "-v", "名"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\\日本\n    名    REG_SZ    値\n",
     "",
     "="},
    {"Recursive",
     "[HKLM\\test]\n[HKLM\\test\\b]\n\"v\"=\"1\"\n[HKLM\\test\\A\\c]\n",
     {"query", "test", "-r"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\n\nHKEY_LOCAL_MACHINE\\test\\A\n\nHKEY_LOCAL_MACHINE\\test\\A\\c\n\n"
     "HKEY_LOCAL_MACHINE\\test\\b\n    v    REG_SZ    1\n",
     "",
     "="},
    {"RecursiveValue",
     kValues,
     {"query", "test", "-r", "-v", "n"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\n    n    REG_DWORD    0x1f\n\n"
     "HKEY_LOCAL_MACHINE\\test\\sub\n    n    REG_DWORD    0x2\n",
     "",
     "="},
    {"ControlCharactersAreShownEscaped",
     "[HKLM\\test]\n\"v\"=hex(1):61,0a,1b,5b,00\n",
     {"query", "test"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\n    v    REG_SZ    a\\x0a\\x1b[\n",
     "",
     "="},
    {"BytesThatAreNoTextAreShownEscaped",
     "[HKLM\\test]\n\"\uF7FF\"=hex(1):a4,a2,ff,00\n",
     {"query", "test"},
     EX_OK,
     "HKEY_LOCAL_MACHINE\\test\n    \\xff    REG_SZ    あ\\xff\n",
     "",
     "="},
    {"JsonOfAValue",
     kValues,
     {"query", "test", "-v", "n", "--json"},
     EX_OK,
     "{\n  \"key\": \"HKEY_LOCAL_MACHINE\\\\test\",\n  \"values\": [\n    {\n      \"name\": "
     "\"n\",\n"
     "      \"type\": \"REG_DWORD\",\n      \"data\": 31\n    }\n  ]\n}\n",
     "",
     "="},
    {"JsonOfEveryType",
     "[HKLM\\test]\n\"s\"=\"日\"\n\"m\"=hex(7):61,00,00\n\"b\"=hex:ff\n\"r\"=hex(1):61\n",
     {"query", "test", "--json"},
     EX_OK,
     "{\n  \"key\": \"HKEY_LOCAL_MACHINE\\\\test\",\n  \"values\": [\n"
     "    {\n      \"name\": \"s\",\n      \"type\": \"REG_SZ\",\n      \"data\": \"日\"\n    },\n"
     "    {\n      \"name\": \"m\",\n      \"type\": \"REG_MULTI_SZ\",\n      \"data\": [\n        "
     "\"a\"\n"
     "      ]\n    },\n"
     "    {\n      \"name\": \"b\",\n      \"type\": \"REG_BINARY\",\n      \"data\": \"ff\"\n    "
     "},\n"
     "    {\n      \"name\": \"r\",\n      \"type\": \"REG_SZ\",\n      \"hex\": \"61\"\n    }\n"
     "  ],\n  \"subkeys\": []\n}\n",
     "",
     "="},
    {"JsonRecursive",
     "[HKLM\\test\\a]\n",
     {"query", "test", "-r", "--json"},
     EX_OK,
     "[\n  {\n    \"key\": \"HKEY_LOCAL_MACHINE\\\\test\",\n    \"values\": []\n  },\n"
     "  {\n    \"key\": \"HKEY_LOCAL_MACHINE\\\\test\\\\a\",\n    \"values\": []\n  }\n]\n",
     "",
     "="},
    {"MissingKey",
     "",
     {"query", "test"},
     EX_NOINPUT,
     "",
     "veloxctl: HKEY_LOCAL_MACHINE\\test: it does not exist\n",
     ""},
    {"MissingKeyOfAValue",
     "",
     {"query", "test", "-v", "n"},
     EX_NOINPUT,
     "",
     "veloxctl: HKEY_LOCAL_MACHINE\\test: it does not exist\n",
     ""},
    {"MissingValue",
     kValues,
     {"query", "test", "-v", "y"},
     EX_NOINPUT,
     "",
     "veloxctl: HKEY_LOCAL_MACHINE\\test: there is no value y\n",
     "="},
    {"MissingValueRecursive",
     kValues,
     {"query", "test", "-r", "-v", "y"},
     EX_NOINPUT,
     "",
     "veloxctl: HKEY_LOCAL_MACHINE\\test: there is no value y\n",
     "="},
    {"EmptyName",
     "",
     {"query", "test\\\\a"},
     EX_USAGE,
     "",
     "veloxctl: HKEY_LOCAL_MACHINE\\test\\\\a: a name in the key's path is empty\n",
     ""},
    {"OtherRoot",
     "",
     {"query", "HKCU\\test"},
     EX_USAGE,
     "",
     "veloxctl: HKCU\\test: there is no other root than HKEY_LOCAL_MACHINE\n",
     ""},
    {"OtherLongRoot",
     "",
     {"query", "HKEY_USERS"},
     EX_USAGE,
     "",
     "veloxctl: HKEY_USERS: there is no other root than HKEY_LOCAL_MACHINE\n",
     ""},
    {"RemoteMachine",
     "",
     {"query", "\\\\host\\HKLM\\test"},
     EX_USAGE,
     "",
     "veloxctl: \\\\host\\HKLM\\test: there is no other root than HKEY_LOCAL_MACHINE\n",
     ""},
    {"ValueAndDefault",
     "",
     {"query", "test", "-v", "a", "--ve"},
     EX_USAGE,
     "",
     "veloxctl: reg query: --value and --ve exclude each other\n",
     ""},
    {"CharacterThatIsNotStored",
     "",
     {"query", "test/€"},
     EX_DATAERR,
     "",
     "veloxctl: the key holds a character that the registry cannot store: €\n",
     ""},
};
INSTANTIATE_TEST_SUITE_P(Query, RegReadTest, testing::ValuesIn(kQueries), test_support::Title());

constexpr char kTwoKeys[] =
    "[HKLM\\test\\a]\n\"same\"=\"1\"\n\"left\"=\"x\"\n\"other\"=dword:1\n\"type\"=hex(2):00\n"
    "[HKLM\\test\\a\\both]\n\"v\"=\"1\"\n[HKLM\\test\\a\\l]\n"
    "[HKLM\\test\\b]\n\"SAME\"=\"1\"\n\"right\"=\"y\"\n\"other\"=dword:2\n\"type\"=\"\"\n"
    "[HKLM\\test\\b\\BOTH]\n\"v\"=\"2\"\n[HKLM\\test\\b\\r]\n";

constexpr char kValueDifferences[] =
    "< HKEY_LOCAL_MACHINE\\test\\a    left    REG_SZ    x\n"
    "< HKEY_LOCAL_MACHINE\\test\\a    other    REG_DWORD    0x1\n"
    "> HKEY_LOCAL_MACHINE\\test\\b    other    REG_DWORD    0x2\n"
    "< HKEY_LOCAL_MACHINE\\test\\a    type    REG_EXPAND_SZ    \n"
    "> HKEY_LOCAL_MACHINE\\test\\b    type    REG_SZ    \n"
    "> HKEY_LOCAL_MACHINE\\test\\b    right    REG_SZ    y\n";

const Case kComparisons[] = {
    {"Different", kTwoKeys, {"compare", "test\\a", "test\\b"}, 1, kValueDifferences, "", "="},
    {"DifferentTrees",
     kTwoKeys,
     {"compare", "test\\a", "test\\b", "-r"},
     1,
     std::string(kValueDifferences) +
         "< HKEY_LOCAL_MACHINE\\test\\a\\l\n> HKEY_LOCAL_MACHINE\\test\\b\\r\n"
         "< HKEY_LOCAL_MACHINE\\test\\a\\both    v    REG_SZ    1\n"
         "> HKEY_LOCAL_MACHINE\\test\\b\\BOTH    v    REG_SZ    2\n",
     "",
     "="},
    {"SameValue", kTwoKeys, {"compare", "test\\a", "test\\b", "-v", "same"}, EX_OK, "", "", "="},
    {"DifferentValue",
     kTwoKeys,
     {"compare", "test\\a", "test\\b", "-v", "LEFT"},
     1,
     "< HKEY_LOCAL_MACHINE\\test\\a    left    REG_SZ    x\n",
     "",
     "="},
    {"Same", kTwoKeys, {"compare", "test\\a", "test\\A", "-r"}, EX_OK, "", "", "="},
    {"Json",
     "[HKLM\\test\\a]\n\"v\"=\"1\"\n[HKLM\\test\\b]\n",
     {"compare", "test\\a", "test\\b", "--json"},
     1,
     "[\n  {\n    \"left\": {\n      \"key\": \"HKEY_LOCAL_MACHINE\\\\test\\\\a\",\n"
     "      \"value\": {\n        \"name\": \"v\",\n        \"type\": \"REG_SZ\",\n"
     "        \"data\": \"1\"\n      }\n    }\n  }\n]\n",
     "",
     "="},
    {"JsonWithoutDifference",
     "[HKLM\\test\\a]\n",
     {"compare", "test\\a", "test\\a", "--json"},
     EX_OK,
     "[]\n",
     "",
     "="},
    {"MissingKey",
     "[HKLM\\test]\n",
     {"compare", "test", "test\\b"},
     EX_NOINPUT,
     "",
     "veloxctl: HKEY_LOCAL_MACHINE\\test\\b: it does not exist\n",
     "="},
};
INSTANTIATE_TEST_SUITE_P(Compare, RegReadTest, testing::ValuesIn(kComparisons),
                         test_support::Title());

}  // namespace
}  // namespace veloxctl_test
