// The rows of "veloxctl queue".
#include "groups.h"
#include "queue/commands.h"

namespace veloxctl {

namespace {

constexpr Option kListOptions[] = {kJsonOption};

constexpr Operand kOneId[] = {{.name = "ID", .summary = "the alert, as \"queue list\" shows it"}};
constexpr Operand kSomeIds[] = {{.name = "ID",
                                 .summary = "only these alerts, whenever their next try is",
                                 .required = false,
                                 .repeatable = true}};
constexpr Operand kIds[] = {
    {.name = "ID", .summary = "the alerts that are dropped", .repeatable = true}};

constexpr Option kDeliverOptions[] = {
    {.long_name = "now", .summary = "also alerts whose next try is not due yet"}};
constexpr Option kDropOptions[] = {
    {.short_name = 'f', .long_name = "force", .summary = "drops without asking"}};

constexpr Example kDeliverExamples[] = {
    {.command = "veloxctl -v queue deliver --now",
     .effect = "Tries every waiting alert and shows every step."},
};

constexpr Command kCommands[] = {
    {.name = "list",
     .summary = "shows the waiting alerts",
     .description = "Shows every alert that waits in the queue, the oldest first: its id, source "
                    "and text, and after a try the number of tries, when the last one was, when "
                    "the next one is due, and why the last one failed. Times are UTC.",
     .options = kListOptions,
     .run = queue::RunList},
    {.name = "show",
     .summary = "shows one alert",
     .description = "Shows an alert with everything that would be sent of it. JSON is the content "
                    "of its file.",
     .operands = kOneId,
     .options = kListOptions,
     .run = queue::RunShow},
    {.name = "deliver",
     .summary = "sends the alerts that are due",
     .description =
         "Sends each waiting alert whose next try is due by the selected report method, the "
         "oldest first. An alert leaves the queue when the mail server or the manager has "
         "accepted it. One that could not be sent stays, with the reason, and is due again after "
         "the retry interval of its destination, then after twice that time, and so on up to "
         "eight hours.\n\n"
         "Only one process delivers at a time. The exit status is 75 when alerts still wait, or "
         "another process delivers.",
     .operands = kSomeIds,
     .options = kDeliverOptions,
     .examples = kDeliverExamples,
     .run = queue::RunDeliver},
    {.name = "drop",
     .summary = "takes alerts out of the queue unsent",
     .description = "Takes alerts out of the queue without sending them, damaged ones too. The "
                    "command asks before; where it cannot ask it fails.",
     .operands = kIds,
     .options = kDropOptions,
     .run = queue::RunDrop},
};

}  // namespace

extern const Group kQueueGroup = {
    .name = "queue", .summary = "shows and delivers waiting alerts", .commands = kCommands};

}  // namespace veloxctl
