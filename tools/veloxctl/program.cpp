#include "program.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <new>

#include "arguments.h"
#include "failure.h"
#include "help.h"
#include "terminal.h"
#include "trace.h"

namespace veloxctl {

namespace {

// The command that the words name, and how many of them did.
struct Choice {
    const Group *group = nullptr;
    const Command *command = nullptr;
    int words = 0;
};

Choice Choose(Groups groups, int argc, char **argv) {
    Choice choice;
    choice.group = argc > 0 ? FindGroup(groups, argv[0]) : nullptr;
    if (choice.group == nullptr) {
        return choice;
    }
    if (IsCommand(*choice.group)) {
        choice.command = &choice.group->commands[0];
        choice.words = 1;
    } else if (argc > 1) {
        choice.command = FindCommand(*choice.group, argv[1]);
        choice.words = 2;
    }
    return choice;
}

int RunCommand(const Choice &choice, int argc, char **argv) {
    const Arguments arguments(*choice.group, *choice.command,
                              std::vector<std::string>(argv, argv + argc));
    int status = EX_OK;
    if (arguments.Has("help")) {
        Print(HelpOfCommand(*choice.group, *choice.command));
    } else {
        if (arguments.Has("verbose")) {
            ShowTrace();
        }
        status = choice.command->run(arguments);
    }
    FinishOutput();
    return status;
}

int RunChecked(Groups groups, int argc, char **argv, int (*otherwise)(char **argv)) {
    int first = 1;
    if (first < argc &&
        (std::strcmp(argv[first], "-v") == 0 || std::strcmp(argv[first], "--verbose") == 0)) {
        ShowTrace();
        ++first;
    }
    const Choice choice = Choose(groups, argc - first, argv + first);
    if (choice.command == nullptr) {
        return otherwise(argv);
    }
    return RunCommand(choice, argc - first - choice.words, argv + first + choice.words);
}

}  // namespace

int RunProgram(Groups groups, int argc, char **argv, int (*otherwise)(char **argv)) {
    try {
        return RunChecked(groups, argc, argv, otherwise);
    } catch (const Failure &failure) {
        Complain(failure.message);
        return failure.status;
    } catch (const std::bad_alloc &) {
        Complain("there is not enough memory");
        return EX_OSERR;
    } catch (const std::exception &failure) {
        Complain(std::string("unexpected failure: ") + failure.what());
        return EX_SOFTWARE;
    }
}

}  // namespace veloxctl
