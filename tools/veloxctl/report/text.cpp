#include "report/text.h"

#include "failure.h"
#include "files.h"
#include "terminal.h"

namespace veloxctl::report {

namespace {

constexpr std::size_t kLongestMessage = std::size_t{1} << 20;

// Takes the first line off the text, without its end.
std::string_view TakeLine(std::string_view *text) {
    const std::size_t end = std::min(text->find('\n'), text->size());
    std::string_view line = text->substr(0, end);
    text->remove_prefix(std::min(end + 1, text->size()));
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return line;
}

}  // namespace

void PrintStored(std::string_view text) {
    while (!text.empty()) {
        Print(StoredToTerminal(TakeLine(&text)) + "\n");
    }
}

std::string ReadMessage(const std::string &path) {
    const std::string bytes = ReadFile(path, kLongestMessage);
    if (bytes.find('\0') != std::string::npos) {
        Fail(EX_DATAERR, path + ": it holds a zero byte");
    }
    std::string message;
    std::string_view rest = bytes;
    for (int number = 1; !rest.empty(); ++number) {
        const std::string_view line = TakeLine(&rest);
        const std::string place = path + ":" + std::to_string(number);
        message += TerminalToStored(line, place.c_str()) + "\r\n";
    }
    return message;
}

}  // namespace veloxctl::report
