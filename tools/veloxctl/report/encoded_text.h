// Finding and decoding the encoded report inside the text of a mail.
#ifndef VELOXCTL_REPORT_ENCODED_TEXT_H
#define VELOXCTL_REPORT_ENCODED_TEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace veloxctl::report {

// The lines from the first "begin" line to the "end" line that follows it, line ends included;
// empty when there are none. What stands before and behind, such as a mailing list's footer, is not
// part of it.
std::string_view EncodedLines(std::string_view text);

// What the lines hold; nothing when they are damaged.
std::optional<std::string> Decode(std::string_view lines);

}  // namespace veloxctl::report

#endif  // VELOXCTL_REPORT_ENCODED_TEXT_H
