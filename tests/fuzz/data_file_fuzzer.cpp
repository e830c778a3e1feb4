// Set-up data files: whatever they hold, the lists fill no more than the caller's buffers, and two
// readings agree. The platform below serves the input as every file; its first byte chooses the
// language and its second to tenth are an option's code.
#include <ntwin32/file.h>
#include <ntwin32/registry.h>
#include <ntwin32/system.h>
#include <tracelog.h>
#include <velox/contract.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

std::string file_text;
std::size_t file_position = 0;
std::string option_code;
LANGID language = LANGID_ENGLISH_US;

constexpr DWORD kOptions = 3;

// Buffers of their exact size, so that the sanitizer sees every byte too many.
class Buffers {
  public:
    Buffers(std::size_t count, std::size_t size) {
        for (std::size_t i = 0; i < count; ++i) {
            memory_.push_back(std::make_unique<char[]>(size));
            pointers_.push_back(memory_.back().get());
        }
    }
    char **Data() { return pointers_.data(); }

  private:
    std::vector<std::unique_ptr<char[]>> memory_;
    std::vector<char *> pointers_;
};

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void ListOsNames() {
    DWORD needed = 0;
    DWORD count = 0;
    Require(GetVlxMachListDataBounded(nullptr, 0, &needed) == TRUE);
    Buffers names(needed, VLX_OS_NAME_SIZE);
    Require(GetVlxMachListData(names.Data(), &count) == TRUE && count == needed);
    for (DWORD i = 0; i < count; ++i) {
        Require(std::strlen(names.Data()[i]) < VLX_OS_NAME_SIZE - 1);
    }
}

void ListDealers() {
    VLX_VEND_DATA data;
    DWORD needed = 0;
    DWORD count = 0;
    Require(GetVlxVendSettingBounded(&data, nullptr, 0, &needed) == TRUE);
    Buffers dealers(needed, VLX_DEALER_SIZE);
    Require(GetVlxVendSetting(&data, dealers.Data(), &count) == TRUE && count == needed);
}

void ListKinds() {
    VLX_OPTION_KIND kinds[VLX_OPTION_KINDS_JAPANESE] = {};
    for (VLX_OPTION_KIND &kind : kinds) {
        kind.lpszHeading = &kind == kinds ? "[KIND]" : option_code.c_str();
    }
    DWORD count = 0;
    Require(GetVlxOptKindListBounded(kinds, VLX_OPTION_KINDS_JAPANESE, 0, &count) == TRUE);
    std::vector<Buffers> items;
    for (VLX_OPTION_KIND &kind : kinds) {
        items.emplace_back(kind.dwItems, VLX_OPTION_SIZE);
        kind.lplpItems = items.back().Data();
    }
    Require(GetVlxOptKindList(kinds) == TRUE);
}

void ReadAndStoreOptions() {
    Buffers options(kOptions, VLX_OPTION_SIZE);
    std::int64_t count = 0;
    Require(GetVlxOptSetting(options.Data(), &count) == TRUE && count == kOptions);
    Require(SetVlxOptSetting(options.Data(), count) == TRUE);
}

}  // namespace

HANDLE CreateFile(const char *, DWORD, DWORD, const void *, DWORD, DWORD, HANDLE) noexcept {
    file_position = 0;
    return 1;
}
BOOL ReadFile(HANDLE, void *buffer, DWORD size, DWORD *read, void *) noexcept {
    *read = static_cast<DWORD>(std::min<std::size_t>(size, file_text.size() - file_position));
    std::memcpy(buffer, file_text.data() + file_position, *read);
    file_position += *read;
    return TRUE;
}
BOOL CloseHandle(HANDLE) noexcept {
    return TRUE;
}
DWORD ExpandEnvironmentStrings(const char *, char *text, DWORD) noexcept {
    std::memcpy(text, "/", 2);
    return 2;
}
LANGID GetSystemDefaultLangID() noexcept {
    return language;
}
BOOL GetComputerName(char *, DWORD *) noexcept {
    return FALSE;
}
LONG RegOpenKeyEx(HKEY, const char *, DWORD, REGSAM, HKEY *key) noexcept {
    *key = 1;
    return ERROR_SUCCESS;
}
LONG RegCreateKey(HKEY, const char *, HKEY *) noexcept {
    return ERROR_FILE_NOT_FOUND;
}
LONG RegQueryValueEx(HKEY, const char *name, DWORD *, DWORD *, BYTE *data, DWORD *size) noexcept {
    if (std::strcmp(name, "OPTCDN") == 0) {
        std::memcpy(data, &kOptions, sizeof kOptions);
        return ERROR_SUCCESS;
    }
    *size = static_cast<DWORD>(option_code.size() + 1);
    std::memcpy(data, option_code.c_str(), *size);
    return ERROR_SUCCESS;
}
LONG RegSetValueEx(HKEY, const char *, DWORD, DWORD, const BYTE *, DWORD) noexcept {
    return ERROR_SUCCESS;
}
LONG RegDeleteValue(HKEY, const char *) noexcept {
    return ERROR_SUCCESS;
}
LONG RegCloseKey(HKEY) noexcept {
    return ERROR_SUCCESS;
}
void TraceLog(int, const char *, const char *, int, const char *, ...) noexcept {}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    constexpr std::size_t kPrefix = 10;
    constexpr std::size_t kMost = std::size_t{1} << 16;
    if (size < kPrefix || size > kMost) {
        return 0;
    }
    const auto *text = reinterpret_cast<const char *>(data);
    language = (data[0] & 1) != 0 ? LANGID_JAPANESE : LANGID_ENGLISH_US;
    option_code.assign(text + 1, strnlen(text + 1, kPrefix - 1));
    file_text.assign(text + kPrefix, size - kPrefix);
    ListOsNames();
    ListDealers();
    ListKinds();
    ReadAndStoreOptions();
    return 0;
}
