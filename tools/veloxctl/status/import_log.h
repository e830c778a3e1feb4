// The trace log of vlxfd, from which the last import's outcome is told.
#ifndef VELOXCTL_STATUS_IMPORT_LOG_H
#define VELOXCTL_STATUS_IMPORT_LOG_H

#include <optional>
#include <string>
#include <string_view>

namespace veloxctl::status {

// A record that tells a failure; texts as traced, in the registry's encoding.
struct LoggedFailure {
    std::string source;
    std::string function;
    std::string text;
};

struct LoggedImport {
    std::string time;           // of the first record, as logged
    std::optional<int> result;  // exit status; nothing when the run did not end, or not yet
    bool server_was_down = false;
    std::optional<LoggedFailure> failure;  // the first record that tells of one
};

// The last run whose beginning stands in the log; nothing when there is none. Lines that are no
// records are passed over.
std::optional<LoggedImport> LastImport(std::string_view log);

// What became of a run, in words.
std::string OutcomeOf(const LoggedImport &run);

}  // namespace veloxctl::status

#endif  // VELOXCTL_STATUS_IMPORT_LOG_H
