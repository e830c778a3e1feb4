#include "queue/alert_lines.h"

#include "queue/folder.h"

namespace veloxctl::queue {

namespace {

std::string Hexadecimal(const std::string &bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

void AppendValue(const std::string &value, std::string *lines) {
    for (std::size_t at = 0; at < value.size(); ++at) {
        const bool pair = value[at] == '\r' && at + 1 < value.size() && value[at + 1] == '\n';
        if (pair || (value[at] != '\r' && value[at] != '\n')) {
            *lines += pair ? "" : std::string(1, value[at]);
        } else {
            *lines += "\r\n ";
        }
    }
    *lines += "\r\n";
}

}  // namespace

std::vector<AlertLine> LinesOf(const queuestore::Entry &entry) {
    const queuestore::Item &item = entry.item;
    std::vector<AlertLine> lines = {{"[ALERT]", item.message},
                                    {"[ALERT-ID]", entry.id},
                                    {"[ALERT-TIME]", TimeStamp(item.time)},
                                    {"[ALERT-COMPUTER]", item.computer},
                                    {"[ALERT-LOG]", item.log},
                                    {"[ALERT-SOURCE]", item.source},
                                    {"[ALERT-REPORTER]", item.reporter},
                                    {"[ALERT-LEVEL]", std::to_string(item.level)},
                                    {"[ALERT-COUNT]", std::to_string(item.count)}};
    for (const std::string &text : item.texts) {
        lines.push_back({"[ALERT-TEXT]", text});
    }
    lines.push_back({"[ALERT-NOTE]", item.note});
    lines.push_back({"[ALERT-DATA]", Hexadecimal(item.data)});
    std::erase_if(lines, [](const AlertLine &line) { return line.value.empty(); });
    return lines;
}

std::string ReportLines(const queuestore::Entry &entry) {
    std::string text;
    for (const AlertLine &line : LinesOf(entry)) {
        text += line.heading + "\r\n";
        AppendValue(line.value, &text);
    }
    return text;
}

}  // namespace veloxctl::queue
