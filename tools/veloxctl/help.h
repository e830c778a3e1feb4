// The help in the terminal, made from the command table.
#ifndef VELOXCTL_HELP_H
#define VELOXCTL_HELP_H

#include <string>
#include <string_view>
#include <vector>

#include "table.h"

namespace veloxctl {

// "veloxctl reg add [OPTION]... KEY"
std::string UsageOf(const Group &group, const Command &command);

// "-v, --value NAME"; short_name '\0': without one.
std::string FormOf(const Option &option, char short_name);

// The options of a command that are shown, with the names under which it takes them.
struct ShownOption {
    std::string form;
    std::string summary;
};
std::vector<ShownOption> ShownOptions(const Command &command);

// The paragraphs of a description.
std::vector<std::string_view> Paragraphs(std::string_view description);

std::string HelpOfCommand(const Group &group, const Command &command);
std::string HelpOfGroup(const Group &group);
std::string HelpOfProgram(Groups groups);

}  // namespace veloxctl

#endif  // VELOXCTL_HELP_H
