#include "help.h"

#include <algorithm>

namespace veloxctl {

namespace {

constexpr std::size_t kWidth = 79;

// Appends words broken into lines of at most kWidth columns behind an indentation.
void AppendWrapped(std::string_view text, std::size_t indentation, std::string *out) {
    std::size_t column = 0;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find(' '), text.size());
        if (column > 0 && column + 1 + length > kWidth) {
            out->append("\n");
            column = 0;
        }
        out->append(column == 0 ? std::string(indentation, ' ') : " ");
        column = (column == 0 ? indentation : column + 1) + length;
        out->append(text.substr(0, length));
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    out->append("\n");
}

// "  term   text", with the text in a column of its own or on the next line.
void AppendEntry(std::string_view term, std::string_view text, std::size_t column,
                 std::string *out) {
    std::string wrapped;
    AppendWrapped(text, column, &wrapped);
    std::string first = "  " + std::string(term);
    if (first.size() + 2 > column) {
        out->append(first).append("\n").append(wrapped);
        return;
    }
    first.resize(column, ' ');
    out->append(first).append(wrapped.substr(column));
}

std::string OperandForm(const Operand &operand) {
    const std::string name = std::string(operand.name) + (operand.repeatable ? "..." : "");
    return operand.required ? name : "[" + name + "]";
}

}  // namespace

std::string UsageOf(const Group &group, const Command &command) {
    std::string usage = std::string("veloxctl ") + group.name;
    if (*command.name != '\0') {
        usage += std::string(" ") + command.name;
    }
    usage += " [OPTION]...";
    for (const Operand &operand : command.operands) {
        usage += " " + OperandForm(operand);
    }
    return usage;
}

std::string FormOf(const Option &option, char short_name) {
    std::string form = short_name == '\0' ? "" : std::string("-") + short_name + ", ";
    form += std::string("--") + option.long_name;
    return option.argument == nullptr ? form : form + " " + option.argument;
}

std::vector<ShownOption> ShownOptions(const Command &command) {
    std::vector<ShownOption> shown;
    for (const Option &option : command.options) {
        if (!option.hidden) {
            shown.push_back({FormOf(option, option.short_name), option.summary});
        }
    }
    for (const Option &option : kCommonOptions) {
        shown.push_back({FormOf(option, ShortNameOfCommon(option, command)), option.summary});
    }
    return shown;
}

std::vector<std::string_view> Paragraphs(std::string_view description) {
    std::vector<std::string_view> paragraphs;
    while (!description.empty()) {
        const std::size_t length = std::min(description.find("\n\n"), description.size());
        paragraphs.push_back(description.substr(0, length));
        description.remove_prefix(std::min(length + 2, description.size()));
    }
    return paragraphs;
}

std::string HelpOfCommand(const Group &group, const Command &command) {
    constexpr std::size_t kColumn = 26;
    std::string help = "Usage: " + UsageOf(group, command) + "\n\n";
    for (const std::string_view paragraph : Paragraphs(command.description)) {
        AppendWrapped(paragraph, 0, &help);
        help += "\n";
    }
    for (const Operand &operand : command.operands) {
        AppendEntry(operand.name, operand.summary, kColumn, &help);
    }
    for (const ShownOption &option : ShownOptions(command)) {
        AppendEntry(option.form, option.summary, kColumn, &help);
    }
    if (!command.examples.empty()) {
        help += "\nExamples:\n";
        for (const Example &example : command.examples) {
            help += std::string("  ") + example.command + "\n";
            AppendWrapped(example.effect, 6, &help);
        }
    }
    return help;
}

std::string HelpOfGroup(const Group &group) {
    if (IsCommand(group)) {
        return HelpOfCommand(group, group.commands[0]);
    }
    std::string help = std::string("Usage: veloxctl ") + group.name + " COMMAND [ARGUMENT]...\n\n" +
                       group.name + ": " + group.summary + "\n\n";
    for (const Command &command : group.commands) {
        AppendEntry(command.name, command.summary, 16, &help);
    }
    return help + "\n\"veloxctl " + group.name + " COMMAND --help\" tells about a command.\n";
}

std::string HelpOfProgram(Groups groups) {
    std::string help =
        "Usage: veloxctl [-v] COMMAND [ARGUMENT]...\n\n"
        "Looks after the Velox report service of this server.\n\n";
    for (const Group *group : groups) {
        AppendEntry(group->name, group->summary, 16, &help);
    }
    return help +
           "\n\"veloxctl help COMMAND\" tells about a command; --version shows the version.\n";
}

}  // namespace veloxctl
