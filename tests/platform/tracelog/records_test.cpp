// What a record says: fields, levels, escaping, cutting, failing formats, errno, the listener.
#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>
#include <cwchar>

#include <gmock/gmock.h>
#include <support/title.h>
#include <unistd.h>

#include "trace_fixture.h"

namespace {

using testing::ElementsAre;
using testing::Field;
using testing::SizeIs;

class Records : public TraceTest {
  protected:
    void SetUp() override { ASSERT_NE(TraceLogInit(0, "vlxfd", 0, 5, 0), 0); }

    std::string OnlyText() const {
        const auto records = TraceTest::Records();
        EXPECT_THAT(records, SizeIs(1));
        return records.empty() ? "" : records[0].text;
    }
};

TEST_F(Records, HoldEveryField) {
    timespec before = {};
    timespec after = {};
    clock_gettime(CLOCK_REALTIME, &before);
    TraceLog(3, "keyfd", "CheckKeyFD", 120, "CheckKeyFD():dwResult = %d", 4);
    clock_gettime(CLOCK_REALTIME, &after);  // time() may lag behind it
    const auto records = TraceTest::Records();
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(records[0].process, getpid());
    EXPECT_EQ(records[0].level, 3);
    EXPECT_EQ(records[0].source, "keyfd");
    EXPECT_EQ(records[0].function, "CheckKeyFD");
    EXPECT_EQ(records[0].line, 120);
    EXPECT_EQ(records[0].text, "CheckKeyFD():dwResult = 4");

    std::tm utc = {};
    ASSERT_NE(strptime(records[0].time.c_str(), "%Y-%m-%dT%H:%M:%S", &utc), nullptr);
    const std::time_t logged = timegm(&utc);
    EXPECT_GE(logged, before.tv_sec);
    EXPECT_LE(logged, after.tv_sec);
}

TEST_F(Records, StandInTheOrderOfTheCalls) {
    for (int i = 0; i < 100; ++i) {
        TraceLog(0, "setup", "main", i, "%d", i);
    }
    const auto records = TraceTest::Records();
    ASSERT_THAT(records, SizeIs(100));
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(records[static_cast<std::size_t>(i)].text, std::to_string(i));
    }
    for (std::size_t i = 1; i < records.size(); ++i) {
        EXPECT_LE(records[i - 1].time, records[i].time);
    }
}

TEST_F(Records, TakeAnyNumbers) {
    TraceLog(INT_MAX, "setup", "main", INT_MIN, "x");
    TraceLog(INT_MAX, "setup", "main", INT_MAX, "x");
    EXPECT_THAT(TraceTest::Records(), ElementsAre(Field(&LoggedRecord::line, INT_MIN),
                                                  Field(&LoggedRecord::line, INT_MAX)));
    EXPECT_EQ(TraceTest::Records()[0].level, INT_MAX);
}

struct EscapeCase {
    const char *title;
    std::string text;
    std::string logged;
};

class Escaping : public Records, public testing::WithParamInterface<EscapeCase> {};

TEST_P(Escaping, KeepsARecordOneLine) {
    const EscapeCase &row = GetParam();
    TraceLog(0, "keyfd", "f", 1, "%s", row.text.c_str());
    EXPECT_EQ(OnlyText(), row.logged);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Escaping,
    testing::Values(
        EscapeCase{"Plain", "<return TRUE.", "<return TRUE."},
        EscapeCase{"Blanks", "  two  ", "  two  "}, EscapeCase{"Empty", "", ""},
        EscapeCase{"LineFeed", "a\nb", "a\\x0Ab"},
        EscapeCase{"ForgedRecord", "x\n2026-01-02T03:04:05.000006Z 1 0 setup main 1 <return 1",
                   "x\\x0A2026-01-02T03:04:05.000006Z 1 0 setup main 1 <return 1"},
        EscapeCase{"CarriageReturn", "a\r", "a\\x0D"}, EscapeCase{"Tab", "a\tb", "a\\x09b"},
        EscapeCase{"TerminalEscape", "\x1b[2J", "\\x1B[2J"},
        EscapeCase{"Backslash", "a\\x0Ab", "a\\x5Cx0Ab"},
        EscapeCase{"FirstAndLastControl", "\x01\x1f", "\\x01\\x1F"},
        EscapeCase{"Delete", "\x7f", "\\x7F"},
        EscapeCase{"UpperControls", "\x80\x8d\x90\x9b\x9f", "\\x80\\x8D\\x90\\x9B\\x9F"},
        EscapeCase{"EucShiftsStay", "\x8e\xb1\x8f\xa2\xb7", "\x8e\xb1\x8f\xa2\xb7"},
        EscapeCase{"EucCharactersStay", "\xc5\xec\xb5\xfe\xff", "\xc5\xec\xb5\xfe\xff"}),
    test_support::Title());

TEST_F(Records, EscapeAZeroByteInTheText) {
    TraceLog(0, "keyfd", "isKanji", 1, ">byChar=%c!", 0);
    EXPECT_EQ(OnlyText(), ">byChar=\\x00!");
}

TEST_F(Records, EscapeNamesSoThatFieldsStayApart) {
    TraceLog(0, "key fd\n", "f\\ g", 1, "x");
    const auto records = TraceTest::Records();
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(records[0].source, "key\\x20fd\\x0A");
    EXPECT_EQ(records[0].function, "f\\x5C\\x20g");
}

TEST_F(Records, CutLongNames) {
    const std::string name(1000, '\x01');
    std::string logged;
    for (int i = 0; i < 128; ++i) {
        logged += "\\x01";
    }
    TraceLog(0, name.c_str(), name.c_str(), 1, "x");
    const auto records = TraceTest::Records();
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(records[0].source, logged);
    EXPECT_EQ(records[0].function, logged);
}

TEST_F(Records, TakeNullTexts) {
    const char *volatile null = nullptr;  // unknown to the compiler's format check
    TraceLog(0, null, null, 1, "%s", null);
    const auto records = TraceTest::Records();
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(records[0].source, "(null)");
    EXPECT_EQ(records[0].function, "(null)");
    EXPECT_EQ(records[0].text, "(null)");
}

TEST_F(Records, TakeANullFormat) {
    const char *volatile null = nullptr;
    TraceLog(0, "s", "f", 1, null);
    EXPECT_EQ(OnlyText(), "(null)");
}

TEST_F(Records, SurviveAFormatThatFails) {
    const wchar_t unknown[] = {0x3042, 0};  // the "C" locale has no such character
    TraceLog(1, "s", "f", 1, "name %ls failed", unknown);
    EXPECT_EQ(OnlyText(), "(not formatted) name %ls failed");
}

struct CutCase {
    const char *title;
    std::string text;
    std::string logged;
};

class Cutting : public Records, public testing::WithParamInterface<CutCase> {};

TEST_P(Cutting, MarksTheEndOfALongText) {
    const CutCase &row = GetParam();
    TraceLog(0, "s", "f", 1, "%s", row.text.c_str());
    EXPECT_EQ(OnlyText(), row.logged);
}

std::string Repeat(const std::string &piece, std::size_t count) {
    std::string text;
    while (count-- > 0) {
        text += piece;
    }
    return text;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Cutting,
    testing::Values(CutCase{"Longest", std::string(4096, 'a'), std::string(4096, 'a')},
                    CutCase{"OneMore", std::string(4097, 'a'), std::string(4096, 'a') + "..."},
                    CutCase{"Megabyte", std::string(1 << 20, 'a'), std::string(4096, 'a') + "..."},
                    CutCase{"WholeTwoByteCharacters", "a" + Repeat("\xb0\xa1", 2048),
                            "a" + Repeat("\xb0\xa1", 2047) + "..."},
                    CutCase{"WholeThreeByteCharacters", Repeat("\x8f\xb0\xa1", 1366),
                            Repeat("\x8f\xb0\xa1", 1365) + "..."},
                    CutCase{"WholeHalfWidthKatakana", "a" + Repeat("\x8e\xb1", 2048),
                            "a" + Repeat("\x8e\xb1", 2047) + "..."},
                    CutCase{"AllEscaped", std::string(5000, '\x01'),
                            Repeat("\\x01", 4096) + "..."}),
    test_support::Title());

TEST_F(Records, KeepErrno) {
    const char *volatile error_text = "%m%s";  // unknown to the compiler's format check
    errno = EXDEV;
    TraceLog(0, "s", "f", 1, error_text, "");
    EXPECT_EQ(errno, EXDEV);
    EXPECT_EQ(OnlyText(), std::strerror(EXDEV));
    TraceLog(0, "s", "f", 1, "%ls", L"\x3042");
    EXPECT_EQ(errno, EXDEV);
    TraceLogClose();
    EXPECT_EQ(errno, EXDEV);
    EXPECT_EQ(TraceLogInit(0, "a/b", 0, 5, 0), 0);
    EXPECT_EQ(errno, EXDEV);
    TraceLogSetListener(nullptr, nullptr);
    EXPECT_EQ(errno, EXDEV);
}

TEST_F(Records, BelowTheLowestLevelAreNotWritten) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 1, 5, 0), 0);
    TraceLog(0, "s", "f", 1, "note");
    TraceLog(1, "s", "f", 1, "failure");
    TraceLog(2, "s", "f", 1, "allocation");
    EXPECT_THAT(TraceTest::Records(), ElementsAre(Field(&LoggedRecord::text, "failure"),
                                                  Field(&LoggedRecord::text, "allocation")));
}

// Formatting writes through %n, so that a test sees whether it happened.
int FormattedLength(int level) {
    int length = -1;
    TraceLog(level, "s", "f", 1, "1234%n", &length);
    return length;
}

TEST_F(Records, ThatNobodyTakesAreNotFormatted) {
    EXPECT_EQ(FormattedLength(0), 4);
    ASSERT_NE(TraceLogInit(0, "vlxfd", 1, 5, 0), 0);
    EXPECT_EQ(FormattedLength(0), -1);
    EXPECT_EQ(FormattedLength(1), 4);
    TraceLogClose();
    EXPECT_EQ(FormattedLength(1), -1);
}

struct Heard {
    std::vector<std::string> texts;
    std::vector<int> levels;
};

void Hear(const TRACELOG_RECORD *record, void *context) {
    auto *heard = static_cast<Heard *>(context);
    heard->texts.emplace_back(record->szText);
    heard->levels.push_back(record->nLevel);
}

TEST_F(Records, ReachTheListenerUnescapedAtEveryLevel) {
    ASSERT_NE(TraceLogInit(0, "vlxfd", 1, 5, 0), 0);
    Heard heard;
    TraceLogSetListener(Hear, &heard);
    TraceLog(0, "s", "f", 1, "a\nb\\");
    TraceLog(-7, "s", "f", 1, "low");
    TraceLog(1, "s", "f", 1, "failure");
    TraceLogSetListener(nullptr, nullptr);
    TraceLog(1, "s", "f", 1, "unheard");
    EXPECT_THAT(heard.texts, ElementsAre("a\nb\\", "low", "failure"));
    EXPECT_THAT(heard.levels, ElementsAre(0, -7, 1));
    EXPECT_THAT(TraceTest::Records(), ElementsAre(Field(&LoggedRecord::text, "failure"),
                                                  Field(&LoggedRecord::text, "unheard")));
}

TEST_F(Records, ReachTheListenerWithoutALog) {
    TraceLogClose();
    Heard heard;
    TraceLogSetListener(Hear, &heard);
    TraceLog(0, "s", "f", 1, "alone");
    EXPECT_THAT(heard.texts, ElementsAre("alone"));
    EXPECT_THAT(TraceTest::Records(), SizeIs(0));
}

TEST_F(Records, TellTheListenerTheirOrigin) {
    static TRACELOG_RECORD last;
    static std::string origin;
    TraceLogSetListener(
        [](const TRACELOG_RECORD *record, void *) {
            last = *record;
            origin = std::string(record->szSource) + ":" + record->szFunction;
        },
        nullptr);
    TraceLog(2, "keyfd", "GetCRLF", 77, "x");
    EXPECT_EQ(origin, "keyfd:GetCRLF");
    EXPECT_EQ(last.nLevel, 2);
    EXPECT_EQ(last.nLine, 77);
}

TEST_F(Records, OfTheListenerItselfAreDropped) {
    static int calls;
    calls = 0;
    TraceLogSetListener(
        [](const TRACELOG_RECORD *, void *) {
            ++calls;
            TraceLog(1, "s", "f", 1, "nested");
            TraceLogSetListener(nullptr, nullptr);
            TraceLogClose();
            EXPECT_EQ(TraceLogInit(0, "vlxfd", 0, 5, 0), 0);
        },
        nullptr);
    TraceLog(1, "s", "f", 1, "outer");
    TraceLog(1, "s", "f", 1, "outer");
    EXPECT_EQ(calls, 2);
    EXPECT_THAT(TraceTest::Records(), SizeIs(2));
}

}  // namespace
