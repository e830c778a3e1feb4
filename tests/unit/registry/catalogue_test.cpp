// The message catalogue: which locale, folder and domain, and what a message without one gives.
#include "registry/catalogue.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "fakes/libc.h"
#include "fakes/platform.h"

namespace {

using ::testing::ElementsAre;

class CatalogueTest : public fakes::PlatformTest {
  protected:
    static std::vector<std::string> CallLines() {
        std::vector<std::string> lines;
        for (const fakes::Call &call : fakes::Calls()) {
            lines.push_back(call.function + " " + call.detail);
        }
        return lines;
    }
    const std::string all_ = std::to_string(LC_ALL);
};

TEST_F(CatalogueTest, TakesTheSystemsLanguageAndTheFixedFolder) {
    fakes::TheSystem().language_name = "ja_JP.eucJP";
    UseCatalogue("en_US", CATALOGUE_VELOX);
    EXPECT_THAT(CallLines(),
                ElementsAre("GetSystemDefaultLANG 128", "setlocale " + all_ + " ja_JP.eucJP",
                            "bindtextdomain velox /opt/xev/kestro_sa/data/mo", "textdomain velox"));
}

TEST_F(CatalogueTest, TakesThePresetWhenTheSystemGivesNoLanguage) {
    fakes::FailCall("GetSystemDefaultLANG");
    UseCatalogue("ja_JP", CATALOGUE_REPORT_TABLE);
    EXPECT_THAT(CallLines(), ElementsAre("GetSystemDefaultLANG 128", "setlocale " + all_ + " ja_JP",
                                         "bindtextdomain reprttbl /opt/xev/kestro_sa/data/mo",
                                         "textdomain reprttbl"));
}

TEST_F(CatalogueTest, LooksUpInTheDomainMadeCurrentLast) {
    fakes::TheLibc().catalogue = {{"velox:Corporate", "Houjin"}, {"reprttbl:Corporate", "other"}};
    UseCatalogue("en_US", CATALOGUE_REPORT_TABLE);
    UseCatalogue("en_US", CATALOGUE_VELOX);
    EXPECT_STREQ(CatalogueText("Corporate"), "Houjin");
    EXPECT_EQ(fakes::Calls().back().detail, "velox:Corporate " + std::to_string(LC_MESSAGES));
}

TEST_F(CatalogueTest, AMessageWithoutTranslationStandsForItself) {
    static const char message[] = "Personal";
    UseCatalogue("en_US", CATALOGUE_VELOX);
    EXPECT_EQ(CatalogueText(message), message);
}

}  // namespace
