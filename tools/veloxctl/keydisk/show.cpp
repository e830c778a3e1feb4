// "veloxctl keydisk show".
#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>

#include "failure.h"
#include "keydisk/check.h"
#include "keydisk/commands.h"
#include "keydisk/customer_code.h"
#include "keydisk/disk_text.h"
#include "keydisk/form.h"
#include "keydisk/media.h"
#include "terminal.h"
#include "values.h"

namespace veloxctl::keydisk {

namespace {

using Json = nlohmann::ordered_json;

struct ShownPart {
    bool present = false;
    std::optional<std::vector<std::string>> lines;  // in the form's writing; nothing: unreadable
};

ShownPart ReadPart(const std::string &folder, Part part) {
    const MediaFile file = ReadMediaFile(folder, kParts[part].file);
    ShownPart shown;
    shown.present = file.present;
    std::string text = file.bytes;
    if (!file.readable || (part == kCustomer && !DecodeCustomerFile(file.bytes, &text))) {
        return shown;
    }
    shown.lines.emplace();
    for (const std::string &line : SplitLines(text)) {
        shown.lines->push_back(LineToForm(line));
    }
    return shown;
}

void PrintPart(const PartRow &row, const ShownPart &part) {
    if (!part.present) {
        Print(std::string("# ") + row.file + ": there is no " + row.title + "\n");
        return;
    }
    if (!part.lines) {
        Print(std::string("# ") + row.file + ": the " + row.title + " cannot be read\n");
        return;
    }
    Print(std::string("# ") + row.file + "\n" + row.section + "\n");
    for (const std::string &line : *part.lines) {
        Print(Utf8ToTerminal(line) + "\n");
    }
}

Json PartAsJson(const PartRow &row, const ShownPart &part) {
    Json json = {{"file", row.file}, {"present", part.present}, {"lines", nullptr}};
    if (part.lines) {
        json["lines"] = *part.lines;
    }
    return json;
}

Json FindingAsJson(const Finding &finding) {
    return {{"severity", SeverityName(finding.severity)},
            {"file", kParts[finding.part].file},
            {"line", finding.line},
            {"text", finding.text}};
}

void ComplainOf(const Finding &finding) {
    const std::string line = finding.line == 0 ? "" : ":" + std::to_string(finding.line);
    Complain(kParts[finding.part].file + line + ": " + SeverityName(finding.severity) + ": " +
             Utf8ToTerminal(finding.text));
}

}  // namespace

int RunShow(const Arguments &arguments) {
    if (arguments.Has("lang")) {
        UseImportLanguage(arguments.Get("lang"));
    }
    const OpenedDisk disk(arguments.Get("DISK"));
    const std::vector<Finding> findings = CheckDisk(disk.Folder());
    Json files = Json::array();
    for (const Part part : {kCustomer, kAddress, kHeartbeat}) {
        const ShownPart shown = ReadPart(disk.Folder(), part);
        if (arguments.Has("json")) {
            files.push_back(PartAsJson(kParts[part], shown));
        } else {
            PrintPart(kParts[part], shown);
        }
    }
    if (arguments.Has("json")) {
        Json list = Json::array();
        for (const Finding &finding : findings) {
            list.push_back(FindingAsJson(finding));
        }
        PrintJson({{"files", files}, {"findings", list}});
    } else {
        std::ranges::for_each(findings, ComplainOf);
    }
    const bool refused = std::ranges::any_of(
        findings, [](const Finding &finding) { return finding.severity == Severity::kRefused; });
    return refused ? EX_DATAERR : EX_OK;
}

}  // namespace veloxctl::keydisk
