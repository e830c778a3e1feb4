// What is made from the command table: help, man page and completion, each complete and each as
// installed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sysexits.h>

#include <regex>
#include <sstream>

#include "command.h"
#include "support/server.h"

namespace veloxctl_test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::StartsWith;

// The first words of the entries of a help text, which stand behind two blanks.
std::vector<std::string> Entries(const std::string &help) {
    std::vector<std::string> entries;
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("  ") && line.size() > 2 && line[2] != ' ') {
            entries.push_back(line.substr(2, line.find(' ', 2) - 2));
        }
    }
    return entries;
}

// Every command as its words: {"reg", "query"}, {"status"}.
std::vector<std::vector<std::string>> AllCommands() {
    std::vector<std::vector<std::string>> commands;
    for (const std::string &group : Entries(Veloxctl({"--help"}).output)) {
        const std::string help = Veloxctl({group, "--help"}).output;
        if (!help.starts_with("Usage: veloxctl " + group + " COMMAND ")) {
            commands.push_back({group});
            continue;
        }
        for (const std::string &command : Entries(help)) {
            commands.push_back({group, command});
        }
    }
    return commands;
}

std::string Joined(const std::vector<std::string> &words) {
    std::string joined = "veloxctl";
    for (const std::string &word : words) {
        joined += " " + word;
    }
    return joined;
}

// The long options that a help text lists.
std::vector<std::string> OptionsOf(const std::string &help) {
    static const std::regex entry("(^|\\n)  (-[A-Za-z], )?(--[a-z][a-z0-9-]*)");
    std::vector<std::string> options;
    for (std::sregex_iterator found(help.begin(), help.end(), entry), end; found != end; ++found) {
        options.push_back((*found)[3]);
    }
    return options;
}

std::string Installed(const std::string &path) {
    return test_support::ReadWholeFile(test_support::ProductRoot() + "/share/" + path);
}

const char kManualPath[] = "man/man8/veloxctl.8";
const char kCompletionPath[] = "bash-completion/completions/veloxctl";

// The man page as a reader sees it, its lines joined.
std::string ManualText() {
    const Result shown =
        Veloxctl({"-Tutf8", "-man", test_support::ProductRoot() + "/share/" + kManualPath},
                 {.variables = {{"GROFF_NO_SGR", "1"}}, .program = "/usr/bin/groff"});
    EXPECT_EQ(shown.status, 0) << shown.errors;
    EXPECT_EQ(shown.errors, "");
    // An overstruck character is its own bold form.
    std::string plain = std::regex_replace(shown.output, std::regex(".\x08"), "");
    plain = std::regex_replace(plain, std::regex("\u2010|\u2212"), "-");
    return std::regex_replace(plain, std::regex("-?[ \n]+"), " ");
}

std::vector<std::string> Completed(const std::string &words) {
    const std::string script =
        ". \"$KES_ROOT/share/" + std::string(kCompletionPath) + "\"; COMP_WORDS=(veloxctl " +
        words +
        "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _veloxctl; printf '%s\\n' \"${COMPREPLY[@]}\"";
    const Result result = Veloxctl({"-c", script}, {.program = "/bin/bash"});
    EXPECT_EQ(result.errors, "");
    std::vector<std::string> completed;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);) {
        completed.push_back(line);
    }
    return completed;
}

TEST(CommandTable, ListsTheGroupsAndTheirCommands) {
    const auto commands = AllCommands();
    for (const char *verb :
         {"query", "add", "delete", "copy", "compare", "export", "import", "verify"}) {
        EXPECT_THAT(commands, Contains(std::vector<std::string>{"reg", verb}));
    }
    for (const char *verb : {"create", "template", "show"}) {
        EXPECT_THAT(commands, Contains(std::vector<std::string>{"keydisk", verb}));
    }
    EXPECT_THAT(commands, Contains(std::vector<std::string>{"status"}));
}

TEST(CommandTable, HelpTellsAboutEveryCommand) {
    for (const auto &words : AllCommands()) {
        std::vector<std::string> asked = words;
        asked.emplace_back("--help");
        const Result by_option = Veloxctl(asked);
        EXPECT_EQ(by_option.status, 0);
        EXPECT_EQ(by_option.errors, "");
        EXPECT_THAT(by_option.output, StartsWith("Usage: " + Joined(words) + " [OPTION]..."));
        EXPECT_THAT(OptionsOf(by_option.output), Contains("--help"));
        asked = words;
        asked.insert(asked.begin(), "help");
        EXPECT_EQ(Veloxctl(asked).output, by_option.output);
    }
}

TEST(CommandTable, ManualIsInstalledAsTheTableSays) {
    EXPECT_EQ(Installed(kManualPath), Veloxctl({"help", "--man"}).output);
    EXPECT_EQ(Installed(kCompletionPath), Veloxctl({"help", "--bash-completion"}).output);
}

TEST(CommandTable, ManualHoldsEveryCommandAndOption) {
    const std::string manual = ManualText();
    for (const auto &words : AllCommands()) {
        const std::string usage = Joined(words) + " [OPTION]...";
        const std::size_t at = manual.find(usage);
        ASSERT_NE(at, std::string::npos) << usage;
        const std::string section =
            manual.substr(at, manual.find(" veloxctl ", at + usage.size()) - at);
        std::vector<std::string> asked = words;
        asked.emplace_back("--help");
        for (const std::string &option : OptionsOf(Veloxctl(asked).output)) {
            EXPECT_THAT(section, HasSubstr(option)) << usage;
        }
    }
    for (const char *heading : {"EXAMPLES", "EXIT STATUS", "ENVIRONMENT"}) {
        EXPECT_THAT(manual, HasSubstr(heading));
    }
}

TEST(CommandTable, ManualPleasesTheFormatters) {
    const std::string file = test_support::ProductRoot() + "/share/" + kManualPath;
    const Result lint = Veloxctl({"-Tlint", file}, {.program = "/usr/bin/mandoc"});
    EXPECT_EQ(lint.output + lint.errors, "");
    EXPECT_EQ(lint.status, 0);
    const Result groff = Veloxctl({"-man", "-ww", "-z", file}, {.program = "/usr/bin/groff"});
    EXPECT_EQ(groff.output + groff.errors, "");
    EXPECT_EQ(groff.status, 0);
}

TEST(CommandTable, CompletionOffersEveryCommandAndOption) {
    const std::vector<std::string> first = Completed("''");
    for (const auto &words : AllCommands()) {
        EXPECT_THAT(first, Contains(words[0]));
        std::string typed = words[0];
        if (words.size() > 1) {
            EXPECT_THAT(Completed(typed + " ''"), Contains(words[1]));
            typed += " " + words[1];
        }
        const std::vector<std::string> options = Completed(typed + " --");
        std::vector<std::string> asked = words;
        asked.emplace_back("--help");
        for (const std::string &option : OptionsOf(Veloxctl(asked).output)) {
            EXPECT_THAT(options, Contains(option)) << typed;
        }
    }
}

TEST(CommandTable, CompletionKnowsChoicesAndTheOptionBeforeTheCommand) {
    EXPECT_THAT(Completed("keydisk template --lang ''"), testing::ElementsAre("en", "ja"));
    EXPECT_THAT(Completed("-v keydisk te"), testing::ElementsAre("template"));
    EXPECT_THAT(Completed("nosuch ''"), testing::ElementsAre(""));
}

struct Mistake {
    std::vector<std::string> words;
    std::string message;
};

TEST(CommandTable, MistakesAreTold) {
    const Mistake mistakes[] = {
        {{}, "a command is missing; see \"veloxctl --help\""},
        {{"nosuch"}, "unknown command \"nosuch\"; see \"veloxctl --help\""},
        {{"-v"}, "a command is missing; see \"veloxctl --help\""},
        {{"--nosuch"}, "unknown command \"--nosuch\"; see \"veloxctl --help\""},
        {{"keydisk"}, "keydisk: a command is missing; see \"veloxctl keydisk --help\""},
        {{"keydisk", "nosuch"},
         "keydisk: unknown command \"nosuch\"; see \"veloxctl keydisk --help\""},
        {{"help", "nosuch"}, "help: unknown command \"nosuch\"; see \"veloxctl --help\""},
        {{"help", "keydisk", "nosuch"}, "help: keydisk has no command \"nosuch\""},
        {{"keydisk", "show"},
         "keydisk show: DISK is required; see \"veloxctl keydisk show --help\""},
        {{"status", "more"},
         "status: The following argument was not expected: more; see \"veloxctl status --help\""},
        {{"keydisk", "template", "--lang", "de"},
         "keydisk template: --lang: de not in {en,ja}; see \"veloxctl keydisk template --help\""},
    };
    for (const Mistake &mistake : mistakes) {
        const Result result = Veloxctl(mistake.words);
        EXPECT_EQ(result.status, EX_USAGE);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "veloxctl: " + mistake.message + "\n");
    }
}

TEST(CommandTable, VersionIsShown) {
    const Result result = Veloxctl({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(std::regex_match(result.output, std::regex("veloxctl [0-9]+\\.[0-9]+\\.[0-9]+\n")))
        << result.output;
}

TEST(CommandTable, OutputThatCannotBeWrittenFails) {
    const Result result = Veloxctl({"-c", "exec \"$KES_ROOT/bin/veloxctl\" --help >/dev/full"},
                                   {.program = "/bin/bash"});
    EXPECT_EQ(result.status, EX_IOERR);
    EXPECT_EQ(result.errors, "veloxctl: standard output: No space left on device\n");
}

}  // namespace
}  // namespace veloxctl_test
