// "veloxctl reg query".
#include <nlohmann/json.hpp>

#include "failure.h"
#include "reg/commands.h"
#include "registry.h"
#include "terminal.h"
#include "values.h"

namespace veloxctl::reg {

namespace {

using Json = nlohmann::ordered_json;

std::string ValueLine(const regfile::Value &value) {
    return "    " + ShownName(value.name) + "    " + TypeName(value.type) + "    " +
           ShownData(value) + "\n";
}

Json KeyAsJson(const std::string &path, const std::vector<regfile::Value> &values) {
    Json json = {{"key", KeyInUtf8(path)}, {"values", Json::array()}};
    for (const regfile::Value &value : values) {
        json["values"].push_back(ValueAsJson(value));
    }
    return json;
}

void PrintKey(const std::string &path, const std::vector<regfile::Value> &values) {
    Print(ShownKey(path) + "\n");
    for (const regfile::Value &value : values) {
        Print(ValueLine(value));
    }
}

[[noreturn]] void FailMissingValue(const std::string &path, const std::string &name) {
    Fail(EX_NOINPUT, ShownKey(path) + ": there is no value " + ShownName(name));
}

int QueryOneValue(const std::string &path, const std::string &name, bool json) {
    const std::optional<regfile::Value> value = ReadValue(path, name);
    if (!value && !KeyExists(path)) {
        FailRegistry(ShownKey(path), ERROR_FILE_NOT_FOUND);
    }
    if (!value) {
        FailMissingValue(path, name);
    }
    if (json) {
        PrintJson(KeyAsJson(path, {*value}));
    } else {
        PrintKey(path, {*value});
    }
    return EX_OK;
}

int QueryKey(const std::string &path, bool json) {
    const KeyContent content = ReadExistingKey(path);
    if (json) {
        Json key = KeyAsJson(path, content.values);
        key["subkeys"] = Json::array();
        for (const std::string &name : content.sub_keys) {
            key["subkeys"].push_back(KeyInUtf8(Below(path, name)));
        }
        PrintJson(key);
        return EX_OK;
    }
    PrintKey(path, content.values);
    if (!content.sub_keys.empty()) {
        Print("\n");
    }
    for (const std::string &name : content.sub_keys) {
        Print(ShownKey(Below(path, name)) + "\n");
    }
    return EX_OK;
}

// Without the values of another name, where one is asked for; false when none is left then.
bool KeepNamed(const std::optional<std::string> &name, std::vector<regfile::Value> *values) {
    if (!name) {
        return true;
    }
    std::erase_if(*values,
                  [&](const regfile::Value &value) { return Folded(value.name) != Folded(*name); });
    return !values->empty();
}

int QueryTree(const std::string &path, const std::optional<std::string> &name, bool json) {
    Json keys = Json::array();
    bool found = false;
    WalkKeys(path, [&](const std::string &here, const KeyContent &content) {
        std::vector<regfile::Value> values = content.values;
        if (!KeepNamed(name, &values)) {
            return;
        }
        if (json) {
            keys.push_back(KeyAsJson(here, values));
        } else {
            Print(found ? "\n" : "");
            PrintKey(here, values);
        }
        found = true;
    });
    if (!found) {
        FailMissingValue(path, *name);
    }
    if (json) {
        PrintJson(keys);
    }
    return EX_OK;
}

}  // namespace

std::optional<std::string> ValueNameAsked(const Arguments &arguments) {
    if (arguments.Has("value") && arguments.Has("ve")) {
        Fail(EX_USAGE, arguments.CommandName() + ": --value and --ve exclude each other");
    }
    if (arguments.Has("ve")) {
        return std::string();
    }
    if (arguments.Has("value")) {
        return TerminalToStored(arguments.Get("value"), "the value's name");
    }
    return std::nullopt;
}

int RunQuery(const Arguments &arguments) {
    const std::string path = KeyPath(arguments.Get("KEY"));
    const std::optional<std::string> name = ValueNameAsked(arguments);
    const bool json = arguments.Has("json");
    if (arguments.Has("recursive")) {
        return QueryTree(path, name, json);
    }
    return name ? QueryOneValue(path, *name, json) : QueryKey(path, json);
}

}  // namespace veloxctl::reg
