// The registry of libNTwin32 in memory. A key's handle is its id and is never given again.
#include "fakes/registry.h"

#include <ntwin32/registry.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>

#include "state.h"

namespace fakes {

namespace {

struct Value {
    std::string name;
    DWORD type = 0;
    std::string bytes;
};

struct Key {
    HKEY id = 0;
    Key *parent = nullptr;
    std::string name;
    std::map<std::string, std::unique_ptr<Key>> children;  // by folded name
    std::vector<Value> values;                             // in the order of their creation
};

struct Registry {
    Key root{HKEY_LOCAL_MACHINE, nullptr, {}, {}, {}};
    std::map<HKEY, Key *> by_id{{HKEY_LOCAL_MACHINE, &root}};
    std::map<HKEY, int> opened;  // times opened and not closed
    HKEY next_id = 0x100000001;
    int closed_handle_calls = 0;
};

std::unique_ptr<Registry> &Holder() {
    static auto registry = std::make_unique<Registry>();
    return registry;
}

Registry &Store() {
    return *Holder();
}

std::string Fold(std::string_view name) {
    std::string folded(name);
    for (char &c : folded) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c;
    }
    return folded;
}

// Cuts a path into its components; false for one with an empty component.
bool Split(std::string_view path, std::vector<std::string> *components) {
    while (!path.empty()) {
        const std::size_t end = path.find('\\');
        components->emplace_back(path.substr(0, end));
        if (components->back().empty() || end + 1 == path.size()) {
            return false;
        }
        path = end == std::string_view::npos ? std::string_view() : path.substr(end + 1);
    }
    return true;
}

LONG CheckComponents(const std::vector<std::string> &components) {
    const bool too_long = std::any_of(components.begin(), components.end(), [](const auto &name) {
        return name.size() > KES_REG_MAX_KEY_NAME;
    });
    return too_long || components.size() > KES_REG_MAX_DEPTH ? ERROR_INVALID_PARAMETER
                                                             : ERROR_SUCCESS;
}

Key *FindBelow(Key *key, const std::vector<std::string> &components) {
    for (const std::string &component : components) {
        const auto child = key->children.find(Fold(component));
        if (child == key->children.end()) {
            return nullptr;
        }
        key = child->second.get();
    }
    return key;
}

Key *CreateBelow(Key *key, const std::vector<std::string> &components, bool *created) {
    for (const std::string &component : components) {
        std::unique_ptr<Key> &child = key->children[Fold(component)];
        if (!child) {
            child = std::make_unique<Key>();
            child->id = Store().next_id++;
            child->parent = key;
            child->name = component;
            Store().by_id[child->id] = child.get();
            *created = true;
        }
        key = child.get();
    }
    return key;
}

void Forget(Key *key) {
    for (auto &[folded, child] : key->children) {
        Forget(child.get());
    }
    Store().by_id.erase(key->id);
}

void Remove(Key *key) {
    Forget(key);
    key->parent->children.erase(Fold(key->name));
}

Key *FindPath(std::string_view path) {
    std::vector<std::string> components;
    return Split(path, &components) ? FindBelow(&Store().root, components) : nullptr;
}

Key *MakePath(std::string_view path) {
    std::vector<std::string> components;
    bool created = false;
    EXPECT_TRUE(Split(path, &components)) << path;
    return CreateBelow(&Store().root, components, &created);
}

Value *FindValue(Key *key, std::string_view name) {
    const auto found =
        std::find_if(key->values.begin(), key->values.end(),
                     [&](const Value &value) { return Fold(value.name) == Fold(name); });
    return found == key->values.end() ? nullptr : &*found;
}

void Put(Key *key, std::string_view name, DWORD type, std::string_view bytes) {
    Value *value = FindValue(key, name);
    if (value == nullptr) {
        value = &key->values.emplace_back();
        value->name = name;
    }
    value->type = type;
    value->bytes = bytes;
}

std::string PathOf(const Key *key) {
    std::string path;
    for (; key->parent != nullptr; key = key->parent) {
        path.insert(0, path.empty() ? key->name : key->name + "\\");
    }
    return path;
}

// The key of a handle, with a call on a closed one counted.
LONG KeyOf(HKEY handle, Key **key) {
    const auto found = Store().by_id.find(handle);
    if (found == Store().by_id.end()) {
        return handle >= 0x100000001 && handle < Store().next_id ? ERROR_KEY_DELETED
                                                                 : ERROR_INVALID_HANDLE;
    }
    if (handle != HKEY_LOCAL_MACHINE && Store().opened[handle] == 0) {
        ++Store().closed_handle_calls;
    }
    *key = found->second;
    return ERROR_SUCCESS;
}

bool WellFormed(REGSAM access) {
    return access != 0 && (access & ~KEY_ALL_ACCESS) == 0;
}

std::string DetailOf(HKEY handle, std::string_view path) {
    const auto found = Store().by_id.find(handle);
    std::string detail = found == Store().by_id.end() ? "?" : PathOf(found->second);
    if (!detail.empty() && !path.empty()) {
        detail += '\\';
    }
    return detail.append(path);
}

std::string Hexadecimal(DWORD number) {
    char text[16];
    (void)std::snprintf(text, sizeof text, "0x%X", number);
    return text;
}

LONG OpenOrCreate(HKEY handle, const char *path, bool create, HKEY *result, DWORD *disposition) {
    Key *key = nullptr;
    std::vector<std::string> components;
    if (const LONG error = KeyOf(handle, &key); error != ERROR_SUCCESS) {
        return error;
    }
    if (!Split(path == nullptr ? "" : path, &components)) {
        return ERROR_BAD_PATHNAME;
    }
    if (const LONG error = CheckComponents(components); error != ERROR_SUCCESS) {
        return error;
    }
    bool created = false;
    key = create ? CreateBelow(key, components, &created) : FindBelow(key, components);
    if (key == nullptr) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (key->id != HKEY_LOCAL_MACHINE) {  // predefined: neither opened nor closed
        ++Store().opened[key->id];
    }
    *result = key->id;
    if (disposition != nullptr) {
        *disposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    }
    return ERROR_SUCCESS;
}

LONG CopyName(const std::string &name, char *buffer, DWORD *length) {
    if (name.size() >= *length) {
        return ERROR_MORE_DATA;
    }
    std::memcpy(buffer, name.c_str(), name.size() + 1);
    *length = static_cast<DWORD>(name.size());
    return ERROR_SUCCESS;
}

LONG CopyData(const Value &value, DWORD *type, BYTE *data, DWORD *size) {
    if (type != nullptr) {
        *type = value.type;
    }
    if (size == nullptr) {
        return data == nullptr ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
    }
    const DWORD capacity = *size;
    *size = static_cast<DWORD>(value.bytes.size());
    if (data == nullptr) {
        return ERROR_SUCCESS;
    }
    if (value.bytes.size() > capacity) {
        return ERROR_MORE_DATA;
    }
    std::memcpy(data, value.bytes.data(), value.bytes.size());
    return ERROR_SUCCESS;
}

void DumpKey(const Key &key, std::vector<std::string> *lines) {
    const std::string path = PathOf(&key);
    if (!path.empty()) {
        lines->push_back(path);
    }
    for (const Value &value : key.values) {
        std::string line = path + " " + value.name + "=";
        if (value.type == REG_DWORD && value.bytes.size() == sizeof(DWORD)) {
            DWORD number = 0;
            std::memcpy(&number, value.bytes.data(), sizeof number);
            line += "REG_DWORD:" + Hexadecimal(number);
        } else if (value.type == REG_SZ) {
            line += "REG_SZ:" + value.bytes.substr(0, value.bytes.find('\0'));
        } else {
            line += "type " + std::to_string(value.type) + ":" + value.bytes;
        }
        lines->push_back(line);
    }
    for (const auto &[folded, child] : key.children) {
        DumpKey(*child, lines);
    }
}

}  // namespace

void CreateKey(std::string_view path) {
    MakePath(path);
}

void DeleteTree(std::string_view path) {
    if (Key *key = FindPath(path); key != nullptr && key->parent != nullptr) {
        Remove(key);
    }
}

void StoreText(std::string_view path, std::string_view name, std::string_view text) {
    Put(MakePath(path), name, REG_SZ, std::string(text) + '\0');
}

void StoreNumber(std::string_view path, std::string_view name, DWORD number) {
    Put(MakePath(path), name, REG_DWORD,
        std::string_view(reinterpret_cast<const char *>(&number), sizeof number));
}

void StoreBytes(std::string_view path, std::string_view name, DWORD type, std::string_view bytes) {
    Put(MakePath(path), name, type, bytes);
}

void DeleteValue(std::string_view path, std::string_view name) {
    if (Key *key = FindPath(path); key != nullptr) {
        std::erase_if(key->values,
                      [&](const Value &value) { return Fold(value.name) == Fold(name); });
    }
}

bool KeyExists(std::string_view path) {
    return FindPath(path) != nullptr;
}

std::optional<std::pair<DWORD, std::string>> Bytes(std::string_view path, std::string_view name) {
    Key *key = FindPath(path);
    const Value *value = key == nullptr ? nullptr : FindValue(key, name);
    if (value == nullptr) {
        return std::nullopt;
    }
    return std::pair(value->type, value->bytes);
}

std::optional<std::string> Text(std::string_view path, std::string_view name) {
    const auto stored = Bytes(path, name);
    if (!stored || stored->first != REG_SZ || stored->second.find('\0') == std::string::npos ||
        stored->second.find('\0') + 1 != stored->second.size()) {
        return std::nullopt;
    }
    return stored->second.substr(0, stored->second.size() - 1);
}

std::optional<DWORD> Number(std::string_view path, std::string_view name) {
    const auto stored = Bytes(path, name);
    if (!stored || stored->first != REG_DWORD || stored->second.size() != sizeof(DWORD)) {
        return std::nullopt;
    }
    DWORD number = 0;
    std::memcpy(&number, stored->second.data(), sizeof number);
    return number;
}

std::vector<std::string> SubKeys(std::string_view path) {
    std::vector<std::string> names;
    if (const Key *key = FindPath(path); key != nullptr) {
        for (const auto &[folded, child] : key->children) {
            names.push_back(child->name);
        }
    }
    return names;
}

std::vector<std::string> ValueNames(std::string_view path) {
    std::vector<std::string> names;
    if (const Key *key = FindPath(path); key != nullptr) {
        for (const Value &value : key->values) {
            names.push_back(value.name);
        }
    }
    return names;
}

std::vector<std::string> Dump(std::string_view path) {
    std::vector<std::string> lines;
    if (const Key *key = FindPath(path); key != nullptr) {
        DumpKey(*key, &lines);
    }
    return lines;
}

int OpenKeys() {
    int open = 0;
    for (const auto &[id, times] : Store().opened) {
        open += times;
    }
    return open;
}

int ClosedHandleCalls() {
    return Store().closed_handle_calls;
}

namespace internal {

void ResetRegistry() {
    Holder() = std::make_unique<Registry>();
}

}  // namespace internal

}  // namespace fakes

using namespace fakes;

LONG RegOpenKeyEx(HKEY hKey, const char *lpSubKey, DWORD, REGSAM samDesired,
                  HKEY *phkResult) noexcept {
    const std::string path = lpSubKey == nullptr ? "" : lpSubKey;
    if (const LONG error =
            Enter("RegOpenKeyEx", DetailOf(hKey, path) + " sam=" + Hexadecimal(samDesired));
        error != 0) {
        return error;
    }
    if (phkResult == nullptr || !WellFormed(samDesired)) {
        return ERROR_INVALID_PARAMETER;
    }
    return OpenOrCreate(hKey, lpSubKey, false, phkResult, nullptr);
}

LONG RegCreateKeyEx(HKEY hKey, const char *lpSubKey, DWORD, const char *, DWORD dwOptions,
                    REGSAM samDesired, const void *, HKEY *phkResult,
                    DWORD *lpdwDisposition) noexcept {
    const std::string path = lpSubKey == nullptr ? "" : lpSubKey;
    if (const LONG error =
            Enter("RegCreateKeyEx", DetailOf(hKey, path) + " sam=" + Hexadecimal(samDesired) +
                                        " options=" + std::to_string(dwOptions));
        error != 0) {
        return error;
    }
    if (phkResult == nullptr || !WellFormed(samDesired)) {
        return ERROR_INVALID_PARAMETER;
    }
    return OpenOrCreate(hKey, lpSubKey, true, phkResult, lpdwDisposition);
}

LONG RegCreateKey(HKEY hKey, const char *lpSubKey, HKEY *phkResult) noexcept {
    if (const LONG error =
            Enter("RegCreateKey", DetailOf(hKey, lpSubKey == nullptr ? "" : lpSubKey));
        error != 0) {
        return error;
    }
    return OpenOrCreate(hKey, lpSubKey, true, phkResult, nullptr);
}

LONG RegQueryValueEx(HKEY hKey, const char *lpValueName, DWORD *, DWORD *lpType, BYTE *lpData,
                     DWORD *lpcbData) noexcept {
    const std::string name = lpValueName == nullptr ? "" : lpValueName;
    if (const LONG error = Enter("RegQueryValueEx", DetailOf(hKey, "") + " " + name); error != 0) {
        return error;
    }
    Key *key = nullptr;
    if (const LONG error = KeyOf(hKey, &key); error != ERROR_SUCCESS) {
        return error;
    }
    const Value *value = FindValue(key, name);
    return value == nullptr ? ERROR_FILE_NOT_FOUND : CopyData(*value, lpType, lpData, lpcbData);
}

LONG RegSetValueEx(HKEY hKey, const char *lpValueName, DWORD, DWORD dwType, const BYTE *lpData,
                   DWORD cbData) noexcept {
    const std::string name = lpValueName == nullptr ? "" : lpValueName;
    if (const LONG error = Enter("RegSetValueEx", DetailOf(hKey, "") + " " + name); error != 0) {
        return error;
    }
    Key *key = nullptr;
    if (const LONG error = KeyOf(hKey, &key); error != ERROR_SUCCESS) {
        return error;
    }
    if ((lpData == nullptr && cbData != 0) || cbData > KES_REG_MAX_DATA ||
        name.size() > KES_REG_MAX_VALUE_NAME) {
        return ERROR_INVALID_PARAMETER;
    }
    Put(key, name, dwType, std::string_view(reinterpret_cast<const char *>(lpData), cbData));
    return ERROR_SUCCESS;
}

LONG RegEnumKeyEx(HKEY hKey, DWORD dwIndex, char *lpName, DWORD *lpcchName, DWORD *, char *lpClass,
                  DWORD *lpcchClass, FILETIME *) noexcept {
    if (const LONG error =
            Enter("RegEnumKeyEx", DetailOf(hKey, "") + " " + std::to_string(dwIndex));
        error != 0) {
        return error;
    }
    Key *key = nullptr;
    if (const LONG error = KeyOf(hKey, &key); error != ERROR_SUCCESS) {
        return error;
    }
    if (dwIndex >= key->children.size()) {
        return ERROR_NO_MORE_ITEMS;
    }
    if (lpClass != nullptr && lpcchClass != nullptr && *lpcchClass > 0) {
        lpClass[0] = '\0';
        *lpcchClass = 0;
    }
    return CopyName(std::next(key->children.begin(), dwIndex)->second->name, lpName, lpcchName);
}

LONG RegEnumValue(HKEY hKey, DWORD dwIndex, char *lpValueName, DWORD *lpcchValueName, DWORD *,
                  DWORD *lpType, BYTE *lpData, DWORD *lpcbData) noexcept {
    if (const LONG error =
            Enter("RegEnumValue", DetailOf(hKey, "") + " " + std::to_string(dwIndex));
        error != 0) {
        return error;
    }
    Key *key = nullptr;
    if (const LONG error = KeyOf(hKey, &key); error != ERROR_SUCCESS) {
        return error;
    }
    if (dwIndex >= key->values.size()) {
        return ERROR_NO_MORE_ITEMS;
    }
    const Value &value = key->values[dwIndex];
    if (value.name.size() >= *lpcchValueName) {
        return ERROR_MORE_DATA;
    }
    if (const LONG error = CopyData(value, lpType, lpData, lpcbData); error != ERROR_SUCCESS) {
        return error;
    }
    return CopyName(value.name, lpValueName, lpcchValueName);
}

LONG RegQueryInfoKey(HKEY hKey, char *lpClass, DWORD *lpcchClass, DWORD *, DWORD *lpcSubKeys,
                     DWORD *lpcbMaxSubKeyLen, DWORD *lpcbMaxClassLen, DWORD *lpcValues,
                     DWORD *lpcbMaxValueNameLen, DWORD *lpcbMaxValueLen,
                     DWORD *lpcbSecurityDescriptor, FILETIME *lpftLastWriteTime) noexcept {
    if (const LONG error = Enter("RegQueryInfoKey", DetailOf(hKey, "")); error != 0) {
        return error;
    }
    Key *key = nullptr;
    if (const LONG error = KeyOf(hKey, &key); error != ERROR_SUCCESS) {
        return error;
    }
    std::size_t longest_key = 0;
    std::size_t longest_name = 0;
    std::size_t largest_data = 0;
    for (const auto &[folded, child] : key->children) {
        longest_key = std::max(longest_key, child->name.size());
    }
    for (const Value &value : key->values) {
        longest_name = std::max(longest_name, value.name.size());
        largest_data = std::max(largest_data, value.bytes.size());
    }
    const auto store = [](DWORD *output, std::size_t number) {
        if (output != nullptr) {
            *output = static_cast<DWORD>(number);
        }
    };
    if (lpClass != nullptr && lpcchClass != nullptr && *lpcchClass > 0) {
        lpClass[0] = '\0';
    }
    store(lpcchClass, 0);
    store(lpcSubKeys, key->children.size());
    store(lpcbMaxSubKeyLen, longest_key);
    store(lpcbMaxClassLen, 0);
    store(lpcValues, key->values.size());
    store(lpcbMaxValueNameLen, longest_name);
    store(lpcbMaxValueLen, largest_data);
    store(lpcbSecurityDescriptor, 0);
    if (lpftLastWriteTime != nullptr) {
        *lpftLastWriteTime = {};
    }
    return ERROR_SUCCESS;
}

LONG RegDeleteKey(HKEY hKey, const char *lpSubKey) noexcept {
    const std::string path = lpSubKey == nullptr ? "" : lpSubKey;
    if (const LONG error = Enter("RegDeleteKey", DetailOf(hKey, path)); error != 0) {
        return error;
    }
    Key *key = nullptr;
    std::vector<std::string> components;
    if (const LONG error = KeyOf(hKey, &key); error != ERROR_SUCCESS) {
        return error;
    }
    if (lpSubKey == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!Split(path, &components)) {
        return ERROR_BAD_PATHNAME;
    }
    key = FindBelow(key, components);
    if (key == nullptr) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (key->parent == nullptr || !key->children.empty()) {
        return ERROR_ACCESS_DENIED;
    }
    Remove(key);
    return ERROR_SUCCESS;
}

LONG RegDeleteValue(HKEY hKey, const char *lpValueName) noexcept {
    const std::string name = lpValueName == nullptr ? "" : lpValueName;
    if (const LONG error = Enter("RegDeleteValue", DetailOf(hKey, "") + " " + name); error != 0) {
        return error;
    }
    Key *key = nullptr;
    if (const LONG error = KeyOf(hKey, &key); error != ERROR_SUCCESS) {
        return error;
    }
    const std::size_t removed = std::erase_if(
        key->values, [&](const Value &value) { return Fold(value.name) == Fold(name); });
    return removed == 0 ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
}

LONG RegCloseKey(HKEY hKey) noexcept {
    // A fault that is due here reports itself and closes all the same, as a real close does.
    const LONG planned = Enter("RegCloseKey", DetailOf(hKey, ""));
    if (hKey == HKEY_LOCAL_MACHINE) {
        return ERROR_SUCCESS;
    }
    int &times = Store().opened[hKey];
    if (times == 0) {
        ++Store().closed_handle_calls;
        return ERROR_INVALID_HANDLE;
    }
    --times;
    return planned;
}
