// The service information text from any registry content. The registry is made of the input: each
// query takes its answer from it, in order.
#include <fuzzer/FuzzedDataProvider.h>
#include <ntwin32/registry.h>
#include <ntwin32/system.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "velox/service_info.h"

namespace {

FuzzedDataProvider *input = nullptr;

void Expect(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void Check(BOOL (*build)(char **, DWORD *)) {
    char *text = nullptr;
    DWORD length = 77;
    if (build(&text, &length) == FALSE) {
        Expect(text == nullptr && length == 0);
        return;
    }
    Expect(std::strlen(text) == length && length < VX_SERVICE_INFO_CAPACITY);
    std::free(text);
}

// A value as the registry may hold it: a number, or up to a little more than is ever read, with a
// terminator or without.
std::string NextValue() {
    if (input->ConsumeBool()) {
        const auto number = input->ConsumeBool() ? input->ConsumeIntegral<DWORD>()
                                                 : input->PickValueInArray<DWORD>({1, 99, 0, 3});
        return {reinterpret_cast<const char *>(&number), sizeof number};
    }
    std::string text = input->ConsumeRandomLengthString(512);
    const auto times = input->ConsumeIntegralInRange<int>(1, 9);  // long values from short inputs
    std::string value;
    for (int i = 0; i < times; ++i) {
        value += text;
    }
    return input->ConsumeBool() ? value + '\0' : value;
}

}  // namespace

LONG RegOpenKeyEx(HKEY, const char *, DWORD, REGSAM, HKEY *phkResult) noexcept {
    *phkResult = 1;
    return ERROR_SUCCESS;
}

LONG RegCloseKey(HKEY) noexcept {
    return ERROR_SUCCESS;
}

LONG RegSetValueEx(HKEY, const char *, DWORD, DWORD, const BYTE *, DWORD) noexcept {
    std::abort();  // reading never writes
}

LONG RegQueryValueEx(HKEY, const char *, DWORD *, DWORD *lpType, BYTE *lpData,
                     DWORD *lpcbData) noexcept {
    if (input->remaining_bytes() == 0) {
        return ERROR_FILE_NOT_FOUND;
    }
    const std::string value = NextValue();
    const DWORD capacity = *lpcbData;
    *lpType = input->ConsumeIntegral<BYTE>();
    *lpcbData = static_cast<DWORD>(value.size());
    if (value.size() > capacity) {
        return ERROR_MORE_DATA;
    }
    std::memcpy(lpData, value.data(), value.size());
    return ERROR_SUCCESS;
}

LANGID GetSystemDefaultLangID() noexcept {
    return input->ConsumeBool() ? LANGID_JAPANESE : LANGID_ENGLISH_US;
}

BOOL GetSystemDefaultLANG(char *, DWORD) noexcept {
    return FALSE;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    FuzzedDataProvider provider(data, size);
    input = &provider;
    Check(&GetVlxServiceInfo);
    Check(&GetVlxServiceInfo_Mail);
    return 0;
}
