// The option devices: kinds, reading with descriptions, storing.
#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include "contract_support.h"
#include "support/title.h"

extern "C" void ItocFromC(int number, char *buffer);

namespace {

using contract::kKey;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;
using Texts = std::vector<std::string>;

constexpr char kList[] =
    "[OTHER]\nN001 not in the list\n[END]\n"
    "[OPTION_LIST]\nN001 First device\nN002 Second device\nn003 Third  device\nN004\n[LIST_END]\n"
    "N005 behind the list\n";

std::string OptionName(int number) {
    char name[32];
    (void)std::snprintf(name, sizeof name, "OPTCD%02d", number);
    return name;
}

void StoreCodes(const Texts &codes) {
    fakes::StoreNumber(kKey, "OPTCDN", static_cast<DWORD>(codes.size()));
    for (std::size_t i = 0; i < codes.size(); ++i) {
        fakes::StoreText(kKey, OptionName(static_cast<int>(i) + 1), codes[i]);
    }
}

// ---- itoc ---------------------------------------------------------------------------------------

struct Number {
    const char *title;
    int number;
    const char *text;
};
class ItocTest : public contract::ContractTest, public ::testing::WithParamInterface<Number> {};

TEST_P(ItocTest, Writes) {
    contract::Buffers buffer(1, 11);
    itoc(GetParam().number, buffer.Data()[0]);
    EXPECT_THAT(buffer.Texts(1), ElementsAre(GetParam().text));
    ItocFromC(GetParam().number, buffer.Data()[0]);
    EXPECT_THAT(buffer.Texts(1), ElementsAre(GetParam().text));
}
INSTANTIATE_TEST_SUITE_P(Numbers, ItocTest,
                         ::testing::Values(Number{"Negative", -5, "error"}, Number{"Zero", 0, "0"},
                                           Number{"Three", 107, "107"}, Number{"Ten", 10, "10"},
                                           Number{"Largest", 2147483647, "2147483647"},
                                           Number{"Smallest", -2147483647 - 1, "error"}),
                         test_support::Title());

// ---- Kinds --------------------------------------------------------------------------------------

// Thirteen kinds "[KIND01]" ..., each with room for ten items.
class OptionKindTest : public contract::ContractTest {
  protected:
    OptionKindTest() : items_(kKinds * kItems, VLX_OPTION_SIZE) {
        for (std::size_t i = 0; i < kKinds; ++i) {
            headings_.push_back("[KIND" + std::string(i < 9 ? "0" : "") + std::to_string(i + 1) +
                                "]");
        }
        for (std::size_t i = 0; i < kKinds; ++i) {
            kinds_.push_back(
                {0x1122334455667788, headings_[i].c_str(), items_.Data() + i * kItems, 4711});
        }
    }
    Texts Items(std::size_t kind) {
        return {kinds_[kind].lplpItems, kinds_[kind].lplpItems + kinds_[kind].dwItems};
    }

    static constexpr std::size_t kKinds = 13;
    static constexpr std::size_t kItems = 10;
    contract::Buffers items_;
    Texts headings_;
    std::vector<VLX_OPTION_KIND> kinds_;
};

TEST_F(OptionKindTest, AnEnglishSystemHasSevenKinds) {
    fakes::AddFile(contract::kEnglish1,
                   "[KIND07]\nN7 Seven\n[END]\n[kind01]\nN1 One\nN2 Two\n[end]\n[KIND08]\nN8\n");
    EXPECT_EQ(GetVlxOptKindList(kinds_.data()), 1);
    EXPECT_THAT(Items(0), ElementsAre("N1 One", "N2 Two"));
    EXPECT_THAT(Items(1), ElementsAre());
    EXPECT_THAT(Items(6), ElementsAre("N7 Seven"));
    EXPECT_EQ(kinds_[7].dwItems, 4711U);
    for (const VLX_OPTION_KIND &kind : kinds_) {
        EXPECT_EQ(kind.qwCaller, 0x1122334455667788U);
    }
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >OptionKind=0x[0-9a-f]+"), "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].function, "GetVlxOptKindList");
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
}

TEST_F(OptionKindTest, AJapaneseSystemHasThirteenKinds) {
    UseJapanese();
    fakes::AddFile(contract::kJapanese1, "[KIND13]\nN13\n[END]\n");
    EXPECT_EQ(GetVlxOptKindList(kinds_.data()), 1);
    EXPECT_THAT(Items(12), ElementsAre("N13"));
    EXPECT_EQ(kinds_[11].dwItems, 0U);
}

struct KindFile {
    const char *title;
    std::string text;
    Texts items;
};
class KindFileTest : public OptionKindTest, public ::testing::WithParamInterface<KindFile> {};

TEST_P(KindFileTest, Gives) {
    fakes::AddFile(contract::kEnglish1, GetParam().text);
    EXPECT_EQ(GetVlxOptKindList(kinds_.data()), 1);
    EXPECT_EQ(Items(0), GetParam().items);
    items_.Texts(0);  // no buffer was overrun
}

const std::string k99(99, 'a');
const std::string k100(100, 'a');
INSTANTIATE_TEST_SUITE_P(
    Files, KindFileTest,
    ::testing::Values(KindFile{"NoEndMark", "[KIND01]\nA\nB\n", {"A", "B"}},
                      KindFile{"LastLineWithoutLineEnd", "[KIND01]\nA\nBC", {"A", "B"}},
                      KindFile{"HeadingThatLosesItsLastByte", "A\n[KIND01]X", {}},
                      KindFile{"HeadingInsideALongLine", k100 + "[KIND01]\nA\n", {"A"}},
                      KindFile{"HeadingBehindWhichALineLosesAByte", k100 + "[KIND01]", {}},
                      KindFile{
                          "FirstOfTwoHeadings", "[KIND01]\nA\n[END]\n[KIND01]\nB\n[END]\n", {"A"}},
                      KindFile{"NoEndMarkRunsIntoTheNextKind",
                               "[KIND01]\nA\n[KIND02]\nB\n[END]\n",
                               {"A", "[KIND02]", "B"}},
                      KindFile{"Of99Bytes", "[KIND01]\n" + k99 + "\nB\n", {k99, "B"}},
                      KindFile{"Of100BytesIsSplit", "[KIND01]\n" + k100 + "\nB\n", {k99, "", "B"}},
                      KindFile{"Of101BytesLosesOne", "[KIND01]\n" + k100 + "b\n", {k99, "b"}}),
    test_support::Title());

TEST_F(OptionKindTest, AFailedExpansionTouchesNothing) {
    fakes::FailCall("ExpandEnvironmentStrings");
    EXPECT_EQ(GetVlxOptKindList(kinds_.data()), 0);
    EXPECT_EQ(kinds_[0].dwItems, 4711U);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <ExpandEnvironmentStrings failed.return FALSE."));
}

TEST_F(OptionKindTest, AMissingFileFails) {
    EXPECT_EQ(GetVlxOptKindList(kinds_.data()), 0);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("2 <fopen /opt/xev/kestro_sa/data/E_vxsadm1.txt failed.return FALSE."));
}

TEST_F(OptionKindTest, EachFailedCallFailsOrIsHarmless) {
    BOOL result = FALSE;
    FailEachCall([] { fakes::AddFile(contract::kEnglish1, "[KIND01]\nA\n[END]\n"); },
                 [&] { result = GetVlxOptKindList(kinds_.data()); },
                 [&](const fakes::Call &call) {
                     const bool fatal = call.function == "ExpandEnvironmentStrings" ||
                                        call.function == "CreateFile" ||
                                        call.function == "ReadFile";
                     EXPECT_EQ(result, fatal ? 0 : 1);
                 });
}

TEST_F(OptionKindTest, AFailedAllocationFails) {
    fakes::AddFile(contract::kEnglish1, "[KIND01]\nA\n[END]\n");
    fakes::FailAllocation(1);
    EXPECT_EQ(GetVlxOptKindList(kinds_.data()), 0);
}

TEST_F(OptionKindTest, TheBoundedFormKeepsBothCapacities) {
    UseJapanese();
    fakes::AddFile(contract::kJapanese1,
                   "[KIND01]\nA\nB\nC\n[END]\n[KIND02]\nD\n[END]\n[KIND03]\nE\n[END]\n");
    DWORD kinds = 0;
    EXPECT_EQ(GetVlxOptKindListBounded(kinds_.data(), 2, 2, &kinds), 1);
    EXPECT_EQ(kinds, 13U);
    EXPECT_EQ(kinds_[0].dwItems, 3U);
    EXPECT_STREQ(kinds_[0].lplpItems[1], "B");
    EXPECT_TRUE(items_.Untouched(2));
    EXPECT_THAT(Items(1), ElementsAre("D"));
    EXPECT_EQ(kinds_[2].dwItems, 4711U);
    EXPECT_EQ(fakes::Trace().back().function, "GetVlxOptKindListBounded");
    EXPECT_THAT(fakes::TraceLines()[0],
                MatchesRegex(
                    "0 >OptionKind=0x[0-9a-f]+,kindCapacity=2,itemCapacity=2,kindLen=0x[0-9a-f]+"));
}

TEST_F(OptionKindTest, TheBoundedFormTouchesNoKindBeyondTheNumber) {
    fakes::AddFile(contract::kEnglish1, "[KIND08]\nA\n[END]\n");
    DWORD kinds = 0;
    EXPECT_EQ(GetVlxOptKindListBounded(kinds_.data(), 13, 0, &kinds), 1);
    EXPECT_EQ(kinds, 7U);
    EXPECT_EQ(kinds_[6].dwItems, 0U);
    EXPECT_EQ(kinds_[7].dwItems, 4711U);
}

// ---- Reading ------------------------------------------------------------------------------------

class OptionReadTest : public contract::ContractTest {
  protected:
    void SetUp() override {
        ContractTest::SetUp();
        fakes::AddFile(contract::kEnglish1, kList);
    }
    Texts Read() {
        count_ = -1;
        contract::Buffers options(120, VLX_OPTION_SIZE);
        result_ = GetVlxOptSetting(options.Data(), &count_);
        return options.Texts(count_ < 0 ? 0 : static_cast<std::size_t>(count_));
    }
    std::int64_t count_ = 0;
    BOOL result_ = FALSE;
};

TEST_F(OptionReadTest, GivesTheLineOfTheListOrTheBareCode) {
    StoreCodes({"N002", "N999", "N001", "n003", "N003", "N005", "N004", "N00"});
    EXPECT_THAT(Read(), ElementsAre("N002 Second device", "N999", "N001 First device",
                                    "n003 Third  device", "N003", "N005", "N004", "N00"));
    EXPECT_EQ(result_, 1);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >optionList=0x[0-9a-f]+,optionLen=0x[0-9a-f]+"),
                            "0 <return TRUE."));
    EXPECT_EQ(fakes::Trace()[0].function, "GetVlxOptSetting");
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
    EXPECT_EQ(fakes::CallCount("CreateFile"), 1);
}

TEST_F(OptionReadTest, AJapaneseSystemReadsTheJapaneseFile) {
    UseJapanese();
    StoreCodes({"N001"});
    fakes::AddFile(contract::kJapanese1, "[OPTION_LIST]\nN001 \xC1\xF5\xC3\xD6\n[LIST_END]\n");
    EXPECT_THAT(Read(), ElementsAre("N001 \xC1\xF5\xC3\xD6"));
}

TEST_F(OptionReadTest, AMissingCodeIsSkipped) {
    StoreCodes({"N001", "N002", "N999"});
    fakes::DeleteValue(kKey, "OPTCD02");
    EXPECT_THAT(Read(), ElementsAre("N001 First device", "N999"));
}

TEST_F(OptionReadTest, ACodeOver50BytesIsSkipped) {
    const std::string longest(50, 'c');
    StoreCodes({longest, longest + "c", "N001"});
    EXPECT_THAT(Read(), ElementsAre(longest, "N001 First device"));
}

TEST_F(OptionReadTest, ACodeThatHoldsABlankIsAPrefix) {
    StoreCodes({"N001 First"});
    EXPECT_THAT(Read(), ElementsAre("N001 First device"));
}

TEST_F(OptionReadTest, AnEmptyCodeGivesAnEmptyEntry) {
    StoreCodes({""});
    EXPECT_THAT(Read(), ElementsAre(""));
}

TEST_F(OptionReadTest, TheHundredthCodeHasThreeDigits) {
    Texts codes(100, "A");
    codes[99] = "LAST";
    StoreCodes(codes);
    EXPECT_EQ(Read().at(99), "LAST");
}

TEST_F(OptionReadTest, StopsAt9999) {
    fakes::StoreNumber(kKey, "OPTCDN", 0xFFFFFFFF);
    fakes::StoreText(kKey, "OPTCD9999", "A");
    fakes::StoreText(kKey, "OPTCD10000", "B");
    EXPECT_THAT(Read(), ElementsAre("A"));
    EXPECT_EQ(fakes::CallCount("RegQueryValueEx"), 10000);
}

TEST_F(OptionReadTest, WithoutCountThereAreNoOptions) {
    fakes::StoreText(kKey, "OPTCD01", "N001");
    EXPECT_THAT(Read(), ElementsAre());
    EXPECT_EQ(result_, 1);
    EXPECT_EQ(count_, 0);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(::testing::_, "1 <RegQueryValueEx OPTCDN failed.return TRUE."));
}

struct ListFile {
    const char *title;
    std::string text;
    std::string entry;
};
class OptionListFileTest : public OptionReadTest, public ::testing::WithParamInterface<ListFile> {};

TEST_P(OptionListFileTest, DescribesN1) {
    StoreCodes({"N1"});
    fakes::AddFile(contract::kEnglish1, GetParam().text);
    EXPECT_THAT(Read(), ElementsAre(GetParam().entry));
}
INSTANTIATE_TEST_SUITE_P(
    Files, OptionListFileTest,
    ::testing::Values(
        ListFile{"NoHeading", "N1 X\n", "N1"}, ListFile{"Empty", "", "N1"},
        ListFile{"HeadingOfAnyCase", "[option_list]\nN1 X\n", "N1 X"},
        ListFile{"BehindTheEndMark", "[OPTION_LIST]\n[list_end]\nN1 X\n", "N1"},
        ListFile{"EndOfAnotherSectionIsALine", "[OPTION_LIST]\n[END]\nN1 X\n[LIST_END]\n", "N1 X"},
        ListFile{"CaseCounts", "[OPTION_LIST]\nn1 X\n", "N1"},
        ListFile{"CodeWithoutBlank", "[OPTION_LIST]\nN1\n", "N1"},
        ListFile{"FirstOfTwo", "[OPTION_LIST]\nN1 X\nN1 Y\n", "N1 X"},
        ListFile{"LastLineWithoutLineEnd", "[OPTION_LIST]\nN1 XY", "N1 X"},
        ListFile{"Of99Bytes", "[OPTION_LIST]\nN1 " + std::string(96, 'x') + "\n",
                 "N1 " + std::string(96, 'x')},
        ListFile{"Of100BytesLosesOne", "[OPTION_LIST]\nN1 " + std::string(97, 'x') + "\n",
                 "N1 " + std::string(96, 'x')},
        ListFile{"BehindAHundredBytesOfItsLine",
                 "[OPTION_LIST]\n" + std::string(100, 'x') + "N1 X\n", "N1 X"}),
    test_support::Title());

TEST_F(OptionReadTest, AFailedExpansionTouchesNothing) {
    fakes::FailCall("ExpandEnvironmentStrings");
    EXPECT_THAT(Read(), ElementsAre());
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(count_, -1);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <ExpandEnvironmentStrings() failed.return FALSE."));
}

TEST_F(OptionReadTest, AMissingFileFails) {
    UseJapanese();
    StoreCodes({"N001"});
    EXPECT_THAT(Read(), ElementsAre());
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(count_, 0);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("2 <fopen /opt/xev/kestro_sa/data/J_vxsadm1.txt failed.return FALSE."));
}

TEST_F(OptionReadTest, EachFailedCallFailsOrCostsItsOwnOption) {
    Texts options;
    FailEachCall(
        [] {
            fakes::AddFile(contract::kEnglish1, kList);
            StoreCodes({"N001", "N002"});
        },
        [&] { options = Read(); },
        [&](const fakes::Call &call) {
            const bool fatal = call.function == "ExpandEnvironmentStrings" ||
                               call.function == "CreateFile" || call.function == "ReadFile";
            EXPECT_EQ(result_, fatal ? 0 : 1);
            const std::string failed = call.function == "RegQueryValueEx" ? ValueOf(call) : "";
            Texts expected;
            if (!fatal && failed != "OPTCDN") {
                if (failed != "OPTCD01") {
                    expected.emplace_back("N001 First device");
                }
                if (failed != "OPTCD02") {
                    expected.emplace_back("N002 Second device");
                }
            }
            EXPECT_EQ(options, expected);
        });
}

TEST_F(OptionReadTest, AFailedAllocationFails) {
    StoreCodes({"N001"});
    fakes::FailAllocation(1);
    EXPECT_THAT(Read(), ElementsAre());
    EXPECT_EQ(result_, 0);
}

TEST_F(OptionReadTest, TheBoundedFormStoresUpToTheCapacityAndCountsAll) {
    StoreCodes({"N001", "N002", "N999"});
    contract::Buffers options(3, VLX_OPTION_SIZE);
    std::int64_t count = 0;
    EXPECT_EQ(GetVlxOptSettingBounded(options.Data(), 2, &count), 1);
    EXPECT_EQ(count, 3);
    EXPECT_THAT(options.Texts(2), ElementsAre("N001 First device", "N002 Second device"));
    EXPECT_TRUE(options.Untouched(2));
    EXPECT_EQ(fakes::Trace().back().function, "GetVlxOptSettingBounded");
    EXPECT_EQ(GetVlxOptSettingBounded(nullptr, 0, &count), 1);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(GetVlxOptSettingBounded(nullptr, -1, &count), 1);
    EXPECT_EQ(count, 3);
}

// ---- Storing ------------------------------------------------------------------------------------

class OptionWriteTest : public contract::ContractTest {
  protected:
    void SetUp() override {
        ContractTest::SetUp();
        fakes::AddFile(contract::kEnglish1, kList);
    }
    static BOOL Write(const Texts &options) {
        std::vector<const char *> pointers;
        for (const std::string &option : options) {
            pointers.push_back(option.c_str());
        }
        return SetVlxOptSetting(pointers.data(), static_cast<std::int64_t>(pointers.size()));
    }
    static std::optional<std::string> Code(int number) {
        return fakes::Text(kKey, OptionName(number));
    }
};

TEST_F(OptionWriteTest, StoresTheCodesOfListedLinesAndAnythingElseAsGiven) {
    const std::string long_text(300, 'x');
    EXPECT_EQ(Write({"N001 First device", "N002", "n002 SECOND DEVICE", "N002 Another device",
                     "N004", "N005 behind the list", "", long_text}),
              1);
    EXPECT_EQ(fakes::Number(kKey, "OPTCDN"), 8U);
    EXPECT_EQ(Code(1), "N001");
    EXPECT_EQ(Code(2), "N002");
    EXPECT_EQ(Code(3), "n002");
    EXPECT_EQ(Code(4), "N002 Another device");
    EXPECT_EQ(Code(5), "N004");
    EXPECT_EQ(Code(6), "N005 behind the list");
    EXPECT_EQ(Code(7), "");
    EXPECT_EQ(Code(8), long_text);
    EXPECT_THAT(
        fakes::TraceLines(),
        ElementsAre(MatchesRegex("0 >optionList=0x[0-9a-f]+,optionLen=8"), "0 <return TRUE"));
    EXPECT_EQ(fakes::Trace()[0].function, "SetVlxOptSetting");
    EXPECT_EQ(fakes::Trace()[0].source, "amrset");
}

TEST_F(OptionWriteTest, LeavesTheCallersTextsAlone) {
    char option[] = "N001 First device";
    const char *const options[] = {option};
    EXPECT_EQ(SetVlxOptSetting(options, 1), 1);
    EXPECT_STREQ(option, "N001 First device");
}

TEST_F(OptionWriteTest, StoringFewerDeletesTheRest) {
    StoreCodes({"A", "B", "C", "D", "E"});
    fakes::StoreText(kKey, "OPTCD99", "stale");
    fakes::StoreText(kKey, "OPTCD100", "kept");
    EXPECT_EQ(Write({"X", "Y", "Z"}), 1);
    EXPECT_EQ(fakes::Number(kKey, "OPTCDN"), 3U);
    EXPECT_THAT(fakes::ValueNames(kKey),
                ElementsAre("OPTCDN", "OPTCD01", "OPTCD02", "OPTCD03", "OPTCD100"));
    EXPECT_EQ(fakes::CallCount("RegDeleteValue"), 96);
}

struct Amount {
    const char *title;
    int options;
    int deletions;
};
class OptionAmountTest : public OptionWriteTest, public ::testing::WithParamInterface<Amount> {};

TEST_P(OptionAmountTest, DeletesTheRestUpTo99) {
    EXPECT_EQ(Write(Texts(static_cast<std::size_t>(GetParam().options), "A")), 1);
    EXPECT_EQ(fakes::Number(kKey, "OPTCDN"), static_cast<DWORD>(GetParam().options));
    EXPECT_EQ(fakes::CallCount("RegDeleteValue"), GetParam().deletions);
    EXPECT_EQ(Code(GetParam().options).has_value(), GetParam().options > 0);
}
INSTANTIATE_TEST_SUITE_P(Amounts, OptionAmountTest,
                         ::testing::Values(Amount{"None", 0, 99}, Amount{"One", 1, 98},
                                           Amount{"All", 99, 0}, Amount{"OneButAll", 98, 1},
                                           Amount{"Hundred", 100, 0}),
                         test_support::Title());

TEST_F(OptionWriteTest, TheHundredthIsOPTCD100) {
    EXPECT_EQ(Write(Texts(100, "A")), 1);
    EXPECT_EQ(fakes::Text(kKey, "OPTCD100"), "A");
}

TEST_F(OptionWriteTest, ALineOf100BytesMatchesItsFirst99) {
    const std::string piece = "N1 " + std::string(96, 'x');
    fakes::AddFile(contract::kEnglish1, "[OPTION_LIST]\n" + piece + "x\n[LIST_END]\n");
    EXPECT_EQ(Write({piece, piece + "x"}), 1);
    EXPECT_EQ(Code(1), "N1");
    EXPECT_EQ(Code(2), piece + "x");
}

TEST_F(OptionWriteTest, ANegativeAmountStoresNothing) {
    const char *option = "A";
    EXPECT_EQ(SetVlxOptSetting(&option, -1), 0);
    EXPECT_FALSE(fakes::KeyExists(kKey));
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(MatchesRegex("0 >optionList=0x[0-9a-f]+,optionLen=-1"),
                            "1 <optionLen is negative.return FALSE."));
}

TEST_F(OptionWriteTest, AFailedExpansionStoresNothing) {
    fakes::FailCall("ExpandEnvironmentStrings");
    EXPECT_EQ(Write({"A"}), 0);
    EXPECT_FALSE(fakes::KeyExists(kKey));
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <ExpandEnvironmentStrings() failed.return FALSE."));
}

TEST_F(OptionWriteTest, AMissingFileStoresNothing) {
    UseJapanese();
    StoreCodes({"B"});
    EXPECT_EQ(Write({"A"}), 0);
    EXPECT_EQ(Code(1), "B");
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("2 <fopen /opt/xev/kestro_sa/data/J_vxsadm1.txt failed.return FALSE."));
}

TEST_F(OptionWriteTest, AFailedAllocationStoresNothing) {
    fakes::FailAllocation(1);
    EXPECT_EQ(Write({"A"}), 0);
    EXPECT_THAT(fakes::ValueNames(kKey), ElementsAre());
}

TEST_F(OptionWriteTest, EachFailedCallFailsOrCostsItsOwnValue) {
    BOOL result = FALSE;
    FailEachCall(
        [] {
            fakes::AddFile(contract::kEnglish1, kList);
            StoreCodes({"A", "B", "C"});
        },
        [&] {
            result = Write({"N001 First device", "X"});
        },
        [&](const fakes::Call &call) {
            const bool fatal = call.function == "ExpandEnvironmentStrings" ||
                               call.function == "CreateFile" || call.function == "ReadFile";
            EXPECT_EQ(result, fatal ? 0 : 1);
            const std::string failed =
                call.function == "RegSetValueEx" || call.function == "RegDeleteValue"
                    ? ValueOf(call)
                    : "";
            EXPECT_EQ(Code(1), fatal || failed == "OPTCD01" ? "A" : "N001");
            EXPECT_EQ(Code(2), fatal || failed == "OPTCD02" ? "B" : "X");
            EXPECT_EQ(Code(3).has_value(), fatal || failed == "OPTCD03");
            EXPECT_EQ(fakes::Number(kKey, "OPTCDN"), fatal || failed == "OPTCDN" ? 3U : 2U);
        });
}

}  // namespace
