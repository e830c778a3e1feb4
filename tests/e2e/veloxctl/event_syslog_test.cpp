// "veloxctl event" and "veloxctl syslog".
#include "settings_case.h"

namespace veloxctl_test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kRoot[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\XEV\\KESALERTMAN\\REPORTTABLE\\";

std::string AgentKey(const std::string &path) {
    return "[" + std::string(kRoot) + "USEREPORTAPI_EVENTLOG\\SYSTEM\\" + path + "]";
}
std::string SyslogKey(const std::string &path) {
    return "[" + std::string(kRoot) + "EVENTLOG\\APPLICATION\\" + path + "]";
}

class EventTest : public SettingsCaseTest {};
TEST_P(EventTest, SaysAndStores) {
    Check(GetParam());
}

const SettingsCase kEventCases[] = {
    {.title = "Lists",
     .words = {"event", "list", "src"},
     .output = "source  event  action     obstacle kind  alive level  trap name  destinations\n"
               "SRC     1      1          4              5            Fan        CMD\n"
               "SRC     2      1          4              5            Fan        (none)\n"
               "SRC     3      (missing)  2              3                       (none)\n"
               "SRC     4      (missing)  2              3                       (none)\n"},
    {.title = "ListsNoUnknownSource",
     .words = {"event", "list", "NONE"},
     .status = EX_NOINPUT,
     .errors = "veloxctl: NONE: there is no such source\n"},
    {.title = "Shows",
     .words = {"event", "show", "SRC", "1"},
     .output = "source:        SRC\n"
               "event:         1\n"
               "action:        1\n"
               "obstacle kind: 4\n"
               "alive level:   5\n"
               "trap name:     Fan\n"
               "recovery:      Clean\n"
               "destinations:  CMD\n"},
    {.title = "ShowsAsJson",
     .words = {"event", "show", "SRC", "2", "--json"},
     .output = "{\n  \"source\": \"SRC\",\n  \"event\": \"2\",\n  \"action\": 1,\n"
               "  \"obstacle_kind\": 4,\n  \"alive_level\": 5,\n  \"trap_name\": \"Fan\",\n"
               "  \"recovery\": \"Clean\",\n  \"destinations\": []\n}\n"},
    {.title = "ShowsNoUnknownEvent",
     .words = {"event", "show", "SRC", "9"},
     .status = EX_NOINPUT,
     .errors = "veloxctl: SRC 9: there is no such event\n"},
    {.title = "ShowsNoIncompleteEvent",
     .words = {"event", "show", "SRC", "4"},
     .status = EX_NOINPUT,
     .errors = "veloxctl: SRC 4: its settings are incomplete; see the trace with --verbose\n"},
    {.title = "SetsNumbers",
     .words = {"event", "set", "SRC", "1", "-a", "2", "-k", "6", "-l", "8"},
     .output = "SRC 1: action: 1 -> 2\nSRC 1: obstacle kind: 4 -> 6\nSRC 1: alive level: 5 -> 8\n",
     .after = {"\"ACTION\"=dword:00000002", "\"OBSTACLEKIND\"=dword:00000006",
               "\"ALIVELEVEL\"=dword:00000008"},
     .gone = {"\"ACTION\"=dword:00000001", "\"OBSTACLEKIND\"=dword:00000004",
              "\"ALIVELEVEL\"=dword:00000005"}},
    {.title = "SetsTheRecoveryText",
     .words = {"event", "set", "SRC", "1", "-r", "呼ぶ"},
     .output = "SRC 1: recovery: Clean -> 呼ぶ\n",
     .after = {"\"RECOVERYACTION\"=\"呼ぶ\""},
     .gone = {"\"RECOVERYACTION\"=\"Clean\""}},
    {.title = "NeedsAMissingAction",
     .words = {"event", "set", "SRC", "3", "-l", "1"},
     .status = EX_USAGE,
     .errors = "veloxctl: SRC 3: its action is missing; give --action\n"},
    {.title = "SetsAMissingAction",
     .words = {"event", "set", "SRC", "3", "-a", "0"},
     .output = "SRC 3: action: (missing) -> 0\n",
     .after = {"\"ACTION\"=dword:00000000", "\"OBSTACLEKIND\"=dword:00000002",
               "\"ALIVELEVEL\"=dword:00000003"}},
    {.title = "TakesNoUnknownKind",
     .words = {"event", "set", "SRC", "1", "-k", "5"},
     .status = EX_USAGE,
     .errors = "veloxctl: event set: --obstacle-kind: 5 not in {1,2,3,4,6}; see \"veloxctl event "
               "set --help\"\n"},
    {.title = "TakesNoHigherAction",
     .words = {"event", "set", "SRC", "1", "-a", "3"},
     .status = EX_USAGE,
     .errors = "veloxctl: --action 3: a number from 0 to 2 is wanted\n"},
    {.title = "TakesNoHigherLevel",
     .words = {"event", "set", "SRC", "1", "-l", "9"},
     .status = EX_USAGE,
     .errors = "veloxctl: --alive-level 9: a number from 0 to 8 is wanted\n"},
    {.title = "TakesNoLongerRecoveryText",
     .words = {"event", "set", "SRC", "1", "-r", std::string(512, 'x')},
     .status = EX_DATAERR,
     .errors = "veloxctl: --recovery: longer than 511 bytes as it is stored\n"},
    {.title = "LinksOne",
     .words = {"event", "link", "OUT", "SRC", "2"},
     .output = "SRC 2: linked\n",
     .after = {AgentKey("SRC\\2\\DESTINATIONSETTING"),
               AgentKey("SRC\\2\\DESTINATIONSETTING\\ID_LIST"),
               AgentKey("SRC\\2\\DESTINATIONSETTING\\ID_LIST\\OUT")}},
    {.title = "LinksWhatIsNotLinked",
     .words = {"event", "link", "CMD", "SRC", "--json"},
     .output = "{\n  \"linked\": [\n    \"SRC 2\",\n    \"SRC 3\",\n    \"SRC 4\"\n  ]\n}\n",
     .after =
         {AgentKey("SRC\\2\\DESTINATIONSETTING"), AgentKey("SRC\\2\\DESTINATIONSETTING\\ID_LIST"),
          AgentKey("SRC\\2\\DESTINATIONSETTING\\ID_LIST\\CMD"),
          AgentKey("SRC\\3\\DESTINATIONSETTING"), AgentKey("SRC\\3\\DESTINATIONSETTING\\ID_LIST"),
          AgentKey("SRC\\3\\DESTINATIONSETTING\\ID_LIST\\CMD"),
          AgentKey("SRC\\4\\DESTINATIONSETTING"), AgentKey("SRC\\4\\DESTINATIONSETTING\\ID_LIST"),
          AgentKey("SRC\\4\\DESTINATIONSETTING\\ID_LIST\\CMD")}},
    {.title = "LinksNothingTwice",
     .words = {"event", "link", "CMD", "SRC", "1"},
     .output = "nothing changed\n"},
    {.title = "LinksToNoUnknownDestination",
     .words = {"event", "link", "NONE", "SRC"},
     .status = EX_NOINPUT,
     .errors = "veloxctl: NONE: there is no such destination\n"},
    {.title = "LinksNoUnknownEvent",
     .words = {"event", "link", "CMD", "SRC", "9"},
     .status = EX_NOINPUT,
     .errors = "veloxctl: SRC 9: there is no such event\n"},
    {.title = "Unlinks",
     .words = {"event", "unlink", "CMD", "SRC"},
     .output = "SRC 1: unlinked\n",
     .gone = {AgentKey("SRC\\1\\DESTINATIONSETTING\\ID_LIST\\CMD")}},
};
INSTANTIATE_TEST_SUITE_P(Rows, EventTest, testing::ValuesIn(kEventCases), test_support::Title());

class SyslogTest : public SettingsCaseTest {};
TEST_P(SyslogTest, SaysAndStores) {
    Check(GetParam());
}

const SettingsCase kSyslogCases[] = {
    {.title = "Lists",
     .words = {"syslog", "list", "alone"},
     .output = "source  event  action  obstacle kind  alive level  trap name  destinations\n"
               "alone   1      1       4              5            Fan        (none)\n"},
    {.title = "Shows",
     .words = {"syslog", "show", "kernel", "2"},
     .output = "source:         kernel\n"
               "event:          2\n"
               "action:         1\n"
               "obstacle kind:  4\n"
               "alive level:    5\n"
               "trap name:      Fan\n"
               "recovery:       Clean\n"
               "destinations:   (none)\n"
               "keyword:        panic\n"
               "report count:   2\n"
               "watch time:     60\n"
               "system defined: on\n"},
    {.title = "SetsWatchSettings",
     .words = {"syslog", "set", "kernel", "1", "-c", "3", "-w", "0xffffff"},
     .output = "kernel 1: report count: 2 -> 3\nkernel 1: watch time: 60 -> 16777215\n",
     .after = {"\"WATCHTIME\"=dword:00ffffff", "\"REPORTCOUNT\"=dword:00000003"},
     .gone = {"\"WATCHTIME\"=dword:0000003c", "\"REPORTCOUNT\"=dword:00000002"}},
    {.title = "Links",
     .words = {"syslog", "link", "CMD", "alone"},
     .output = "alone 1: linked\n",
     .after = {SyslogKey("alone\\1\\DESTINATIONSETTING"),
               SyslogKey("alone\\1\\DESTINATIONSETTING\\ID_LIST"),
               SyslogKey("alone\\1\\DESTINATIONSETTING\\ID_LIST\\CMD")}},
    {.title = "AddNeedsAKeyword",
     .words = {"syslog", "add", "kernel", "7"},
     .status = EX_USAGE,
     .errors = "veloxctl: --keyword is needed\n"},
    {.title = "AddsNothingThatExists",
     .words = {"syslog", "add", "KERNEL", "1", "-k", "x"},
     .status = EX_CANTCREAT,
     .errors = "veloxctl: KERNEL 1: the item exists\n"},
    {.title = "AddsNothingToAHalf",
     .words = {"syslog", "add", "kernel", "half", "-k", "x"},
     .status = EX_CANTCREAT,
     .errors = "veloxctl: kernel half: the item was added by half only; delete it with -f first\n"},
    {.title = "AddsNoLongerKeyword",
     .words = {"syslog", "add", "kernel", "7", "-k", std::string(1024, 'x')},
     .status = EX_DATAERR,
     .errors = "veloxctl: --keyword: longer than 1023 bytes as it is stored\n"},
    {.title = "DeletesAnItem",
     .words = {"syslog", "delete", "kernel", "1"},
     .output = "kernel 1: deleted\n",
     .gone = {SyslogKey("kernel\\1"), SyslogKey("kernel\\1\\EVENTSETTING"),
              "\"ACTION\"=dword:00000001", "\"OBSTACLEKIND\"=dword:00000004",
              "\"ALIVELEVEL\"=dword:00000005", "\"TRAPNAME\"=\"Fan\"",
              "\"RECOVERYACTION\"=\"Clean\"", "\"SYSTEMDEFINED\"=dword:00000000",
              SyslogKey("kernel\\1\\WATCHSETTING"), "\"KEYWORD\"=\"panic\"",
              "\"WATCHTIME\"=dword:0000003c", "\"REPORTCOUNT\"=dword:00000002"}},
    {.title = "DeletesNoItemOfTheSystem",
     .words = {"syslog", "delete", "-f", "kernel", "2"},
     .status = EX_NOPERM,
     .errors = "veloxctl: kernel 2: the system defined this item, it is not deleted\n"},
    {.title = "DeletesAHalfByForceOnly",
     .words = {"syslog", "delete", "kernel", "half"},
     .status = EX_DATAERR,
     .errors = "veloxctl: kernel half: the item was added by half only; -f deletes it\n"},
    {.title = "DeletesAHalfByForce",
     .words = {"syslog", "delete", "-f", "kernel", "half"},
     .output = "kernel half: deleted\n",
     .gone = {SyslogKey("kernel\\half")}},
    {.title = "DeletesAHalfSourceByForceOnly",
     .words = {"syslog", "delete", "halfsource"},
     .status = EX_DATAERR,
     .errors = "veloxctl: halfsource: the source was added by half only; -f deletes it\n"},
    {.title = "DeletesAHalfSourceByForce",
     .words = {"syslog", "delete", "-f", "halfsource"},
     .output = "halfsource: deleted\n",
     .gone = {SyslogKey("halfsource")}},
    {.title = "DeletesNoSourceOfTheSystem",
     .words = {"syslog", "delete", "-f", "system"},
     .status = EX_NOPERM,
     .errors = "veloxctl: system: the source was not added here, it is not deleted\n"},
    {.title = "AsksBeforeItemsAreLost",
     .words = {"syslog", "delete", "kernel"},
     .status = EX_USAGE,
     .errors = "veloxctl: kernel: the source has items, 3 in all; -f deletes them too\n"},
    {.title = "DeletesNoEmptySource",
     .words = {"syslog", "delete", "-f", ""},
     .status = EX_USAGE,
     .errors = "veloxctl: the source \"\": 1 to 255 bytes without backslash are wanted\n"},
    {.title = "DeletesNothingThatIsMissing",
     .words = {"syslog", "delete", "kernel", "9"},
     .status = EX_NOINPUT,
     .errors = "veloxctl: kernel 9: there is no such item\n"},
};
INSTANTIATE_TEST_SUITE_P(Rows, SyslogTest, testing::ValuesIn(kSyslogCases), test_support::Title());

TEST_F(SettingsTest, AnItemIsAddedAndTakesItsSourceAlongWhenItGoes) {
    const Result added =
        Veloxctl({"syslog", "add", "disk", "1", "-k", "I/O error", "-t", "Disk", "-r", "Call"});
    EXPECT_EQ(added.status, EX_OK) << added.errors;
    EXPECT_EQ(added.output, "disk 1: added\n");
    const std::string exported = Exported(kAlertManager);
    for (const char *line :
         {"\"CREATEVERSION\"=\"0003,0008,0000\"", "\"DETAIL\"=\"Disk\"",
          "\"KEYWORD\"=\"I/O error\"", "\"RECOVERYACTION\"=\"Call\"", "disk\\1\\WATCHSETTING]"}) {
        EXPECT_THAT(exported, HasSubstr(line));
    }
    EXPECT_EQ(Veloxctl({"syslog", "delete", "disk", "1"}).output, "disk 1: deleted\n");
    EXPECT_EQ(Lines(), before_);
}

TEST_F(SettingsTest, AWholeSourceIsDeletedAfterAQuestion) {
    const Result result =
        VeloxctlInTerminal({"syslog", "delete", "alone"}, {{"Go on? (y/N) ", "y\n"}});
    EXPECT_EQ(result.status, EX_OK) << result.output;
    EXPECT_THAT(Exported(kAlertManager), Not(HasSubstr("APPLICATION\\alone")));
}

TEST_F(SettingsTest, ATranslationIsNeverStored) {
    ASSERT_EQ(
        Veloxctl({"event", "set", "SRC", "1", "-l", "1"}, {.variables = {{"KES_LANG", "ja_JP"}}})
            .status,
        EX_OK);
    EXPECT_THAT(Exported(kAlertManager), HasSubstr("\"RECOVERYACTION\"=\"Clean\""));
}

}  // namespace
}  // namespace veloxctl_test
