// Texts between the registry's EUC-JP and UTF-8.
#include <gtest/gtest.h>
#include <regfile/text.h>

namespace regfile {
namespace {

TEST(TextTest, ConvertsWhatComesBack) {
    std::string utf8;
    EXPECT_TRUE(StoredToUtf8("a\n\xC6\xFC", &utf8));
    EXPECT_EQ(utf8, "a\n日");
    EXPECT_FALSE(StoredToUtf8("\xC6", &utf8));
    EXPECT_FALSE(StoredToUtf8("\xFF", &utf8));
}

TEST(TextTest, NamesAlwaysHaveAForm) {
    EXPECT_EQ(NameToUtf8("a\t\xC6\xFC"), "a\t日");
    EXPECT_EQ(NameToUtf8("\xC6\xFC\n\xC6"), "日\uF70A\uF7C6");
}

TEST(TextTest, TellsTheFirstCharacterThatIsNotStored) {
    std::string stored = "x";
    std::size_t bad = 99;
    EXPECT_TRUE(Utf8ToStored("日", &stored, &bad));
    EXPECT_EQ(stored, "x\xC6\xFC");
    EXPECT_EQ(bad, 99u);
    EXPECT_FALSE(Utf8ToStored("日€x", &stored, &bad));
    EXPECT_EQ(stored, "x\xC6\xFC\xC6\xFC");
    EXPECT_EQ(bad, 3u);
    EXPECT_FALSE(Utf8ToStored("€", &stored));
}

TEST(TextTest, NamesTakeBytesBack) {
    std::string stored;
    std::size_t bad = 0;
    EXPECT_TRUE(Utf8ToName("a\uF7FF日\uF70A", &stored, &bad));
    EXPECT_EQ(stored, "a\xFF\xC6\xFC\n");
    stored.clear();
    EXPECT_FALSE(Utf8ToName("\uF7FF\uF75C", &stored, &bad));
    EXPECT_EQ(bad, 3u);
}

}  // namespace
}  // namespace regfile
