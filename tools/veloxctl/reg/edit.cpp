// "veloxctl reg add" and "veloxctl reg delete".
#include "failure.h"
#include "prompt.h"
#include "reg/commands.h"
#include "registry.h"
#include "terminal.h"
#include "values.h"

namespace veloxctl::reg {

namespace {

using Kind = regfile::Change::Kind;

void ApplyTo(const std::string &path, std::vector<regfile::Change> changes) {
    const auto shared = std::make_shared<const std::string>(path);
    for (regfile::Change &change : changes) {
        change.path = shared;
    }
    ApplyChanges(changes, [&](std::size_t) { return ShownKey(path); });
}

regfile::Change Removal(const std::string &name) {
    return {.kind = Kind::kDeleteValue, .path = nullptr, .name = name, .data = {}};
}

regfile::Change ValueAsked(const Arguments &arguments, const std::string &name) {
    regfile::Change change;
    change.kind = Kind::kSetValue;
    change.name = name;
    change.type = TypeNamed(arguments.GetOr("type", "REG_SZ"));
    change.data = DataFromWord(change.type, arguments.GetOr("data", ""));
    return change;
}

// Asks before a value that differs is lost.
void ConfirmReplacement(const std::string &path, const regfile::Change &change) {
    const std::optional<regfile::Value> old = ReadValue(path, change.name);
    if (old && (old->type != change.type || old->data != change.data)) {
        Confirm(ShownKey(path) + ": the value " + ShownName(change.name) + " exists",
                "-f replaces it");
    }
}

int DeleteValue(const std::string &path, const std::string &name) {
    if (!ReadValue(path, name)) {
        Fail(EX_NOINPUT, ShownKey(path) + ": there is no value " + ShownName(name));
    }
    ApplyTo(path, {Removal(name)});
    return EX_OK;
}

int DeleteAllValues(const std::string &path) {
    std::vector<regfile::Change> changes;
    for (const regfile::Value &value : ReadExistingKey(path).values) {
        changes.push_back(Removal(value.name));
    }
    ApplyTo(path, std::move(changes));
    return EX_OK;
}

int DeleteKey(const std::string &path, bool force) {
    if (path.empty()) {
        Fail(EX_USAGE, "the root cannot be deleted");
    }
    if (ReadExistingKey(path).sub_keys.empty()) {
        // Sub-keys that come meanwhile are kept: this call refuses to take them along.
        const LONG error = RegDeleteKey(HKEY_LOCAL_MACHINE, path.c_str());
        if (error != ERROR_SUCCESS) {
            FailRegistry(ShownKey(path), error);
        }
        return EX_OK;
    }
    if (!force) {
        Confirm(ShownKey(path) + ": the key has sub-keys", "-f deletes them too");
    }
    ApplyTo(path, {{.kind = Kind::kDeleteTree, .path = nullptr, .name = "", .data = {}}});
    return EX_OK;
}

}  // namespace

int RunAdd(const Arguments &arguments) {
    const std::string path = KeyPath(arguments.Get("KEY"));
    const std::optional<std::string> name = ValueNameAsked(arguments);
    if (!name && (arguments.Has("type") || arguments.Has("data"))) {
        Fail(EX_USAGE, "reg add: --type and --data need --value or --ve");
    }
    if (!name) {
        ApplyTo(path, {{.kind = Kind::kCreateKey, .path = nullptr, .name = "", .data = {}}});
        return EX_OK;
    }
    regfile::Change change = ValueAsked(arguments, *name);
    if (!arguments.Has("force")) {
        ConfirmReplacement(path, change);
    }
    ApplyTo(path, {std::move(change)});
    return EX_OK;
}

int RunDelete(const Arguments &arguments) {
    const std::string path = KeyPath(arguments.Get("KEY"));
    const std::optional<std::string> name = ValueNameAsked(arguments);
    if (name && arguments.Has("va")) {
        Fail(EX_USAGE, "reg delete: --va excludes --value and --ve");
    }
    if (arguments.Has("va")) {
        return DeleteAllValues(path);
    }
    return name ? DeleteValue(path, *name) : DeleteKey(path, arguments.Has("force"));
}

}  // namespace veloxctl::reg
