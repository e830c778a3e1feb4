// Which data file the environment names, and the files that are shipped.
#include <gmock/gmock.h>

#include <algorithm>
#include <set>

#include "contract_support.h"
#include "support/environment.h"
#include "support/temp_folder.h"
#include "support/title.h"

namespace {

using ::testing::ElementsAre;

struct Choice {
    const char *title;
    std::optional<std::string> lang;
    int fileflag;
    const char *expected;
};

class FileByEnvTest : public contract::ContractTest,
                      public ::testing::WithParamInterface<Choice> {};

TEST_P(FileByEnvTest, FollowsLang) {
    const test_support::EnvironmentVariable lang("LANG", GetParam().lang);
    char path[64];
    EXPECT_EQ(GetFileByEnv(path, "/base", GetParam().fileflag), 0);
    EXPECT_STREQ(path, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Choices, FileByEnvTest,
    ::testing::Values(Choice{"Japanese1", "ja_JP.UTF-8", 1, "/base/data/J_vxsadm1.txt"},
                      Choice{"Japanese2", "ja_JP.UTF-8", 2, "/base/data/J_vxsadm2.txt"},
                      Choice{"JapaneseOtherFlag", "ja", 0, "/base/data/J_vxsadm2.txt"},
                      Choice{"AnythingThatBeginsWithJa1", "jam", 1, "/base/data/J_vxsadm1.txt"},
                      Choice{"UpperCase1", "JA_JP", 1, "/base/data/E_vxsadm1.txt"},
                      Choice{"UpperCase2", "JA_JP", 2, "/base/data/E_vxsadm2.txt"},
                      Choice{"English1", "en_US.UTF-8", 1, "/base/data/E_vxsadm1.txt"},
                      Choice{"English2", "en_US.UTF-8", 2, "/base/data/E_vxsadm2.txt"},
                      Choice{"NegativeFlag", "C", -1, "/base/data/E_vxsadm2.txt"},
                      Choice{"OneLetter1", "j", 1, "/base/data/E_vxsadm1.txt"},
                      Choice{"Empty1", "", 1, "/base/data/E_vxsadm1.txt"},
                      Choice{"Empty2", "", 2, "/base/data/E_vxsadm2.txt"},
                      Choice{"Unset1", std::nullopt, 1, "/base/data/E_vxsadm1.txt"},
                      Choice{"Unset2", std::nullopt, 2, "/base/data/J_vxsadm2.txt"}),
    test_support::Title());

using DataFileTest = contract::ContractTest;

TEST_F(DataFileTest, GetFileByEnvTraces) {
    const test_support::EnvironmentVariable lang("LANG", "ja_JP");
    char path[64];
    GetFileByEnv(path, "/base", 1);
    EXPECT_THAT(fakes::TraceLines(),
                ElementsAre(::testing::MatchesRegex("0 >buf=0x[0-9a-f]+,basepath=/base,fileflag=1"),
                            "0 <lang=ja_JP", "0 <buf=/base/data/J_vxsadm1.txt"));
    EXPECT_EQ(fakes::Trace()[0].function, "GetFileByEnv");
    EXPECT_EQ(fakes::Trace()[1].function, "GetEnvLang");
    EXPECT_EQ(fakes::Trace()[2].source, "amrset");
}

TEST_F(DataFileTest, GetFileByEnvTakesItsBaseFromItsOwnBuffer) {
    const test_support::EnvironmentVariable lang("LANG", "C");
    char path[64] = "/base";
    GetFileByEnv(path, path, 1);
    EXPECT_STREQ(path, "/base/data/E_vxsadm1.txt");
}

TEST_F(DataFileTest, GetEnvLangGivesTheVariableOrNull) {
    {
        const test_support::EnvironmentVariable lang("LANG", "fr_FR");
        EXPECT_STREQ(GetEnvLang(), "fr_FR");
    }
    const test_support::EnvironmentVariable lang("LANG");
    EXPECT_EQ(GetEnvLang(), nullptr);
    EXPECT_THAT(fakes::TraceLines(), ElementsAre("0 <lang=fr_FR", "0 <lang=NULL"));
}

// ---- The files that are shipped -----------------------------------------------------------------

struct Shipped {
    const char *title;
    LANGID language;
    const char *path;  // as the functions look for it
};

class ShippedTest : public contract::ContractTest, public ::testing::WithParamInterface<Shipped> {
  protected:
    void SetUp() override {
        ContractTest::SetUp();
        fakes::TheSystem().language_id = GetParam().language;
        const std::string path = GetParam().path;
        text_ = test_support::ReadWholeFile(VELOX_DATA_FOLDER + path.substr(path.rfind('/')));
        ASSERT_FALSE(text_.empty());
        fakes::AddFile(GetParam().path, text_);
    }
    std::string text_;
};
class Shipped1Test : public ShippedTest {};
class Shipped2Test : public ShippedTest {};

INSTANTIATE_TEST_SUITE_P(
    Files, Shipped1Test,
    ::testing::Values(Shipped{"English", LANGID_ENGLISH_US, contract::kEnglish1},
                      Shipped{"Japanese", LANGID_JAPANESE, contract::kJapanese1}),
    test_support::Title());
INSTANTIATE_TEST_SUITE_P(
    Files, Shipped2Test,
    ::testing::Values(Shipped{"English", LANGID_ENGLISH_US, contract::kEnglish2},
                      Shipped{"Japanese", LANGID_JAPANESE, contract::kJapanese2}),
    test_support::Title());

TEST_P(Shipped1Test, OffersOperatingSystems) {
    contract::Buffers names(200, VLX_OS_NAME_SIZE);
    DWORD count = 0;
    EXPECT_EQ(GetVlxMachListDataBounded(names.Data(), 200, &count), 1);
    ASSERT_LT(count, 200U);
    const std::vector<std::string> texts = names.Texts(count);
    EXPECT_THAT(texts,
                ::testing::IsSupersetOf({"Red Hat Enterprise Linux 9", "Debian GNU/Linux 12"}));
    EXPECT_EQ(std::set<std::string>(texts.begin(), texts.end()).size(), texts.size());
    for (const std::string &name : texts) {
        EXPECT_GE(name.size(), 5U) << name;  // nothing was split
        EXPECT_NE(text_.find("\n" + name + "\n"), std::string::npos) << name;
    }
}

TEST_P(Shipped1Test, LeavesTheOptionsToTheSite) {
    const std::string list = "\n[OPTION_LIST]\n[LIST_END]\n";
    ASSERT_TRUE(text_.ends_with(list));
    fakes::AddFile(GetParam().path, text_.substr(0, text_.size() - 11) + "N1 Device\n[LIST_END]\n");
    fakes::StoreNumber(contract::kKey, "OPTCDN", 1);
    fakes::StoreText(contract::kKey, "OPTCD01", "N1");
    contract::Buffers options(1, VLX_OPTION_SIZE);
    std::int64_t count = 0;
    EXPECT_EQ(GetVlxOptSettingBounded(options.Data(), 1, &count), 1);
    EXPECT_THAT(options.Texts(1), ElementsAre("N1 Device"));
}

TEST_P(Shipped2Test, LeavesTheDealersToTheSite) {
    const std::string list = "\n[Seller_Name]\n[END]\n";
    ASSERT_TRUE(text_.ends_with(list));
    if (GetParam().language != LANGID_JAPANESE) {
        return;
    }
    fakes::AddFile(GetParam().path, text_.substr(0, text_.size() - 6) + "Dealer\n[END]\n");
    VLX_VEND_DATA data = {};
    contract::Buffers dealers(2, VLX_DEALER_SIZE);
    DWORD count = 0;
    EXPECT_EQ(GetVlxVendSettingBounded(&data, dealers.Data(), 2, &count), 1);
    EXPECT_EQ(count, 1U);
    EXPECT_THAT(dealers.Texts(1), ElementsAre("Dealer"));
}

TEST_P(Shipped1Test, IsInItsEncoding) {
    EXPECT_EQ(text_.find('\r'), std::string::npos);
    const bool ascii = std::all_of(text_.begin(), text_.end(), [](char c) { return c > 0; });
    EXPECT_EQ(ascii, GetParam().language != LANGID_JAPANESE);
    // "ファイル" in EUC-JP
    EXPECT_EQ(text_.find("\xA5\xD5\xA5\xA1\xA5\xA4\xA5\xEB") == std::string::npos, ascii);
}

}  // namespace
