#include "manual.h"

#include "help.h"

namespace veloxctl {

namespace {

// When the fixed texts below were last changed.
constexpr char kDate[] = "2026-11-21";

constexpr std::size_t kSourceWidth = 79;

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

// The same on lines of at most kSourceWidth columns, where the words allow it. A word that begins
// with a dot stays behind another one.
std::string Lines(std::string_view text) {
    std::string lines = Plain(text);
    std::size_t start = 0;
    while (lines.size() - start > kSourceWidth) {
        std::size_t blank = lines.rfind(' ', start + kSourceWidth);
        while (blank != std::string::npos && blank > start && lines[blank + 1] == '.') {
            blank = lines.rfind(' ', blank - 1);
        }
        if (blank == std::string::npos || blank <= start) {
            break;
        }
        lines[blank] = '\n';
        start = blank + 1;
    }
    return lines + "\n";
}

std::string Bold(std::string_view text) {
    return "\\fB" + Plain(text) + "\\fR";
}

std::string Entry(std::string_view term, std::string_view text) {
    return ".TP\n" + Bold(term) + "\n" + Lines(text);
}

std::string CommandText(const Group &group, const Command &command) {
    std::string text = ".SS " + Plain(UsageOf(group, command)) + "\n";
    const char *separator = "";
    for (const std::string_view paragraph : Paragraphs(command.description)) {
        text += separator + Lines(paragraph);
        separator = ".PP\n";
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
            text += ".TP\n.B " + Plain(example.command) + "\n" + Lines(example.effect);
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
Results are written to standard output, messages to standard error. Texts are
read and written in the encoding of the terminal; the registry stores them in
EUC\-JP. What the terminal cannot show is shown escaped, a character as \eu and
its number, a byte as \ex and its two digits.
.PP
A key may begin with \fBHKLM\e\fR or \fBHKEY_LOCAL_MACHINE\e\fR. In a key
without a backslash a slash separates the names.
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
A failure, numbered as in sysexits.h: 64 wrong usage, 65 wrong data, 66 a key,
value or file that does not exist, 69 a server is not running or refused, 70 a
mistake of the program itself, 71 the system lacks memory, 72 a program that
belongs to this one is missing, 73 a file that cannot be made, 74 a failed read
or write, 75 a failure that may pass, 77 no permission, 78 a setting that is
missing or wrong.
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
.TP
.B KES_LANG
The system's language instead of the one that the system is set to.
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

// What may stand behind an option, under either of its names.
std::string CompletionChoices(const Option &option) {
    const std::string short_name =
        option.short_name == '\0' ? "" : std::string(" | -") + option.short_name;
    return std::string("            case $previous in --") + option.long_name + short_name +
           ") words='" + option.choices + "' ;; esac\n";
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
            text += CompletionChoices(option);
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
    local words='' files='' first=1
    COMPREPLY=()
    case ${COMP_WORDS[1]} in
        -v | --verbose) first=2 ;;
    esac
    case "$((COMP_CWORD - first + 1)):${COMP_WORDS[first]}:${COMP_WORDS[first + 1]}" in
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
    std::string text = std::string(".TH VELOXCTL 8 \"") + kDate +
                       "\" \"Velox report service " VELOX_VERSION "\"\n";
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
