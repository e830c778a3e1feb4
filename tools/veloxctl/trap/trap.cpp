// "veloxctl trap": the destinations of SNMP traps.
#include <registry/keys.h>
#include <velox/base_setting.h>

#include <algorithm>

#include "failure.h"
#include "groups.h"
#include "prompt.h"
#include "registry.h"
#include "settings/fields.h"
#include "terminal.h"
#include "values.h"

namespace veloxctl {

namespace {

using settings::Json;

// Texts are as stored.
using Traps = std::vector<std::string>;

bool IsSame(const std::string &left, const std::string &right) {
    return Folded(left) == Folded(right);
}

Traps::const_iterator Find(const Traps &traps, const std::string &trap) {
    return std::ranges::find_if(traps,
                                [&](const std::string &other) { return IsSame(other, trap); });
}

Traps ReadTraps() {
    if (!KeyExists(AM_KEY_TRAPS)) {
        return {};
    }
    DWORD count = 0;
    char **list = nullptr;
    if (TrapDestRead(&count, &list) == FALSE) {
        Fail(EX_DATAERR,
             "the trap destinations cannot be read, one of them may have more than 255 bytes; see "
             "the trace with --verbose");
    }
    Traps traps(list, list + count);
    FreeTrapDest(list);
    return traps;
}

Traps TrapsAsked(const Arguments &arguments) {
    Traps traps;
    for (const std::string &word : arguments.All("DESTINATION")) {
        const std::string trap = TerminalToStored(word, "the destination");
        if (trap.empty() || trap.size() >= TRAP_DEST_CAPACITY) {
            Fail(EX_DATAERR, "the destination \"" + word + "\": 1 to " +
                                 std::to_string(TRAP_DEST_CAPACITY - 1) + " bytes are wanted");
        }
        traps.push_back(trap);
    }
    return traps;
}

Json AsJson(const Traps &traps) {
    Json json = Json::array();
    for (const std::string &trap : traps) {
        json.push_back(settings::FromStored(trap.c_str()));
    }
    return json;
}

// The entries of one list that the other lacks.
Traps Missing(const Traps &from, const Traps &other) {
    Traps missing;
    std::ranges::copy_if(from, std::back_inserter(missing),
                         [&](const std::string &trap) { return Find(other, trap) == other.end(); });
    return missing;
}

void Report(const Arguments &arguments, const Traps &before, const Traps &after) {
    const Traps added = Missing(after, before);
    const Traps removed = Missing(before, after);
    if (arguments.Has("json")) {
        PrintJson(
            {{"added", AsJson(added)}, {"removed", AsJson(removed)}, {"traps", AsJson(after)}});
        return;
    }
    for (const std::string &trap : removed) {
        Print(StoredToTerminal(trap) + ": removed\n");
    }
    for (const std::string &trap : added) {
        Print(StoredToTerminal(trap) + ": added\n");
    }
    if (added.empty() && removed.empty()) {
        Print(before == after ? "nothing changed\n" : "only the order or the spelling changed\n");
    }
}

int Store(const Arguments &arguments, const Traps &before, Traps wanted) {
    if (before == wanted) {
        Report(arguments, before, wanted);
        return EX_OK;
    }
    std::vector<char *> pointers;
    for (std::string &trap : wanted) {
        pointers.push_back(trap.data());
    }
    (void)SetTrapDest(static_cast<LONG>(pointers.size()), pointers.data());
    settings::RequireStored(AsJson(wanted), AsJson(ReadTraps()), "the trap destinations");
    Report(arguments, before, wanted);
    return EX_OK;
}

int RunList(const Arguments &arguments) {
    const Traps traps = ReadTraps();
    if (arguments.Has("json")) {
        PrintJson(AsJson(traps));
        return EX_OK;
    }
    for (const std::string &trap : traps) {
        Print(StoredToTerminal(trap) + "\n");
    }
    return EX_OK;
}

int RunAdd(const Arguments &arguments) {
    const Traps before = ReadTraps();
    Traps wanted = before;
    for (const std::string &trap : TrapsAsked(arguments)) {
        if (Find(wanted, trap) == wanted.end()) {
            wanted.push_back(trap);
        }
    }
    return Store(arguments, before, std::move(wanted));
}

int RunRemove(const Arguments &arguments) {
    const Traps before = ReadTraps();
    Traps wanted = before;
    for (const std::string &trap : TrapsAsked(arguments)) {
        if (Find(before, trap) == before.end()) {
            Fail(EX_NOINPUT, StoredToTerminal(trap) + ": there is no such trap destination");
        }
        std::erase_if(wanted, [&](const std::string &other) { return IsSame(other, trap); });
    }
    return Store(arguments, before, std::move(wanted));
}

int RunReplace(const Arguments &arguments) {
    const Traps before = ReadTraps();
    Traps wanted = TrapsAsked(arguments);
    const Traps lost = Missing(before, wanted);
    if (!lost.empty() && !arguments.Has("force")) {
        Confirm("trap destinations that are lost: " + std::to_string(lost.size()),
                "-f replaces them");
    }
    return Store(arguments, before, std::move(wanted));
}

constexpr Operand kDestinations[] = {
    {.name = "DESTINATION",
     .summary = "a host's name or address; upper and lower case are the same",
     .repeatable = true}};
constexpr Operand kNewDestinations[] = {{.name = "DESTINATION",
                                         .summary = "the new destinations; none empties the list",
                                         .required = false,
                                         .repeatable = true}};
constexpr Option kOptions[] = {kJsonOption};
constexpr Option kReplaceOptions[] = {
    {.short_name = 'f',
     .long_name = "force",
     .summary = "drops destinations that are not named without asking"},
    kJsonOption,
};

constexpr Command kCommands[] = {
    {.name = "list",
     .summary = "shows the destinations of SNMP traps",
     .description = "Shows the destinations in the order in which traps go to them.",
     .options = kOptions,
     .run = RunList},
    {.name = "add",
     .summary = "adds destinations behind the others",
     .description = "Adds destinations behind the others. One that is there already stays where it "
                    "is.",
     .operands = kDestinations,
     .options = kOptions,
     .run = RunAdd},
    {.name = "remove",
     .summary = "removes destinations",
     .description = "Removes destinations. When one of them is not there, nothing is changed.",
     .operands = kDestinations,
     .options = kOptions,
     .run = RunRemove},
    {.name = "replace",
     .summary = "replaces the whole list",
     .description = "Replaces the whole list. Before a destination is lost the command asks; where "
                    "it cannot ask it fails.",
     .operands = kNewDestinations,
     .options = kReplaceOptions,
     .run = RunReplace},
};

}  // namespace

extern const Group kTrapGroup = {.name = "trap",
                                 .summary = "shows and changes the destinations of SNMP traps",
                                 .commands = kCommands};

}  // namespace veloxctl
