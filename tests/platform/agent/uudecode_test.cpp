// The uuencode form: what decodes, what does not, and both directions against the system's own
// tools.
#include <amcrtcpy.h>
#include <gtest/gtest.h>
#include <ntwin32/memory.h>
#include <support/temp_folder.h>
#include <support/title.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace {

using test_support::ReadWholeFile;
using test_support::TempFolder;

// A block as the functions hand it out, taken over and released.
std::string TakeBlock(HGLOBAL block, DWORD size) {
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(GlobalSize(block), size);
    std::string bytes(static_cast<const char *>(block), size);
    EXPECT_EQ(GlobalFree(block), nullptr);
    return bytes;
}

// None when the decoding fails, which must leave the outputs alone.
std::optional<std::string> Decode(const std::string &text) {
    int marker = 0;
    HGLOBAL block = &marker;
    DWORD size = 4711;
    // A copy of its own, so that the address sanitizer sees a read beyond the end.
    const std::unique_ptr<char[]> exact(new char[text.size() + 1]);
    text.copy(exact.get(), text.size());
    const auto length = static_cast<DWORD>(text.size());
    if (UUCdDeCodingFromMemory(exact.get(), length, &block, &size) == FALSE) {
        EXPECT_EQ(block, &marker);
        EXPECT_EQ(size, 4711u);
        return std::nullopt;
    }
    return TakeBlock(block, size);
}

std::optional<std::string> DecodeFile(const std::string &path) {
    int marker = 0;
    HGLOBAL block = &marker;
    DWORD size = 4711;
    if (UUCdDeCodingFromFile(path.c_str(), &block, &size) == FALSE) {
        EXPECT_EQ(block, &marker);
        EXPECT_EQ(size, 4711u);
        return std::nullopt;
    }
    return TakeBlock(block, size);
}

std::string Encode(const std::string &bytes) {
    void *text = nullptr;
    DWORD size = 0;
    EXPECT_NE(UUCdEnCodingToMemory(bytes.data(), static_cast<DWORD>(bytes.size()), &text, &size),
              FALSE);
    std::string encoded(static_cast<const char *>(text), size);
    EXPECT_EQ(static_cast<const char *>(text)[size], '\0');
    std::free(text);
    return encoded;
}

std::string AllBytes(std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes += static_cast<char>(i * 37 + i / 256);
    }
    return bytes;
}

std::string Replace(std::string text, const std::string &from, const std::string &to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

struct DecodeCase {
    const char *title;
    std::string text;
    std::optional<std::string> decoded;
};

class Decoding : public testing::TestWithParam<DecodeCase> {};

TEST_P(Decoding, GivesTheWholeTextOrNothing) {
    EXPECT_EQ(Decode(GetParam().text), GetParam().decoded);
}

const std::string kBegin = "begin 644 AMVLXUSR.INF\n";
const std::string kCat = kBegin + "#0V%T\n`\nend\n";  // "Cat"

INSTANTIATE_TEST_SUITE_P(
    Historical, Decoding,
    testing::Values(
        DecodeCase{"OneLine", kCat, "Cat"}, DecodeCase{"CrLf", Replace(kCat, "\n", "\r\n"), "Cat"},
        DecodeCase{"NoLastLineEnd", kBegin + "#0V%T\n`\nend", "Cat"},
        DecodeCase{"EndOfFileMark", kCat + "\x1A", "Cat"},
        DecodeCase{"EndOfFileMarkAfterCrLf", Replace(kCat, "\n", "\r\n") + "\x1A", "Cat"},
        DecodeCase{"EndOfFileMarkBehindEnd", kBegin + "#0V%T\n`\nend\x1A", "Cat"},
        DecodeCase{"BlankInsteadOfGrave", kBegin + "#0V%T\n \nend\n", "Cat"},
        DecodeCase{"StrippedBlankLine", kBegin + "#0V%T\n\nend\n", "Cat"},
        DecodeCase{"AddedBlanks", kBegin + "#0V%T  \n`  \nend\n", "Cat"},
        DecodeCase{"Nothing", kBegin + "`\nend\n", ""},
        DecodeCase{"OneByte", kBegin + "!0P``\n`\nend\n", "C"},
        DecodeCase{"TwoBytes", kBegin + "\"0V$`\n`\nend\n", "Ca"},
        DecodeCase{"ZerosAsGraves", kBegin + "#````\n`\nend\n", std::string(3, '\0')},
        DecodeCase{"ZerosAsBlanks", kBegin + "#    \n \nend\n", std::string(3, '\0')},
        DecodeCase{"ZerosStripped", kBegin + "#\n\nend\n", std::string(3, '\0')},
        DecodeCase{"PartOfAGroupStripped", kBegin + "#0P\n\nend\n", std::string("C\0\0", 3)},
        DecodeCase{"LongLine", kBegin + "_" + std::string(84, '!') + "\n`\nend\n",
                   Replace(std::string(21, 'x'), "x", "\x04\x10\x41")},
        DecodeCase{"ShortMode", "begin 7 x\n`\nend\n", ""},
        DecodeCase{"LongMode", "begin 0644 x\n`\nend\n", ""},
        DecodeCase{"BlankInName", "begin 644 my file\n`\nend\n", ""},
        DecodeCase{"GarbageBehindTheLength", kBegin + "!0V%T\n`\nend\n", "C"}),
    test_support::Title());

INSTANTIATE_TEST_SUITE_P(
    BadHistorical, Decoding,
    testing::Values(DecodeCase{"Empty", "", {}}, DecodeCase{"NoBegin", "#0V%T\n`\nend\n", {}},
                    DecodeCase{"LineBeforeBegin", "\n" + kCat, {}},
                    DecodeCase{"BeginAlone", kBegin, {}},
                    DecodeCase{"BeginCut", "begin 644 AMV", {}},
                    DecodeCase{"BeginWithoutName", "begin 644 \n`\nend\n", {}},
                    DecodeCase{"BeginWithoutMode", "begin x\n`\nend\n", {}},
                    DecodeCase{"BeginWithBadMode", "begin 689 x\n`\nend\n", {}},
                    DecodeCase{"BeginWithLongMode", "begin 00644 x\n`\nend\n", {}},
                    DecodeCase{"BeginInCapitals", "BEGIN 644 x\n`\nend\n", {}},
                    DecodeCase{"CutInALine", kBegin + "#0V", {}},
                    DecodeCase{"CutAfterALine", kBegin + "#0V%T\n", {}},
                    DecodeCase{"CutBeforeEnd", kBegin + "#0V%T\n`\n", {}},
                    DecodeCase{"CutInEnd", kBegin + "#0V%T\n`\nen", {}},
                    DecodeCase{"NoZeroLine", kBegin + "#0V%T\nend\n", {}},
                    DecodeCase{"TextBehindZeroLine", kBegin + "#0V%T\n``\nend\n", {}},
                    DecodeCase{"BlankAndTextAsZeroLine", kBegin + "#0V%T\n x\nend\n", {}},
                    DecodeCase{"LineBehindEnd", kCat + "\n", {}},
                    DecodeCase{"TextBehindEnd", kCat + "x", {}},
                    DecodeCase{"SecondFile", kCat + kCat, {}},
                    DecodeCase{"TwoEndOfFileMarks", kCat + "\x1A\x1A", {}},
                    DecodeCase{"LineBehindEndOfFileMark", kCat + "\x1A\n", {}},
                    DecodeCase{"EndOfFileMarkTwice", kBegin + "`\nend\x1A\n\x1A", {}},
                    DecodeCase{"EndWithMore", kBegin + "`\nend.\n", {}},
                    DecodeCase{"CharacterTooMuch", kBegin + "#0V%T!\n`\nend\n", {}},
                    DecodeCase{"CharacterBelowTheRange", kBegin + "#0V\x1FT\n`\nend\n", {}},
                    DecodeCase{"CharacterAboveTheRange", kBegin + "#0VaT\n`\nend\n", {}},
                    DecodeCase{"ByteAbove7F", kBegin + "#0V\xA1T\n`\nend\n", {}},
                    DecodeCase{"ZeroByte", kBegin + std::string("#0V\0T\n`\nend\n", 12), {}},
                    DecodeCase{"LengthAboveTheRange", kBegin + "a0V%T\n`\nend\n", {}},
                    DecodeCase{"ShortLineOfAGraveEncoder", kBegin + "#````\n#0V\n`\nend\n", {}},
                    DecodeCase{"GraveAfterAShortLine", kBegin + "#0P\n#````\n \nend\n", {}},
                    DecodeCase{"CarriageReturnAlone", Replace(kCat, "\n", "\r"), {}},
                    DecodeCase{"CarriageReturnInALine", kBegin + "#0V\r%T\n`\nend\n", {}},
                    DecodeCase{"LastCarriageReturn", kBegin + "`\nend\r", {}}),
    test_support::Title());

const std::string kBase64Begin = "begin-base64 644 AMVLXUSR.INF\n";

INSTANTIATE_TEST_SUITE_P(
    Base64, Decoding,
    testing::Values(DecodeCase{"OneLine", kBase64Begin + "Q2F0\n====\n", "Cat"},
                    DecodeCase{"CrLf", "begin-base64 644 x\r\nQ2F0\r\n====\r\n", "Cat"},
                    DecodeCase{"EndOfFileMark", kBase64Begin + "Q2F0\n====\n\x1A", "Cat"},
                    DecodeCase{"NoLastLineEnd", kBase64Begin + "Q2F0\n====", "Cat"},
                    DecodeCase{"Padding", kBase64Begin + "Q2E=\n====\n", "Ca"},
                    DecodeCase{"MorePadding", kBase64Begin + "Qw==\n====\n", "C"},
                    DecodeCase{"TwoLines", kBase64Begin + "Q2F0\nQ2F0\n====\n", "CatCat"},
                    DecodeCase{"AddedBlanks", kBase64Begin + "Q2F0  \n====\n", "Cat"},
                    DecodeCase{"Nothing", kBase64Begin + "====\n", ""},
                    DecodeCase{"NoEnd", kBase64Begin + "Q2F0\n", {}},
                    DecodeCase{"CutInEnd", kBase64Begin + "Q2F0\n===", {}},
                    DecodeCase{"HistoricalEnd", kBase64Begin + "Q2F0\nend\n", {}},
                    DecodeCase{"Trailing", kBase64Begin + "Q2F0\n====\nQ2F0\n", {}},
                    DecodeCase{"CutGroup", kBase64Begin + "Q2F\n====\n", {}},
                    DecodeCase{"BadCharacter", kBase64Begin + "Q2*0\n====\n", {}},
                    DecodeCase{"BlankInside", kBase64Begin + "Q2 F0\n====\n", {}},
                    DecodeCase{"PaddingInside", kBase64Begin + "Q2E=\nQ2F0\n====\n", {}},
                    DecodeCase{"BitsBehindTheEnd", kBase64Begin + "Q2F=\n====\n", {}},
                    DecodeCase{"NoName", "begin-base64 644\nQ2F0\n====\n", {}},
                    DecodeCase{"OtherForm", "begin-base64-encoded 644 eA==\nQ2F0\n====\n", {}}),
    test_support::Title());

// Every cut of a text must fail: nothing is ever decoded in part.
TEST(Decoding, FailsOnEveryCut) {
    const std::string whole = Replace(Encode(AllBytes(200)), "\n", "\r\n");
    for (std::size_t length = 0; length + 2 < whole.size(); ++length) {
        EXPECT_FALSE(Decode(whole.substr(0, length)).has_value()) << length;
    }
    EXPECT_TRUE(Decode(whole.substr(0, whole.size() - 2)).has_value()) << "end without line end";
}

class Size : public testing::TestWithParam<std::size_t> {
  protected:
    TempFolder folder_;
    const std::string bytes_ = AllBytes(GetParam());

    static void Execute(const std::string &command) {
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }
};

TEST_P(Size, SurvivesEncodingAndDecoding) {
    EXPECT_EQ(Decode(Encode(bytes_)), bytes_);
}

TEST_P(Size, IsDecodedByTheSystemsTool) {
    const std::string encoded = folder_.Write("encoded", Encode(bytes_));
    const std::string decoded = folder_ / "decoded";
    Execute("uudecode -o '" + decoded + "' '" + encoded + "'");
    EXPECT_TRUE(ReadWholeFile(decoded) == bytes_);
}

TEST_P(Size, IsDecodedFromTheSystemsTool) {
    const std::string plain = folder_.Write("plain", bytes_);
    const std::string encoded = folder_ / "encoded";
    Execute("uuencode '" + plain + "' AMVLXUSR.INF > '" + encoded + "'");
    EXPECT_EQ(DecodeFile(encoded), bytes_);
    const std::string text = ReadWholeFile(encoded);
    EXPECT_EQ(Decode(Replace(text, "\n", "\r\n") + "\x1A"), bytes_);

    // As an older encoder writes it, and as it arrives when trailing blanks were stripped.
    const std::size_t body = text.find('\n') + 1;
    const std::string blanks = text.substr(0, body) + Replace(text.substr(body), "`", " ");
    EXPECT_EQ(Decode(blanks), bytes_);
    std::string stripped = blanks;
    for (std::size_t before = 0; before != stripped.size();) {
        before = stripped.size();
        stripped = Replace(stripped, " \n", "\n");
    }
    EXPECT_EQ(Decode(stripped), bytes_);

    Execute("uuencode -m '" + plain + "' AMVLXUSR.INF > '" + encoded + "'");
    EXPECT_EQ(DecodeFile(encoded), bytes_);
}

INSTANTIATE_TEST_SUITE_P(Bytes, Size,
                         testing::Values(0, 1, 2, 3, 44, 45, 46, 89, 90, 91, 1000, 100000));

TEST(Encoding, IsTheHistoricalForm) {
    EXPECT_EQ(Encode("Cat"), "begin 644 report.txt\n#0V%T\n`\nend\n");
    EXPECT_EQ(Encode(""), "begin 644 report.txt\n`\nend\n");
    const std::string two_lines = Encode(std::string(46, '\0'));
    EXPECT_EQ(two_lines, "begin 644 report.txt\nM" + std::string(60, '`') + "\n!````\n`\nend\n");
}

TEST(Encoding, NeedsItsPointers) {
    void *text = nullptr;
    DWORD size = 9;
    EXPECT_EQ(UUCdEnCodingToMemory(nullptr, 1, &text, &size), FALSE);
    EXPECT_EQ(UUCdEnCodingToMemory("x", 1, nullptr, &size), FALSE);
    EXPECT_EQ(UUCdEnCodingToMemory("x", 1, &text, nullptr), FALSE);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(size, 9u);
    ASSERT_NE(UUCdEnCodingToMemory(nullptr, 0, &text, &size), FALSE);
    std::free(text);
}

TEST(Decoding, NeedsItsPointers) {
    HGLOBAL block = nullptr;
    DWORD size = 9;
    const DWORD length = static_cast<DWORD>(kCat.size());
    EXPECT_EQ(UUCdDeCodingFromMemory(nullptr, length, &block, &size), FALSE);
    EXPECT_EQ(UUCdDeCodingFromMemory(kCat.data(), length, nullptr, &size), FALSE);
    EXPECT_EQ(UUCdDeCodingFromMemory(kCat.data(), length, &block, nullptr), FALSE);
    EXPECT_EQ(UUCdDeCodingFromFile(nullptr, &block, &size), FALSE);
    EXPECT_EQ(UUCdDeCodingFromFile("/dev/null", nullptr, &size), FALSE);
    EXPECT_EQ(UUCdDeCodingFromFile("/dev/null", &block, nullptr), FALSE);
}

TEST(DecodingAFile, FailsOnWhatIsNoFile) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "folder");
    std::filesystem::create_symlink(folder.Write("real", kCat), folder / "link");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(DecodeFile(folder / "real"), "Cat");
    for (const std::string &path : {folder / "missing", folder / "folder", folder / "link",
                                    folder / "pipe", std::string("/dev/zero")}) {
        EXPECT_FALSE(DecodeFile(path).has_value()) << path;
    }
}

TEST(DecodingAFile, StopsAtFourMebibytes) {
    const TempFolder folder;
    // The largest whole text below the limit, one above it, and one that is mostly a hole.
    EXPECT_TRUE(DecodeFile(folder.Write("below", Encode(std::string(3000000, 'x')))).has_value());
    EXPECT_FALSE(DecodeFile(folder.Write("above", Encode(std::string(3100000, 'x')))).has_value());
    const std::string hole = folder.Write("hole", kCat);
    ASSERT_EQ(::truncate(hole.c_str(), off_t{1} << 40), 0);
    EXPECT_FALSE(DecodeFile(hole).has_value());
    ASSERT_EQ(::truncate(hole.c_str(), off_t{100} << 20), 0);
    EXPECT_FALSE(DecodeFile(hole).has_value());
}

}  // namespace
