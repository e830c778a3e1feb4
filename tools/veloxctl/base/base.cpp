// "veloxctl base": the switch of each report kind, and the delayed shutdown.
#include <registry/keys.h>
#include <velox/base_setting.h>

#include <algorithm>
#include <memory>

#include "failure.h"
#include "groups.h"
#include "registry.h"
#include "settings/fields.h"
#include "terminal.h"

namespace veloxctl {

namespace {

using settings::Json;

constexpr char kShutdown[] = "SHUTDOWN DELAY";

// Every kind as the library lists them, the delayed shutdown last.
struct BaseList {
    BaseList() {
        (void)ReadExistingKey(AM_KEY_REPORT);  // tells what is wrong with the registry
        DWORD kinds = 0;
        if (GetAllBaseSetting(&records, &kinds) != 0) {
            Fail(EX_OSERR, "the base settings cannot be read; see the trace with --verbose");
        }
        count = kinds + 1;
    }
    ~BaseList() { FreeBaseSettings(records); }
    BaseList(const BaseList &) = delete;
    BaseList &operator=(const BaseList &) = delete;

    BASE_DATA *Find(const std::string &kind) const {
        BASE_DATA **const end = records + count;
        BASE_DATA **const found = std::find_if(records, end, [&](const BASE_DATA *record) {
            return Folded(record->szKindName) == Folded(kind);
        });
        if (found == end) {
            Fail(EX_NOINPUT, StoredToTerminal(kind) + ": there is no such report kind");
        }
        return *found;
    }

    BASE_DATA **records = nullptr;
    DWORD count = 0;
};

bool IsShutdown(const BASE_DATA &record) {
    return Folded(record.szKindName) == Folded(kShutdown);
}

Json AsJson(const BASE_DATA &record) {
    Json json = {{"kind", settings::FromStored(record.szKindName)},
                 {"enabled", record.dwEnabled != 0}};
    if (IsShutdown(record)) {
        json["delay"] = record.dwShutdownTime;
    }
    if (record.lplpTrapDest != nullptr) {
        json["traps"] = Json::array();
        for (DWORD i = 0; i < record.nTrapDestCount; ++i) {
            json["traps"].push_back(settings::FromStored(record.lplpTrapDest[i]));
        }
    }
    return json;
}

std::string KindAsked(const Arguments &arguments) {
    return settings::NameOf(arguments.Get("KIND"), "the report kind");
}

int RunShow(const Arguments &arguments) {
    const BaseList list;
    if (arguments.Has("KIND")) {
        settings::ShowRecord(arguments, AsJson(*list.Find(KindAsked(arguments))));
        return EX_OK;
    }
    Json all = Json::array();
    for (DWORD i = 0; i < list.count; ++i) {
        all.push_back(AsJson(*list.records[i]));
    }
    if (arguments.Has("json")) {
        settings::ShowTable(arguments, all, {});
        return EX_OK;
    }
    constexpr const char *kFields[] = {"kind", "enabled"};
    settings::PrintTable(all, kFields);
    return EX_OK;
}

// The text beside the switch is written with it: it stays what it is.
void KeepTrapText(const char *parent, BASE_DATA *record) {
    const auto value = ReadValue(Below(parent, record->szKindName), "TrapDestination");
    if (value) {
        const std::size_t size = std::min(value->data.size(), sizeof record->szTrapDestination);
        std::copy_n(value->data.begin(), size, record->szTrapDestination);
    }
}

int RunSet(const Arguments &arguments) {
    const std::string kind = KindAsked(arguments);
    const BaseList list;
    BASE_DATA *record = list.Find(kind);
    const Json before = AsJson(*record);
    const bool shutdown = IsShutdown(*record);
    if (arguments.Has("delay") && !shutdown) {
        Fail(EX_USAGE, std::string("--delay is an option of \"") + kShutdown + "\" only");
    }
    if (!arguments.Has("enabled") && !arguments.Has("delay")) {
        Fail(EX_USAGE, "nothing is to be set; see \"veloxctl base set --help\"");
    }
    if (arguments.Has("enabled")) {
        record->dwEnabled = arguments.Get("enabled") == "on" ? 1 : 0;
    }
    settings::TakeNumber(arguments, "delay", 0, UINT32_MAX, &record->dwShutdownTime);
    record->dwEnabled = record->dwEnabled != 0 ? 1 : 0;
    KeepTrapText(shutdown ? AM_KEY_BASESETTING "\\OTHER" : AM_KEY_REPORT, record);
    const Json wanted = AsJson(*record);
    const std::string name = wanted["kind"];
    if (SetBaseSetting(record) != 0) {
        Fail(EX_NOINPUT, Utf8ToTerminal(name) + ": its keys are incomplete");
    }
    const Json after = AsJson(*BaseList().Find(kind));
    settings::RequireStored(wanted, after, name);
    settings::ReportChanges(arguments, name, before, after);
    return EX_OK;
}

constexpr Operand kKind = {.name = "KIND", .summary = "the report kind, in any case"};
constexpr Operand kShowOperands[] = {
    {.name = kKind.name, .summary = kKind.summary, .required = false}};
constexpr Operand kSetOperands[] = {kKind};
constexpr Option kShowOptions[] = {kJsonOption};
constexpr Option kSetOptions[] = {
    {.short_name = 'e',
     .long_name = "enabled",
     .argument = "STATE",
     .summary = "on or off",
     .choices = "on off"},
    {.short_name = 'd',
     .long_name = "delay",
     .argument = "NUMBER",
     .summary = "the delay of \"SHUTDOWN DELAY\", stored as it is given"},
    kJsonOption,
};
constexpr Example kSetExamples[] = {
    {.command = "veloxctl base set 'MANAGER (SNMP)' --enabled on", .effect = "Turns traps on."},
};

constexpr Command kCommands[] = {
    {.name = "show",
     .summary = "shows which kinds of report are on",
     .description = "Shows the switch of every report kind, or all settings of one of them. The "
                    "kind \"SHUTDOWN DELAY\" is the delayed shutdown.",
     .operands = kShowOperands,
     .options = kShowOptions,
     .run = RunShow},
    {.name = "set",
     .summary = "turns a kind of report on or off",
     .description = "Sets the switch of one report kind, and the delay of the delayed shutdown. "
                    "What is not given stays as it is. Kinds are never made.",
     .operands = kSetOperands,
     .options = kSetOptions,
     .examples = kSetExamples,
     .run = RunSet},
};

}  // namespace

extern const Group kBaseGroup = {.name = "base",
                                 .summary = "shows and sets which kinds of report are on",
                                 .commands = kCommands};

}  // namespace veloxctl
