// "veloxctl dest" and "veloxctl mail-dest".
#include "settings_case.h"

namespace veloxctl_test {
namespace {

using testing::HasSubstr;
using testing::Not;

class DestTest : public SettingsCaseTest {};
TEST_P(DestTest, SaysAndStores) {
    Check(GetParam());
}

std::string KeyLine(const std::string &path) {
    return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\" + path + "]";
}

const SettingsCase kDestCases[] = {
    {.title = "Lists",
     .words = {"dest", "list"},
     .output = "id           method\n"
               "CMD          RUN COMMAND\n"
               "OUT          Manager (TCP_IP Out-of-Band)\n"
               "VELOXREPORT  VeloxReport(Internet Mail)\n"},
    {.title = "ShowsWithoutThePassword",
     .words = {"dest", "show", "out"},
     .output = "id:             out\n"
               "method:         Manager (TCP_IP Out-of-Band)\n"
               "address:        10.0.0.9\n"
               "port:           7\n"
               "telephone:      0123\n"
               "user:           u\n"
               "password state: stored\n"
               "schedule:       18\n"
               "retry count:    3\n"
               "retry interval: 5\n"},
    {.title = "ShowsThePasswordWhenTold",
     .words = {"dest", "show", "OUT", "--show-secrets", "--json"},
     .output = "{\n  \"id\": \"OUT\",\n  \"method\": \"Manager (TCP_IP Out-of-Band)\",\n"
               "  \"address\": \"10.0.0.9\",\n  \"port\": 7,\n  \"telephone\": \"0123\",\n"
               "  \"user\": \"u\",\n  \"password_state\": \"stored\",\n"
               "  \"password\": \"secret\",\n  \"schedule\": 18,\n  \"retry_count\": 3,\n"
               "  \"retry_interval\": 5\n}\n"},
    {.title = "ShowsNoUnknownOne",
     .words = {"dest", "show", "NONE"},
     .status = EX_NOINPUT,
     .errors = "veloxctl: NONE: there is no such destination\n"},
    {.title = "AddsSnmp",
     .words = {"dest", "add", "NEW", "snmp"},
     .output = "NEW: added\n",
     .after = {KeyLine("NEW"), "\"ADDRESSSET\"=dword:00000001", "\"ATTRIBUTE\"=dword:00000001",
               "\"COMMENT\"=\"\"", "\"METHOD\"=\"Manager (SNMP)\"", "\"REPORTKIND\"=\"Report\"",
               KeyLine("NEW\\Address"), KeyLine("NEW\\SCHEDULE"), "\"PARAM0\"=dword:00ffffff",
               "\"PARAM1\"=dword:00ffffff", "\"PARAM2\"=dword:00ffffff",
               "\"PARAM3\"=dword:00ffffff", "\"PARAM4\"=dword:00ffffff",
               "\"PARAM5\"=dword:00ffffff", "\"PARAM6\"=dword:00ffffff",
               "\"RETRYCOUNT\"=dword:00000003", "\"RETRYINTERVAL\"=dword:00000005"}},
    {.title = "AddsNothingThatExists",
     .words = {"dest", "add", "cmd", "snmp"},
     .status = EX_CANTCREAT,
     .errors = "veloxctl: cmd: the destination exists\n"},
    {.title = "AddsNoUnknownKind",
     .words = {"dest", "add", "NEW", "fax"},
     .status = EX_USAGE,
     .errors = "veloxctl: \"fax\" is none of the kinds command, in-band, out-of-band, snmp\n"},
    {.title = "AddNeedsTheKindsOptions",
     .words = {"dest", "add", "NEW", "in-band", "-a", "10.0.0.1"},
     .status = EX_USAGE,
     .errors = "veloxctl: --port is needed\n"},
    {.title = "AddNeedsAPassword",
     .words = {"dest", "add", "NEW", "out-of-band", "-a", "h", "-p", "1", "-t", "1", "-u", "u"},
     .status = EX_USAGE,
     .errors = "veloxctl: --password or --password-file is needed\n"},
    {.title = "AddTakesNoOtherKindsOption",
     .words = {"dest", "add", "NEW", "snmp", "-t", "1"},
     .status = EX_USAGE,
     .errors = "veloxctl: --telephone is no option of this kind\n"},
    {.title = "AddTakesNoOtherKindsPassword",
     .words = {"dest", "add", "NEW", "snmp", "--password-file", "-"},
     .status = EX_USAGE,
     .errors = "veloxctl: --password-file is no option of this kind\n",
     .input = "secret\n"},
    {.title = "AddsNoTooLongText",
     .words = {"dest", "add", "NEW", "command", "-c", std::string(4096, 'x')},
     .status = EX_DATAERR,
     .errors = "veloxctl: --command-line: longer than 4095 bytes as it is stored\n"},
    {.title = "AddsNoPath",
     .words = {"dest", "add", "CMD\\Address\\X", "snmp"},
     .status = EX_USAGE,
     .errors = "veloxctl: the id \"CMD\\Address\\X\": 1 to 255 bytes without backslash are "
               "wanted\n"},
    {.title = "ModifiesNothingOfOthers",
     .words = {"dest", "modify", "VELOXREPORT", "--retry-count", "1"},
     .status = EX_USAGE,
     .errors = "veloxctl: VELOXREPORT: a destination of the method \"VeloxReport(Internet "
               "Mail)\" is not changed here; see \"veloxctl mail-dest\"\n"},
    {.title = "DeletesOne",
     .words = {"dest", "delete", "cmd"},
     .output = "cmd: deleted\n",
     .gone = {KeyLine("CMD"), "\"COMMENT\"=\"\"", "\"METHOD\"=\"RUN COMMAND\"",
              KeyLine("CMD\\Address"), "\"DisplayFlag\"=dword:00000001", "\"CommandLine\"=\"page\"",
              KeyLine("CMD\\SCHEDULE"), "\"PARAM0\"=dword:00000012",
              "\"RETRYCOUNT\"=dword:00000003", "\"RETRYINTERVAL\"=dword:00000005"}},
    {.title = "DeletesTheVeloxReportByForceOnly",
     .words = {"dest", "delete", "VeloxReport"},
     .status = EX_USAGE,
     .errors = "veloxctl: VeloxReport: without it no Velox report goes out; -f deletes it all "
               "the same\n"},
    {.title = "DeletesNoEmptyId",
     .words = {"dest", "delete", "", "-f"},
     .status = EX_USAGE,
     .errors = "veloxctl: the id \"\": 1 to 255 bytes without backslash are wanted\n"},
    {.title = "DeletesNothingThatIsMissing",
     .words = {"dest", "delete", "NONE"},
     .status = EX_NOINPUT,
     .errors = "veloxctl: NONE: there is no such destination\n"},
    {.title = "ShowsTheMailDestination",
     .words = {"mail-dest", "show"},
     .output = "to:             a@b.example\n"
               "subject:        (missing)\n"
               "report level:   (missing)\n"
               "opening state:  1\n"
               "schedule:       18\n"
               "retry count:    3\n"
               "retry interval: 5\n"},
    {.title = "SetsMailAddressesOnly",
     .words = {"mail-dest", "set", "--to", "c@d.example", "--to", "e@f.example"},
     .output = "VELOXREPORT: to: a@b.example -> c@d.example,e@f.example\n",
     .after = {"\"COMMENT\"=\"To: c@d.example,e@f.example\"",
               "\"ETo\"=\"c@d.example,e@f.example\""},
     .gone = {"\"COMMENT\"=\"\"", "\"ETo\"=\"a@b.example\""}},
    {.title = "SetsSubjectAndLevelAsJson",
     .words = {"mail-dest", "set", "-s", "障害", "-l", "2", "--json"},
     .output = "{\n  \"name\": \"VELOXREPORT\",\n  \"changes\": [\n    {\n"
               "      \"setting\": \"subject\",\n      \"before\": null,\n"
               "      \"after\": \"障害\"\n    },\n    {\n"
               "      \"setting\": \"report_level\",\n      \"before\": null,\n"
               "      \"after\": 2\n    }\n  ]\n}\n",
     .after = {"\"ESubject\"=\"障害\"", "\"EReportLevel\"=dword:00000002"}},
    {.title = "NotesASubjectThatIsCut",
     .words = {"mail-dest", "set", "-s", std::string(32, 's')},
     .output = "VELOXREPORT: subject: (missing) -> " + std::string(32, 's') + "\n",
     .errors = "veloxctl: stored; note: reports carry only the first 31 bytes of the subject\n",
     .after = {"\"ESubject\"=\"" + std::string(32, 's') + "\""}},
    {.title = "SetsTheSchedule",
     .words = {"mail-dest", "set", "--schedule", "0xff"},
     .output = "VELOXREPORT: schedule: 18 -> 255\n",
     .after = {"\"PARAM0\"=dword:000000ff", "\"PARAM1\"=dword:00ffffff",
               "\"PARAM2\"=dword:00ffffff", "\"PARAM3\"=dword:00ffffff",
               "\"PARAM4\"=dword:00ffffff", "\"PARAM5\"=dword:00ffffff",
               "\"PARAM6\"=dword:00ffffff"},
     .gone = {"\"PARAM0\"=dword:00000012"}},
    {.title = "SetsNoMailNothing",
     .words = {"mail-dest", "set"},
     .status = EX_USAGE,
     .errors = "veloxctl: nothing is to be set; see \"veloxctl mail-dest set --help\"\n"},
    {.title = "SetsNoWrongAddress",
     .words = {"mail-dest", "set", "--to", "a b@c.example"},
     .status = EX_DATAERR,
     .errors = "veloxctl: \"a b@c.example\": an address such as name@host.example is wanted\n"},
    {.title = "SetsNoTooLongAddress",
     .words = {"mail-dest", "set", "--to", std::string(80, 'x') + "@"},
     .status = EX_DATAERR,
     .errors =
         "veloxctl: the address " + std::string(80, 'x') + "@ is longer than 80 characters\n"},
    {.title = "SetsNoTooLongSubject",
     .words = {"mail-dest", "set", "-s", std::string(513, 'x')},
     .status = EX_DATAERR,
     .errors = "veloxctl: --subject: longer than 512 bytes as it is stored\n"},
};
INSTANTIATE_TEST_SUITE_P(Rows, DestTest, testing::ValuesIn(kDestCases), test_support::Title());

TEST_F(SettingsTest, AnOutOfBandManagerIsAddedAndModifiedWithSecretsFromAFile) {
    const Result added = Veloxctl({"dest", "add", "NEW", "out-of-band", "-a", "10.0.0.1", "-p",
                                   "4711", "-t", "0123", "-u", "me", "--password-file", "-"},
                                  {.input = "first secret\n"});
    EXPECT_EQ(added.status, EX_OK) << added.errors;
    EXPECT_EQ(added.output, "NEW: added\n");
    EXPECT_THAT(Exported(kAlertManager), HasSubstr("\"RASENTRY\"=\"0123 me first secret\"\n"));
    const Result modified =
        Veloxctl({"dest", "modify", "NEW", "-p", "4712", "--password-file", "-", "--verbose"},
                 {.input = "second secret\n"});
    EXPECT_EQ(modified.status, EX_OK) << modified.errors;
    EXPECT_EQ(modified.output,
              "NEW: port: 4711 -> 4712\nNEW: password state: stored -> another one\n");
    EXPECT_THAT(modified.errors, HasSubstr("SetTcpOutDestSetting"));
    EXPECT_THAT(modified.errors, Not(HasSubstr("secret")));
    EXPECT_THAT(Exported(kAlertManager), HasSubstr("\"PassWord\"=\"second secret\"\n"));
}

TEST_F(SettingsTest, ADialUpPasswordIsAskedForWithoutEcho) {
    const Result result = VeloxctlInTerminal(
        {"dest", "modify", "OUT", "--password"},
        {{"dial-up password: ", "typed\n"}, {"dial-up password (again): ", "typed\n"}});
    EXPECT_EQ(result.status, EX_OK) << result.output;
    EXPECT_THAT(result.output, Not(HasSubstr("typed")));
    EXPECT_THAT(Exported(kAlertManager), HasSubstr("\"PassWord\"=\"typed\"\n"));
}

TEST_F(SettingsTest, TheVeloxReportIsDeletedByForce) {
    const Result result = Veloxctl({"dest", "delete", "VELOXREPORT", "--force", "--json"});
    EXPECT_EQ(result.status, EX_OK) << result.errors;
    EXPECT_EQ(result.output, "{\n  \"deleted\": [\n    \"VELOXREPORT\"\n  ]\n}\n");
    EXPECT_THAT(Exported(kAlertManager), Not(HasSubstr("ID_LIST\\VELOXREPORT")));
    EXPECT_EQ(Veloxctl({"mail-dest", "show"}).status, EX_NOINPUT);
}

TEST_F(SettingsTest, TheListAsJsonHasNoPassword) {
    const Result result = Veloxctl({"dest", "list", "--json"});
    EXPECT_EQ(result.status, EX_OK);
    EXPECT_THAT(result.output, HasSubstr("\"command_line\": \"page\""));
    EXPECT_THAT(result.output, Not(HasSubstr("secret")));
}

}  // namespace
}  // namespace veloxctl_test
