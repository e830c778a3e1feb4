// "veloxctl event".
#include "event/events.h"
#include "groups.h"

namespace veloxctl {

namespace {

template <auto Run>
int OfAgent(const Arguments &arguments) {
    return Run(event::kAgentTable, arguments);
}

constexpr Option kSetOptions[] = {event::kAction, event::kObstacleKind, event::kAliveLevel,
                                  event::kRecovery, kJsonOption};
constexpr Example kLinkExamples[] = {
    {.command = "veloxctl event link VELOXREPORT KESAGENT 1001",
     .effect = "Reports one event to the maintenance centre."},
    {.command = "veloxctl event link VELOXREPORT KESAGENT",
     .effect = "Reports every event of the source."},
};

constexpr Command kCommands[] = {
    {.name = "list",
     .summary = "shows the agent's events",
     .description = "Shows the events that the server agent reports, and what is done about them. "
                    "On a Japanese system trap names and recovery texts are translated.",
     .operands = event::kListOperands,
     .options = event::kJsonAlone,
     .run = OfAgent<event::List>},
    {.name = "show",
     .summary = "shows one event",
     .description = "Shows the settings of one event, and the destinations that it is linked to "
                    "(50 of them at most).",
     .operands = event::kEventOperands,
     .options = event::kJsonAlone,
     .run = OfAgent<event::Show>},
    {.name = "set",
     .summary = "sets what is done about an event",
     .description = "Sets what is given; everything else stays as it is. The recovery text is "
                    "written only when it is given, and no link is changed.",
     .operands = event::kEventOperands,
     .options = kSetOptions,
     .run = OfAgent<event::Set>},
    {.name = "link",
     .summary = "reports events to a destination",
     .description = "Links an event, or every event of a source, to a destination, in one step.",
     .operands = event::kLinkOperands,
     .options = event::kJsonAlone,
     .examples = kLinkExamples,
     .run = OfAgent<event::Link>},
    {.name = "unlink",
     .summary = "reports events to a destination no longer",
     .description = "Takes away the link of an event, or of every event of a source, to a "
                    "destination, in one step. The destination itself may be gone already.",
     .operands = event::kLinkOperands,
     .options = event::kJsonAlone,
     .run = OfAgent<event::Unlink>},
};

}  // namespace

extern const Group kEventGroup = {.name = "event",
                                  .summary = "shows and changes what is done about agent events",
                                  .commands = kCommands};

}  // namespace veloxctl
