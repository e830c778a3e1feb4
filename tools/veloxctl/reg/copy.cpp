// "veloxctl reg copy".
#include "failure.h"
#include "prompt.h"
#include "reg/commands.h"
#include "registry.h"
#include "terminal.h"
#include "values.h"

namespace veloxctl::reg {

namespace {

using Kind = regfile::Change::Kind;

void AppendKey(const std::string &target, const std::vector<regfile::Value> &values,
               std::vector<regfile::Change> *changes) {
    const auto path = std::make_shared<const std::string>(target);
    changes->push_back({.kind = Kind::kCreateKey, .path = path, .name = "", .data = {}});
    for (const regfile::Value &value : values) {
        changes->push_back({.kind = Kind::kSetValue,
                            .path = path,
                            .name = value.name,
                            .type = value.type,
                            .data = value.data});
    }
}

// The first value of the target that the copy would replace by another one, for a message.
std::optional<std::string> FirstReplaced(const std::vector<regfile::Change> &changes) {
    for (const regfile::Change &change : changes) {
        if (change.kind != Kind::kSetValue) {
            continue;
        }
        const std::optional<regfile::Value> old = ReadValue(*change.path, change.name);
        if (old && (old->type != change.type || old->data != change.data)) {
            return ShownKey(*change.path) + ": the value " + ShownName(change.name) + " exists";
        }
    }
    return std::nullopt;
}

std::vector<regfile::Change> Copies(const std::string &source, const std::string &target,
                                    bool recursive) {
    std::vector<regfile::Change> changes;
    if (!recursive) {
        AppendKey(target, ReadExistingKey(source).values, &changes);
        return changes;
    }
    WalkKeys(source, [&](const std::string &path, const KeyContent &content) {
        // What lies below the source comes to the same place below the target.
        const std::string rest =
            path.size() == source.size() ? "" : path.substr(source.empty() ? 0 : source.size() + 1);
        AppendKey(rest.empty() ? target : Below(target, rest), content.values, &changes);
    });
    return changes;
}

}  // namespace

int RunCopy(const Arguments &arguments) {
    const std::string source = KeyPath(arguments.Get("SOURCE"));
    const std::string target = KeyPath(arguments.Get("TARGET"));
    if (Folded(source) == Folded(target)) {
        Fail(EX_USAGE, "reg copy: source and target are the same key");
    }
    const std::vector<regfile::Change> changes = Copies(source, target, arguments.Has("recursive"));
    if (!arguments.Has("force")) {
        if (const std::optional<std::string> replaced = FirstReplaced(changes)) {
            Confirm(*replaced, "-f replaces it");
        }
    }
    ApplyChanges(changes, [&](std::size_t index) { return ShownKey(*changes[index].path); });
    return EX_OK;
}

}  // namespace veloxctl::reg
