// The fake platform's registry: in memory, with the rules of the real one (see ntwin32/registry.h).
// It is strict: it refuses to delete a key that has sub-keys, counts what is opened and closed, and
// counts calls on closed handles, which reach their key.
//
// Paths are below HKEY_LOCAL_MACHINE. Functions that store create the keys on the way; neither they
// nor the readers are logged as calls, nor do faults reach them.
#ifndef FAKES_REGISTRY_H
#define FAKES_REGISTRY_H

#include <ntwin32/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fakes {

void CreateKey(std::string_view path);
void DeleteTree(std::string_view path);
void StoreText(std::string_view path, std::string_view name, std::string_view text);
void StoreNumber(std::string_view path, std::string_view name, DWORD number);
void StoreBytes(std::string_view path, std::string_view name, DWORD type, std::string_view bytes);
void DeleteValue(std::string_view path, std::string_view name);

bool KeyExists(std::string_view path);
// The text of a REG_SZ value without its terminator; nothing when absent, of another type or not
// terminated.
std::optional<std::string> Text(std::string_view path, std::string_view name);
std::optional<DWORD> Number(std::string_view path, std::string_view name);
// Type and bytes as stored.
std::optional<std::pair<DWORD, std::string>> Bytes(std::string_view path, std::string_view name);
std::vector<std::string> SubKeys(std::string_view path);
std::vector<std::string> ValueNames(std::string_view path);

// The whole registry as lines "path", "path name=REG_SZ:text", "path name=REG_DWORD:0x1", in order,
// for comparing before and after.
std::vector<std::string> Dump(std::string_view path = {});

int OpenKeys();
int ClosedHandleCalls();

}  // namespace fakes

#endif  // FAKES_REGISTRY_H
