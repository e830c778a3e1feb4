// Showing and changing the events of either table.
#include "event/events.h"

#include <registry/keys.h>

#include <algorithm>
#include <memory>

#include "failure.h"
#include "registry.h"
#include "terminal.h"

namespace veloxctl::event {

namespace {

using settings::FromStored;
using settings::Json;

// What the library gives for an action that is not stored; it does not take it back.
constexpr DWORD kNoAction = 3;
constexpr DWORD kHighestAction = 2;
constexpr DWORD kHighestLevel = 8;

std::string SourceAsked(const Arguments &arguments) {
    return settings::NameOf(arguments.Get("SOURCE"), "the source");
}

std::string Utf8Name(const std::string &source, const std::string &event) {
    std::string name = FromStored(source.c_str());
    return name.append(" ").append(FromStored(event.c_str()).get<std::string>());
}

void RequireSource(const EventTable &table, const std::string &source) {
    if (!KeyExists(Below(table.root, source))) {
        Fail(EX_NOINPUT, StoredToTerminal(source) + ": there is no such source");
    }
}

Event Read(const EventTable &table, const std::string &source, const std::string &id) {
    RequireSource(table, source);
    if (!KeyExists(Below(Below(table.root, source), id))) {
        Fail(EX_NOINPUT, StoredToTerminal(source + " " + id) + ": there is no such event");
    }
    Event event;
    event.source = source;
    event.id = id;
    if (!table.read(&event)) {
        Fail(EX_NOINPUT, StoredToTerminal(source + " " + id) +
                             ": its settings are incomplete; see the trace with --verbose");
    }
    return event;
}

bool TakeFields(const Arguments &arguments, Event *event) {
    bool given = settings::TakeNumber(arguments, "action", 0, kHighestAction, &event->action);
    given |= settings::TakeNumber(arguments, "obstacle-kind", 1, 6, &event->obstacle_kind);
    given |= settings::TakeNumber(arguments, "alive-level", 0, kHighestLevel, &event->alive_level);
    if (event->watch) {
        given |= settings::TakeNumber(arguments, "report-count", 0, UINT32_MAX,
                                      &event->watch->report_count);
        given |=
            settings::TakeNumber(arguments, "watch-time", 0, UINT32_MAX, &event->watch->watch_time);
    }
    char recovery[EVENT_RECOVERY_CAPACITY];
    if (settings::TakeText(arguments, "recovery", recovery)) {
        event->recovery = recovery;
        given = true;
    }
    return given;
}

// Any destination that exists.
std::string SomeDestination() {
    const KeyContent list = ReadExistingKey(AM_KEY_ID_LIST);
    if (list.sub_keys.empty()) {
        Fail(EX_CONFIG, "there is no destination; add one with \"veloxctl dest add\"");
    }
    return list.sub_keys.front();
}

// The events that the operands of "link" and "unlink" mean.
std::vector<std::string> EventsAsked(const EventTable &table, const Arguments &arguments,
                                     const std::string &source) {
    RequireSource(table, source);
    const std::string path = Below(table.root, source);
    if (!arguments.Has("EVENT")) {
        return ReadExistingKey(path).sub_keys;
    }
    const std::string event = settings::NameOf(arguments.Get("EVENT"), "the event");
    if (!KeyExists(Below(path, event))) {
        Fail(EX_NOINPUT, StoredToTerminal(source + " " + event) + ": there is no such event");
    }
    return {event};
}

// All links are made or taken away in one step. Links that are as they should be are left alone.
int ChangeLinks(const EventTable &table, const Arguments &arguments, bool link) {
    const std::string source = SourceAsked(arguments);
    const std::string destination =
        settings::NameOf(arguments.Get("DESTINATION"), "the destination");
    if (link && !KeyExists(Below(AM_KEY_ID_LIST, destination))) {
        Fail(EX_NOINPUT, StoredToTerminal(destination) + ": there is no such destination");
    }
    std::vector<regfile::Change> changes;
    std::vector<std::string> names;
    for (const std::string &event : EventsAsked(table, arguments, source)) {
        const std::string path =
            Below(Below(Below(Below(table.root, source), event), AM_KEY_EVENT_LINKS), destination);
        if (KeyExists(path) == link) {
            continue;
        }
        changes.push_back(settings::KeyChange(
            link ? regfile::Change::Kind::kCreateKey : regfile::Change::Kind::kDeleteTree, path));
        names.push_back(Utf8Name(source, event));
    }
    if (!changes.empty()) {
        ApplyChanges(changes, [&](std::size_t index) { return ShownKey(*changes[index].path); });
    }
    settings::ReportDone(arguments, link ? "linked" : "unlinked", names);
    return EX_OK;
}

}  // namespace

Json AsJson(const Event &event) {
    Json links = Json::array();
    for (const std::string &link : event.links) {
        links.push_back(FromStored(link.c_str()));
    }
    Json json = {{"source", FromStored(event.source.c_str())},
                 {"event", FromStored(event.id.c_str())},
                 {"action", event.action == kNoAction ? Json() : Json(event.action)},
                 {"obstacle_kind", event.obstacle_kind},
                 {"alive_level", event.alive_level},
                 {"trap_name", FromStored(event.trap_name.c_str())},
                 {"recovery", FromStored(event.recovery.c_str())},
                 {"destinations", std::move(links)}};
    if (event.watch) {
        json["keyword"] = FromStored(event.watch->keyword.c_str());
        json["report_count"] = event.watch->report_count;
        json["watch_time"] = event.watch->watch_time;
        json["system_defined"] = event.watch->system_defined;
    }
    return json;
}

Event ReadAsked(const EventTable &table, const Arguments &arguments) {
    return Read(table, SourceAsked(arguments),
                settings::NameOf(arguments.Get("EVENT"), "the event"));
}

int List(const EventTable &table, const Arguments &arguments) {
    const std::string source = arguments.Has("SOURCE") ? SourceAsked(arguments) : "";
    (void)ReadExistingKey(table.root);
    if (!source.empty()) {
        RequireSource(table, source);
    }
    std::vector<Event> events;
    if (!table.read_all(&events)) {
        Fail(EX_OSERR, "the events cannot be read; see the trace with --verbose");
    }
    Json list = Json::array();
    for (const Event &event : events) {
        if (source.empty() || Folded(source) == Folded(event.source)) {
            list.push_back(AsJson(event));
        }
    }
    constexpr const char *kFields[] = {"source",      "event",     "action",      "obstacle_kind",
                                       "alive_level", "trap_name", "destinations"};
    settings::ShowTable(arguments, list, kFields);
    return EX_OK;
}

int Show(const EventTable &table, const Arguments &arguments) {
    settings::ShowRecord(arguments, AsJson(ReadAsked(table, arguments)));
    return EX_OK;
}

int Set(const EventTable &table, const Arguments &arguments) {
    Event event = ReadAsked(table, arguments);
    const Json before = AsJson(event);
    if (!TakeFields(arguments, &event)) {
        Fail(EX_USAGE,
             "nothing is to be set; see \"veloxctl " + arguments.CommandName() + " --help\"");
    }
    const std::string name = Utf8Name(event.source, event.id);
    if (event.action > kHighestAction) {
        Fail(EX_USAGE, Utf8ToTerminal(name) + ": its action is missing; give --action");
    }
    if (!table.write(event, SomeDestination(), arguments.Has("recovery"))) {
        Fail(EX_DATAERR, Utf8ToTerminal(name) + ": refused; see the trace with --verbose");
    }
    const Json after = AsJson(Read(table, event.source, event.id));
    settings::RequireStored(AsJson(event), after, name);
    settings::ReportChanges(arguments, name, before, after);
    return EX_OK;
}

int Link(const EventTable &table, const Arguments &arguments) {
    return ChangeLinks(table, arguments, true);
}

int Unlink(const EventTable &table, const Arguments &arguments) {
    return ChangeLinks(table, arguments, false);
}

}  // namespace veloxctl::event
