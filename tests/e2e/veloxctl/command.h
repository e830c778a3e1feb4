// Runs veloxctl as a process, as a person or a script does.
#ifndef VELOXCTL_TEST_COMMAND_H
#define VELOXCTL_TEST_COMMAND_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace veloxctl_test {

struct Result {
    int status = -1;  // exit status; 1000 + signal when one ended the process
    std::string output;
    std::string errors;
};

struct Surroundings {
    std::string input = {};
    // Variables that are set, or removed without a value. LC_ALL is C.UTF-8 unless given.
    std::vector<std::pair<std::string, std::optional<std::string>>> variables = {};
    // The program; empty: the product tree's veloxctl.
    std::string program = {};
};

Result Veloxctl(const std::vector<std::string> &words, const Surroundings &surroundings = {});

// The same with a terminal of its own as standard input, output, error and /dev/tty. Each answer is
// typed when its question, a part of the output, has appeared. output is what the terminal showed.
struct Answer {
    std::string question;
    std::string typed;
};
Result VeloxctlInTerminal(const std::vector<std::string> &words, const std::vector<Answer> &answers,
                          const std::string &program = {});

}  // namespace veloxctl_test

#endif  // VELOXCTL_TEST_COMMAND_H
