// "veloxctl reg export", "veloxctl reg import" and "veloxctl reg verify".
#include <nlohmann/json.hpp>

#include "failure.h"
#include "files.h"
#include "reg/commands.h"
#include "reg/plan.h"
#include "registry.h"
#include "terminal.h"
#include "values.h"

namespace veloxctl::reg {

namespace {

using Json = nlohmann::ordered_json;
using StepKind = PlanStep::Kind;

// "FILE:LINE", as messages name a place.
std::string Place(const std::string &file, std::size_t line) {
    return (file == "-" ? "standard input" : file) + ":" + std::to_string(line);
}

std::vector<regfile::Change> ReadChanges(const std::string &file) {
    std::vector<regfile::Change> changes;
    regfile::Problem problem;
    if (!regfile::Parse(ReadFile(file), &changes, &problem)) {
        Fail(EX_DATAERR, Place(file, problem.line) + ":" + std::to_string(problem.column) + ": " +
                             problem.cause);
    }
    return changes;
}

std::string ShownValue(const regfile::Value &value) {
    return TypeName(value.type) + "    " + ShownData(value);
}

std::string StepLine(const PlanStep &step) {
    std::string key = ShownKey(step.path);
    switch (step.kind) {
        case StepKind::kCreateKey:
            return "create key      " + key;
        case StepKind::kDeleteKey:
            return "delete key      " + key + "    keys below: " + std::to_string(step.keys) +
                   ", values: " + std::to_string(step.values);
        case StepKind::kAddValue:
            return "add value       " + key + "    " + ShownName(step.after->name) + "    " +
                   ShownValue(*step.after);
        case StepKind::kChangeValue:
            return "change value    " + key + "    " + ShownName(step.after->name) + "    " +
                   ShownValue(*step.before) + "    ->    " + ShownValue(*step.after);
        case StepKind::kDeleteValue:
            return "delete value    " + key + "    " + ShownName(step.before->name) + "    " +
                   ShownValue(*step.before);
    }
    return key;
}

const char *StepName(StepKind kind) {
    switch (kind) {
        case StepKind::kCreateKey:
            return "create key";
        case StepKind::kDeleteKey:
            return "delete key";
        case StepKind::kAddValue:
            return "add value";
        case StepKind::kChangeValue:
            return "change value";
        case StepKind::kDeleteValue:
            return "delete value";
    }
    return "";
}

Json StepAsJson(const PlanStep &step) {
    Json json = {{"step", StepName(step.kind)}, {"key", KeyInUtf8(step.path)}};
    if (step.kind == StepKind::kDeleteKey) {
        json["subkeys"] = step.keys;
        json["values"] = step.values;
    }
    if (step.before) {
        json["before"] = ValueAsJson(*step.before);
    }
    if (step.after) {
        json["after"] = ValueAsJson(*step.after);
    }
    return json;
}

void PrintPlan(const std::vector<PlanStep> &steps, bool as_json) {
    if (as_json) {
        Json json = Json::array();
        for (const PlanStep &step : steps) {
            json.push_back(StepAsJson(step));
        }
        PrintJson(json);
        return;
    }
    for (const PlanStep &step : steps) {
        Print(StepLine(step) + "\n");
    }
}

}  // namespace

int RunExport(const Arguments &arguments) {
    const std::string path = KeyPath(arguments.Get("KEY"));
    std::string text = regfile::FormatHeader();
    WalkKeys(path, [&](const std::string &here, const KeyContent &content) {
        text += regfile::FormatKey(here, content.values);
    });
    if (arguments.Has("utf16")) {
        text = regfile::ToUtf16WithMark(text);
    }
    const std::string file = arguments.GetOr("FILE", "-");
    if (file == "-") {
        Print(text);
    } else {
        // The registry may hold passwords.
        WriteFile(file, text, 0600, arguments.Has("force"));
    }
    return EX_OK;
}

int RunImport(const Arguments &arguments) {
    const std::string &file = arguments.Get("FILE");
    const std::vector<regfile::Change> changes = ReadChanges(file);
    if (arguments.Has("dry-run")) {
        PrintPlan(MakePlan(changes), arguments.Has("json"));
        return EX_OK;
    }
    ApplyChanges(changes, [&](std::size_t index) { return Place(file, changes[index].line); });
    return EX_OK;
}

int RunVerify(const Arguments & /*arguments*/) {
    char message[1024] = "";
    const LONG error = KesRegVerify(message, sizeof(message));
    if (error == ERROR_INVALID_DATA) {
        Fail(EX_DATAERR,
             std::string("the registry store is damaged: ") + StoredToTerminal(message));
    }
    if (error != ERROR_SUCCESS) {
        FailRegistry("the registry store could not be verified", error);
    }
    Print("The registry store is sound.\n");
    return EX_OK;
}

}  // namespace veloxctl::reg
