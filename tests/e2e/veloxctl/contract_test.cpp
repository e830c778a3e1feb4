// "veloxctl customer", "machine", "vendor", "options", "os-names" and "dealers".
#include <gmock/gmock.h>
#include <sysexits.h>

#include <nlohmann/json.hpp>

#include "reg_fixture.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using veloxctl_test::RegTest;
using veloxctl_test::Result;
using veloxctl_test::Veloxctl;

constexpr char kKey[] = "SOFTWARE\\XEV\\VLXService\\SETTING";
constexpr char kJapanese[] = "ja_JP.eucJP";
constexpr char kEnglish[] = "en_US";

class ContractTest : public RegTest {
  protected:
    void SetUp() override {
        Import(std::string("[-HKLM\\") + kKey + "]\n[HKLM\\" + kKey + "]\n\"OPTCDN\"=dword:0\n");
    }
    static Result Run(const std::vector<std::string> &words, const char *language = kEnglish) {
        return Veloxctl(words, {.variables = {{"KES_LANG", language}}});
    }
    static json Shown(const std::vector<std::string> &words, const char *language = kEnglish) {
        const Result result = Run(words, language);
        EXPECT_EQ(result.status, 0) << result.errors;
        return json::parse(result.output, nullptr, false);
    }
    static std::string Stored() { return Exported(kKey); }
};

TEST_F(ContractTest, TheCustomerIsStoredInEucJpAndShownInTheTerminalsEncoding) {
    const Result set = Run({"customer", "set", "--kind", "corporate", "--name", "東京商事",
                            "--mail", "customer@server.example"},
                           kJapanese);
    ASSERT_EQ(set.status, 0) << set.errors;
    EXPECT_EQ(Stored(), std::string("[HKEY_LOCAL_MACHINE\\") + kKey +
                            "]\n\"OPTCDN\"=dword:00000000\n\"KAISHAKBN\"=dword:00000001\n"
                            "\"TOKUINMN\"=\"東京商事\"\n\"MAIL\"=\"customer@server.example\"\n\n");
    const json shown = Shown({"customer", "show", "--json"});
    EXPECT_EQ(shown["kind"], "corporate");
    EXPECT_EQ(shown["name"], "東京商事");
    EXPECT_EQ(shown["telephone"], "");
    EXPECT_EQ(shown.size(), 13U);
    const Result euc = Veloxctl({"customer", "show"}, {.variables = {{"LC_ALL", "C"}}});
    EXPECT_THAT(euc.output, HasSubstr("\\u6771\\u4eac")) << "what the terminal cannot show";
    EXPECT_EQ(Run({"customer", "set", "--kind", "personal"}).status, 0);
    EXPECT_THAT(Stored(), HasSubstr("\"KAISHAKBN\"=dword:00000063"));
}

struct Refusal {
    const char *title;
    std::vector<std::string> words;
    int status;
    const char *message;
};

TEST_F(ContractTest, WhatDoesNotFitIsRefusedBeforeAnythingIsWritten) {
    const std::string before = Stored();
    const Refusal refusals[] = {
        {"Bytes",
         {"customer", "set", "--mail", "a@b.example", "--postal-code", "12345678"},
         EX_DATAERR,
         "--postal-code: longer than 7 bytes"},
        {"Characters",
         {"machine", "set", "--server-name", std::string(41, 'x')},
         EX_DATAERR,
         "--server-name: longer than 40 bytes"},
        {"TwoBytesEach",
         {"customer", "set", "--contact", "東東東東東東東東東東東東東東東東"},
         EX_DATAERR,
         "--contact: longer than 30 bytes"},
        {"NoEucJp", {"vendor", "set", "--dealer", "\xF0\x9F\x98\x80"}, EX_DATAERR, "--dealer"},
        {"Kind", {"customer", "set", "--kind", "other"}, EX_USAGE, "kind"},
        {"UserCode", {"customer", "set", "--user-code", "1"}, EX_USAGE, "user-code"},
        {"Nothing", {"machine", "set"}, EX_USAGE, "nothing is to be set"},
        {"LongCode",
         {"options", "set", "A", std::string(51, 'x')},
         EX_DATAERR,
         "longer than 50 bytes"},
        {"EmptyCode", {"options", "set", "A", " x"}, EX_DATAERR, "the code is empty"},
        {"NoOptions", {"options", "set"}, EX_USAGE, "--none"},
        {"TooMany",
         [] {
             std::vector<std::string> words(102, "A");
             words[0] = "options";
             words[1] = "set";
             return words;
         }(),
         EX_USAGE, "at most 99"},
    };
    for (const Refusal &refusal : refusals) {
        const Result result = Run(refusal.words);
        EXPECT_EQ(result.status, refusal.status) << refusal.title << ": " << result.errors;
        EXPECT_THAT(result.errors, HasSubstr(refusal.message)) << refusal.title;
        EXPECT_EQ(Stored(), before) << refusal.title;
    }
}

TEST_F(ContractTest, TheLongestTextsFit) {
    EXPECT_EQ(Run({"customer", "set", "--postal-code", "1234567", "--contact",
                   "東東東東東東東東東東東東東東東"})
                  .status,
              0);
    EXPECT_EQ(Shown({"customer", "show", "--json"})["postal_code"], "1234567");
    EXPECT_EQ(Shown({"customer", "show", "--json"})["contact"], "東東東東東東東東東東東東東東東");
}

TEST_F(ContractTest, TheMachineShowsStandInsAndStoresOnlyWhatIsGiven) {
    EXPECT_NE(Shown({"machine", "show", "--json"})["server_name"], "") << "the computer's name";
    EXPECT_EQ(Run({"machine", "set", "--os-name", "Debian 12", "--serial-number", "0123"}).status,
              0);
    EXPECT_EQ(Stored(), std::string("[HKEY_LOCAL_MACHINE\\") + kKey +
                            "]\n\"OPTCDN\"=dword:00000000\n\"SYSGOKI\"=\"0123\"\n"
                            "\"OSNMA\"=\"Debian 12\"\n\n");
}

TEST_F(ContractTest, TheVendorInBothLanguages) {
    for (const char *language : {kEnglish, kJapanese}) {
        EXPECT_EQ(Run({"vendor", "set", "--dealer", "販売店", "--engineer-name", "山田"}, language)
                      .status,
                  0);
        const json shown = Shown({"vendor", "show", "--json"}, language);
        EXPECT_EQ(shown["dealer"], "販売店");
        EXPECT_EQ(shown["engineer_name"], "山田");
        EXPECT_EQ(shown.size(), 7U);
        EXPECT_TRUE(Shown({"dealers", "--json"}, language).is_array());
    }
}

TEST_F(ContractTest, OptionsReplaceEachOther) {
    EXPECT_EQ(Run({"options", "set", "A-1", "B-2 with a description", "C-3", "D-4"}).status, 0);
    EXPECT_EQ(Run({"options", "set", "X-1", "Y-2"}).status, 0);
    EXPECT_EQ(Stored(), std::string("[HKEY_LOCAL_MACHINE\\") + kKey +
                            "]\n\"OPTCDN\"=dword:00000002\n\"OPTCD01\"=\"X-1\"\n"
                            "\"OPTCD02\"=\"Y-2\"\n\n");
    for (const char *language : {kEnglish, kJapanese}) {
        const json shown = Shown({"options", "show", "--json"}, language);
        ASSERT_EQ(shown.size(), 2U);
        EXPECT_EQ(shown[1]["code"], "Y-2");
        EXPECT_EQ(shown[1]["description"], "");
    }
    EXPECT_EQ(Run({"options", "set", "--none"}).status, 0);
    EXPECT_EQ(Shown({"options", "show", "--json"}), json::array());
}

TEST_F(ContractTest, OperatingSystemsAreOfferedInBothLanguages) {
    for (const char *language : {kEnglish, kJapanese}) {
        const json names = Shown({"os-names", "--json"}, language);
        ASSERT_GT(names.size(), 3U);
        for (const auto &name : names) {
            EXPECT_EQ(Run({"machine", "set", "--os-name", name}, language).status, 0);
            EXPECT_EQ(Shown({"machine", "show", "--json"}, language)["os_name"], name);
        }
        const Result lines = Run({"os-names"}, language);
        EXPECT_THAT(lines.output, HasSubstr(names[0].get<std::string>() + "\n"));
    }
}

}  // namespace
