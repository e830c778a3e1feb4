#include "arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>

#include "failure.h"

namespace veloxctl {

namespace {

std::string NamesOf(char short_name, const char *long_name) {
    std::string names = std::string("--") + long_name;
    return short_name == '\0' ? names : std::string("-") + short_name + "," + names;
}

std::vector<std::string> Split(const char *words) {
    std::vector<std::string> split;
    for (const char *start = words; *start != '\0';) {
        const std::size_t length = std::strcspn(start, " ");
        split.emplace_back(start, length);
        start += length + (start[length] == ' ' ? 1 : 0);
    }
    return split;
}

// An option as often as it is given: an argument as it stands, a flag as an empty text.
void AddOption(CLI::App *app, const Option &option, char short_name,
               std::vector<std::string> *slot) {
    const std::string names = NamesOf(short_name, option.long_name);
    if (option.argument == nullptr) {
        app->add_flag_function(names, [slot](std::int64_t) { slot->assign(1, ""); })
            ->disable_flag_override();
        return;
    }
    // One argument at a time: a longer list would read "[a,b]" as two.
    CLI::Option *added = app->add_option(names, *slot);
    added->allow_extra_args(false)->expected(1)->multi_option_policy(
        option.repeatable ? CLI::MultiOptionPolicy::TakeAll : CLI::MultiOptionPolicy::Throw);
    if (option.choices != nullptr) {
        added->check(CLI::IsMember(Split(option.choices)));
    }
}

void AddOperand(CLI::App *app, const Operand &operand, std::vector<std::string> *slot) {
    CLI::Option *added = app->add_option(operand.name, *slot);
    added->expected(1, operand.repeatable ? CLI::detail::expected_max_vector_size : 1);
    added->allow_extra_args(operand.repeatable)->required(operand.required);
}

// What the parser says, as one line without its full stop.
std::string OneLine(std::string text) {
    std::ranges::replace(text, '\n', ' ');
    while (!text.empty() && (text.back() == ' ' || text.back() == '.')) {
        text.pop_back();
    }
    return text;
}

}  // namespace

Arguments::Arguments(const Group &group, const Command &command, std::vector<std::string> words)
    : command_name_(std::string(group.name) + (*command.name != '\0' ? " " : "") + command.name) {
    try {
        Parse(command, std::move(words));
    } catch (const CLI::CallForHelp &) {
        Slot("help")->assign(1, "");
    } catch (const CLI::ParseError &error) {
        Fail(EX_USAGE, command_name_ + ": " + OneLine(error.what()) + "; see \"veloxctl " +
                           command_name_ + " --help\"");
    }
}

void Arguments::Parse(const Command &command, std::vector<std::string> words) {
    CLI::App app;
    app.set_help_flag();
    for (const Operand &operand : command.operands) {
        AddOperand(&app, operand, Slot(operand.name));
    }
    for (const Option &option : command.options) {
        AddOption(&app, option, option.short_name, Slot(option.long_name));
    }
    for (const Option &option : kCommonOptions) {
        const char short_name = ShortNameOfCommon(option, command);
        if (std::strcmp(option.long_name, "help") == 0) {
            app.set_help_flag(NamesOf(short_name, option.long_name));
            Slot("help");
        } else {
            AddOption(&app, option, short_name, Slot(option.long_name));
        }
    }
    std::ranges::reverse(words);
    app.parse(std::move(words));
}

const std::vector<std::string> &Arguments::All(const char *name) const {
    const auto found = found_.find(name);
    if (found == found_.end()) {
        Fail(EX_SOFTWARE, command_name_ + ": the command's table lacks " + name);
    }
    return found->second;
}

const std::string &Arguments::Get(const char *name) const {
    const std::vector<std::string> &all = All(name);
    if (all.empty()) {
        Fail(EX_SOFTWARE, command_name_ + ": " + name + " is not there");
    }
    return all.front();
}

std::string Arguments::GetOr(const char *name, const char *otherwise) const {
    return Has(name) ? Get(name) : otherwise;
}

}  // namespace veloxctl
