#include "settings_case.h"

namespace veloxctl_test {

namespace {

std::string Key(const std::string &path, const std::string &values = "") {
    return "[" + std::string(kAlertManager) + "\\" + path + "]\n" + values + "\n";
}

std::string BaseSettings() {
    const std::string report = "BASESETTING\\REPORT\\";
    const std::string shutdown = "BASESETTING\\OTHER\\SHUTDOWN DELAY";
    return Key(report + "MANAGER (SNMP)", "\"ENABLED\"=dword:00000001\n") +
           Key(report + "MANAGER (SNMP)\\SETTING", "\"0\"=\"a.example\"\n\"1\"=\"b.example\"\n") +
           Key(report + "RUN COMMAND",
               "\"ENABLED\"=dword:00000000\n\"TrapDestination\"=\"kept\"\n") +
           Key(shutdown, "\"ENABLED\"=dword:00000000\n") +
           Key(shutdown + "\\SETTING", "\"SHUTDOWNTIME\"=dword:00000078\n");
}

std::string Destination(const std::string &id, const std::string &method,
                        const std::string &address) {
    const std::string path = "DESTINATION\\ID_LIST\\" + id;
    return Key(path, "\"COMMENT\"=\"\"\n\"METHOD\"=\"" + method + "\"\n") +
           Key(path + "\\Address", address) +
           Key(path + "\\SCHEDULE",
               "\"PARAM0\"=dword:00000012\n\"RETRYCOUNT\"=dword:00000003\n"
               "\"RETRYINTERVAL\"=dword:00000005\n");
}

std::string Destinations() {
    return Destination("CMD", "RUN COMMAND",
                       "\"DisplayFlag\"=dword:00000001\n\"CommandLine\"=\"page\"\n") +
           Destination("OUT", "Manager (TCP_IP Out-of-Band)",
                       "\"ManagerIP\"=\"10.0.0.9\"\n\"PortNumber\"=dword:00000007\n"
                       "\"TelNo\"=\"0123\"\n\"UserName\"=\"u\"\n\"PassWord\"=\"secret\"\n") +
           Destination("VELOXREPORT", "VeloxReport(Internet Mail)",
                       "\"ETo\"=\"a@b.example\"\n\"EOpening\"=dword:00000001\n");
}

std::string Setting(const std::string &event, const std::string &more) {
    return Key(event + "\\EVENTSETTING",
               "\"ACTION\"=dword:00000001\n\"OBSTACLEKIND\"=dword:00000004\n"
               "\"ALIVELEVEL\"=dword:00000005\n\"TRAPNAME\"=\"Fan\"\n"
               "\"RECOVERYACTION\"=\"Clean\"\n" +
                   more);
}

std::string AgentEvents() {
    const std::string source = "REPORTTABLE\\USEREPORTAPI_EVENTLOG\\SYSTEM\\SRC\\";
    return Setting(source + "1", "") + Key(source + "1\\DESTINATIONSETTING\\ID_LIST\\CMD") +
           Setting(source + "2", "") + Key(source + "3\\EVENTSETTING") + Key(source + "4");
}

std::string SyslogItems() {
    const std::string table = "REPORTTABLE\\EVENTLOG\\APPLICATION\\";
    const std::string watch =
        "\"KEYWORD\"=\"panic\"\n\"WATCHTIME\"=dword:0000003c\n\"REPORTCOUNT\"=dword:00000002\n";
    return Key(table + "kernel", "\"SYSTEMDEFINED\"=dword:00000000\n") +
           Setting(table + "kernel\\1", "\"SYSTEMDEFINED\"=dword:00000000\n") +
           Key(table + "kernel\\1\\WATCHSETTING", watch) +
           Setting(table + "kernel\\2", "\"SYSTEMDEFINED\"=dword:00000001\n") +
           Key(table + "kernel\\2\\WATCHSETTING", watch) + Key(table + "kernel\\half") +
           Key(table + "alone", "\"SYSTEMDEFINED\"=dword:00000000\n") +
           Setting(table + "alone\\1", "") + Key(table + "alone\\1\\WATCHSETTING", watch) +
           Key(table + "halfsource") + Key(table + "system") + Setting(table + "system\\1", "");
}

}  // namespace

std::string SettingsBefore() {
    return BaseSettings() + Destinations() + AgentEvents() + SyslogItems();
}

}  // namespace veloxctl_test
