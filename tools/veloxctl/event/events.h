// The two event tables, the agent's and the system log's, as the groups "event" and "syslog" show
// and change them: one implementation for both, which an EventTable drives.
#ifndef VELOXCTL_EVENT_EVENTS_H
#define VELOXCTL_EVENT_EVENTS_H

#include <records/event_data.h>

#include <optional>
#include <string>
#include <vector>

#include "arguments.h"
#include "settings/fields.h"
#include "table.h"

namespace veloxctl::event {

// What only the system log's items have.
struct Watch {
    std::string keyword;
    DWORD report_count = 0;
    DWORD watch_time = 0;
    bool system_defined = false;
};

// Texts are as stored.
struct Event {
    std::string source;
    std::string id;
    std::vector<std::string> links;
    std::string trap_name;
    std::string recovery;
    DWORD action = 0;
    DWORD obstacle_kind = 0;
    DWORD alive_level = 0;
    std::optional<Watch> watch;
};

struct EventTable {
    const char *root;                        // the key of the sources
    bool (*read)(Event *event);              // of event->source and event->id
    bool (*read_all)(std::vector<Event> *);  // an unreadable event has its defaults
    // Writes the numbers of the event, and the recovery text when told; changes no link. The
    // library asks for a destination that exists all the same.
    bool (*write)(const Event &event, const std::string &destination, bool with_recovery);
};

extern const EventTable kAgentTable;
extern const EventTable kSyslogTable;

settings::Json AsJson(const Event &event);

// The event that the operands SOURCE and EVENT name; fails (EX_NOINPUT) when it cannot be read.
Event ReadAsked(const EventTable &table, const Arguments &arguments);

int List(const EventTable &table, const Arguments &arguments);
int Show(const EventTable &table, const Arguments &arguments);
int Set(const EventTable &table, const Arguments &arguments);
int Link(const EventTable &table, const Arguments &arguments);
int Unlink(const EventTable &table, const Arguments &arguments);

// ---- The rows that both groups share ------------------------------------------------------------

inline constexpr Operand kSource = {.name = "SOURCE", .summary = "the source"};
inline constexpr Operand kEvent = {.name = "EVENT", .summary = "the event's identifier"};
inline constexpr Operand kListOperands[] = {
    {.name = "SOURCE", .summary = "only the events of this source", .required = false}};
inline constexpr Operand kEventOperands[] = {kSource, kEvent};
inline constexpr Operand kLinkOperands[] = {
    {.name = "DESTINATION", .summary = "the destination's id"},
    kSource,
    {.name = "EVENT",
     .summary = "the event's identifier; without it every event of the source is meant",
     .required = false}};

inline constexpr Option kJsonAlone[] = {kJsonOption};
inline constexpr Option kAction = {.short_name = 'a',
                                   .long_name = "action",
                                   .argument = "NUMBER",
                                   .summary = "the action, 0 to 2"};
inline constexpr Option kObstacleKind = {.short_name = 'k',
                                         .long_name = "obstacle-kind",
                                         .argument = "NUMBER",
                                         .summary = "the kind of the fault",
                                         .choices = "1 2 3 4 6"};
inline constexpr Option kAliveLevel = {.short_name = 'l',
                                       .long_name = "alive-level",
                                       .argument = "NUMBER",
                                       .summary = "how severe the fault is, 0 to 8"};
inline constexpr Option kRecovery = {
    .short_name = 'r', .long_name = "recovery", .argument = "TEXT", .summary = "the recovery text"};

}  // namespace veloxctl::event

#endif  // VELOXCTL_EVENT_EVENTS_H
