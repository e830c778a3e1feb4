#include "support/key_disk.h"

#include <amcrtcpy.h>
#include <ntwin32/file.h>
#include <ntwin32/memory.h>
#include <ntwin32/system.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr HANDLE kFile = 0x100;

std::string_view file;
std::size_t position = 0;
std::size_t read_limit = 1;

}  // namespace

namespace fuzz_support {

void SetFile(std::string_view bytes, std::size_t read_size) {
    file = bytes;
    position = 0;
    read_limit = std::max<std::size_t>(read_size, 1);
}

std::size_t BytesRead() {
    return position;
}

void Expect(bool condition) {
    if (!condition) {
        std::abort();
    }
}

}  // namespace fuzz_support

HANDLE CreateFile(const char *, DWORD, DWORD, const void *, DWORD, DWORD, HANDLE) noexcept {
    return kFile;
}

BOOL ReadFile(HANDLE, void *lpBuffer, DWORD nNumberOfBytesToRead, DWORD *lpNumberOfBytesRead,
              void *) noexcept {
    const std::size_t size = std::min(
        {static_cast<std::size_t>(nNumberOfBytesToRead), read_limit, file.size() - position});
    std::memcpy(lpBuffer, file.data() + position, size);
    position += size;
    *lpNumberOfBytesRead = static_cast<DWORD>(size);
    return TRUE;
}

BOOL CloseHandle(HANDLE) noexcept {
    return TRUE;
}

BOOL IsDBCSLeadByte(BYTE TestChar) noexcept {
    return (TestChar >= 0x81 && TestChar <= 0x9F) || (TestChar >= 0xE0 && TestChar <= 0xFC);
}

// Every byte above 7F becomes two, as half-width katakana do; FF is no character.
int ecm_SJIStoEUC(const char *lpSource, DWORD dwSourceLength, DWORD dwDestSize,
                  char *lpDest) noexcept {
    const std::string_view source(lpSource, strnlen(lpSource, dwSourceLength));
    std::size_t length = 0;
    for (const char byte : source) {
        const std::size_t size = (static_cast<unsigned char>(byte) & 0x80) != 0 ? 2 : 1;
        if (byte == '\xFF' || size > dwDestSize - length) {
            return 0;
        }
        lpDest[length] = size == 2 ? '\x8E' : byte;
        lpDest[length + size - 1] = byte;
        length += size;
    }
    if (length < dwDestSize) {
        lpDest[length] = '\0';
    }
    return 1;
}

// The targets begin behind the decoding.
BOOL UUCdDeCodingFromFile(const char *, HGLOBAL *, DWORD *) noexcept {
    return FALSE;
}

size_t GlobalSize(HGLOBAL) noexcept {
    return 0;
}

HGLOBAL GlobalFree(HGLOBAL) noexcept {
    return nullptr;
}

int kes_AnkZen(const char *, DWORD, DWORD, char *) noexcept {
    return 0;
}
