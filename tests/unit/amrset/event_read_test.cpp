// Reading one event of either table.
#include "event_tables.h"

namespace {

using namespace event_tables;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

template <typename Table>
class EventReadTest : public EventTest<Table> {
  protected:
    static std::string Setting() { return EventTest<Table>::Event() + "\\EVENTSETTING"; }

    static void MakeJapanese() {
        fakes::TheSystem().language_id = 1041;
        fakes::TheSystem().language_name = "ja_JP.eucJP";
    }
};
TYPED_TEST_SUITE(EventReadTest, Tables, TableName);

TYPED_TEST(EventReadTest, ReadsEveryField) {
    fakes::CreateKey(this->Link("E1", "ID2"));
    fakes::CreateKey(this->Link("E1", "id1"));
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_EQ(record.data.nDestIDCount, 2U);
    EXPECT_STREQ(record.data.lplpszDestID[0], "id1");
    EXPECT_STREQ(record.data.lplpszDestID[1], "ID2");
    EXPECT_EQ(record.data.nAction, 2U);
    EXPECT_EQ(record.data.ObstacleKind, 6U);
    EXPECT_EQ(record.data.AliveLevel, 8U);
    EXPECT_STREQ(record.data.szTrapName, "Trap");
    EXPECT_STREQ(record.data.szRecoveryAction, "Recover");
    EXPECT_EQ(record.data.nDestAction, 2U);
    if constexpr (TypeParam::kSyslog) {
        EXPECT_EQ(record.data.dwSystemDefined, 1U);
        EXPECT_STREQ(record.data.szKeyWord, "panic");
        EXPECT_EQ(record.data.dwWatchTime, 0xFFFFFFU);
        EXPECT_EQ(record.data.dwReportCount, 1U);
    }
    EXPECT_THAT(fakes::TraceLinesOf(TypeParam::kGet),
                ElementsAre(MatchesRegex(TypeParam::kGetEntry), "0 <return 0."));
    EXPECT_EQ(fakes::TraceLinesOf("SearchSubKey").size(), 3U);
    EXPECT_EQ(fakes::CallCount("dcgettext"), 0);
    EXPECT_EQ(fakes::CallCount("setlocale"), 0);
    for (const fakes::Call &call : fakes::Calls()) {
        if (call.function == "RegOpenKeyEx") {
            EXPECT_THAT(call.detail, testing::EndsWith(" sam=0xF003F"));
        }
    }
}

TYPED_TEST(EventReadTest, MissingValuesHaveDefaults) {
    fakes::DeleteTree(this->Event());
    fakes::CreateKey(this->Setting());
    fakes::CreateKey(this->Event() + "\\WATCHSETTING");
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_EQ(record.data.nDestIDCount, 0U);
    EXPECT_EQ(record.data.nAction, 3U);
    EXPECT_EQ(record.data.ObstacleKind, 2U);
    EXPECT_EQ(record.data.AliveLevel, 3U);
    EXPECT_STREQ(record.data.szTrapName, TypeParam::kNoTrapName);
    EXPECT_STREQ(record.data.szRecoveryAction, "");
    if constexpr (TypeParam::kSyslog) {
        EXPECT_EQ(record.data.dwSystemDefined, 0U);
        EXPECT_STREQ(record.data.szKeyWord, "");
        EXPECT_EQ(record.data.dwWatchTime, 0U);
        EXPECT_EQ(record.data.dwReportCount, 0U);
    }
}

TYPED_TEST(EventReadTest, AnEventWithoutSettingFailsWithItsLinksAndDefaults) {
    fakes::CreateKey(this->Link());
    fakes::DeleteTree(this->Setting());
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Get(&record.data), -1);
    EXPECT_EQ(record.data.nDestIDCount, 1U);
    EXPECT_EQ(record.data.nAction, 3U);
    EXPECT_EQ(record.data.ObstacleKind, 2U);
    EXPECT_EQ(record.data.AliveLevel, 3U);
    EXPECT_STREQ(record.data.szTrapName, TypeParam::kNoTrapName);
    EXPECT_STREQ(record.data.szRecoveryAction, "");
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx " + this->Setting() + " failed.return -1."));
}

TYPED_TEST(EventReadTest, NamesThatAreNoKeyNamesNeverReachTheRegistry) {
    for (const char *name : {"", "SRC\\E1"}) {
        Record<TypeParam> by_source(name, "E1");
        EXPECT_EQ(TypeParam::Get(&by_source.data), -1);
        Record<TypeParam> by_event("SRC", name);
        EXPECT_EQ(TypeParam::Get(&by_event.data), -1);
        EXPECT_EQ(by_event.data.nDestIDCount, 0U);
    }
    EXPECT_THAT(fakes::Calls(), IsEmpty());
}

TYPED_TEST(EventReadTest, AtMost50LinksAreListed) {
    for (int i = 0; i < 60; ++i) {
        fakes::CreateKey(this->Link("E1", "D" + std::to_string(100 + i)));
    }
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_EQ(record.data.nDestIDCount, 50U);
    EXPECT_STREQ(record.data.lplpszDestID[49], "D149");
    EXPECT_STREQ(record.data.szTrapName, "Trap");
    EXPECT_TRUE(fakes::KeyExists(this->Link("E1", "D159")));
}

TYPED_TEST(EventReadTest, LinksAreListedUpToTheFirstMissingBuffer) {
    fakes::CreateKey(this->Link("E1", "ID1"));
    fakes::CreateKey(this->Link("E1", "ID2"));
    Record<TypeParam> record;
    record.data.lplpszDestID[1] = nullptr;
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_EQ(record.data.nDestIDCount, 1U);
    EXPECT_STREQ(record.data.lplpszDestID[0], "ID1");
}

TYPED_TEST(EventReadTest, TheLongestLinkIsListed) {
    const std::string id(KES_REG_MAX_KEY_NAME, 'd');
    fakes::CreateKey(this->Link("E1", id));
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_EQ(record.data.lplpszDestID[0], id);
}

TYPED_TEST(EventReadTest, TextsAtAndOverTheirCapacity) {
    const std::string trap(EVENT_TRAPNAME_CAPACITY - 1, 't');
    const std::string recovery(EVENT_RECOVERY_CAPACITY - 1, 'r');
    fakes::StoreText(this->Setting(), "TRAPNAME", trap);
    fakes::StoreText(this->Setting(), "RECOVERYACTION", recovery);
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_EQ(record.data.szTrapName, trap);
    EXPECT_EQ(record.data.szRecoveryAction, recovery);

    // Full without a terminator.
    fakes::StoreBytes(this->Setting(), "TRAPNAME", REG_SZ, trap + "t");
    fakes::StoreBytes(this->Setting(), "RECOVERYACTION", REG_SZ, recovery + "r");
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_EQ(record.data.szTrapName, trap);
    EXPECT_EQ(record.data.szRecoveryAction, recovery);

    fakes::StoreText(this->Setting(), "TRAPNAME", trap + "t");
    fakes::StoreText(this->Setting(), "RECOVERYACTION", recovery + "r");
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_STREQ(record.data.szTrapName, TypeParam::kNoTrapName);
    EXPECT_STREQ(record.data.szRecoveryAction, "");
}

// ---- Translation --------------------------------------------------------------------------------

TYPED_TEST(EventReadTest, OnAJapaneseSystemTheTextsAreTranslated) {
    this->MakeJapanese();
    fakes::TheLibc().catalogue = {{"reprttbl:Trap", "\xB4\xC1"}, {"reprttbl:Recover", "\xBB\xFA"}};
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_STREQ(record.data.szTrapName, "\xB4\xC1");
    EXPECT_STREQ(record.data.szRecoveryAction, "\xBB\xFA");
    EXPECT_EQ(fakes::Text(this->Setting(), "TRAPNAME"), "Trap");
    std::vector<std::string> calls;
    for (const fakes::Call &call : fakes::Calls()) {
        if (!call.function.starts_with("Reg")) {
            calls.push_back(call.function + " " + call.detail);
        }
    }
    EXPECT_THAT(calls, ElementsAre("GetSystemDefaultLangID ", "GetSystemDefaultLANG 128",
                                   "setlocale 6 ja_JP.eucJP",
                                   "bindtextdomain reprttbl /opt/xev/kestro_sa/data/mo",
                                   "textdomain reprttbl", "dcgettext reprttbl:Trap 5",
                                   "dcgettext reprttbl:Recover 5"));
}

TYPED_TEST(EventReadTest, WithoutLanguageNameThePresetStands) {
    this->MakeJapanese();
    fakes::FailCall("GetSystemDefaultLANG");
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_STREQ(record.data.szTrapName, "Trap");
    EXPECT_EQ(fakes::CallCount("setlocale"), 1);
    for (const fakes::Call &call : fakes::Calls()) {
        EXPECT_TRUE(call.function != "setlocale" || call.detail == "6 ja_JP");
    }
}

TYPED_TEST(EventReadTest, OnlyJapaneseIsTranslated) {
    fakes::TheSystem().language_id = 1042;
    fakes::TheLibc().catalogue = {{"reprttbl:Trap", "translated"}};
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_STREQ(record.data.szTrapName, "Trap");
}

TYPED_TEST(EventReadTest, AnEmptyTextIsNotLookedUp) {
    this->MakeJapanese();
    fakes::TheLibc().catalogue = {{"reprttbl:", "Project-Id-Version"}};
    fakes::StoreText(this->Setting(), "TRAPNAME", "");
    fakes::StoreText(this->Setting(), "RECOVERYACTION", "");
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_STREQ(record.data.szTrapName, "");
    EXPECT_STREQ(record.data.szRecoveryAction, "");
    EXPECT_EQ(fakes::CallCount("dcgettext"), 0);
}

TYPED_TEST(EventReadTest, ALongTranslationIsCutAtAWholeCharacter) {
    this->MakeJapanese();
    std::string trap = "a";  // 40 characters of 2 bytes behind it: the 39th is the last to fit
    std::string recovery;
    for (int i = 0; i < 40; ++i) {
        trap += "\xB4\xC1";
    }
    for (int i = 0; i < 300; ++i) {
        recovery += "\xBB\xFA";
    }
    fakes::TheLibc().catalogue = {{"reprttbl:Trap", trap}, {"reprttbl:Recover", recovery}};
    Record<TypeParam> record;
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_EQ(record.data.szTrapName, trap.substr(0, 79));
    EXPECT_EQ(record.data.szRecoveryAction, recovery.substr(0, 510));

    fakes::TheLibc().catalogue = {{"reprttbl:Trap", trap.substr(1)}};
    EXPECT_EQ(TypeParam::Get(&record.data), 0);
    EXPECT_EQ(record.data.szTrapName, trap.substr(1, 78));
}

TYPED_TEST(EventReadTest, EachRefusedCallGivesADocumentedResult) {
    int result = 0;
    Record<TypeParam> record;
    sweep::RefuseEachCall(
        [&] {
            this->Prepare();
            fakes::CreateKey(this->Link());
            this->MakeJapanese();
        },
        [&] { result = TypeParam::Get(&record.data); },
        [&](const fakes::Call &refused) {
            const bool setting = refused.detail.find("SETTING sam=") != std::string::npos;
            EXPECT_EQ(result, refused.function == "RegOpenKeyEx" && setting ? -1 : 0);
            EXPECT_LE(record.data.nDestIDCount, 1U);
        });
}

// ---- The system log's own -----------------------------------------------------------------------

class SyslogReadTest : public EventTest<Syslog> {};

TEST_F(SyslogReadTest, AnItemWithoutWatchSettingFailsWithItsEventFields) {
    fakes::DeleteTree(Event() + "\\WATCHSETTING");
    Record<Syslog> record;
    EXPECT_EQ(GetSyslogSetting(&record.data), -1);
    EXPECT_EQ(record.data.nAction, 2U);
    EXPECT_STREQ(record.data.szTrapName, "Trap");
    EXPECT_STREQ(record.data.szRecoveryAction, "Recover");
    EXPECT_EQ(record.data.dwSystemDefined, 1U);
    EXPECT_STREQ(record.data.szKeyWord, "");
    EXPECT_EQ(record.data.dwWatchTime, 0U);
    EXPECT_THAT(fakes::TraceLines(1),
                ElementsAre("1 <RegOpenKeyEx " + Event() + "\\WATCHSETTING failed.return -1."));
}

TEST_F(SyslogReadTest, AKeywordOf1024BytesIsEndedInside) {
    const std::string longest(EVENT_KEYWORD_CAPACITY - 1, 'k');
    const std::string key = Event() + "\\WATCHSETTING";
    Record<Syslog> record;
    fakes::StoreText(key, "KEYWORD", longest);
    EXPECT_EQ(GetSyslogSetting(&record.data), 0);
    EXPECT_EQ(record.data.szKeyWord, longest);
    fakes::StoreBytes(key, "KEYWORD", REG_SZ, longest + "k");
    EXPECT_EQ(GetSyslogSetting(&record.data), 0);
    EXPECT_EQ(record.data.szKeyWord, longest);
    EXPECT_EQ(record.data.dwReportCount, 1U);
}

}  // namespace
