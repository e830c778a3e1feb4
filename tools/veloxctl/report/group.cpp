// The rows of "veloxctl report".
#include "groups.h"
#include "report/commands.h"

namespace veloxctl {

namespace {

constexpr Option kRawOption = {
    .long_name = "raw", .summary = "writes the bytes as they are (EUC-JP, lines ended by CR LF)"};

constexpr Option kPreviewOptions[] = {
    {.short_name = 'k',
     .long_name = "kind",
     .argument = "KIND",
     .summary = "0 opening report, 1 test report (without this option), 2 alert",
     .choices = "0 1 2"},
    {.long_name = "message",
     .argument = "FILE",
     .summary = "the opening message, for kind 0; - is standard input",
     .completes = Completes::kFiles},
    kRawOption,
};

constexpr Option kTestOptions[] = {
    {.short_name = 'k',
     .long_name = "kind",
     .argument = "KIND",
     .summary = "1 test report (without this option), or 2 alert, which records nothing",
     .choices = "1 2"},
};
constexpr Example kTestExamples[] = {
    {.command = "veloxctl -v report test --kind 2",
     .effect = "Sends a report and shows every step with what the servers say."},
};

constexpr Option kOpeningOptions[] = {
    {.long_name = "message",
     .argument = "FILE",
     .summary = "the opening message; - is standard input",
     .completes = Completes::kFiles},
};

constexpr Operand kSecurityOpenOperands[] = {
    {.name = "PRODUCT", .summary = "the product's name, which takes the device code's place"},
};

constexpr Operand kDecodeOperands[] = {
    {.name = "FILE",
     .summary = "a mail, or a mailbox in mbox form; without it standard input",
     .required = false,
     .completes = Completes::kFiles},
};
constexpr Option kDecodeOptions[] = {kRawOption};

constexpr Command kCommands[] = {
    {.name = "preview",
     .summary = "shows a report's text",
     .description = "Shows the text that a report would carry now. Nothing is sent.",
     .options = kPreviewOptions,
     .run = report::RunPreview},
    {.name = "test",
     .summary = "sends a test report",
     .description =
         "Sends a report to the maintenance centre, as the settings and the destination list say, "
         "and tells first what a success records. A failure is told in words, with its likely "
         "cause; with -v every step is shown with the time elapsed and the servers' answers.",
     .options = kTestOptions,
     .examples = kTestExamples,
     .run = report::RunTest},
    {.name = "opening",
     .summary = "sends the opening report",
     .description = "Sends the opening report with an opening message, as \"report test\" does.",
     .options = kOpeningOptions,
     .run = report::RunOpening},
    {.name = "security-open",
     .summary = "sends the opening report of a product",
     .description = "Sends the opening report of a product that was put into service, by the "
                    "selected report method: by internet mail, or to the management server. The "
                    "dial-up method cannot send one. Nothing is recorded.",
     .operands = kSecurityOpenOperands,
     .run = report::RunSecurityOpen},
    {.name = "decode",
     .summary = "shows the report inside a received mail",
     .description = "Finds the encoded report in a mail as it was received, or in every mail of a "
                    "mailbox, and shows its text.",
     .operands = kDecodeOperands,
     .options = kDecodeOptions,
     .run = report::RunDecode},
    {.name = "queue-test",
     .summary = "queues a test alert",
     .description = "Puts a test alert for the Velox report destination into the alert queue, so "
                    "that it goes out by whatever method is selected. Its delivery is not awaited.",
     .run = report::RunQueueTest},
};

}  // namespace

extern const Group kReportGroup = {
    .name = "report", .summary = "previews, sends and decodes reports", .commands = kCommands};

}  // namespace veloxctl
