// The command table: what the command offers, as data. Parsing, help, the man page and the shell
// completion are made from it, so that none of them can differ from another.
//
// Conventions
//  1. Texts are ASCII. A summary is one line that begins in lower case and has no full stop; a
//     description is whole sentences, its paragraphs separated by an empty line.
//  2. Everything is constant data with static storage.
#ifndef VELOXCTL_TABLE_H
#define VELOXCTL_TABLE_H

#include <span>

namespace veloxctl {

class Arguments;

// What the shell offers for an argument.
enum class Completes { kNothing, kFiles };

struct Option {
    char short_name = '\0';          // without dash; '\0': the long name alone
    const char *long_name = "";      // without dashes
    const char *argument = nullptr;  // its name in the help, in capitals; null: a flag
    const char *summary = "";
    const char *choices = nullptr;  // the only arguments that are taken, separated by blanks
    Completes completes = Completes::kNothing;
    bool repeatable = false;
    bool hidden = false;  // not in the help, the man page and the completion
};

// An argument that stands by its place.
struct Operand {
    const char *name = "";  // in capitals
    const char *summary = "";
    bool required = true;
    bool repeatable = false;  // the last operand only
    Completes completes = Completes::kNothing;
};

struct Example {
    const char *command = "";
    const char *effect = "";
};

struct Command {
    const char *name = "";  // empty: the group itself is the command
    const char *summary = "";
    const char *description = "";
    std::span<const Operand> operands = {};
    std::span<const Option> options = {};
    std::span<const Example> examples = {};
    // Carries the command out and gives the exit status; a Failure (failure.h) may leave it.
    int (*run)(const Arguments &arguments) = nullptr;
};

struct Group {
    const char *name = "";
    const char *summary = "";
    std::span<const Command> commands = {};
};

// Options that every command takes. The short name of a command's own option has precedence.
inline constexpr Option kCommonOptions[] = {
    {.short_name = 'h', .long_name = "help", .summary = "shows the command's help"},
    {.short_name = 'v',
     .long_name = "verbose",
     .summary = "shows the trace records on standard error, with the time elapsed in seconds"},
};

// The option of commands whose result programs read.
inline constexpr Option kJsonOption = {.long_name = "json",
                                       .summary = "writes the result as JSON, in UTF-8"};

// True when the group is a command itself, without commands below it.
constexpr bool IsCommand(const Group &group) {
    return group.commands.size() == 1 && group.commands[0].name[0] == '\0';
}

// The short name under which a command takes a common option; '\0' when its own options have it.
char ShortNameOfCommon(const Option &common, const Command &command);

using Groups = std::span<const Group *const>;

const Group *FindGroup(Groups groups, const char *name);
const Command *FindCommand(const Group &group, const char *name);

}  // namespace veloxctl

#endif  // VELOXCTL_TABLE_H
