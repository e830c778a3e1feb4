// The registry as the commands see it: keys by path, whole contents, failures with messages.
//
// Paths are below HKEY_LOCAL_MACHINE, without it, as stored; the root's path is empty.
#ifndef VELOXCTL_REGISTRY_H
#define VELOXCTL_REGISTRY_H

#include <ntwin32/registry.h>
#include <regfile/regfile.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace veloxctl {

// The path that a word of the command line names: with or without root, with slashes for
// backslashes when it holds no backslash. Fails (EX_USAGE) on another root.
std::string KeyPath(const std::string &word);

// "HKEY_LOCAL_MACHINE\path" as the terminal shows it, and as UTF-8.
std::string ShownKey(std::string_view path);
std::string KeyInUtf8(std::string_view path);

bool KeyExists(const std::string &path);

// Nothing when key or value is absent.
std::optional<regfile::Value> ReadValue(const std::string &path, const std::string &name);

struct KeyContent {
    std::vector<regfile::Value> values;  // in the order of their creation
    std::vector<std::string> sub_keys;   // names, in folded alphabetical order
};

// Nothing when the key is absent.
std::optional<KeyContent> ReadKey(const std::string &path);

// Fails (EX_NOINPUT) when the key is absent.
KeyContent ReadExistingKey(const std::string &path);

// The path of a sub-key.
std::string Below(const std::string &path, std::string_view name);

// Calls visit for the key at path, which must exist, and for every key below it, parents first.
void WalkKeys(const std::string &path,
              const std::function<void(const std::string &path, const KeyContent &content)> &visit);

// Names as the registry compares them: in ASCII small letters.
std::string Folded(std::string_view name);

// Applies the changes as one durable transaction, whole or not at all. subject(index) names the
// change that could not be made in the failure's message.
void ApplyChanges(const std::vector<regfile::Change> &changes,
                  const std::function<std::string(std::size_t index)> &subject);

}  // namespace veloxctl

#endif  // VELOXCTL_REGISTRY_H
