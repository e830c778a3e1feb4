// "veloxctl syslog".
#include "event/events.h"
#include "groups.h"
#include "syslog/items.h"

namespace veloxctl {

namespace {

template <auto Run>
int OfSyslog(const Arguments &arguments) {
    return Run(event::kSyslogTable, arguments);
}

constexpr Operand kDeleteOperands[] = {
    event::kSource,
    {.name = "EVENT",
     .summary = "the item's identifier; without it the whole source is deleted",
     .required = false}};
constexpr Option kSetOptions[] = {
    event::kAction,
    event::kObstacleKind,
    event::kAliveLevel,
    event::kRecovery,
    {.short_name = 'c',
     .long_name = "report-count",
     .argument = "NUMBER",
     .summary = "how many messages make a report"},
    {.short_name = 'w',
     .long_name = "watch-time",
     .argument = "NUMBER",
     .summary = "the time within which they are counted"},
    kJsonOption,
};
constexpr Option kAddOptions[] = {
    {.short_name = 'k',
     .long_name = "keyword",
     .argument = "TEXT",
     .summary = "the text that is watched for; it must be given"},
    {.short_name = 't',
     .long_name = "trap-name",
     .argument = "TEXT",
     .summary = "the trap's name, also the report's detail"},
    event::kRecovery,
    kJsonOption,
};
constexpr Option kDeleteOptions[] = {
    {.short_name = 'f',
     .long_name = "force",
     .summary = "deletes a source with its items without asking, and what was added by half only"},
    kJsonOption,
};
constexpr Example kAddExamples[] = {
    {.command = "veloxctl syslog add kernel 1000 -k 'I/O error' -t 'Disk error'",
     .effect = "Watches the system log for a disk's errors."},
};

constexpr Command kCommands[] = {
    {.name = "list",
     .summary = "shows the watched messages",
     .description = "Shows the messages of the system log that are watched for, and what is done "
                    "about them. On a Japanese system trap names and recovery texts are "
                    "translated.",
     .operands = event::kListOperands,
     .options = event::kJsonAlone,
     .run = OfSyslog<event::List>},
    {.name = "show",
     .summary = "shows one item",
     .description = "Shows the settings of one item, and the destinations that it is linked to (50 "
                    "of them at most).",
     .operands = event::kEventOperands,
     .options = event::kJsonAlone,
     .run = OfSyslog<event::Show>},
    {.name = "set",
     .summary = "sets what is done about a message",
     .description = "Sets what is given; everything else stays as it is, the keyword always. The "
                    "recovery text is written only when it is given, and no link is changed.",
     .operands = event::kEventOperands,
     .options = kSetOptions,
     .run = OfSyslog<event::Set>},
    {.name = "link",
     .summary = "reports messages to a destination",
     .description = "Links an item, or every item of a source, to a destination, in one step.",
     .operands = event::kLinkOperands,
     .options = event::kJsonAlone,
     .run = OfSyslog<event::Link>},
    {.name = "unlink",
     .summary = "reports messages to a destination no longer",
     .description = "Takes away the link of an item, or of every item of a source, to a "
                    "destination, in one step. The destination itself may be gone already.",
     .operands = event::kLinkOperands,
     .options = event::kJsonAlone,
     .run = OfSyslog<event::Unlink>},
    {.name = "add",
     .summary = "watches for one more message",
     .description = "Adds an item with the settings that every item has at first, and its source "
                    "when there is none yet.",
     .operands = event::kEventOperands,
     .options = kAddOptions,
     .examples = kAddExamples,
     .run = syslog::RunAdd},
    {.name = "delete",
     .summary = "deletes an item or a source",
     .description =
         "Deletes an item, and its source when it was the last one, or a whole source. What the "
         "system itself defined is not deleted. What was added by half only, because the adding "
         "was interrupted, is deleted with --force.",
     .operands = kDeleteOperands,
     .options = kDeleteOptions,
     .run = syslog::RunDelete},
};

}  // namespace

extern const Group kSyslogGroup = {.name = "syslog",
                                   .summary = "shows and changes what is watched in the system log",
                                   .commands = kCommands};

}  // namespace veloxctl
