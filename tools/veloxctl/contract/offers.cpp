// "veloxctl os-names" and "veloxctl dealers": what the set-up data files offer.
#include <regfile/text.h>
#include <velox/contract.h>

#include "arguments.h"
#include "contract/lists.h"
#include "groups.h"
#include "terminal.h"
#include "values.h"

#include <nlohmann/json.hpp>

namespace veloxctl {

namespace {

int ShowNames(const Arguments &arguments, const std::vector<std::string> &names) {
    auto json = nlohmann::ordered_json::array();
    for (const std::string &name : names) {
        if (arguments.Has("json")) {
            json.push_back(regfile::NameToUtf8(name));
        } else {
            Print(StoredToTerminal(name) + "\n");
        }
    }
    if (arguments.Has("json")) {
        PrintJson(json);
    }
    return EX_OK;
}

int RunOsNames(const Arguments &arguments) {
    return ShowNames(arguments, contract::ReadList<DWORD>(
                                    VLX_OS_NAME_SIZE,
                                    "the set-up data file of the operating systems cannot be read",
                                    [](char **names, DWORD capacity, DWORD *count) {
                                        return GetVlxMachListDataBounded(names, capacity, count) !=
                                               FALSE;
                                    }));
}

int RunDealers(const Arguments &arguments) {
    return ShowNames(
        arguments, contract::ReadList<DWORD>(
                       VLX_DEALER_SIZE, "the set-up data file of the dealers cannot be read",
                       [](char **names, DWORD capacity, DWORD *count) {
                           VLX_VEND_DATA data = {};
                           return GetVlxVendSettingBounded(&data, names, capacity, count) != FALSE;
                       }));
}

constexpr Option kOptions[] = {kJsonOption};

constexpr Command kOsNamesCommands[] = {
    {.summary = "lists names of operating systems",
     .description = "Lists the names that the set-up data file of the system's language offers for "
                    "\"machine set --os-name\".",
     .options = kOptions,
     .run = RunOsNames},
};

constexpr Command kDealersCommands[] = {
    {.summary = "lists the known dealers",
     .description = "Lists the dealers that the Japanese set-up data file names, for \"vendor set "
                    "--dealer\". On a system of another language the list is empty.",
     .options = kOptions,
     .run = RunDealers},
};

}  // namespace

extern const Group kOsNamesGroup = {.name = "os-names",
                                    .summary = "lists names of operating systems",
                                    .commands = kOsNamesCommands};

extern const Group kDealersGroup = {
    .name = "dealers", .summary = "lists the known dealers", .commands = kDealersCommands};

}  // namespace veloxctl
