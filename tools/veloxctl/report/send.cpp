// "veloxctl report test" and "veloxctl report opening".
#include <velox/mail_report.h>

#include "failure.h"
#include "mail/settings.h"
#include "registry.h"
#include "report/commands.h"
#include "report/outcome.h"
#include "report/text.h"
#include "terminal.h"
#include "trace.h"

namespace veloxctl::report {

namespace {

constexpr char kSubject[] = "Velox Test Report";
constexpr char kOpeningSubject[] = "Velox Opening Report";

std::string Destinations() {
    char list[VX_DESTINATION_LIST_LENGTH + 1];
    if (GetVlxTo(list) == FALSE) {
        FailReport(VX_REPORT_NO_DESTINATION, {});
    }
    return list;
}

// What a success will record in the registry.
std::string Record(DWORD kind) {
    const DWORD opening = GetEOpening();
    const std::string now = " (it is " + std::to_string(opening) + " now)";
    if (kind == VX_REPORT_TEST) {
        return "A success records EOpening 2" + now + ", and SETTING 1 unless it is set.";
    }
    if (kind == VX_REPORT_OPENING && opening < 2) {
        return "A success records EOpening 1" + now + ".";
    }
    return "A success records nothing.";
}

int Send(DWORD kind, const char *subject, const std::string &message) {
    (void)TerminalEncoding();  // before composing changes the locale
    const std::string to = Destinations();
    Print("To: " + StoredToTerminal(to) + "\n");
    Print(Record(kind) + "\n");
    const mail::Settings settings = mail::ReadSettings(mail::BasePath());
    if (!settings.option) {
        Print("Option is missing: this report goes out plain.\n");
    }
    FinishOutput();
    KeepFailuresOf({"amrpop", "amrsmtp"});
    const int code = AMAMVeloxTestReport(nullptr, kind, subject, to.c_str(), message.c_str());
    if (code != VX_REPORT_SENT) {
        FailReport(code, KeptFailure());
    }
    Print("Sent: " + std::string(MeaningOf(code)) + ".\n");
    return EX_OK;
}

}  // namespace

int RunTest(const Arguments &arguments) {
    return Send(arguments.GetOr("kind", "1") == "2" ? VX_REPORT_ALERT : VX_REPORT_TEST, kSubject,
                {});
}

int RunOpening(const Arguments &arguments) {
    if (!arguments.Has("message")) {
        Fail(EX_USAGE, "report opening: --message FILE is missing");
    }
    return Send(VX_REPORT_OPENING, kOpeningSubject, ReadMessage(arguments.Get("message")));
}

}  // namespace veloxctl::report
