// "veloxctl options".
#include <registry/keys.h>
#include <velox/contract.h>

#include <algorithm>
#include <cstdio>

#include "contract/lists.h"
#include "groups.h"
#include "registry.h"
#include "settings/fields.h"
#include "settings/plan.h"
#include "terminal.h"

namespace veloxctl {

namespace {

using settings::Json;

constexpr std::size_t kMostOptions = 99;
constexpr const char *kTitles[] = {"code", "description"};

// Codes with the descriptions of the set-up data file's option list.
Json Read() {
    const auto lines = contract::ReadList<std::int64_t>(
        VLX_OPTION_SIZE, "the set-up data file of the options cannot be read",
        [](char **list, std::int64_t capacity, std::int64_t *count) {
            return GetVlxOptSettingBounded(list, capacity, count) != FALSE;
        });
    Json options = Json::array();
    for (const std::string &line : lines) {
        const std::size_t blank = line.find(' ');
        options.push_back(
            {{"code", settings::FromStored(line.substr(0, blank).c_str())},
             {"description",
              settings::FromStored(blank == std::string::npos ? ""
                                                              : line.substr(blank + 1).c_str())}});
    }
    return options;
}

int RunShow(const Arguments &arguments) {
    (void)ReadExistingKey(VLX_KEY_SETTING);
    settings::ShowTable(arguments, Read(), kTitles);
    return EX_OK;
}

// The code of a word: all of it, or what stands before the blank of a line of the option list.
std::string CodeOf(const std::string &word) {
    const std::string what = "option \"" + word + "\"";
    std::string code = TerminalToStored(word, what.c_str());
    code = code.substr(0, code.find(' '));
    char field[VLX_SIZE_OPTCD];
    settings::FillField(code, what.c_str(), field, sizeof(field));
    if (code.empty()) {
        Fail(EX_DATAERR, what + ": the code is empty");
    }
    return code;
}

std::string ValueName(std::size_t number) {
    char name[32];
    (void)std::snprintf(name, sizeof(name), "OPTCD%02zu", number);
    return name;
}

int RunSet(const Arguments &arguments) {
    const std::vector<std::string> &words = arguments.All("OPTION");
    if (words.empty() != arguments.Has("none")) {
        Fail(EX_USAGE, "give options, or --none to store that there are none");
    }
    if (words.size() > kMostOptions) {
        Fail(EX_USAGE, "at most " + std::to_string(kMostOptions) + " options are possible");
    }
    settings::Plan plan;
    for (std::size_t i = 0; i < words.size(); ++i) {
        plan.SetText(VLX_KEY_SETTING, ValueName(i + 1), CodeOf(words[i]));
    }
    plan.SetNumber(VLX_KEY_SETTING, "OPTCDN", static_cast<DWORD>(words.size()));
    for (std::size_t number = words.size() + 1; number <= kMostOptions; ++number) {
        if (ReadValue(VLX_KEY_SETTING, ValueName(number))) {
            plan.Delete(VLX_KEY_SETTING, ValueName(number));
        }
    }
    plan.Apply();
    settings::ShowTable(arguments, Read(), kTitles);
    return EX_OK;
}

constexpr Operand kOptionsGiven[] = {
    {.name = "OPTION",
     .summary = "the code of an option, or its line of the option list",
     .required = false,
     .repeatable = true}};
constexpr Option kShowOptions[] = {kJsonOption};
constexpr Option kSetOptions[] = {{.long_name = "none", .summary = "the server has no options"},
                                  kJsonOption};

constexpr Command kCommands[] = {
    {.name = "show",
     .summary = "shows the server's options",
     .description = "Shows the code of each option device, with its description from the option "
                    "list of the set-up data file.",
     .options = kShowOptions,
     .run = RunShow},
    {.name = "set",
     .summary = "stores the server's options",
     .description = "Stores these options, at most 99, in the place of all that were stored, in "
                    "one step, and shows them. Of each only the code is stored.",
     .operands = kOptionsGiven,
     .options = kSetOptions,
     .run = RunSet},
};

}  // namespace

extern const Group kOptionsGroup = {
    .name = "options", .summary = "shows and stores the server's options", .commands = kCommands};

}  // namespace veloxctl
