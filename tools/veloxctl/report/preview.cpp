// "veloxctl report preview".
#include <velox/mail_report.h>

#include <cstdlib>
#include <memory>

#include "failure.h"
#include "report/commands.h"
#include "report/outcome.h"
#include "report/text.h"
#include "terminal.h"

namespace veloxctl::report {

int RunPreview(const Arguments &arguments) {
    (void)TerminalEncoding();  // before composing changes the locale
    const auto kind = static_cast<DWORD>(std::stoul(arguments.GetOr("kind", "1")));
    std::string message;
    if (arguments.Has("message")) {
        if (kind != VX_REPORT_OPENING) {
            Fail(EX_USAGE, "--message belongs to kind 0, the opening report");
        }
        message = ReadMessage(arguments.Get("message"));
    }
    char *text = nullptr;
    DWORD size = 0;
    const int code = KesComposeReport(kind, message.c_str(), &text, &size);
    if (code != VX_REPORT_SENT) {
        FailReport(code, {});
    }
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    const std::string_view body(text, size);
    if (arguments.Has("raw")) {
        Print(body);
    } else {
        PrintStored(body);
    }
    return EX_OK;
}

}  // namespace veloxctl::report
