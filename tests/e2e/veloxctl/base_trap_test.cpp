// "veloxctl base" and "veloxctl trap".
#include "settings_case.h"

namespace veloxctl_test {
namespace {

using testing::ElementsAre;

class BaseTest : public SettingsCaseTest {};
TEST_P(BaseTest, SaysAndStores) {
    Check(GetParam());
}

const SettingsCase kBaseCases[] = {
    {.title = "ShowsEveryKind",
     .words = {"base", "show"},
     .output = "kind            enabled\n"
               "MANAGER (SNMP)  on\n"
               "RUN COMMAND     off\n"
               "SHUTDOWN DELAY  off\n"},
    {.title = "ShowsOneKind",
     .words = {"base", "show", "manager (snmp)"},
     .output = "kind:    MANAGER (SNMP)\nenabled: on\ntraps:   a.example, b.example\n"},
    {.title = "ShowsTheShutdownDelay",
     .words = {"base", "show", "Shutdown Delay"},
     .output = "kind:    SHUTDOWN DELAY\nenabled: off\ndelay:   120\n"},
    {.title = "ShowsOneKindAsJson",
     .words = {"base", "show", "RUN COMMAND", "--json"},
     .output = "{\n  \"kind\": \"RUN COMMAND\",\n  \"enabled\": false\n}\n"},
    {.title = "ShowsNoUnknownKind",
     .words = {"base", "show", "FAX"},
     .status = EX_NOINPUT,
     .errors = "veloxctl: FAX: there is no such report kind\n"},
    {.title = "KindIsNoPath",
     .words = {"base", "show", "MANAGER (SNMP)\\SETTING"},
     .status = EX_USAGE,
     .errors = "veloxctl: the report kind \"MANAGER (SNMP)\\SETTING\": 1 to 255 bytes without "
               "backslash are wanted\n"},
    {.title = "SwitchesOff",
     .words = {"base", "set", "manager (snmp)", "--enabled", "off"},
     .output = "MANAGER (SNMP): enabled: on -> off\n",
     .after = {"\"ENABLED\"=dword:00000000", "\"TrapDestination\"=hex(1):00,00,00"},
     .gone = {"\"ENABLED\"=dword:00000001"}},
    {.title = "SetsTheShutdownDelayAsJson",
     .words = {"base", "set", "SHUTDOWN DELAY", "-d", "0x10", "--json"},
     .output = "{\n  \"name\": \"SHUTDOWN DELAY\",\n  \"changes\": [\n    {\n"
               "      \"setting\": \"delay\",\n      \"before\": 120,\n      \"after\": 16\n"
               "    }\n  ]\n}\n",
     .after = {"\"TrapDestination\"=hex(1):00,00,00", "\"SHUTDOWNTIME\"=dword:00000010"},
     .gone = {"\"SHUTDOWNTIME\"=dword:00000078"}},
    {.title = "DelayIsOfTheShutdownOnly",
     .words = {"base", "set", "RUN COMMAND", "-d", "1"},
     .status = EX_USAGE,
     .errors = "veloxctl: --delay is an option of \"SHUTDOWN DELAY\" only\n"},
    {.title = "DelayIsANumber",
     .words = {"base", "set", "SHUTDOWN DELAY", "-d", "4294967296"},
     .status = EX_USAGE,
     .errors = "veloxctl: --delay 4294967296: a number from 0 to 4294967295 is wanted\n"},
    {.title = "SetsNothing",
     .words = {"base", "set", "RUN COMMAND"},
     .status = EX_USAGE,
     .errors = "veloxctl: nothing is to be set; see \"veloxctl base set --help\"\n"},
    {.title = "MakesNoKind",
     .words = {"base", "set", "FAX", "-e", "on"},
     .status = EX_NOINPUT,
     .errors = "veloxctl: FAX: there is no such report kind\n"},
};
INSTANTIATE_TEST_SUITE_P(Rows, BaseTest, testing::ValuesIn(kBaseCases), test_support::Title());

TEST_F(SettingsTest, TheTextBesideASwitchStays) {
    ASSERT_EQ(Veloxctl({"base", "set", "RUN COMMAND", "-e", "on"}).status, EX_OK);
    const std::string json =
        Veloxctl({"reg", "query", std::string(kAlertManager) + "\\BASESETTING\\REPORT\\RUN COMMAND",
                  "-v", "TrapDestination"})
            .output;
    EXPECT_NE(json.find("6b65707400"), std::string::npos) << json;  // "kept"
}

class TrapTest : public SettingsCaseTest {};
TEST_P(TrapTest, SaysAndStores) {
    Check(GetParam());
}

const SettingsCase kTrapCases[] = {
    {.title = "Lists", .words = {"trap", "list"}, .output = "a.example\nb.example\n"},
    {.title = "ListsAsJson",
     .words = {"trap", "list", "--json"},
     .output = "[\n  \"a.example\",\n  \"b.example\"\n]\n"},
    {.title = "Adds",
     .words = {"trap", "add", "c.example", "A.EXAMPLE", "d.example"},
     .output = "c.example: added\nd.example: added\n",
     .after = {"\"2\"=\"c.example\"", "\"3\"=\"d.example\""}},
    {.title = "AddsNothing", .words = {"trap", "add", "A.example"}, .output = "nothing changed\n"},
    {.title = "AddsNoEmptyOne",
     .words = {"trap", "add", ""},
     .status = EX_DATAERR,
     .errors = "veloxctl: the destination \"\": 1 to 255 bytes are wanted\n"},
    {.title = "AddsTheLongest",
     .words = {"trap", "add", std::string(255, 'x')},
     .output = std::string(255, 'x') + ": added\n",
     .after = {"\"2\"=\"" + std::string(255, 'x') + "\""}},
    {.title = "AddsNoLongerOne",
     .words = {"trap", "add", std::string(256, 'x')},
     .status = EX_DATAERR,
     .errors = "veloxctl: the destination \"" + std::string(256, 'x') +
               "\": 1 to 255 bytes are wanted\n"},
    {.title = "Removes",
     .words = {"trap", "remove", "A.EXAMPLE"},
     .output = "a.example: removed\n",
     .after = {"\"0\"=\"b.example\""},
     .gone = {"\"0\"=\"a.example\"", "\"1\"=\"b.example\""}},
    {.title = "RemovesAllOrNothing",
     .words = {"trap", "remove", "a.example", "z.example"},
     .status = EX_NOINPUT,
     .errors = "veloxctl: z.example: there is no such trap destination\n"},
    {.title = "ReplacesWithoutLoss",
     .words = {"trap", "replace", "b.example", "a.example", "--json"},
     .output = "{\n  \"added\": [],\n  \"removed\": [],\n  \"traps\": [\n    \"b.example\",\n"
               "    \"a.example\"\n  ]\n}\n",
     .after = {"\"0\"=\"b.example\"", "\"1\"=\"a.example\""},
     .gone = {"\"0\"=\"a.example\"", "\"1\"=\"b.example\""}},
    {.title = "AsksBeforeALoss",
     .words = {"trap", "replace", "a.example"},
     .status = EX_USAGE,
     .errors = "veloxctl: trap destinations that are lost: 1; -f replaces them\n"},
    {.title = "ReplacesByForce",
     .words = {"trap", "replace", "-f", "c.example"},
     .output = "a.example: removed\nb.example: removed\nc.example: added\n",
     .after = {"\"0\"=\"c.example\""},
     .gone = {"\"0\"=\"a.example\"", "\"1\"=\"b.example\""}},
    {.title = "EmptiesByForce",
     .words = {"trap", "replace", "-f"},
     .output = "a.example: removed\nb.example: removed\n",
     .gone = {"\"0\"=\"a.example\"", "\"1\"=\"b.example\""}},
};
INSTANTIATE_TEST_SUITE_P(Rows, TrapTest, testing::ValuesIn(kTrapCases), test_support::Title());

TEST_F(SettingsTest, AListOf300KeepsItsOrder) {
    std::vector<std::string> words = {"trap", "replace", "-f"};
    std::string listed;
    for (int i = 0; i < 300; ++i) {
        words.push_back("host" + std::to_string(i * 7 % 300));
        listed += words.back() + "\n";
    }
    ASSERT_EQ(Veloxctl(words).status, EX_OK);
    EXPECT_EQ(Veloxctl({"trap", "list"}).output, listed);
}

TEST_F(SettingsTest, WithoutAServerEveryGroupSaysSo) {
    const std::vector<std::string> commands[] = {
        {"base", "show"},        {"trap", "list"},     {"dest", "list"},
        {"mail-dest", "show"},   {"event", "list"},    {"syslog", "list"},
        {"dest", "delete", "A"}, {"trap", "add", "A"}, {"syslog", "delete", "A", "B"},
    };
    for (const std::vector<std::string> &words : commands) {
        const Result result = Veloxctl(words, {.variables = {{"KES_RUN", "/nonexistent"}}});
        EXPECT_EQ(result.status, EX_UNAVAILABLE) << words[0];
        EXPECT_EQ(result.output, "") << words[0];
        EXPECT_NE(result.errors.find("the registry server KESntserver is not running"),
                  std::string::npos)
            << result.errors;
    }
}

}  // namespace
}  // namespace veloxctl_test
