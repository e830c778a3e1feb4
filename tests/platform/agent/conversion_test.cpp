// Code conversion of Shift-JIS texts, by the exported functions and by the table inside.
#include <amcrtcpy.h>
#include <gtest/gtest.h>
#include <support/encoding.h>
#include <support/title.h>

#include <memory>
#include <optional>
#include <string>

#include "katakana.h"

namespace {

using test_support::Convert;
using test_support::ToEuc;
using test_support::ToSjis;

using Conversion = int (*)(const char *, DWORD, DWORD, char *) noexcept;

// Runs a conversion on exact copies, so that the address sanitizer sees every step outside. None
// when it fails, which must leave the destination alone.
std::optional<std::string> Apply(Conversion convert, const std::string &source, DWORD capacity) {
    const std::unique_ptr<char[]> from(new char[source.size() + 1]);
    source.copy(from.get(), source.size());
    const std::string former(capacity, '#');
    const std::unique_ptr<char[]> to(new char[capacity + std::size_t{1}]);
    former.copy(to.get(), capacity);
    if (convert(from.get(), static_cast<DWORD>(source.size()), capacity, to.get()) == 0) {
        EXPECT_EQ(std::string(to.get(), capacity), former);
        return std::nullopt;
    }
    const std::string result(to.get(), capacity);
    return result.substr(0, result.find('\0'));
}

std::optional<std::string> Widen(const std::string &source) {
    return Apply(kes_AnkZen, source, static_cast<DWORD>(2 * source.size()));
}

std::optional<std::string> SjisToEuc(const std::string &source) {
    return Apply(ecm_SJIStoEUC, source, static_cast<DWORD>(2 * source.size()));
}

struct ConversionCase {
    const char *title;
    std::string source;
    std::optional<std::string> result;
};

class Widening : public testing::TestWithParam<ConversionCase> {};

TEST_P(Widening, ChangesKatakanaAlone) {
    EXPECT_EQ(Widen(GetParam().source), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Widening,
    testing::Values(
        ConversionCase{"Empty", "", ""},
        ConversionCase{"Ascii", "USER-01 \\~\r\n", "USER-01 \\~\r\n"},
        ConversionCase{"Katakana", "\xB1\xB2\xB3", ToSjis("アイウ")},
        ConversionCase{"Voiced", "\xB6\xDE\xC4\xDE\xCE\xDE", ToSjis("ガドボ")},
        ConversionCase{"SemiVoiced", "\xCA\xDF\xCE\xDF", ToSjis("パポ")},
        ConversionCase{"VoicedU", "\xB3\xDE", ToSjis("ヴ")},
        ConversionCase{"SemiVoicedU", "\xB3\xDF", ToSjis("ウ゜")},
        ConversionCase{"WaAndWoStayPlain", "\xDC\xDE\xA6\xDE", ToSjis("ワ゛ヲ゛")},
        ConversionCase{"OnlyHaRowIsSemiVoiced", "\xB6\xDF\xCF\xDF", ToSjis("カ゜マ゜")},
        ConversionCase{"MarkAlone", "\xDE\xDF", ToSjis("゛゜")},
        ConversionCase{"MarkAfterAMark", "\xB6\xDE\xDE", ToSjis("ガ゛")},
        ConversionCase{"MarkAfterAscii", "K\xDE", "K" + ToSjis("゛")},
        ConversionCase{"MarkAfterAFullWidthOne", ToSjis("カ") + "\xDE", ToSjis("カ゛")},
        ConversionCase{"Punctuation", "\xA1\xA2\xA3\xA4\xA5\xB0", ToSjis("。「」、・ー")},
        ConversionCase{"KanjiStay", ToSjis("東京ソフト表示"), ToSjis("東京ソフト表示")},
        // The trail byte of a double-byte character may look like katakana or like a mark.
        ConversionCase{"TrailBytes", "\x88\xB1\x94\xDE\xE0\xB6\xDE",
                       "\x88\xB1\x94\xDE\xE0\xB6" + ToSjis("゛")},
        ConversionCase{"LeadByteAtTheEnd", "A\x88", "A\x88"},
        ConversionCase{"ZeroAfterALeadByte", std::string("A\x88\0\xB1", 4), "A\x88"},
        ConversionCase{"ZeroEndsTheText", std::string("\xB1\0\xB2", 3), ToSjis("ア")},
        ConversionCase{"OtherBytesStay", "\x80\xA0\xFD\xFE\xFF", "\x80\xA0\xFD\xFE\xFF"}),
    test_support::Title());

// The table says in Shift-JIS what this text says in UTF-8, in the order of the half-width codes.
TEST(KatakanaTable, AgreesWithTheSystemsConversion) {
    const std::string plain = ToSjis(
        "。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチツテトナニヌネノ"
        "ハヒフヘホマミムメモヤユヨラリルレロワン゛゜");
    ASSERT_EQ(plain.size(), 2 * agent::kKatakana.size());
    for (std::size_t i = 0; i < agent::kKatakana.size(); ++i) {
        const std::string half(1, static_cast<char>(agent::kFirstKatakana + i));
        EXPECT_EQ(Widen(half), plain.substr(2 * i, 2)) << i;
        // U+FF61 to U+FF9F, the half-width forms, in the same order.
        const auto last = static_cast<char>(0xA1 + i);
        const std::string utf8 = i < 31
                                     ? std::string("\xEF\xBD") + last
                                     : std::string("\xEF\xBE") + static_cast<char>(0x80 + i - 31);
        EXPECT_EQ(Convert(half, "CP932", "UTF-8"), utf8) << i;
    }
}

// Unicode joins a character with a mark by canonical composition; these are all such katakana.
TEST(KatakanaTable, JoinsExactlyWhatShiftJisHas) {
    const std::string bases = ToSjis("ウカキクケコサシスセソタチツテトハヒフヘホ");
    const std::string voiced = ToSjis("ヴガギグゲゴザジズゼゾダヂヅデドバビブベボ");
    const std::string semi_bases = ToSjis("ハヒフヘホ");
    const std::string semi_voiced = ToSjis("パピプペポ");
    for (const agent::Katakana &katakana : agent::kKatakana) {
        const std::string plain = {static_cast<char>(katakana.plain >> 8),
                                   static_cast<char>(katakana.plain & 0xFF)};
        const auto joined = [&plain](const std::string &from, const std::string &to) {
            for (std::size_t at = 0; at < from.size(); at += 2) {
                if (from.compare(at, 2, plain) == 0) {
                    return static_cast<unsigned>(static_cast<unsigned char>(to[at])) << 8 |
                           static_cast<unsigned char>(to[at + 1]);
                }
            }
            return 0u;
        };
        EXPECT_EQ(katakana.voiced, joined(bases, voiced));
        EXPECT_EQ(katakana.semi_voiced, joined(semi_bases, semi_voiced));
    }
}

class ToEucJp : public testing::TestWithParam<ConversionCase> {};

TEST_P(ToEucJp, ConvertsWellFormedTexts) {
    EXPECT_EQ(SjisToEuc(GetParam().source), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ToEucJp,
    testing::Values(ConversionCase{"Empty", "", ""},
                    ConversionCase{"Ascii", "USER-01 \\~\r\n\x1A", "USER-01 \\~\r\n\x1A"},
                    ConversionCase{"Kanji", ToSjis("お客様名称(漢字)"), ToEuc("お客様名称(漢字)")},
                    ConversionCase{"Katakana", "\xB1\xDE", "\x8E\xB1\x8E\xDE"},
                    ConversionCase{"TrailByteBackslash", ToSjis("ソ表"), ToEuc("ソ表")},
                    ConversionCase{"NecCircledDigit", "\x87\x40", "\xAD\xA1"},
                    ConversionCase{"IbmExtensionTakesThreeBytes", "\xFA\x5C", "\x8F\xD4\xE3"},
                    ConversionCase{"IbmExtensionsAlone", "\xFA\x5C\xFA\x5C\xFA\x5C",
                                   "\x8F\xD4\xE3\x8F\xD4\xE3\x8F\xD4\xE3"},
                    ConversionCase{"UserDefined", "\xF0\x40", "\xF5\xA1"},
                    ConversionCase{"ZeroEndsTheText", std::string("A\0\xFF", 3), "A"},
                    ConversionCase{"LeadByteAtTheEnd", "A\x88", {}},
                    ConversionCase{"ZeroAfterALeadByte", std::string("A\x88\0\x9F", 4), {}},
                    ConversionCase{"BadTrailByte", "\x88\x20", {}},
                    ConversionCase{"UnassignedCharacter", "\x81\xAD", {}},
                    ConversionCase{"NoShiftJis", "A\xFF", {}},
                    ConversionCase{"Bytes80AndA0", "\xA0", {}}),
    test_support::Title());

TEST(ToEucJp, ConvertsWhatWideningGives) {
    const std::string wide = Widen("\xB6\xDE\xB1 01").value_or("");
    EXPECT_EQ(SjisToEuc(wide), ToEuc("ガア 01"));
}

struct FitCase {
    const char *title;
    Conversion convert;
    std::string source;
    std::string result;
};

class Fit : public testing::TestWithParam<FitCase> {};

TEST_P(Fit, IsExact) {
    const FitCase &row = GetParam();
    const auto size = static_cast<DWORD>(row.result.size());
    EXPECT_EQ(Apply(row.convert, row.source, size), row.result) << "no room for the terminator";
    EXPECT_EQ(Apply(row.convert, row.source, size + 1), row.result);
    EXPECT_EQ(Apply(row.convert, row.source, size - 1), std::nullopt);
    EXPECT_EQ(Apply(row.convert, row.source, 0), std::nullopt);
}

TEST_P(Fit, TouchesNothingBehindTheTerminator) {
    const FitCase &row = GetParam();
    std::string buffer(row.result.size() + 3, '#');
    ASSERT_NE(row.convert(row.source.data(), static_cast<DWORD>(row.source.size()),
                          static_cast<DWORD>(buffer.size()), buffer.data()),
              0);
    EXPECT_EQ(buffer, row.result + std::string(1, '\0') + "##");
}

TEST_P(Fit, ReadsNoMoreThanTheLength) {
    const FitCase &row = GetParam();
    char buffer[16] = "";
    ASSERT_NE(row.convert(row.source.c_str(), 0, sizeof buffer, buffer), 0);
    EXPECT_STREQ(buffer, "");
}

TEST_P(Fit, NeedsItsPointers) {
    const FitCase &row = GetParam();
    char buffer[16] = "former";
    EXPECT_EQ(row.convert(nullptr, 1, sizeof buffer, buffer), 0);
    EXPECT_EQ(row.convert("x", 1, sizeof buffer, nullptr), 0);
    EXPECT_STREQ(buffer, "former");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Fit,
    testing::Values(FitCase{"WideningKatakana", kes_AnkZen, "\xB1\xB2", ToSjis("アイ")},
                    FitCase{"WideningAJoinedPair", kes_AnkZen, "A\xB6\xDE", "A" + ToSjis("ガ")},
                    FitCase{"WideningAscii", kes_AnkZen, "abc", "abc"},
                    FitCase{"ToEucOfKanji", ecm_SJIStoEUC, ToSjis("東京"), ToEuc("東京")},
                    FitCase{"ToEucOfAnIbmExtension", ecm_SJIStoEUC, "\xFA\x5C", "\x8F\xD4\xE3"},
                    FitCase{"ToEucOfKatakana", ecm_SJIStoEUC, "\xB1", "\x8E\xB1"}),
    test_support::Title());

TEST(Fit, IsGivenByTwiceTheSource) {
    // The buffers of the import hold twice the source: the worst case of either step must fit.
    const std::string katakana(1000, '\xB1');
    const auto wide = Widen(katakana);
    ASSERT_TRUE(wide.has_value());
    EXPECT_EQ(wide->size(), 2000u);
    EXPECT_TRUE(Apply(ecm_SJIStoEUC, *wide, 2000).has_value());
    std::string extensions;
    for (int i = 0; i < 500; ++i) {
        extensions += "\xFA\x5C";
    }
    EXPECT_TRUE(Apply(ecm_SJIStoEUC, extensions, 2000).has_value());
}

}  // namespace
