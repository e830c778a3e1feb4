// An alert's file: what is written comes back, and what was not written so is refused.
#include <gmock/gmock.h>
#include <queuestore/entry.h>

#include <set>

#include "samples.h"
#include "support/encoding.h"
#include "support/title.h"

namespace {

using queuestore::Entry;
using ::testing::HasSubstr;

struct Text {
    const char *title;
    std::string stored;
    const char *in_file;  // how the file shows it
};

class EntryTextTest : public ::testing::TestWithParam<Text> {};

TEST_P(EntryTextTest, ComesBack) {
    Entry entry = samples::Alert(GetParam().stored);
    entry.item.texts[2] = GetParam().stored;
    entry.item.computer = GetParam().stored;
    const std::string text = queuestore::Format(entry);
    EXPECT_THAT(text, HasSubstr("\"message\": \"" + std::string(GetParam().in_file) + "\""));
    Entry read;
    std::string problem;
    ASSERT_TRUE(queuestore::Parse(text, &read, &problem)) << problem;
    EXPECT_EQ(read, entry);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, EntryTextTest,
    ::testing::Values(Text{"Empty", "", ""}, Text{"Ascii", "disk 1 failed", "disk 1 failed"},
                      Text{"Japanese", "\xBC\xEF\xCA\xCC", "\xE7\xA8\xAE\xE5\x88\xA5"},
                      Text{"HalfWidth", "\x8E\xB1", "\xEF\xBD\xB1"},
                      Text{"QuotesAndBackslash", "\"a\\b\"", "\\\"a\\\\b\\\""},
                      Text{"Lines", "a\nb\r\n", "a\\nb\\r\\n"},
                      Text{"NoEucAtAll", "a\xFF\x80z", "a\xEF\x9F\xBF\xEF\x9E\x80z"},
                      Text{"HalfACharacter", "a\xA4", "a\xEF\x9E\xA4"}),
    test_support::Title());

TEST(EntryTest, BytesAndDeliveryComeBack) {
    Entry entry = samples::Alert();
    entry.item.data.clear();
    for (int byte = 0; byte < 256; ++byte) {
        entry.item.extra.push_back(static_cast<char>(byte));
    }
    entry.delivery = {7, 1709600001, 1709600061, "the server said \xE3\x81\x82"};
    Entry read;
    std::string problem;
    ASSERT_TRUE(queuestore::Parse(queuestore::Format(entry), &read, &problem)) << problem;
    EXPECT_EQ(read, entry);
}

TEST(EntryTest, AReasonThatIsNoUtf8IsShownAsFarAsItIs) {
    Entry entry = samples::Alert();
    entry.delivery.reason = "a\xFF z";
    Entry read;
    std::string problem;
    ASSERT_TRUE(queuestore::Parse(queuestore::Format(entry), &read, &problem)) << problem;
    EXPECT_EQ(read.delivery.reason, "a\xEF\xBF\xBD z");
}

TEST(EntryTest, IsReadable) {
    const std::string text = queuestore::Format(samples::Alert());
    EXPECT_THAT(text, ::testing::StartsWith("{\n  \"format\": 1,\n  \"id\": \""));
    EXPECT_THAT(text, HasSubstr("    \"message\": \"TEST - AlertManager\",\n"));
    EXPECT_THAT(text, HasSubstr("    \"data\": \"00ff7f\",\n"));
    EXPECT_TRUE(text.ends_with("}\n"));
}

// One change of a good file, and what is said of the result.
struct Change {
    const char *title;
    const char *from;
    const char *to;
    const char *problem;
};

class BadEntryTest : public ::testing::TestWithParam<Change> {};

TEST_P(BadEntryTest, IsRefusedWithItsCause) {
    Entry entry = samples::Alert();
    entry.id = "20240305T005320.123456Z-0123456789abcdef";
    entry.message_id = "<x@y>";
    std::string text = queuestore::Format(entry);
    const std::size_t at = text.find(GetParam().from);
    ASSERT_NE(at, std::string::npos);
    text.replace(at, std::string(GetParam().from).size(), GetParam().to);
    std::string problem;
    EXPECT_FALSE(queuestore::Parse(text, &entry, &problem));
    EXPECT_EQ(problem, GetParam().problem);
}

INSTANTIATE_TEST_SUITE_P(
    Changes, BadEntryTest,
    ::testing::Values(
        Change{"NoFormat", "\"format\": 1,", "", "\"format\" is missing"},
        Change{"OtherFormat", "\"format\": 1", "\"format\": 2", "\"format\" is none that is known"},
        Change{"FormatAsText", "\"format\": 1", "\"format\": \"1\"",
               "\"format\" is of the wrong type"},
        Change{"BadId", "20240305T", "20240305 ", "\"id\" has not the form of an id"},
        Change{"IdWithPath", "20240305T005320.123456Z-0123456789abcdef", "../../etc/passwd",
               "\"id\" has not the form of an id"},
        Change{"MessageIdWithLineEnd", "<x@y>", "<x\\r\\n@y>",
               "\"message_id\" has not the form of a message id"},
        Change{"MessageIdWithoutBrackets", "<x@y>", "x@y",
               "\"message_id\" has not the form of a message id"},
        Change{"EmptyMessageId", "<x@y>", "<>", "\"message_id\" has not the form of a message id"},
        Change{"NegativeTime", "1709600000", "-1", "\"queued\" is of the wrong type"},
        Change{"LargeTime", "1709600000", "9223372036854775808", "\"queued\" is out of range"},
        Change{"ItemAsText", "\"item\": {", "\"item\": \"\", \"old\": {",
               "\"item\" is of the wrong type"},
        Change{"NoMessage", "\"message\":", "\"old\":", "\"item.message\" is missing"},
        Change{"NumberAsMessage", "\"TEST - AlertManager\"", "5",
               "\"item.message\" is of the wrong type"},
        Change{"CharacterThatEucLacks", "TEST - AlertManager", "\xF0\x9F\x98\x80",
               "\"item.message\" has a character that EUC-JP lacks"},
        Change{"ZeroByteInText", "TEST - AlertManager", "a\\u0000b",
               "\"item.message\" has a character that EUC-JP lacks"},
        Change{"ZeroByteAsPrivateCharacter", "TEST - AlertManager", "a\\uF700b",
               "\"item.message\" has a character that EUC-JP lacks"},
        Change{"LargeNumber", "\"level\": 2", "\"level\": 4294967296",
               "\"item.level\" is out of range"},
        Change{"Fraction", "\"level\": 2", "\"level\": 2.5", "\"item.level\" is of the wrong type"},
        Change{"OddHexadecimals", "00ff7f", "00ff7",
               "\"item.data\" is no list of hexadecimal bytes"},
        Change{"UpperCaseHexadecimals", "00ff7f", "00FF7F",
               "\"item.data\" is no list of hexadecimal bytes"},
        Change{"ThreeTexts", "\"two\",", "", "\"item.texts\" has not 4 texts"},
        Change{"NumberAmongTexts", "\"two\"", "2", "\"item.texts\" is of the wrong type"},
        Change{"NoDelivery", "\"delivery\":", "\"old\":", "\"delivery\" is missing"},
        Change{"NoTries", "\"tries\": 0,", "", "\"delivery.tries\" is missing"},
        Change{"NoJson", "{", "", "it is no JSON object"},
        Change{"Array", "{", "[", "it is no JSON object"},
        Change{"BrokenUtf8", "TEST - AlertManager", "\xFF", "it is no JSON object"}),
    test_support::Title());

TEST(EntryTest, EachTruncationIsRefused) {
    const std::string text = queuestore::Format(samples::Alert());
    const std::size_t end = text.rfind('}');
    for (std::size_t size = 0; size <= end; ++size) {
        Entry entry;
        std::string problem;
        EXPECT_FALSE(queuestore::Parse(text.substr(0, size), &entry, &problem)) << size;
        EXPECT_EQ(problem, "it is no JSON object");
    }
}

TEST(EntryTest, DeepNestingIsRefused) {
    Entry entry;
    std::string problem;
    EXPECT_FALSE(queuestore::Parse(std::string(queuestore::kMaxFileSize, '['), &entry, &problem));
    EXPECT_EQ(problem, "it is no JSON object");
}

TEST(EntryTest, MoreThanTheLargestFileIsRefused) {
    Entry entry;
    std::string problem;
    const std::string text = queuestore::Format(samples::Alert());
    const std::string blanks(queuestore::kMaxFileSize - text.size(), ' ');
    EXPECT_TRUE(queuestore::Parse(text + blanks, &entry, &problem));
    EXPECT_FALSE(queuestore::Parse(text + blanks + " ", &entry, &problem));
    EXPECT_EQ(problem, "it has more than 2 MiB");
}

TEST(IdTest, IdsAreDifferentAndSortByTime) {
    std::set<std::string> ids;
    std::string last;
    for (int i = 0; i < 1000; ++i) {
        const std::string id = queuestore::NewId();
        EXPECT_TRUE(queuestore::IsId(id)) << id;
        EXPECT_TRUE(ids.insert(id).second);
        EXPECT_LE(last.substr(0, 23), id.substr(0, 23));
        last = id;
    }
}

struct IdCase {
    const char *title;
    const char *text;
};
class NoIdTest : public ::testing::TestWithParam<IdCase> {};

TEST_P(NoIdTest, IsNone) {
    EXPECT_FALSE(queuestore::IsId(GetParam().text));
}
INSTANTIATE_TEST_SUITE_P(
    Texts, NoIdTest,
    ::testing::Values(IdCase{"Empty", ""}, IdCase{"Path", "../x"},
                      IdCase{"TooShort", "20240305T005320.123456Z-0123456789abcde"},
                      IdCase{"TooLong", "20240305T005320.123456Z-0123456789abcdef0"},
                      IdCase{"UpperCase", "20240305T005320.123456Z-0123456789ABCDEF"},
                      IdCase{"LetterInDate", "2024030aT005320.123456Z-0123456789abcdef"},
                      IdCase{"NoDash", "20240305T005320.123456Z.0123456789abcdef"}),
    test_support::Title());

struct Computer {
    const char *title;
    std::string name;
    std::string message_id;
};
class MessageIdTest : public ::testing::TestWithParam<Computer> {};

TEST_P(MessageIdTest, NamesTheComputerWhereItCan) {
    EXPECT_EQ(queuestore::MessageIdOf("ID", GetParam().name), GetParam().message_id);
}
INSTANTIATE_TEST_SUITE_P(
    Computers, MessageIdTest,
    ::testing::Values(
        Computer{"Plain", "HOST01", "<ID@HOST01>"},
        Computer{"Domain", "a-1.example.com", "<ID@a-1.example.com>"},
        Computer{"Empty", "", "<ID@localhost>"}, Computer{"Blank", "a b", "<ID@localhost>"},
        Computer{"Bracket", "a>", "<ID@localhost>"}, Computer{"LineEnd", "a\r\n", "<ID@localhost>"},
        Computer{"LeadingDot", ".a", "<ID@localhost>"},
        Computer{"TrailingDot", "a.", "<ID@localhost>"},
        Computer{"TwoDots", "a..b", "<ID@localhost>"},
        Computer{"Japanese", "\xA4\xA2", "<ID@localhost>"},
        Computer{"Longest", std::string(200, 'a'), "<ID@" + std::string(200, 'a') + ">"},
        Computer{"TooLong", std::string(201, 'a'), "<ID@localhost>"}),
    test_support::Title());

}  // namespace
