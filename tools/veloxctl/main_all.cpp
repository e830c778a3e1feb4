// veloxctl-all: every group.
#include <string>
#include <string_view>

#include "all_groups.h"
#include "failure.h"
#include "help.h"
#include "program.h"
#include "terminal.h"

namespace veloxctl {

namespace {

bool Is(const char *word, const char *name) {
    return std::string_view(word) == name;
}

// A group without one of its commands behind it.
int AnswerGroup(const Group &group, const char *word) {
    if (word != nullptr && (Is(word, "-h") || Is(word, "--help"))) {
        Print(HelpOfGroup(group));
        FinishOutput();
        return EX_OK;
    }
    const std::string name = group.name;
    Fail(EX_USAGE, (word == nullptr ? name + ": a command is missing"
                                    : name + ": unknown command \"" + word + "\"") +
                       "; see \"veloxctl " + name + " --help\"");
}

// What names no command: an option of the program, a group alone, or a mistake.
int AnswerOtherwise(char **argv) {
    const char *word = argv[1];
    if (word != nullptr && (Is(word, "-v") || Is(word, "--verbose"))) {
        word = argv[2];
    }
    if (word == nullptr) {
        Fail(EX_USAGE, "a command is missing; see \"veloxctl --help\"");
    }
    if (Is(word, "-h") || Is(word, "--help")) {
        Print(HelpOfProgram(kAllGroups));
    } else if (Is(word, "--version")) {
        Print("veloxctl " VELOX_VERSION "\n");
    } else if (const Group *group = FindGroup(kAllGroups, word); group != nullptr) {
        return AnswerGroup(*group, word == argv[1] ? argv[2] : argv[3]);
    } else {
        Fail(EX_USAGE, std::string("unknown command \"") + word + "\"; see \"veloxctl --help\"");
    }
    FinishOutput();
    return EX_OK;
}

}  // namespace

}  // namespace veloxctl

int main(int argc, char **argv) {
    return veloxctl::RunProgram(veloxctl::kAllGroups, argc, argv, veloxctl::AnswerOtherwise);
}
