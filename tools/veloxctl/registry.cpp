#include "registry.h"

#include <regfile/text.h>

#include <algorithm>

#include "failure.h"
#include "terminal.h"

namespace veloxctl {

namespace {

constexpr std::string_view kRoot = "HKEY_LOCAL_MACHINE";
constexpr std::string_view kShortRoot = "HKLM";
constexpr std::string_view kOtherRoots[] = {"HKCU", "HKCR", "HKU", "HKCC"};

// An open key, closed at the end.
class Key {
  public:
    Key() = default;
    ~Key() {
        if (handle_ != 0) {
            RegCloseKey(handle_);
        }
    }
    Key(const Key &) = delete;
    Key &operator=(const Key &) = delete;

    LONG Open(const std::string &path) {
        return RegOpenKeyEx(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &handle_);
    }
    HKEY Get() const { return handle_; }

  private:
    HKEY handle_ = 0;
};

bool IsAbsent(LONG error) {
    return error == ERROR_FILE_NOT_FOUND;
}

void Require(LONG error, const std::string &path) {
    if (error != ERROR_SUCCESS) {
        FailRegistry(ShownKey(path), error);
    }
}

// A root that this registry does not have, or a remote machine.
bool NamesOtherRoot(const std::string &path) {
    const std::string first = Folded(path.substr(0, path.find('\\')));
    return first.starts_with("hkey_") || (first.empty() && !path.empty()) ||
           std::ranges::any_of(kOtherRoots,
                               [&](std::string_view root) { return first == Folded(root); });
}

std::optional<regfile::Value> QueryValue(const Key &key, const std::string &path,
                                         const std::string &name) {
    regfile::Value value;
    value.name = name;
    value.data.resize(256);
    for (;;) {
        auto size = static_cast<DWORD>(value.data.size());
        DWORD type = 0;
        const LONG error =
            RegQueryValueEx(key.Get(), name.c_str(), nullptr, &type, value.data.data(), &size);
        if (IsAbsent(error)) {
            return std::nullopt;
        }
        if (error != ERROR_MORE_DATA) {
            Require(error, path);
            value.type = type;
            value.data.resize(size);
            return value;
        }
        value.data.resize(size);
    }
}

void ReadSubKeys(const Key &key, const std::string &path, KeyContent *content) {
    char name[KES_REG_MAX_KEY_NAME + 1];
    for (DWORD index = 0;; ++index) {
        DWORD length = sizeof(name);
        const LONG error =
            RegEnumKeyEx(key.Get(), index, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (error == ERROR_NO_MORE_ITEMS) {
            return;
        }
        Require(error, path);
        content->sub_keys.emplace_back(name, length);
    }
}

// The value number index into *value; false past the last one. *buffer grows to the largest value.
bool ReadValueAt(const Key &key, const std::string &path, DWORD index,
                 std::vector<std::uint8_t> *buffer, regfile::Value *value) {
    char name[KES_REG_MAX_VALUE_NAME + 1];
    for (;;) {
        DWORD length = sizeof(name);
        auto size = static_cast<DWORD>(buffer->size());
        const LONG error = RegEnumValue(key.Get(), index, name, &length, nullptr, &value->type,
                                        buffer->data(), &size);
        if (error == ERROR_NO_MORE_ITEMS) {
            return false;
        }
        if (error == ERROR_MORE_DATA && size > buffer->size()) {
            buffer->resize(size);
            continue;
        }
        Require(error, path);
        value->name.assign(name, length);
        value->data.assign(buffer->begin(), buffer->begin() + static_cast<std::ptrdiff_t>(size));
        return true;
    }
}

void ReadValues(const Key &key, const std::string &path, KeyContent *content) {
    std::vector<std::uint8_t> buffer(4096);
    regfile::Value value;
    for (DWORD index = 0; ReadValueAt(key, path, index, &buffer, &value); ++index) {
        content->values.push_back(value);
    }
}

DWORD OperationOf(regfile::Change::Kind kind) {
    switch (kind) {
        case regfile::Change::Kind::kCreateKey:
            return KES_REG_CREATE_KEY;
        case regfile::Change::Kind::kDeleteTree:
            return KES_REG_DELETE_TREE;
        case regfile::Change::Kind::kSetValue:
            return KES_REG_SET_VALUE;
        case regfile::Change::Kind::kDeleteValue:
            return KES_REG_DELETE_VALUE;
    }
    return 0;
}

}  // namespace

std::string KeyPath(const std::string &word) {
    std::string path = TerminalToStored(word, "the key");
    if (path.find('\\') == std::string::npos) {
        std::ranges::replace(path, '/', '\\');
    }
    const std::size_t first = std::min(path.find('\\'), path.size());
    const std::string root = Folded(path.substr(0, first));
    if (root == Folded(kRoot) || root == Folded(kShortRoot)) {
        return path.substr(std::min(first + 1, path.size()));
    }
    if (NamesOtherRoot(path)) {
        Fail(EX_USAGE, StoredToTerminal(path) + ": there is no other root than HKEY_LOCAL_MACHINE");
    }
    return path;
}

std::string ShownKey(std::string_view path) {
    return Utf8ToTerminal(KeyInUtf8(path));
}

std::string KeyInUtf8(std::string_view path) {
    return path.empty() ? std::string(kRoot)
                        : std::string(kRoot) + "\\" + regfile::NameToUtf8(path);
}

bool KeyExists(const std::string &path) {
    Key key;
    const LONG error = key.Open(path);
    if (!IsAbsent(error)) {
        Require(error, path);
    }
    return error == ERROR_SUCCESS;
}

std::optional<regfile::Value> ReadValue(const std::string &path, const std::string &name) {
    Key key;
    const LONG error = key.Open(path);
    if (IsAbsent(error)) {
        return std::nullopt;
    }
    Require(error, path);
    return QueryValue(key, path, name);
}

std::optional<KeyContent> ReadKey(const std::string &path) {
    Key key;
    const LONG error = key.Open(path);
    if (IsAbsent(error)) {
        return std::nullopt;
    }
    Require(error, path);
    KeyContent content;
    ReadValues(key, path, &content);
    ReadSubKeys(key, path, &content);
    return content;
}

KeyContent ReadExistingKey(const std::string &path) {
    std::optional<KeyContent> content = ReadKey(path);
    if (!content) {
        FailRegistry(ShownKey(path), ERROR_FILE_NOT_FOUND);
    }
    return std::move(*content);
}

std::string Below(const std::string &path, std::string_view name) {
    return path.empty() ? std::string(name) : path + "\\" + std::string(name);
}

void WalkKeys(const std::string &path,
              const std::function<void(const std::string &, const KeyContent &)> &visit) {
    std::vector<std::string> left = {path};
    while (!left.empty()) {
        const std::string here = std::move(left.back());
        left.pop_back();
        const KeyContent content = ReadExistingKey(here);
        visit(here, content);
        for (auto name = content.sub_keys.rbegin(); name != content.sub_keys.rend(); ++name) {
            left.push_back(Below(here, *name));
        }
    }
}

std::string Folded(std::string_view name) {
    std::string folded(name);
    for (char &byte : folded) {
        if (byte >= 'A' && byte <= 'Z') {
            byte = static_cast<char>(byte - 'A' + 'a');
        }
    }
    return folded;
}

void ApplyChanges(const std::vector<regfile::Change> &changes,
                  const std::function<std::string(std::size_t)> &subject) {
    std::vector<KES_REG_CHANGE> batch;
    batch.reserve(changes.size());
    for (const regfile::Change &change : changes) {
        batch.push_back({.dwOperation = OperationOf(change.kind),
                         .dwType = change.type,
                         .lpPath = change.path->c_str(),
                         .lpValueName = change.name.c_str(),
                         .lpData = change.data.data(),
                         .cbData = static_cast<DWORD>(change.data.size()),
                         .dwReserved = 0});
    }
    auto failed = static_cast<DWORD>(batch.size());
    const LONG error = KesRegApplyBatch(HKEY_LOCAL_MACHINE, batch.data(),
                                        static_cast<DWORD>(batch.size()), &failed);
    if (error != ERROR_SUCCESS) {
        FailRegistry(failed < changes.size() ? subject(failed) : "the registry", error);
    }
}

}  // namespace veloxctl
