// The service information text: its lines in both languages, what each item's absence gives, the
// trace of a whole call, and the bounds.
#include "velox/service_info.h"

#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <algorithm>

#include "contract.h"
#include "fakes/libc.h"
#include "support/title.h"
#include "velox/contract_items.h"

extern "C" BOOL ServiceInfoCalledFromC(char **lphData, DWORD *lpdwLen);

namespace {

using contract::Function;
using contract::Join;
using contract::kAlertReport;
using contract::kMail;
using contract::kPlain;
using contract::kSetting;
using contract::Result;
using ::testing::ElementsAre;
using ::testing::Not;

class ServiceInfoTest : public fakes::PlatformTest, public ::testing::WithParamInterface<Function> {
  protected:
    // The failures and results of this call only, without those of the registry wrapper.
    static std::vector<std::string> OwnTrace() { return fakes::TraceLinesOf(GetParam().title); }
    static void ExpectFailure(const Result &result) {
        EXPECT_EQ(result.success, FALSE);
        EXPECT_EQ(result.length, 0U);
        EXPECT_FALSE(result.touched);
    }
};

TEST_P(ServiceInfoTest, ShowsTheWholeContractInEnglish) {
    contract::Store(1, 3);
    const Result result(GetParam());
    EXPECT_EQ(result.success, TRUE);
    EXPECT_EQ(result.text, Join(contract::EnglishLines(), GetParam().line_end));
    EXPECT_EQ(result.length, result.text.size());
}

TEST_P(ServiceInfoTest, ShowsTheWholeContractInJapanese) {
    fakes::TheSystem().language_id = 1041;
    fakes::TheSystem().language_name = "ja_JP.eucJP";
    contract::Store(1, 3);
    const Result result(GetParam());
    EXPECT_EQ(result.success, TRUE);
    EXPECT_EQ(result.text, Join(contract::JapaneseLines(), GetParam().line_end));
    EXPECT_EQ(VX_TEXT_USER, VX_TEXT_USER_jp);
    EXPECT_EQ(VX_TEXT_MACHINE, VX_TEXT_MACHINE_jp);
    EXPECT_EQ(VX_TEXT_OPTION, VX_TEXT_OPTION_jp);
    EXPECT_EQ(VX_TEXT_SHOP, VX_TEXT_SHOP_jp);

    fakes::TheSystem().language_id = 1033;
    EXPECT_EQ(Result(GetParam()).text, Join(contract::EnglishLines(), GetParam().line_end))
        << "the language is chosen at each call";
    EXPECT_EQ(VX_TEXT_USER, VX_TEXT_USER_en);
    EXPECT_EQ(VX_TEXT_MACHINE, VX_TEXT_MACHINE_en);
    EXPECT_EQ(VX_TEXT_OPTION, VX_TEXT_OPTION_en);
    EXPECT_EQ(VX_TEXT_SHOP, VX_TEXT_SHOP_en);
}

TEST_P(ServiceInfoTest, AnyOtherLanguageIsEnglish) {
    contract::Store(1, 3);
    fakes::TheSystem().language_id = 1031;
    EXPECT_EQ(Result(GetParam()).text, Join(contract::EnglishLines(), GetParam().line_end));
}

TEST_P(ServiceInfoTest, ThreeWordsComeFromTheCatalogueAndHeadingsDoNot) {
    fakes::TheLibc().catalogue = {{"velox:[CONTRACT]", "[Vertrag]"},
                                  {"velox:Corporate", "Firma"},
                                  {"velox:[USER-NAME]", "wrong"}};
    contract::Store(1, 3);
    auto lines = contract::EnglishLines();
    lines[0] = "[Vertrag]";
    lines[1] = "Firma";
    EXPECT_EQ(Result(GetParam()).text, Join(lines, GetParam().line_end));
    EXPECT_EQ(fakes::CallCount("dcgettext"), 2);

    fakes::StoreNumber(kSetting, "KAISHAKBN", 99);
    fakes::TheLibc().catalogue = {{"velox:Personal", "privat"}};
    lines[0] = "[CONTRACT]";
    lines[1] = "privat";
    EXPECT_EQ(Result(GetParam()).text, Join(lines, GetParam().line_end));
}

TEST_P(ServiceInfoTest, TheMessageLocaleIsTheSystems) {
    fakes::TheSystem().language_name = "ja_JP.eucJP";
    contract::Store(1, 0);
    EXPECT_EQ(Result(GetParam()).success, TRUE);
    std::vector<std::string> calls;
    for (const fakes::Call &call : fakes::Calls()) {
        calls.push_back(call.function + " " + call.detail);
    }
    calls.resize(5);
    EXPECT_THAT(calls,
                ElementsAre("GetSystemDefaultLangID ", "GetSystemDefaultLANG 128",
                            "setlocale 6 ja_JP.eucJP",
                            "bindtextdomain velox /opt/xev/kestro_sa/data/mo", "textdomain velox"));
}

TEST_P(ServiceInfoTest, WithoutASystemLanguageTheLocaleIsEnUs) {
    fakes::FailCall("GetSystemDefaultLANG");
    contract::Store(1, 0);
    EXPECT_EQ(Result(GetParam()).success, TRUE);
    EXPECT_THAT(fakes::Calls()[2].detail, "6 en_US");
}

TEST_P(ServiceInfoTest, TracesEveryItemInOrder) {
    contract::Store(1, 3);
    EXPECT_EQ(Result(GetParam()).success, TRUE);
    const auto trace = OwnTrace();
    EXPECT_THAT(trace.front(),
                ::testing::MatchesRegex("0 >lphData=0x[0-9a-f]+,lpdwLen=0x[0-9a-f]+"));
    std::vector<std::string> expected;
    const auto lines = contract::EnglishLines();
    for (std::size_t line = 2; line < lines.size(); line += 2) {
        expected.push_back("0 " + lines[line] + ":" + lines[line + 1]);
    }
    expected.push_back("0 <*lphData=" + Join(lines, GetParam().line_end) + ",return TRUE.");
    EXPECT_EQ(std::vector<std::string>(trace.begin() + 1, trace.end()), expected);
    EXPECT_TRUE(std::all_of(fakes::Trace().begin(), fakes::Trace().end(), [](const auto &record) {
        return record.source == (record.function == GetParam().title ? "vxgetinf" : "amstexml");
    }));
}

TEST_P(ServiceInfoTest, Kind99IsPersonal) {
    contract::Store(99, 3);
    auto lines = contract::EnglishLines();
    lines[1] = "Personal";
    EXPECT_EQ(Result(GetParam()).text, Join(lines, GetParam().line_end));
}

TEST_P(ServiceInfoTest, AnyOtherKindFails) {
    for (const DWORD kind : {0U, 2U, 98U, 100U, 0xFFFFFFFFU}) {
        fakes::Reset();
        contract::Store(kind, 3);
        ExpectFailure(Result(GetParam()));
        EXPECT_EQ(OwnTrace().back(), std::to_string(GetParam().kind_level) + " <[KAISHAKBN error]" +
                                         std::to_string(static_cast<int>(kind)));
    }
}

TEST_P(ServiceInfoTest, AMissingKindFails) {
    contract::Store(1, 3);
    fakes::DeleteValue(kSetting, "KAISHAKBN");
    ExpectFailure(Result(GetParam()));
    EXPECT_EQ(OwnTrace().back(),
              std::to_string(GetParam().kind_level) +
                  " <AMAMRegReadEx SOFTWARE\\XEV\\VLXService\\SETTING/KAISHAKBN failed.");
}

TEST_P(ServiceInfoTest, AMissingNumberOfOptionsFails) {
    contract::Store(1, 3);
    fakes::DeleteValue(kSetting, "OPTCDN");
    ExpectFailure(Result(GetParam()));
    EXPECT_EQ(OwnTrace().back(), "1 <AMAMRegReadEx OPTCDN failed.");
}

TEST_P(ServiceInfoTest, NoOptionsAddNothing) {
    contract::Store(1, 0);
    auto lines = contract::EnglishLines();
    const auto option = std::find(lines.begin(), lines.end(), "[SUB-N-CODE 01]");
    lines.erase(option, option + 6);
    EXPECT_EQ(Result(GetParam()).text, Join(lines, GetParam().line_end));
}

TEST_P(ServiceInfoTest, OptionNumbersHaveAtLeastTwoDigits) {
    contract::Store(1, 100);
    const std::string text = Result(GetParam()).text;
    const std::string end = GetParam().line_end;
    EXPECT_THAT(text, ::testing::HasSubstr("[SUB-N-CODE 09]" + end + "OPTCD09 value" + end));
    EXPECT_THAT(text, ::testing::HasSubstr("[SUB-N-CODE 99]" + end + "OPTCD99 value" + end +
                                           "[SUB-N-CODE 100]" + end + "OPTCD100 value" + end +
                                           "[DEALER-NAME]"));
}

TEST_P(ServiceInfoTest, EveryMissingTextGivesAnEmptyLine) {
    fakes::TheSystem().language_id = 1041;
    const auto lines = contract::JapaneseLines();
    std::size_t line = 2;
    for (const std::string &name : [] {
             std::vector<std::string> names(contract::kUser.begin(), contract::kUser.end());
             names.insert(names.end(), contract::kMachine.begin(), contract::kMachine.end());
             names.insert(names.end(), {"OPTCD01", "OPTCD02", "OPTCD03"});
             names.insert(names.end(), contract::kShop.begin(), contract::kShop.end());
             return names;
         }()) {
        SCOPED_TRACE(name);
        contract::Store(1, 3);
        fakes::DeleteValue(kSetting, name);
        fakes::ClearTrace();
        auto expected = lines;
        expected[line + 1].clear();
        EXPECT_EQ(Result(GetParam()).text, Join(expected, GetParam().line_end));
        const auto trace = OwnTrace();
        const auto failure =
            std::find(trace.begin(), trace.end(), "1 AMAMRegReadEx " + name + " failed.");
        ASSERT_NE(failure, trace.end());
        EXPECT_EQ(*(failure + 1), "0 " + lines[line] + ":");
        line += 2;
    }
    EXPECT_EQ(line, lines.size());
}

TEST_P(ServiceInfoTest, EnglishNeverReadsTheItemsWithoutAnEnglishHeading) {
    contract::Store(1, 0);
    EXPECT_EQ(Result(GetParam()).success, TRUE);
    for (const fakes::Call &call : fakes::Calls()) {
        for (const char *name : {"TOKUINMN", "ADRSNMN", "SHOZAINMN", "BUTANNMN"}) {
            EXPECT_THAT(call.detail, Not(::testing::EndsWith(std::string(" ") + name)));
        }
    }
}

TEST_P(ServiceInfoTest, AValueOf4096BytesIsShownAndALargerOneIsNot) {
    contract::Store(1, 0);
    const std::string value(4095, 'x');
    fakes::StoreText(kSetting, "COMMENT", value);
    EXPECT_THAT(Result(GetParam()).text, ::testing::HasSubstr(value));
    fakes::StoreText(kSetting, "COMMENT", value + "x");
    const std::string end = GetParam().line_end;
    EXPECT_THAT(Result(GetParam()).text,
                ::testing::HasSubstr("[COMMENT]" + end + end + "[SERVER-NAME]"));
}

TEST_P(ServiceInfoTest, AValueWithoutTerminatorStaysInside) {
    contract::Store(1, 0);
    fakes::StoreBytes(kSetting, "COMMENT", REG_SZ, std::string(4096, 'y'));
    const std::string end = GetParam().line_end;
    EXPECT_THAT(Result(GetParam()).text,
                ::testing::HasSubstr(std::string(4096, 'y') + end + "[SERVER-NAME]"));
}

TEST_P(ServiceInfoTest, TheTextFillsItsBufferAndNotOneByteMore) {
    contract::Store(1, 3);
    fakes::StoreText(kSetting, "COMMENT", std::string(4000, 'a'));
    fakes::StoreText(kSetting, "OSREV", std::string(4000, 'b'));
    fakes::StoreText(kSetting, "SYSSETEL", "");
    const std::size_t rest = 10239 - Result(GetParam()).length;
    fakes::StoreText(kSetting, "SYSSETEL", std::string(rest, 'c'));
    const Result full(GetParam());
    EXPECT_EQ(full.success, TRUE);
    EXPECT_EQ(full.length, 10239U);
    EXPECT_EQ(full.text.size(), 10239U);

    fakes::ClearTrace();
    fakes::StoreText(kSetting, "SYSSETEL", std::string(rest + 1, 'c'));
    ExpectFailure(Result(GetParam()));
    const auto trace = OwnTrace();
    EXPECT_EQ(trace[trace.size() - 2], "1 the text does not fit the buffer of 10240 bytes.");
    EXPECT_EQ(trace.back(), std::string("2 ") + GetParam().memory_trace);
}

TEST_P(ServiceInfoTest, AHugeNumberOfOptionsEndsWithTheBuffer) {
    contract::Store(1, 0);
    fakes::StoreNumber(kSetting, "OPTCDN", 0xFFFFFFFF);
    ExpectFailure(Result(GetParam()));
    EXPECT_LT(fakes::CallCount("RegQueryValueEx"), 700);
    EXPECT_EQ(OwnTrace().back(), std::string("2 ") + GetParam().memory_trace);
}

TEST_P(ServiceInfoTest, TheBlockIsZeroedAndAtLeast17BytesLargerThanTheText) {
    for (std::size_t more = 0; more < 16; ++more) {
        contract::Store(1, 0);
        fakes::StoreText(kSetting, "COMMENT", std::string(more, 'x'));
        char *data = nullptr;
        DWORD length = 0;
        ASSERT_EQ(GetParam().call(&data, &length), TRUE);
        EXPECT_EQ(std::string(data + length, 17), std::string(17, '\0'));
        std::free(data);
    }
}

INSTANTIATE_TEST_SUITE_P(Both, ServiceInfoTest, ::testing::Values(kPlain, kMail),
                         test_support::Title());

class ReportProductTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        contract::Store(1, 3);
        lines_ = contract::EnglishLines();
        code_ = std::find(lines_.begin(), lines_.end(), "SOCHICD value") - lines_.begin();
    }
    std::vector<std::string> lines_;
    std::ptrdiff_t code_ = 0;
};

TEST_F(ReportProductTest, StandsInPlaceOfTheDeviceCodeInMails) {
    fakes::StoreText(kAlertReport, "ReportProduct", "PRODUCT-1");
    lines_[static_cast<std::size_t>(code_)] = "PRODUCT-1";
    EXPECT_EQ(Result(kMail).text, Join(lines_, "\r\n"));
    EXPECT_THAT(fakes::TraceLinesOf("GetVlxServiceInfo_Mail"),
                ::testing::Contains("0 [N-CODE]:PRODUCT-1"));
}

TEST_F(ReportProductTest, NeverStandsInThePlainText) {
    fakes::StoreText(kAlertReport, "ReportProduct", "PRODUCT-1");
    EXPECT_EQ(Result(kPlain).text, Join(lines_, "\n"));
}

TEST_F(ReportProductTest, AnEmptyOneLeavesTheDeviceCode) {
    fakes::StoreText(kAlertReport, "ReportProduct", "");
    EXPECT_EQ(Result(kMail).text, Join(lines_, "\r\n"));
}

TEST_F(ReportProductTest, UpTo512BytesAreTaken) {
    fakes::StoreText(kAlertReport, "ReportProduct", std::string(511, 'p'));
    auto expected = lines_;
    expected[static_cast<std::size_t>(code_)] = std::string(511, 'p');
    EXPECT_EQ(Result(kMail).text, Join(expected, "\r\n"));
    fakes::StoreText(kAlertReport, "ReportProduct", std::string(512, 'p'));
    EXPECT_EQ(Result(kMail).text, Join(lines_, "\r\n"));
}

TEST_F(ReportProductTest, WithBothMissingTheLineIsEmpty) {
    fakes::DeleteValue(kSetting, "SOCHICD");
    lines_[static_cast<std::size_t>(code_)].clear();
    EXPECT_EQ(Result(kMail).text, Join(lines_, "\r\n"));
    EXPECT_TRUE(fakes::HasTrace(1, "AMAMRegReadEx SOCHICD failed."));
}

TEST_F(ReportProductTest, TheHeadersFunctionsAreCallableFromC) {
    char *data = nullptr;
    DWORD length = 0;
    EXPECT_EQ(ServiceInfoCalledFromC(&data, &length), TRUE);
    EXPECT_EQ(std::string(data, length), Join(lines_, "\n"));
    std::free(data);
}

}  // namespace
