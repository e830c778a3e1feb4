// Keys: opening, creating, closing, deleting; what a handle is; paths, names and limits.
#include <ntwin32/registry.h>
#include <support/title.h>

#include "registry_support.h"

namespace {

using namespace registry_test;
using test_support::Server;

class KeysTest : public BothWays {};
INSTANTIATE_TEST_SUITE_P(Registry, KeysTest, BothWaysToRead(), WayName());

constexpr HKEY kUntouched = 0x1234;

std::string Repeat(const std::string &part, std::size_t times) {
    std::string path = part;
    for (std::size_t i = 1; i < times; ++i)
        path += "\\" + part;
    return path;
}

TEST_P(KeysTest, ProcessesReadInTheirWay) {
    Run([&] {
        (void)OpenKey(kRoot, "SOFTWARE");
        EXPECT_EQ(HasMappedStore(), GetParam() == Way::kMaps);
    });
}

TEST_P(KeysTest, CreatingTellsWhetherTheKeyIsNew) {
    Run([] {
        HKEY made = 0;
        HKEY found = 0;
        DWORD disposition = 0;
        EXPECT_EQ(RegCreateKeyEx(kRoot, "NEW\\INNER", 0, nullptr, REG_OPTION_NON_VOLATILE,
                                 KEY_ALL_ACCESS, nullptr, &made, &disposition),
                  ERROR_SUCCESS);
        EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
        EXPECT_EQ(RegCreateKeyEx(kRoot, "new\\inner", 0, nullptr, REG_OPTION_NON_VOLATILE,
                                 KEY_ALL_ACCESS, nullptr, &found, &disposition),
                  ERROR_SUCCESS);
        EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
        EXPECT_EQ(found, made);
        EXPECT_EQ(OpenKey(kRoot, "New\\Inner"), made);
        EXPECT_EQ(OpenKey(OpenKey(kRoot, "NEW"), "INNER"), made);
    });
}

TEST_P(KeysTest, SpellingIsThatOfTheFirstWriter) {
    Run([] {
        CreateKey(kRoot, "Spelled\\HeartBeat");
        CreateKey(kRoot, "SPELLED\\HEARTBEAT");
        EXPECT_EQ(SubKeys(OpenKey(kRoot, "SPELLED")), std::vector<std::string>{"HeartBeat"});
    });
}

// Only ASCII letters have two cases.
TEST_P(KeysTest, OtherBytesAreThemselves) {
    Run([] {
        CreateKey(kRoot, "\xA4\xE1");
        EXPECT_EQ(OpenResult(kRoot, "\xA4\xC1"), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(OpenResult(kRoot, "\xA4\xE1"), ERROR_SUCCESS);
        CreateKey(kRoot, "[");
        EXPECT_EQ(OpenResult(kRoot, "{"), ERROR_FILE_NOT_FOUND);
    });
}

TEST_P(KeysTest, AnEmptyPathIsTheKeyItself) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "SELF");
        HKEY found = 0;
        EXPECT_EQ(RegOpenKeyEx(key, nullptr, 0, KEY_READ, &found), ERROR_SUCCESS);
        EXPECT_EQ(found, key);
        EXPECT_EQ(OpenKey(key, ""), key);
        EXPECT_EQ(CreateKey(key, ""), key);
        EXPECT_EQ(OpenKey(kRoot, ""), kRoot);
    });
}

TEST_P(KeysTest, ClosingReleasesNothing) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "CLOSED");
        EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
        EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
        SetText(key, "V", "written through a closed handle");
        EXPECT_EQ(ReadBytes(OpenKey(kRoot, "CLOSED"), "V"),
                  std::string("written through a closed handle") + '\0');
        EXPECT_EQ(RegCloseKey(0), ERROR_INVALID_HANDLE);
        EXPECT_EQ(RegCloseKey(kRoot), ERROR_SUCCESS);
    });
}

// Every function with a handle that never named a key, and with that of a deleted key.
void ExpectEveryFunctionGives(HKEY key, LONG error) {
    HKEY found = kUntouched;
    DWORD size = 16;
    DWORD index = 99;
    char name[16] = "untouched";
    BYTE data[16] = {};
    EXPECT_EQ(RegOpenKeyEx(key, "X", 0, KEY_READ, &found), error);
    EXPECT_EQ(RegOpenKeyEx(key, "", 0, KEY_READ, &found), error);
    EXPECT_EQ(RegCreateKey(key, "X", &found), error);
    EXPECT_EQ(RegQueryValueEx(key, "V", nullptr, nullptr, data, &size), error);
    EXPECT_EQ(SetBytes(key, "V", REG_BINARY, "data"), error);
    EXPECT_EQ(RegEnumKeyEx(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr), error);
    EXPECT_EQ(RegEnumValue(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr), error);
    EXPECT_EQ(RegQueryInfoKey(key, nullptr, nullptr, nullptr, &index, nullptr, nullptr, nullptr,
                              nullptr, nullptr, nullptr, nullptr),
              error);
    EXPECT_EQ(RegDeleteKey(key, "X"), error);
    EXPECT_EQ(RegDeleteValue(key, "V"), error);
    const KES_REG_CHANGE change = {KES_REG_CREATE_KEY, 0, "X", nullptr, nullptr, 0, 0};
    EXPECT_EQ(KesRegApplyBatch(key, &change, 1, nullptr), error);
    EXPECT_EQ(found, kUntouched);
    EXPECT_EQ(size, 16U);
    EXPECT_EQ(index, 99U);
    EXPECT_STREQ(name, "untouched");
}

TEST_P(KeysTest, AHandleThatWasNeverOpenedIsInvalid) {
    Run([] {
        for (const HKEY key : {HKEY{0}, HKEY{1}, HKEY{0x80000001U}, HKEY{0x7FFFFFFFFFFFFFFFU},
                               ~HKEY{0}, OpenKey(kRoot, "SOFTWARE") + 1000000}) {
            SCOPED_TRACE(key);
            ExpectEveryFunctionGives(key, ERROR_INVALID_HANDLE);
        }
    });
}

TEST_P(KeysTest, AHandleOfADeletedKeyStaysDeleted) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "GONE");
        ASSERT_EQ(RegDeleteKey(kRoot, "GONE"), ERROR_SUCCESS);
        ExpectEveryFunctionGives(key, ERROR_KEY_DELETED);
        const HKEY again = CreateKey(kRoot, "GONE");
        EXPECT_GT(again, key);
        EXPECT_EQ(RegQueryValueEx(key, "V", nullptr, nullptr, nullptr, nullptr), ERROR_KEY_DELETED);
    });
}

TEST_P(KeysTest, AKeyWithSubKeysIsNotDeleted) {
    Run([] {
        const HKEY key = CreateKey(kRoot, "TREE");
        CreateKey(key, "A\\B");
        SetText(key, "V", "text");
        EXPECT_EQ(RegDeleteKey(kRoot, "TREE"), ERROR_ACCESS_DENIED);
        EXPECT_EQ(RegDeleteKey(key, "A"), ERROR_ACCESS_DENIED);
        EXPECT_EQ(RegDeleteKey(key, "A\\B"), ERROR_SUCCESS);
        EXPECT_EQ(RegDeleteKey(key, "A\\B"), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(RegDeleteKey(key, "a"), ERROR_SUCCESS);
        EXPECT_TRUE(SubKeys(key).empty());
        EXPECT_EQ(RegDeleteKey(key, ""), ERROR_SUCCESS) << "the key of the handle, with its values";
        EXPECT_EQ(OpenResult(kRoot, "TREE"), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(ReadBytes(CreateKey(kRoot, "TREE"), "V"), std::nullopt) << "values went with it";
    });
}

TEST_P(KeysTest, TheRootIsNotDeleted) {
    Run([] {
        ASSERT_EQ(RegDeleteKey(kRoot, ""), ERROR_ACCESS_DENIED);
        EXPECT_EQ(RegDeleteKey(kRoot, nullptr), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(OpenResult(kRoot, "SOFTWARE"), ERROR_SUCCESS);
    });
}

TEST_P(KeysTest, AccessMasksAreCheckedForFormAndNotEnforced) {
    Run([] {
        CreateKey(kRoot, "MASK");
        HKEY key = kUntouched;
        for (const REGSAM mask : {0U, 0x00000040U, 0x00100000U, 0xFFFFFFFFU}) {
            EXPECT_EQ(RegOpenKeyEx(kRoot, "MASK", 0, mask, &key), ERROR_INVALID_PARAMETER) << mask;
            EXPECT_EQ(RegCreateKeyEx(kRoot, "MASK", 0, nullptr, 0, mask, nullptr, &key, nullptr),
                      ERROR_INVALID_PARAMETER)
                << mask;
        }
        EXPECT_EQ(key, kUntouched);
        for (const REGSAM mask :
             {0x20019U, 0x2U, 0x2001BU, 0x3U, 0xF003FU, 0x80000000U, 0x02000000U}) {
            key = 0;
            EXPECT_EQ(RegOpenKeyEx(kRoot, "MASK", 0, mask, &key), ERROR_SUCCESS) << mask;
            SetText(key, "V", "written whatever the mask");
        }
    });
}

TEST_P(KeysTest, NullOutputsAreRefused) {
    Run([] {
        EXPECT_EQ(RegOpenKeyEx(kRoot, "SOFTWARE", 0, KEY_READ, nullptr), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(RegCreateKey(kRoot, "SOFTWARE", nullptr), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(RegCreateKeyEx(kRoot, "NEVER", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, nullptr,
                                 nullptr),
                  ERROR_INVALID_PARAMETER);
        EXPECT_EQ(OpenResult(kRoot, "NEVER"), ERROR_FILE_NOT_FOUND);
    });
}

TEST_P(KeysTest, DepthIsLimited) {
    Run([] {
        const std::string deepest = Repeat("D", KES_REG_MAX_DEPTH);
        HKEY key = kUntouched;
        EXPECT_EQ(RegCreateKey(kRoot, (deepest + "\\D").c_str(), &key), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(OpenResult(kRoot, "D"), ERROR_FILE_NOT_FOUND) << "a refusal makes nothing";
        const HKEY bottom = CreateKey(kRoot, deepest);
        EXPECT_EQ(OpenKey(kRoot, deepest), bottom);
        EXPECT_EQ(RegCreateKey(bottom, "D", &key), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(OpenResult(kRoot, deepest + "\\D"), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(key, kUntouched);
        SetText(bottom, "V", "deep");
    });
}

TEST_P(KeysTest, TheLongestPathWorks) {
    Run([] {
        const std::string name(KES_REG_MAX_KEY_NAME, 'n');
        std::string path = name;
        HKEY key = CreateKey(kRoot, name);
        // Depth by depth, so that only the reading goes the whole way at once.
        for (DWORD depth = 1; depth < 64; ++depth) {
            path += "\\" + name;
            key = CreateKey(key, name);
        }
        EXPECT_EQ(OpenKey(kRoot, path), key);
    });
}

// Paths that are refused, or name nothing.
struct PathRow {
    const char *title;
    std::string path;
    LONG open;
    LONG create;
};
class PathsTest : public testing::TestWithParam<PathRow> {};
INSTANTIATE_TEST_SUITE_P(
    Registry, PathsTest,
    testing::Values(
        PathRow{"LeadingSeparator", "\\SOFTWARE", ERROR_BAD_PATHNAME, ERROR_BAD_PATHNAME},
        PathRow{"TrailingSeparator", "SOFTWARE\\", ERROR_BAD_PATHNAME, ERROR_BAD_PATHNAME},
        PathRow{"DoubledSeparator", "SOFTWARE\\\\XEV", ERROR_BAD_PATHNAME, ERROR_BAD_PATHNAME},
        PathRow{"SeparatorAlone", "\\", ERROR_BAD_PATHNAME, ERROR_BAD_PATHNAME},
        PathRow{"DoubledBelowNothing", "ABSENT\\\\X", ERROR_BAD_PATHNAME, ERROR_BAD_PATHNAME},
        PathRow{"Absent", "ABSENT", ERROR_FILE_NOT_FOUND, ERROR_SUCCESS},
        PathRow{"AbsentBelowAbsent", "ABSENT\\X", ERROR_FILE_NOT_FOUND, ERROR_SUCCESS},
        PathRow{"ForwardSlashIsNoSeparator", "SOFTWARE/XEV", ERROR_FILE_NOT_FOUND, ERROR_SUCCESS},
        PathRow{"LongestName", std::string(255, 'x'), ERROR_FILE_NOT_FOUND, ERROR_SUCCESS},
        PathRow{"NameTooLong", std::string(256, 'x'), ERROR_INVALID_PARAMETER,
                ERROR_INVALID_PARAMETER},
        PathRow{"NameTooLongFurtherDown", "SOFTWARE\\" + std::string(256, 'x') + "\\X",
                ERROR_INVALID_PARAMETER, ERROR_INVALID_PARAMETER},
        PathRow{"PathTooLong", std::string(200000, 'x'), ERROR_INVALID_PARAMETER,
                ERROR_INVALID_PARAMETER}),
    test_support::Title());

TEST_P(PathsTest, GiveTheirResults) {
    const Server server;
    for (const Way way : {Way::kMaps, Way::kAsks})
        InWay(way, [] { EXPECT_EQ(OpenResult(kRoot, GetParam().path), GetParam().open); });
    EXPECT_EQ(RegDeleteKey(kRoot, GetParam().path.c_str()), GetParam().open);
    HKEY key = 0;
    EXPECT_EQ(RegCreateKey(kRoot, GetParam().path.c_str(), &key), GetParam().create);
    if (GetParam().create == ERROR_SUCCESS) {
        EXPECT_EQ(OpenKey(kRoot, GetParam().path), key);
    }
}

TEST_P(KeysTest, ClassTextIsThatOfNewKeys) {
    Run([] {
        const std::string longest(255, 'c');
        HKEY key = 0;
        const auto create = [&](const char *path, const char *class_text) {
            return RegCreateKeyEx(kRoot, path, 0, class_text, 0, KEY_ALL_ACCESS, nullptr, &key,
                                  nullptr);
        };
        EXPECT_EQ(create("CLASS", (longest + "c").c_str()), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(OpenResult(kRoot, "CLASS"), ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(create("CLASS", longest.c_str()), ERROR_SUCCESS);
        EXPECT_EQ(create("CLASS", "another"), ERROR_SUCCESS);
        char text[256] = {};
        DWORD size = sizeof text;
        EXPECT_EQ(RegQueryInfoKey(key, text, &size, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(text, longest);
        EXPECT_EQ(size, 255U);
    });
}

}  // namespace
