#include "table.h"

#include <algorithm>
#include <cstring>

namespace veloxctl {

char ShortNameOfCommon(const Option &common, const Command &command) {
    const bool taken = std::ranges::any_of(
        command.options, [&](const Option &own) { return own.short_name == common.short_name; });
    return taken ? '\0' : common.short_name;
}

const Group *FindGroup(Groups groups, const char *name) {
    const auto found = std::ranges::find_if(
        groups, [name](const Group *group) { return std::strcmp(group->name, name) == 0; });
    return found == groups.end() ? nullptr : *found;
}

const Command *FindCommand(const Group &group, const char *name) {
    const auto found = std::ranges::find_if(group.commands, [name](const Command &command) {
        return std::strcmp(command.name, name) == 0;
    });
    return found == group.commands.end() ? nullptr : &*found;
}

}  // namespace veloxctl
