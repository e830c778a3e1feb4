// Bodies of reports and opening messages: stored lines ended by CR LF, shown lines by LF.
#ifndef VELOXCTL_REPORT_TEXT_H
#define VELOXCTL_REPORT_TEXT_H

#include <string>
#include <string_view>

namespace veloxctl::report {

// Prints stored lines, whatever they end with, as the terminal shows them.
void PrintStored(std::string_view text);

// The opening message of a file (- is standard input): text in the terminal's encoding, as stored.
// Fails, naming file and line, on what cannot be stored.
std::string ReadMessage(const std::string &path);

}  // namespace veloxctl::report

#endif  // VELOXCTL_REPORT_TEXT_H
