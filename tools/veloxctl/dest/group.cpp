// The rows of "veloxctl dest".
#include "dest/commands.h"
#include "groups.h"

namespace veloxctl {

namespace {

constexpr Operand kId = {.name = "ID", .summary = "the destination's id"};
constexpr Operand kIdAlone[] = {kId};
constexpr Operand kAddOperands[] = {
    kId, {.name = "KIND", .summary = "the kind: command, in-band, out-of-band or snmp"}};

constexpr Option kCommandLine = {.short_name = 'c',
                                 .long_name = "command-line",
                                 .argument = "TEXT",
                                 .summary = "command: the command that is run"};
constexpr Option kAddress = {.short_name = 'a',
                             .long_name = "address",
                             .argument = "HOST",
                             .summary = "in-band and out-of-band: the manager's name or address"};
constexpr Option kPort = {.short_name = 'p',
                          .long_name = "port",
                          .argument = "NUMBER",
                          .summary = "in-band and out-of-band: the manager's port"};
constexpr Option kTelephone = {.short_name = 't',
                               .long_name = "telephone",
                               .argument = "NUMBER",
                               .summary = "out-of-band: the telephone number"};
constexpr Option kUser = {.short_name = 'u',
                          .long_name = "user",
                          .argument = "NAME",
                          .summary = "out-of-band: the dial-up user"};
constexpr Option kPassword = {.long_name = "password",
                              .summary = "out-of-band: asks for the dial-up password"};
constexpr Option kPasswordFile = {
    .long_name = "password-file",
    .argument = "FILE",
    .summary = "out-of-band: takes the password from the file's first line; - is standard input",
    .completes = Completes::kFiles};
constexpr Option kSchedule = {.long_name = "schedule",
                              .argument = "BITS",
                              .summary =
                                  "the schedule word, decimal or 0x...; all 24 bits (0xffffff) "
                                  "if none is given at first"};
constexpr Option kRetryCount = {.long_name = "retry-count",
                                .argument = "NUMBER",
                                .summary = "how often a report is tried again; at first 3"};
constexpr Option kRetryInterval = {.long_name = "retry-interval",
                                   .argument = "NUMBER",
                                   .summary = "the time between two attempts; at first 5"};

constexpr Option kListOptions[] = {kJsonOption};
constexpr Option kShowOptions[] = {
    {.long_name = "show-secrets", .summary = "shows the dial-up password too"}, kJsonOption};
constexpr Option kWriteOptions[] = {kCommandLine, kAddress,       kPort,         kTelephone,
                                    kUser,        kPassword,      kPasswordFile, kSchedule,
                                    kRetryCount,  kRetryInterval, kJsonOption};
constexpr Option kDeleteOptions[] = {
    {.short_name = 'f',
     .long_name = "force",
     .summary = "deletes also VELOXREPORT, the destination of the Velox report"},
    kJsonOption,
};

constexpr Example kAddExamples[] = {
    {.command = "veloxctl dest add PAGER command -c '/usr/local/bin/page %s'",
     .effect = "Adds a command that is run for a report."},
    {.command = "veloxctl dest add CENTRE out-of-band -a 10.0.0.9 -p 4711 -t 0123 -u host "
                "--password-file secret.txt",
     .effect = "Adds a manager that is reached by dialling out."},
};

constexpr Command kCommands[] = {
    {.name = "list",
     .summary = "shows the report destinations",
     .description = "Shows every destination with its method. JSON holds their settings, without "
                    "passwords.",
     .options = kListOptions,
     .run = dest::RunList},
    {.name = "show",
     .summary = "shows one destination",
     .description = "Shows the settings of one destination. The dial-up password is shown with "
                    "--show-secrets only.",
     .operands = kIdAlone,
     .options = kShowOptions,
     .run = dest::RunShow},
    {.name = "add",
     .summary = "adds a destination",
     .description =
         "Adds a destination of one of four kinds. The kind command needs --command-line; in-band "
         "needs --address and --port; out-of-band needs also --telephone, --user and a password; "
         "snmp needs nothing, its traps go to the destinations of \"veloxctl trap\".",
     .operands = kAddOperands,
     .options = kWriteOptions,
     .examples = kAddExamples,
     .run = dest::RunAdd},
    {.name = "modify",
     .summary = "changes a destination",
     .description = "Changes what is given of one destination; everything else stays as it is. The "
                    "kind cannot be changed.",
     .operands = kIdAlone,
     .options = kWriteOptions,
     .run = dest::RunModify},
    {.name = "delete",
     .summary = "deletes a destination",
     .description = "Deletes a destination with everything below it. VELOXREPORT, to which the "
                    "Velox report goes, is deleted with --force only. Links of events to the "
                    "destination stay; see \"veloxctl event unlink\".",
     .operands = kIdAlone,
     .options = kDeleteOptions,
     .run = dest::RunDelete},
};

}  // namespace

extern const Group kDestGroup = {
    .name = "dest", .summary = "shows and changes the report destinations", .commands = kCommands};

}  // namespace veloxctl
