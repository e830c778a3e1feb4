// The registry functions that read.
#include <ntwin32/registry.h>

#include "registry_arguments.h"
#include "registry_client.h"

namespace win32 {

namespace {

using ntserver::Operation;
using regstore::Status;

// Both texts are looked at before either is handed out, so that a failure leaves the buffers alone.
Status HandOutSubKey(const ntserver::EnumKeyAnswer &item, const TextBuffer &name,
                     const TextBuffer &class_text, FILETIME *time) noexcept {
    const bool name_fits = name.Fits(item.name);
    const bool class_fits = class_text.Fits(item.class_text);
    if (!name_fits || !class_fits)
        return Status::kMoreData;
    name.HandOut(item.name);
    class_text.HandOut(item.class_text);
    HandOutTime(item.last_write, time);
    return Status::kSuccess;
}

Status HandOutValueItem(const ntserver::EnumValueAnswer &item, const TextBuffer &name,
                        const ValueBuffer &value) noexcept {
    const bool name_fits = name.Fits(item.name);
    if (!value.Fits(item.size)) {
        *value.size = item.size;
        return Status::kMoreData;
    }
    if (!name_fits)
        return Status::kMoreData;
    const Status status = value.HandOut(item.type, item.size, item.data);
    if (status == Status::kSuccess)
        name.HandOut(item.name);
    return status;
}

// What RegQueryInfoKey hands out; every pointer may be null.
struct KeyInfoBuffer {
    TextBuffer class_text;
    DWORD *sub_keys;
    DWORD *longest_sub_key;
    DWORD *longest_class;
    DWORD *values;
    DWORD *longest_value_name;
    DWORD *longest_value_data;
    DWORD *security_descriptor;
    FILETIME *last_write;

    bool WantsMeasures() const noexcept {
        return longest_sub_key != nullptr || longest_class != nullptr ||
               longest_value_name != nullptr || longest_value_data != nullptr;
    }
    Status HandOut(const ntserver::QueryKeyAnswer &from) const noexcept;
};

Status KeyInfoBuffer::HandOut(const ntserver::QueryKeyAnswer &from) const noexcept {
    if (!class_text.Fits(from.class_text))
        return Status::kMoreData;
    class_text.HandOut(from.class_text);
    HandOutNumber(from.sub_keys, sub_keys);
    HandOutNumber(from.longest_sub_key, longest_sub_key);
    HandOutNumber(from.longest_class, longest_class);
    HandOutNumber(from.values, values);
    HandOutNumber(from.longest_value_name, longest_value_name);
    HandOutNumber(from.longest_value_data, longest_value_data);
    HandOutNumber(0, security_descriptor);
    HandOutTime(from.last_write, last_write);
    return Status::kSuccess;
}

}  // namespace

}  // namespace win32

using namespace win32;

LONG RegOpenKeyEx(HKEY hKey, const char *lpSubKey, DWORD, REGSAM samDesired,
                  HKEY *phkResult) NTWIN32_NOEXCEPT {
    if (phkResult == nullptr || !IsAccessMask(samDesired))
        return ERROR_INVALID_PARAMETER;
    return ReadRegistry<ntserver::KeyAnswer>(Operation::kOpenKey,
                                             ntserver::PathRequest{hKey, PathArgument(lpSubKey)},
                                             [&](const ntserver::KeyAnswer &answer) {
                                                 *phkResult = answer.key;
                                                 return Status::kSuccess;
                                             });
}

LONG RegQueryValueEx(HKEY hKey, const char *lpValueName, DWORD *, DWORD *lpType, BYTE *lpData,
                     DWORD *lpcbData) NTWIN32_NOEXCEPT {
    const ValueBuffer buffer = {lpType, lpData, lpcbData};
    if (!buffer.IsSound())
        return ERROR_INVALID_PARAMETER;
    return ReadRegistry<ntserver::ValueAnswer>(
        Operation::kQueryValue,
        ntserver::QueryValueRequest{hKey, NameArgument(lpValueName), buffer.Capacity()},
        [&](const ntserver::ValueAnswer &answer) {
            return buffer.HandOut(answer.type, answer.size, answer.data);
        });
}

LONG RegEnumKeyEx(HKEY hKey, DWORD dwIndex, char *lpName, DWORD *lpcchName, DWORD *, char *lpClass,
                  DWORD *lpcchClass, FILETIME *lpftLastWriteTime) NTWIN32_NOEXCEPT {
    const TextBuffer name = {lpName, lpcchName};
    const TextBuffer class_text = {lpClass, lpcchClass};
    if (lpName == nullptr || !name.IsSound() || !class_text.IsSound())
        return ERROR_INVALID_PARAMETER;
    return ReadRegistry<ntserver::EnumKeyAnswer>(
        Operation::kEnumKey, ntserver::EnumKeyRequest{hKey, dwIndex, lpftLastWriteTime != nullptr},
        [&](const ntserver::EnumKeyAnswer &answer) {
            return HandOutSubKey(answer, name, class_text, lpftLastWriteTime);
        });
}

LONG RegEnumValue(HKEY hKey, DWORD dwIndex, char *lpValueName, DWORD *lpcchValueName, DWORD *,
                  DWORD *lpType, BYTE *lpData, DWORD *lpcbData) NTWIN32_NOEXCEPT {
    const TextBuffer name = {lpValueName, lpcchValueName};
    const ValueBuffer value = {lpType, lpData, lpcbData};
    if (lpValueName == nullptr || !name.IsSound() || !value.IsSound())
        return ERROR_INVALID_PARAMETER;
    return ReadRegistry<ntserver::EnumValueAnswer>(
        Operation::kEnumValue, ntserver::EnumValueRequest{hKey, dwIndex, value.Capacity()},
        [&](const ntserver::EnumValueAnswer &answer) {
            return HandOutValueItem(answer, name, value);
        });
}

LONG RegQueryInfoKey(HKEY hKey, char *lpClass, DWORD *lpcchClass, DWORD *, DWORD *lpcSubKeys,
                     DWORD *lpcbMaxSubKeyLen, DWORD *lpcbMaxClassLen, DWORD *lpcValues,
                     DWORD *lpcbMaxValueNameLen, DWORD *lpcbMaxValueLen,
                     DWORD *lpcbSecurityDescriptor, FILETIME *lpftLastWriteTime) NTWIN32_NOEXCEPT {
    const KeyInfoBuffer info = {
        {lpClass, lpcchClass}, lpcSubKeys,      lpcbMaxSubKeyLen,       lpcbMaxClassLen,  lpcValues,
        lpcbMaxValueNameLen,   lpcbMaxValueLen, lpcbSecurityDescriptor, lpftLastWriteTime};
    if (!info.class_text.IsSound())
        return ERROR_INVALID_PARAMETER;
    return ReadRegistry<ntserver::QueryKeyAnswer>(
        Operation::kQueryKey, ntserver::QueryKeyRequest{hKey, info.WantsMeasures()},
        [&](const ntserver::QueryKeyAnswer &answer) { return info.HandOut(answer); });
}
