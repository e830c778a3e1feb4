// "veloxctl help".
#include "all_groups.h"
#include "arguments.h"
#include "failure.h"
#include "help.h"
#include "manual.h"
#include "terminal.h"

namespace veloxctl {

namespace {

const Group &GroupNamed(const std::string &name) {
    const Group *group = FindGroup(kAllGroups, name.c_str());
    if (group == nullptr) {
        Fail(EX_USAGE, "help: unknown command \"" + name + "\"; see \"veloxctl --help\"");
    }
    return *group;
}

const Command &CommandNamed(const Group &group, const std::string &name) {
    const Command *command = FindCommand(group, name.c_str());
    if (command == nullptr) {
        Fail(EX_USAGE, std::string("help: ") + group.name + " has no command \"" + name + "\"");
    }
    return *command;
}

std::string HelpAsked(const Arguments &arguments) {
    if (arguments.Has("man")) {
        return ManualPage(kAllGroups);
    }
    if (arguments.Has("bash-completion")) {
        return BashCompletion(kAllGroups);
    }
    if (!arguments.Has("GROUP")) {
        return HelpOfProgram(kAllGroups);
    }
    const Group &group = GroupNamed(arguments.Get("GROUP"));
    return arguments.Has("COMMAND")
               ? HelpOfCommand(group, CommandNamed(group, arguments.Get("COMMAND")))
               : HelpOfGroup(group);
}

int RunHelp(const Arguments &arguments) {
    Print(HelpAsked(arguments));
    return EX_OK;
}

constexpr Operand kOperands[] = {
    {.name = "GROUP", .summary = "a command of veloxctl, for example reg", .required = false},
    {.name = "COMMAND", .summary = "a command below it, for example query", .required = false},
};

constexpr Option kOptions[] = {
    {.long_name = "man", .summary = "writes the man page", .hidden = true},
    {.long_name = "bash-completion", .summary = "writes the completion for bash", .hidden = true},
};

constexpr Example kExamples[] = {
    {.command = "veloxctl help reg add", .effect = "Tells about adding a value to the registry."},
};

constexpr Command kCommands[] = {
    {.summary = "tells about a command",
     .description = "Tells about the program, about a group of commands or about one command.",
     .operands = kOperands,
     .options = kOptions,
     .examples = kExamples,
     .run = RunHelp},
};

}  // namespace

extern const Group kHelpGroup = {
    .name = "help", .summary = "tells about a command", .commands = kCommands};

}  // namespace veloxctl
