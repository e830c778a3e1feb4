// The line reader: every byte, size and position it hands out, and its trace.
#include <gmock/gmock.h>
#include <ntwin32/file.h>
#include <ntwin32/registry.h>

#include <random>
#include <string>
#include <vector>

#include "fakes/platform.h"
#include "keyfd/keyfd.h"
#include "support/title.h"

namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

class LineReaderTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        EXPECT_EQ(GetFileLine(READER_RESET, nullptr, nullptr, nullptr), 1);
        fakes::ClearTrace();
    }
    void TearDown() override {
        if (file_ != INVALID_HANDLE_VALUE) {
            CloseHandle(file_);
        }
        PlatformTest::TearDown();
    }

    void Open(const std::string &bytes) {
        fakes::AddFile("file", bytes);
        file_ = CreateFile("file", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, 0);
        ASSERT_NE(file_, INVALID_HANDLE_VALUE);
    }

    LONG Handle() const { return static_cast<LONG>(file_); }

    // One call with the capacity; the bytes stored, and that nothing was stored after them.
    std::string Line(DWORD capacity) {
        std::string buffer(capacity + 4, '~');
        DWORD size = capacity;
        result_ = GetFileLine(Handle(), buffer.data(), &size, &position_);
        EXPECT_LE(size, capacity);
        EXPECT_EQ(buffer.substr(capacity), "~~~~") << "wrote past the capacity";
        return buffer.substr(0, size);
    }

    HANDLE file_ = INVALID_HANDLE_VALUE;
    BOOL result_ = -1;
    DWORD position_ = 4711;
};

std::string Bytes(std::initializer_list<int> bytes) {
    std::string text;
    for (const int byte : bytes) {
        text.push_back(static_cast<char>(byte));
    }
    return text;
}

// What an empty line gives at its two kinds of end, and what ends a file.
const std::string kEmptyAtLf = Bytes({0, '\n', 0});
const std::string kEmptyAtCr = Bytes({'\n', 0});
const std::string kAtEnd = kEmptyAtLf;

std::string Lf(const std::string &text) {
    return text + '\n' + '\0';
}

struct Lines {
    std::string title;
    std::string file;
    DWORD capacity = 0;
    std::vector<std::string> lines;  // what the calls give, one after the other
};

class LineReaderCases : public LineReaderTest, public ::testing::WithParamInterface<Lines> {};

TEST_P(LineReaderCases, GivesTheseLines) {
    Open(GetParam().file);
    for (const std::string &line : GetParam().lines) {
        EXPECT_EQ(Line(GetParam().capacity), line);
        EXPECT_EQ(result_, 1);
    }
}

INSTANTIATE_TEST_SUITE_P(
    LineReader, LineReaderCases,
    ::testing::Values(
        Lines{"CrLf", "AB\r\nC\r\n", 1024, {Lf("AB"), Lf("C"), kAtEnd, kAtEnd}},
        Lines{"Lf", "AB\nC\n", 1024, {Lf("AB"), Lf("C"), kAtEnd}},
        Lines{"LoneCr", "AB\rC\r", 1024, {Lf("AB"), Lf("C"), kAtEnd}},
        Lines{"NoLastLineEnd", "AB", 1024, {Lf("AB"), kAtEnd}},
        Lines{"EmptyFile", "", 1024, {kAtEnd, kAtEnd}},
        Lines{"TwoEmptyCrLfLines", "\r\n\r\n", 1024, {kEmptyAtCr, kEmptyAtCr, kAtEnd}},
        Lines{"TwoEmptyLfLines", "\n\n", 1024, {kEmptyAtLf, kEmptyAtLf, kAtEnd}},
        Lines{"EndMarkAfterLoneCrIsDropped", "A\r\x1A", 1024, {Lf("A"), kAtEnd}},
        Lines{"EndMarkAfterCrLfIsALine", "A\r\n\x1A", 1024, {Lf("A"), Lf("\x1A"), kAtEnd}},
        Lines{"EndMarkAfterLfIsALine", "A\n\x1A", 1024, {Lf("A"), Lf("\x1A"), kAtEnd}},
        Lines{"EndMarkInALineStays",
              "A\x1A"
              "B\r\n",
              1024,
              {Lf("A\x1A"
                  "B"),
               kAtEnd}},
        Lines{"OneByteIsDroppedAfterCr", "A\r\n\nB\n", 1024, {Lf("A"), kEmptyAtLf, Lf("B")}},
        Lines{"SkippingOutlivesALine", "X\rA\n\nB\n", 1024, {Lf("X"), Lf("A"), Lf("B"), kAtEnd}},
        Lines{"AnFFByteEndsTheLine",
              "A\xFF"
              "B\n",
              1024,
              {Lf("A"), Lf("B"), kAtEnd}},
        Lines{"AnFFByteAloneIsAnEmptyLine",
              "\xFF"
              "B\n",
              1024,
              {kEmptyAtLf, Lf("B"), kAtEnd}},
        Lines{"AZeroByteIsAnOrdinaryByte",
              Bytes({'A', 0, 'B', '\n'}),
              1024,
              {Lf(Bytes({'A', 0, 'B'})), kAtEnd}},
        Lines{"TrailByteLf", "\x88\n\r\n", 1024, {Lf("\x88\n"), kAtEnd}},
        Lines{"TrailByteCr", "\x88\r\n", 1024, {Lf("\x88\r"), kAtEnd}},
        Lines{"TrailByteFF", "\xE0\xFF\n", 1024, {Lf("\xE0\xFF"), kAtEnd}},
        Lines{"TrailByteThatLooksLikeALead", "\x88\x88\n", 1024, {Lf("\x88\x88"), kAtEnd}},
        Lines{"HalfWidthKatakanaIsNoLead", "\xB1\n", 1024, {Lf("\xB1"), kAtEnd}},
        Lines{"LeadAtTheEndTakesTheEndMark", "A\x88", 1024, {Lf("A\x88\xFF"), kAtEnd}},
        Lines{"FullPieces", "ABCDE\r\n", 2, {"AB", "CD", Bytes({'E', 0})}},
        Lines{"FullPieceThenLf", "AB\n", 2, {"AB", Bytes({0, 0}), Bytes({0, 0})}},
        Lines{"FullPieceThenCrLf", "AB\r\n", 2, {"AB", kEmptyAtCr}},
        Lines{
            "OneByteLeftForTheZero", "ABC\n", 4, {Bytes({'A', 'B', 'C', 0}), Bytes({0, '\n', 0})}},
        Lines{"TwoBytesLeft", "AB\n", 4, {Lf("AB"), kAtEnd}},
        Lines{"FullInTheMiddleOfACharacter", "\x88\x9F\n", 2, {"\x88\x9F", Bytes({'\n', 0})}},
        Lines{"FullAfterALeadByte",
              "A\x88\x9F\n"
              "C",
              2,
              {"A\x88", "\x9F\n", Bytes({'C', 0})}},
        Lines{"CapacityOne", "A\r\n", 1, {"A", Bytes({0}), Bytes({0})}}),
    test_support::Title());

TEST_F(LineReaderTest, ReadsBlocksOf262144Bytes) {
    Open(std::string(0x40000, 'x') + 'y');
    BYTE byte = 0;
    for (DWORD i = 0; i < 0x40000; ++i) {
        GetFileChar(Handle(), &byte, &position_);
        if (i % 4096 == 0) {
            fakes::ClearTrace();
        }
    }
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(fakes::CallCount("ReadFile"), 1);
    EXPECT_EQ(fakes::Calls().back().detail, "262144");
    GetFileChar(Handle(), &byte, &position_);
    EXPECT_EQ(byte, 'y');
    EXPECT_EQ(position_, 0x40000U);
    EXPECT_EQ(fakes::CallCount("ReadFile"), 2);
}

TEST_F(LineReaderTest, LinesMayCrossBlocks) {
    fakes::LimitReads(3);
    Open("AB\r\nCDEFG\r\n\x88\n\n");
    EXPECT_EQ(Line(1024), Lf("AB"));
    EXPECT_EQ(Line(1024), Lf("CDEFG"));
    EXPECT_EQ(Line(1024), Lf("\x88\n"));
    EXPECT_EQ(Line(1024), kAtEnd);
}

TEST_F(LineReaderTest, CapacityZeroReadsAndStoresNothing) {
    Open("AB\r\n");
    EXPECT_EQ(Line(0), "");
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(fakes::CallCount("ReadFile"), 0);
    EXPECT_TRUE(fakes::HasTrace(1, "<no capacity.return FALSE."));
    EXPECT_EQ(Line(1024), Lf("AB"));
}

TEST_F(LineReaderTest, PositionsCountFromZero) {
    Open("AB\r\nC\n");
    Line(1024);
    EXPECT_EQ(position_, 2U);
    Line(1024);
    EXPECT_EQ(position_, 5U);
    Line(1024);
    EXPECT_EQ(position_, 6U) << "the end-of-file marker's";
    position_ = 99;
    Line(1024);
    EXPECT_EQ(position_, 99U) << "after the end it is not updated";
}

TEST_F(LineReaderTest, TheEndOfAnEmptyFileIsAtZero) {
    Open("");
    Line(1024);
    EXPECT_EQ(position_, 0U);
}

TEST_F(LineReaderTest, ResetForgetsBlockEndAndLineState) {
    Open("A\r");
    Line(1024);
    Line(1024);
    CloseHandle(file_);
    Open("\nB");
    EXPECT_EQ(GetFileLine(READER_RESET, nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(Line(1024), kEmptyAtLf) << "the CR of the file before is forgotten";
    EXPECT_EQ(position_, 0U);
    EXPECT_EQ(Line(1024), Lf("B"));
}

TEST_F(LineReaderTest, ResetForgetsHalfACharacter) {
    Open(
        "\x88"
        "A\n\n");
    EXPECT_EQ(Line(2),
              "\x88"
              "A")
        << "the trail byte is still expected when the piece is full";
    EXPECT_EQ(GetFileLine(READER_RESET, nullptr, nullptr, nullptr), 1);
    CloseHandle(file_);
    Open("\nB");
    EXPECT_EQ(Line(1024), kEmptyAtLf);
}

struct ReadFailure {
    std::string title;
    std::string lines;   // before the line that cannot be read, each ended by CR
    std::string before;  // what is read of it before the read that fails
    std::string trace;
    std::string text;           // what the line then holds
    std::string next = kAtEnd;  // and what the next call gives
};

class LineReaderFailures : public LineReaderTest,
                           public ::testing::WithParamInterface<ReadFailure> {};

TEST_P(LineReaderFailures, EndTheLineWithAZeroByte) {
    const ReadFailure &row = GetParam();
    fakes::LimitReads(1);
    Open(row.lines + row.before + "never read");
    if (!row.lines.empty()) {
        Line(1024);
    }
    fakes::FailCall("ReadFile", static_cast<int>(row.before.size()) + 1);
    fakes::ClearTrace();

    std::string buffer(1024, '~');
    DWORD size = 1024;
    EXPECT_EQ(GetFileLine(Handle(), buffer.data(), &size, &position_), 0);
    EXPECT_EQ(buffer.substr(0, size), row.text);
    EXPECT_EQ(buffer[size], '\0');
    EXPECT_EQ(buffer[size + 1], '~');
    const std::vector<std::string> lines = fakes::TraceLines(1);
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[lines.size() - 2], "1 <ReadFile Failed");
    EXPECT_EQ(lines.back(), "1 " + row.trace);
    EXPECT_EQ(fakes::Trace().back().function, "GetFileLine");

    EXPECT_EQ(Line(1024), row.next) << "the reader stays at its end";
    EXPECT_EQ(result_, 1);
    EXPECT_EQ(GetFileLine(READER_RESET, nullptr, nullptr, nullptr), 1);
}

INSTANTIATE_TEST_SUITE_P(
    LineReader, LineReaderFailures,
    ::testing::Values(ReadFailure{"FirstByte", "", "", "<GetFileChar failed.return FALSE.", ""},
                      ReadFailure{"AfterADroppedByte", "X\r", "\n", "<GetFileChar() failed.", ""},
                      ReadFailure{"InTheLine", "", "AB", "<GetFileChar() failed.", "AB"},
                      ReadFailure{"AtATrailByte", "", "A\x88", "<GetFileChar() failed.", "A\x88",
                                  Lf("\xFF")}),
    test_support::Title());

TEST_F(LineReaderTest, AFailedReadLeavesTheReaderAtItsEnd) {
    Open("AB");
    fakes::FailCall("ReadFile");
    BYTE byte = 0;
    EXPECT_EQ(GetFileChar(Handle(), &byte, &position_), 0);
    EXPECT_EQ(byte, 0xFF);
    EXPECT_EQ(position_, 0U);
    byte = 0;
    EXPECT_EQ(GetFileChar(Handle(), &byte, &position_), 1);
    EXPECT_EQ(byte, 0xFF);
    EXPECT_EQ(fakes::CallCount("ReadFile"), 1);
    EXPECT_EQ(GetFileChar(READER_RESET, nullptr, nullptr), 1);
    EXPECT_EQ(GetFileChar(Handle(), &byte, &position_), 1);
    EXPECT_EQ(byte, 'A');
}

TEST_F(LineReaderTest, IsKanjiTracesItsArgumentAndItsResult) {
    EXPECT_EQ(isKanji(0x88), 1U);
    EXPECT_EQ(isKanji('A'), 0U);
    EXPECT_THAT(fakes::TraceLines(), ElementsAre("0 >byChar=\x88", "0 <return TRUE.", "0 >byChar=A",
                                                 "1 <IsDBCSLeadByte() Failed!"));
    EXPECT_EQ(fakes::Trace()[0].function, "isKanji");
    EXPECT_EQ(fakes::Trace()[0].source, "keyfd");
}

TEST_F(LineReaderTest, LeadBytesAreThoseOfShiftJis) {
    for (int byte = 0; byte < 256; ++byte) {
        const bool lead = (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
        EXPECT_EQ(isKanji(static_cast<BYTE>(byte)), lead ? 1U : 0U) << byte;
    }
}

const char kCharEntry[] = ">hInput=[0-9]+,lpbyChar=0x[0-9a-f]+,lpdwFilePos=0x[0-9a-f]+";
const char kLineEntry[] =
    ">hInput=[0-9]+,cString=0x[0-9a-f]+,lpdwSize=0x[0-9a-f]+,lpdwFilePos=0x[0-9a-f]+";

TEST_F(LineReaderTest, TraceOfALine) {
    Open("A\n");
    Line(1024);
    EXPECT_THAT(
        fakes::TraceLines(),
        ElementsAre(MatchesRegex(std::string("0 ") + kLineEntry),
                    MatchesRegex(std::string("0 ") + kCharEntry), "0 <return TRUE.", "0 >byChar=A",
                    "1 <IsDBCSLeadByte() Failed!", MatchesRegex(std::string("0 ") + kCharEntry),
                    "0 <return TRUE.", "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].function, "GetFileLine");
    EXPECT_EQ(fakes::Trace()[1].function, "GetFileChar");
    EXPECT_EQ(fakes::Trace()[3].function, "isKanji");
    EXPECT_EQ(fakes::Trace().back().function, "GetFileLine");
}

TEST_F(LineReaderTest, TraceOfAReset) {
    EXPECT_EQ(GetFileLine(READER_RESET, nullptr, nullptr, nullptr), 1);
    EXPECT_THAT(
        fakes::TraceLines(),
        ElementsAre("0 >hInput=-1,cString=(nil),lpdwSize=(nil),lpdwFilePos=(nil)", "1 <hInput==-1!",
                    "0 >hInput=-1,lpbyChar=(nil),lpdwFilePos=(nil)", "1 hInput==-1!"));
    EXPECT_EQ(fakes::Trace()[1].function, "GetFileLine");
    EXPECT_EQ(fakes::Trace()[3].function, "GetFileChar");
}

TEST_F(LineReaderTest, TheEndOfFileHasNoLeavingTraceOfTheByte) {
    Open("");
    Line(1024);
    EXPECT_EQ(fakes::TraceLines().size(), 3U) << "two entries and the line's leaving trace";
    fakes::ClearTrace();
    Line(1024);
    EXPECT_EQ(fakes::TraceLines().size(), 3U);
}

TEST_F(LineReaderTest, AFullPieceHasNoLeavingTrace) {
    Open("AB");
    Line(2);
    EXPECT_EQ(fakes::Trace().back().function, "GetFileChar");
}

// Whatever the bytes and the capacity: no byte past the capacity, an end after finitely many calls,
// and no byte of the file invented.
TEST_F(LineReaderTest, AnyBytesAtAnyCapacity) {
    std::mt19937 random(20240305);
    const std::string alphabet =
        Bytes({'\r', '\n', 0x1A, 0xFF, 0, 'A', 'B', 0x88, 0x9F, 0xE0, ']'});
    for (int round = 0; round < 400; ++round) {
        std::string file(random() % 40, ' ');
        for (char &byte : file) {
            byte = alphabet[random() % alphabet.size()];
        }
        const auto capacity = static_cast<DWORD>(1 + random() % 12);
        EXPECT_EQ(GetFileLine(READER_RESET, nullptr, nullptr, nullptr), 1);
        Open(file);
        std::size_t calls = 0;
        position_ = 0;
        while (position_ < file.size()) {
            Line(capacity);
            ASSERT_EQ(result_, 1);
            ASSERT_LE(++calls, 2 * file.size() + 2);
        }
        CloseHandle(file_);
        file_ = INVALID_HANDLE_VALUE;
    }
}

}  // namespace
