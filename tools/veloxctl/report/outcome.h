// What a result of the report functions means, and what in the registry is its likely cause.
#ifndef VELOXCTL_REPORT_OUTCOME_H
#define VELOXCTL_REPORT_OUTCOME_H

#include <string>
#include <vector>

namespace veloxctl::report {

// One clause, in ASCII.
const char *MeaningOf(int code);

// The exit status of a command that ends with the code.
int StatusOf(int code);

// Likely causes, most likely first; one clause each, in UTF-8. Empty when the registry shows none.
std::vector<std::string> LikelyCauses(int code);

// Fails with the code in words, its causes, and the reason that a module gave (may be empty, as
// stored).
[[noreturn]] void FailReport(int code, const std::string &reason);

}  // namespace veloxctl::report

#endif  // VELOXCTL_REPORT_OUTCOME_H
