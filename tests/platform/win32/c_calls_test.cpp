// The library's headers are C; c_calls.c calls through them.
#include <gtest/gtest.h>
#include <ntwin32/types.h>
#include <support/temp_folder.h>

extern "C" BOOL CallWin32FromC(const char *file_name, const char *text);

namespace {

TEST(CAbi, IsUsableFromC) {
    const test_support::TempFolder folder;
    EXPECT_NE(CallWin32FromC(folder.Write("file", "some text").c_str(), "some text"), FALSE);
}

TEST(CAbi, HasTypesOfFixedWidth) {
    static_assert(sizeof(BYTE) == 1 && sizeof(WORD) == 2 && sizeof(LANGID) == 2);
    static_assert(sizeof(DWORD) == 4 && sizeof(UINT) == 4 && sizeof(LONG) == 4);
    static_assert(sizeof(BOOL) == 4 && sizeof(REGSAM) == 4 && sizeof(FILETIME) == 8);
    static_assert(sizeof(HKEY) == sizeof(void *) && sizeof(HANDLE) == sizeof(void *));
    static_assert(DWORD(-1) > 0 && LONG(-1) < 0 && BOOL(-1) < 0);
}

}  // namespace
