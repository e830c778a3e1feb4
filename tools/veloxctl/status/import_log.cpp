#include "status/import_log.h"

#include <algorithm>
#include <charconv>

namespace veloxctl::status {

namespace {

// One line: time, process, level, source, function, line, text.
struct Record {
    std::string_view time;
    std::string_view process;
    int level = 0;
    std::string_view source;
    std::string_view function;
    std::string_view text;
};

// Level 1 records that are written although nothing failed: for every byte of one column, at each
// reset of the line reader, for each digit of the interval, and for the optional heart-beat file.
constexpr std::string_view kRoutine[] = {
    "<IsDBCSLeadByte() Failed!",
    "hInput==-1!",
    "<hInput==-1!",
    "Value ? : ",
    "CreateFile AMVLXHBI Error!",
    "<RegOpenKeyEx SOFTWARE\\XEV\\VLXService\\HeartBeat error.",
    "<RegQueryValueEx(HBINTERVAL) failed.",
    "AMAMRegReadEx (HBINTERVAL) Failed",
};

constexpr int kResultLevel = 3;
constexpr std::string_view kResultText = "<return ";
constexpr std::string_view kServerDown = "<KESntserver is not active!";

// The part of *line before the next blank, which goes with it.
std::string_view TakeField(std::string_view *line) {
    const std::size_t length = line->find(' ');
    if (length == std::string_view::npos) {
        return {};
    }
    const std::string_view field = line->substr(0, length);
    line->remove_prefix(length + 1);
    return field;
}

bool ParseNumber(std::string_view digits, int *number) {
    const char *const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, *number);
    return error == std::errc() && stop == end;
}

bool ParseRecord(std::string_view line, Record *record) {
    record->time = TakeField(&line);
    record->process = TakeField(&line);
    const std::string_view level = TakeField(&line);
    record->source = TakeField(&line);
    record->function = TakeField(&line);
    const std::string_view number = TakeField(&line);
    record->text = line;
    return !record->time.empty() && !number.empty() && ParseNumber(level, &record->level);
}

// The line from *log with its end taken away.
std::string_view TakeLine(std::string_view *log) {
    const std::size_t length = std::min(log->find('\n'), log->size());
    const std::string_view line = log->substr(0, length);
    log->remove_prefix(std::min(length + 1, log->size()));
    return line;
}

// Undoes the log's escapes, \xHH.
std::string Unescaped(std::string_view text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        unsigned char byte = 0;
        const char *const digits = text.data() + at + 2;
        if (text.substr(at).starts_with("\\x") && text.size() - at >= 4 &&
            std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            plain += static_cast<char>(byte);
            at += 3;
        } else {
            plain += text[at];
        }
    }
    return plain;
}

bool IsOfMain(const Record &record) {
    return record.source == "setup" && record.function == "main";
}

bool TellsFailure(const Record &record, const std::string &text) {
    return record.level > 0 && record.level != kResultLevel &&
           std::ranges::none_of(
               kRoutine, [&](std::string_view routine) { return text.starts_with(routine); });
}

void Note(const Record &record, LoggedImport *run) {
    const std::string text = Unescaped(record.text);
    if (IsOfMain(record) && text.starts_with(kServerDown)) {
        run->result = 0;
        run->server_was_down = true;
        return;
    }
    int result = 0;
    if (IsOfMain(record) && text.starts_with(kResultText) &&
        ParseNumber(std::string_view(text).substr(kResultText.size()), &result)) {
        run->result = result;
        return;
    }
    if (!run->failure && TellsFailure(record, text)) {
        run->failure = {std::string(record.source), std::string(record.function), text};
    }
}

}  // namespace

std::optional<LoggedImport> LastImport(std::string_view log) {
    std::optional<LoggedImport> run;
    std::string_view process;
    while (!log.empty()) {
        Record record;
        if (!ParseRecord(TakeLine(&log), &record)) {
            continue;
        }
        if (IsOfMain(record) && record.text == ">") {
            run.emplace().time = record.time;
            process = record.process;
        } else if (run && record.process == process && !run->result) {
            Note(record, &*run);
        }
    }
    return run;
}

std::string OutcomeOf(const LoggedImport &run) {
    if (!run.result) {
        return "it has not ended, or was ended from outside";
    }
    if (run.server_was_down) {
        return "nothing was done: the registry server was not running (exit status 0)";
    }
    const std::string status = " (exit status " + std::to_string(*run.result) + ")";
    switch (*run.result) {
        case 0:
            return "the key disk was imported, but a step behind it failed" + status;
        case 1:
            return "the key disk was imported" + status;
        case 100:
            return "no key disk was mounted" + status;
        case 200:
            return "the import of the key disk failed" + status;
        default:
            return "unknown" + status;
    }
}

}  // namespace veloxctl::status
