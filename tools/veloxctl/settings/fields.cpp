#include "settings/fields.h"

#include <ntwin32/registry.h>
#include <regfile/text.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstring>

#include "failure.h"
#include "terminal.h"
#include "values.h"

namespace veloxctl::settings {

namespace {

std::string Shown(const Json &value) {
    if (value.is_null()) {
        return "(missing)";
    }
    if (value.is_boolean()) {
        return value.get<bool>() ? "on" : "off";
    }
    if (value.is_string()) {
        const auto &text = value.get_ref<const std::string &>();
        return text.empty() ? "(empty)" : Utf8ToTerminal(text);
    }
    if (!value.is_array()) {
        return value.dump();
    }
    std::string list;
    for (const Json &entry : value) {
        list += (list.empty() ? "" : ", ") + Shown(entry);
    }
    return list.empty() ? "(none)" : list;
}

// Field names are written with '_' in JSON, with blanks for people.
std::string Title(std::string name) {
    std::ranges::replace(name, '_', ' ');
    return name;
}

// What a text takes on the screen; bytes behind a character's first one take nothing.
std::size_t Width(const std::string &text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string Padded(std::string text, std::size_t width) {
    const std::size_t taken = Width(text);
    return text.append(taken < width ? width - taken : 0, ' ');
}

void PrintLine(const std::vector<std::string> &cells, const std::vector<std::size_t> &widths) {
    std::string line;
    for (std::size_t i = 0; i + 1 < cells.size(); ++i) {
        line += Padded(cells[i], widths[i]) + "  ";
    }
    Print(line + cells.back() + "\n");
}

Json Changes(const Json &before, const Json &after) {
    Json changes = Json::array();
    for (const auto &[name, value] : after.items()) {
        const Json old = before.value(name, Json());
        if (old != value) {
            changes.push_back({{"setting", name}, {"before", old}, {"after", value}});
        }
    }
    return changes;
}

}  // namespace

// ---- Showing ------------------------------------------------------------------------------------

Json FromStored(const char *stored) {
    return regfile::NameToUtf8(stored);
}

void PrintRecord(const Json &record) {
    std::size_t width = 0;
    for (const auto &[name, value] : record.items()) {
        width = std::max(width, name.size() + 1);
    }
    for (const auto &[name, value] : record.items()) {
        Print(Padded(Title(name) + ":", width) + " " + Shown(value) + "\n");
    }
}

void PrintTable(const Json &records, std::span<const char *const> fields) {
    std::vector<std::vector<std::string>> lines(1);
    for (const char *field : fields) {
        lines.front().push_back(Title(field));
    }
    for (const Json &record : records) {
        std::vector<std::string> &line = lines.emplace_back();
        for (const char *field : fields) {
            line.push_back(Shown(record.value(field, Json())));
        }
    }
    std::vector<std::size_t> widths(fields.size());
    for (const std::vector<std::string> &line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            widths[i] = std::max(widths[i], Width(line[i]));
        }
    }
    for (const std::vector<std::string> &line : lines) {
        PrintLine(line, widths);
    }
}

void ShowRecord(const Arguments &arguments, const Json &record) {
    if (arguments.Has("json")) {
        PrintJson(record);
    } else {
        PrintRecord(record);
    }
}

void ShowTable(const Arguments &arguments, const Json &records,
               std::span<const char *const> fields) {
    if (arguments.Has("json")) {
        PrintJson(records);
    } else if (!records.empty()) {
        PrintTable(records, fields);
    }
}

void ReportChanges(const Arguments &arguments, const std::string &name, const Json &before,
                   const Json &after) {
    const Json changes = Changes(before, after);
    if (arguments.Has("json")) {
        PrintJson({{"name", name}, {"changes", changes}});
        return;
    }
    const std::string shown_name = Utf8ToTerminal(name);
    for (const Json &change : changes) {
        Print(shown_name + ": " + Title(change["setting"]) + ": " + Shown(change["before"]) +
              " -> " + Shown(change["after"]) + "\n");
    }
    if (changes.empty()) {
        Print(shown_name + ": nothing changed\n");
    }
}

void ReportDone(const Arguments &arguments, const char *deed,
                const std::vector<std::string> &names) {
    if (arguments.Has("json")) {
        PrintJson({{deed, names}});
        return;
    }
    for (const std::string &name : names) {
        Print(Utf8ToTerminal(name) + ": " + deed + "\n");
    }
    if (names.empty()) {
        Print("nothing changed\n");
    }
}

// ---- Options ------------------------------------------------------------------------------------

std::uint32_t NumberOf(const Arguments &arguments, const char *option, std::uint32_t lowest,
                       std::uint32_t highest) {
    const std::string &word = arguments.Get(option);
    const bool hexadecimal = word.starts_with("0x") || word.starts_with("0X");
    const char *const end = word.data() + word.size();
    std::uint32_t number = 0;
    const auto [stop, error] =
        std::from_chars(word.data() + (hexadecimal ? 2 : 0), end, number, hexadecimal ? 16 : 10);
    if (error != std::errc() || stop != end || number < lowest || number > highest) {
        Fail(EX_USAGE, "--" + std::string(option) + " " + word + ": a number from " +
                           std::to_string(lowest) + " to " + std::to_string(highest) +
                           " is wanted");
    }
    return number;
}

bool TakeNumber(const Arguments &arguments, const char *option, std::uint32_t lowest,
                std::uint32_t highest, std::uint32_t *number) {
    if (!arguments.Has(option)) {
        return false;
    }
    *number = NumberOf(arguments, option, lowest, highest);
    return true;
}

void FillField(const std::string &stored, const char *what, char *field, std::size_t capacity) {
    if (stored.size() >= capacity || stored.find('\0') != std::string::npos) {
        Fail(EX_DATAERR, std::string(what) + ": longer than " + std::to_string(capacity - 1) +
                             " bytes as it is stored");
    }
    std::memcpy(field, stored.c_str(), stored.size() + 1);
}

bool TakeText(const Arguments &arguments, const char *option, char *field, std::size_t capacity) {
    if (!arguments.Has(option)) {
        return false;
    }
    const std::string what = "--" + std::string(option);
    FillField(TerminalToStored(arguments.Get(option), what.c_str()), what.c_str(), field, capacity);
    return true;
}

std::string NameOf(const std::string &word, const char *what) {
    std::string name = TerminalToStored(word, what);
    if (name.empty() || name.size() > KES_REG_MAX_KEY_NAME ||
        name.find('\\') != std::string::npos) {
        Fail(EX_USAGE, std::string(what) + " \"" + word + "\": 1 to " +
                           std::to_string(KES_REG_MAX_KEY_NAME) +
                           " bytes without backslash are wanted");
    }
    return name;
}

// ---- Writing ------------------------------------------------------------------------------------

regfile::Change KeyChange(regfile::Change::Kind kind, const std::string &path) {
    regfile::Change change;
    change.kind = kind;
    change.path = std::make_shared<const std::string>(path);
    return change;
}

void RequireStored(const Json &wanted, const Json &stored, const std::string &name) {
    if (wanted == stored) {
        return;
    }
    if (geteuid() != 0) {
        Fail(EX_NOPERM, Utf8ToTerminal(name) + ": only root writes the registry");
    }
    Fail(EX_IOERR,
         Utf8ToTerminal(name) + ": not everything was stored; see the trace with --verbose");
}

void FailToStore(const char *what) {
    if (geteuid() != 0) {
        FailRegistry(what, ERROR_ACCESS_DENIED);
    }
    Fail(EX_IOERR, std::string(what) + " cannot be stored; see the trace with --verbose");
}

}  // namespace veloxctl::settings
