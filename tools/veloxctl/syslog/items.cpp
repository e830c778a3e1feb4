// "veloxctl syslog add" and "delete".
#include "syslog/items.h"

#include <registry/keys.h>
#include <velox/syslog_item.h>

#include <memory>

#include "event/events.h"
#include "failure.h"
#include "prompt.h"
#include "registry.h"
#include "terminal.h"

namespace veloxctl::syslog {

namespace {

std::string SourceAsked(const Arguments &arguments) {
    return settings::NameOf(arguments.Get("SOURCE"), "the source");
}

std::string EventAsked(const Arguments &arguments) {
    return settings::NameOf(arguments.Get("EVENT"), "the event");
}

std::string Utf8Name(const std::string &source, const std::string &event) {
    return settings::FromStored((event.empty() ? source : source + " " + event).c_str());
}

std::string SourcePath(const std::string &source) {
    return Below(AM_KEY_SYSLOG_SOURCES, source);
}

// What the interrupted adding of an item leaves behind has no settings or no watch settings.
bool IsHalfAdded(const std::string &item) {
    return !KeyExists(Below(item, "EVENTSETTING")) || !KeyExists(Below(item, "WATCHSETTING"));
}

void DeleteTree(const std::string &path) {
    ApplyChanges({settings::KeyChange(regfile::Change::Kind::kDeleteTree, path)},
                 [&](std::size_t) { return ShownKey(path); });
}

// With the source when it was its last item, as the library does with a whole one.
void DeleteHalfAdded(const std::string &source, const std::string &event) {
    const std::string path = SourcePath(source);
    const bool is_last = ReadExistingKey(path).sub_keys.size() == 1;
    DeleteTree(is_last ? path : Below(path, event));
}

void DeleteItem(const std::string &source, const std::string &event, bool force) {
    const std::string item = Below(SourcePath(source), event);
    const std::string name = Utf8ToTerminal(Utf8Name(source, event));
    if (!KeyExists(item)) {
        Fail(EX_NOINPUT, name + ": there is no such item");
    }
    if (!KeyExists(Below(item, "EVENTSETTING"))) {
        if (!force) {
            Fail(EX_DATAERR, name + ": the item was added by half only; -f deletes it");
        }
        DeleteHalfAdded(source, event);
        return;
    }
    if (DelSyslogItem(source.c_str(), event.c_str()) == -2) {
        Fail(EX_NOPERM, name + ": the system defined this item, it is not deleted");
    }
    settings::RequireStored(false, KeyExists(item), Utf8Name(source, event));
}

void DeleteSource(const std::string &source, bool force) {
    const std::string path = SourcePath(source);
    const std::string name = StoredToTerminal(source);
    if (!KeyExists(path)) {
        Fail(EX_NOINPUT, name + ": there is no such source");
    }
    const std::size_t items = ReadExistingKey(path).sub_keys.size();
    if (!ReadValue(path, "SYSTEMDEFINED")) {
        if (items != 0) {
            Fail(EX_NOPERM, name + ": the source was not added here, it is not deleted");
        }
        if (!force) {
            Fail(EX_DATAERR, name + ": the source was added by half only; -f deletes it");
        }
        DeleteTree(path);
        return;
    }
    if (items != 0 && !force) {
        Confirm(name + ": the source has items, " + std::to_string(items) + " in all",
                "-f deletes them too");
    }
    (void)DelSyslogItem(source.c_str(), "");
    settings::RequireStored(false, KeyExists(path), settings::FromStored(source.c_str()));
}

}  // namespace

int RunAdd(const Arguments &arguments) {
    const auto record = std::make_unique<SYSLOG_DATA>();
    const std::string source = SourceAsked(arguments);
    const std::string event = EventAsked(arguments);
    const std::string item = Below(SourcePath(source), event);
    settings::FillField(source, "the source", record->szSourceName, EVENT_NAME_CAPACITY);
    settings::FillField(event, "the event", record->szEventID, EVENT_NAME_CAPACITY);
    if (!settings::TakeText(arguments, "keyword", record->szKeyWord)) {
        Fail(EX_USAGE, "--keyword is needed");
    }
    settings::TakeText(arguments, "trap-name", record->szTrapName);
    settings::TakeText(arguments, "recovery", record->szRecoveryAction);
    const std::string name = Utf8Name(source, event);
    if (KeyExists(item)) {
        Fail(EX_CANTCREAT,
             Utf8ToTerminal(name) +
                 (IsHalfAdded(item) ? ": the item was added by half only; delete it with -f first"
                                    : ": the item exists"));
    }
    (void)AddSyslogItem(record.get());
    event::Event added;
    added.source = source;
    added.id = event;
    const bool whole =
        event::kSyslogTable.read(&added) && added.watch->keyword == record->szKeyWord;
    settings::RequireStored(true, whole, name);
    if (arguments.Has("json")) {
        settings::ShowRecord(arguments, event::AsJson(added));
    } else {
        settings::ReportDone(arguments, "added", {name});
    }
    return EX_OK;
}

int RunDelete(const Arguments &arguments) {
    const std::string source = SourceAsked(arguments);
    const std::string event = arguments.Has("EVENT") ? EventAsked(arguments) : "";
    if (event.empty()) {
        DeleteSource(source, arguments.Has("force"));
    } else {
        DeleteItem(source, event, arguments.Has("force"));
    }
    settings::ReportDone(arguments, "deleted", {Utf8Name(source, event)});
    return EX_OK;
}

}  // namespace veloxctl::syslog
