#include "manual.h"

#include "help.h"

namespace veloxctl {

namespace {

// Text of a man page: what troff would obey stands for itself.
std::string Plain(std::string_view text) {
    std::string plain;
    for (const char byte : text) {
        switch (byte) {
            case '\\':
                plain += "\\e";
                break;
            case '-':
                plain += "\\-";
                break;
            case '\'':
                plain += "\\(aq";
                break;
            case '"':
                plain += "\\(dq";
                break;
            default:
                plain += byte;
        }
    }
    // A line that begins with a dot is a request.
    return plain.starts_with('.') ? "\\&" + plain : plain;
}

std::string Bold(std::string_view text) {
    return "\\fB" + Plain(text) + "\\fR";
}

std::string Entry(std::string_view term, std::string_view text) {
    return ".TP\n" + Bold(term) + "\n" + Plain(text) + "\n";
}

std::string CommandText(const Group &group, const Command &command) {
    std::string text = ".SS " + Plain(UsageOf(group, command)) + "\n";
    for (const std::string_view paragraph : Paragraphs(command.description)) {
        text += ".PP\n" + Plain(paragraph) + "\n";
    }
    for (const Operand &operand : command.operands) {
        text += Entry(operand.name, operand.summary);
    }
    for (const ShownOption &option : ShownOptions(command)) {
        text += Entry(option.form, option.summary);
    }
    return text;
}

std::string ExampleText(const Group &group) {
    std::string text;
    for (const Command &command : group.commands) {
        for (const Example &example : command.examples) {
            text += ".TP\n.B " + Plain(example.command) + "\n" + Plain(example.effect) + "\n";
        }
    }
    return text;
}

constexpr char kHead[] = R"(.SH NAME
veloxctl \- look after the Velox report service of this server
.SH SYNOPSIS
.B veloxctl
[\fB\-v\fR] \fICOMMAND\fR [\fIARGUMENT\fR]...
.br
.B veloxctl help
[\fICOMMAND\fR]...
)";

constexpr char kDescription[] = R"(.SH DESCRIPTION
Results are written to standard output, messages to standard error. Texts are read and written in the
encoding of the terminal; the registry stores them in EUC\-JP. What the terminal cannot show is shown
escaped, a character as \eu and its number, a byte as \ex and its two digits.
.PP
A key may begin with \fBHKLM\e\fR or \fBHKEY_LOCAL_MACHINE\e\fR. In a key without a backslash a slash
separates the names.
)";

constexpr char kTail[] = R"(.SH EXIT STATUS
.TP
.B 0
The command did what was asked.
.TP
.B 1
A comparison found a difference.
.TP
.B 64 to 78
A failure, numbered as in sysexits.h: 64 wrong usage, 65 wrong data, 66 a key, value or file that does
not exist, 69 the registry server is not running, 73 a file that cannot be made, 74 a failed read or
write, 75 a failure that may pass, 77 no permission.
.SH ENVIRONMENT
.TP
.B KES_ROOT
The product's folder, /opt/xev/kestro_sa.
.TP
.B KES_STATE
The folder of registry and logs, /var/opt/xev/kestro_sa.
.TP
.B KES_RUN
The folder of the registry server's socket, /run/kestro_sa.
)";

// The words of a case of the completion, for one command.
std::string CompletionWords(const Command &command) {
    std::string words;
    for (const Option &option : command.options) {
        if (!option.hidden) {
            words += std::string(" --") + option.long_name;
        }
    }
    for (const Option &option : kCommonOptions) {
        words += std::string(" --") + option.long_name;
    }
    return words.substr(1);
}

bool CompletesFiles(const Command &command) {
    for (const Operand &operand : command.operands) {
        if (operand.completes == Completes::kFiles) {
            return true;
        }
    }
    for (const Option &option : command.options) {
        if (option.completes == Completes::kFiles) {
            return true;
        }
    }
    return false;
}

// A case of the completion: the place of the word, the group and the command.
std::string CompletionCase(const std::string &pattern, const Command &command) {
    std::string text =
        "        " + pattern + ")\n            words='" + CompletionWords(command) + "'\n";
    if (CompletesFiles(command)) {
        text += "            files=yes\n";
    }
    for (const Option &option : command.options) {
        if (option.choices != nullptr && !option.hidden) {
            text += std::string("            [ \"$previous\" = --") + option.long_name +
                    " ] && words='" + option.choices + "'\n";
        }
    }
    return text + "            ;;\n";
}

std::string CompletionCases(const Group &group) {
    const std::string name = group.name;
    if (IsCommand(group)) {
        return CompletionCase("*:" + name + ":*", group.commands[0]);
    }
    std::string names;
    std::string cases;
    for (const Command &command : group.commands) {
        names += (names.empty() ? "" : " ") + std::string(command.name);
        cases += CompletionCase("*:" + name + ":" + command.name, command);
    }
    return "        2:" + name + ":*)\n            words='" + names + "'\n            ;;\n" + cases;
}

constexpr char kCompletionHead[] = R"(# Completion of veloxctl for bash.
_veloxctl() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    local words='' files=''
    COMPREPLY=()
    case "$COMP_CWORD:${COMP_WORDS[1]}:${COMP_WORDS[2]}" in
)";

constexpr char kCompletionTail[] = R"(    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    if [ -n "$files" ] && [ "${current:0:1}" != - ]; then
        mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$current")
    fi
}
complete -o filenames -F _veloxctl veloxctl
)";

}  // namespace

std::string ManualPage(Groups groups) {
    std::string text = ".TH VELOXCTL 1 \"\" \"Velox report service " VELOX_VERSION "\"\n";
    text += kHead;
    text += ".SH EXAMPLES\n";
    for (const Group *group : groups) {
        text += ExampleText(*group);
    }
    text += kDescription;
    text += ".SH COMMANDS\n";
    for (const Group *group : groups) {
        for (const Command &command : group->commands) {
            text += CommandText(*group, command);
        }
    }
    return text + kTail;
}

std::string BashCompletion(Groups groups) {
    std::string names;
    std::string cases;
    for (const Group *group : groups) {
        names += std::string(group->name) + " ";
        cases += CompletionCases(*group);
    }
    return kCompletionHead + ("        1:*)\n            words='" + names) +
           "--help --verbose --version'\n            ;;\n" + cases + kCompletionTail;
}

}  // namespace veloxctl
