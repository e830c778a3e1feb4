// The UU codec's exported functions.
#include <amcrtcpy.h>
#include <ntwin32/file.h>
#include <ntwin32/memory.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "boundary.h"
#include "uudecode.h"
#include "uuencode.h"

namespace {

class FileHandle {
  public:
    explicit FileHandle(const char *path) noexcept
        : handle_(CreateFile(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL, 0)) {}
    ~FileHandle() {
        if (handle_ != INVALID_HANDLE_VALUE) {
            CloseHandle(handle_);
        }
    }
    FileHandle(const FileHandle &) = delete;
    FileHandle &operator=(const FileHandle &) = delete;
    HANDLE Get() const noexcept { return handle_; }

  private:
    HANDLE handle_;
};

// False when the file cannot be opened or read, or passes the limit of removable media.
bool ReadMediaFile(const char *path, std::string *content) {
    const FileHandle file(path);
    if (file.Get() == INVALID_HANDLE_VALUE) {
        return false;
    }
    constexpr DWORD kBlock = 64 * 1024;
    std::vector<char> block(kBlock);
    for (;;) {
        DWORD count = 0;
        if (ReadFile(file.Get(), block.data(), kBlock, &count, nullptr) == FALSE) {
            return false;
        }
        if (count == 0) {
            return true;
        }
        content->append(block.data(), count);
    }
}

bool Decode(std::string_view text, HGLOBAL *block, DWORD *size) {
    const auto decoded = agent::UuDecode(text);
    if (!decoded) {
        return false;
    }
    HGLOBAL memory = GlobalAlloc(GMEM_FIXED, decoded->size());
    if (memory == nullptr) {
        return false;
    }
    std::memcpy(memory, decoded->data(), decoded->size());
    *block = memory;
    *size = static_cast<DWORD>(decoded->size());
    return true;
}

bool Encode(const void *data, std::size_t size, void **encoded, DWORD *encoded_size) {
    const std::size_t needed = agent::UuEncodedSize(size);
    if (needed > UINT32_MAX) {
        return false;
    }
    auto *text = static_cast<char *>(std::malloc(needed + 1));
    if (text == nullptr) {
        return false;
    }
    agent::UuEncode(data, size, text);
    text[needed] = '\0';
    *encoded = text;
    *encoded_size = static_cast<DWORD>(needed);
    return true;
}

}  // namespace

extern "C" {

BOOL UUCdDeCodingFromFile(const char *lpPath, HGLOBAL *lphDecoded, DWORD *lpdwSize) noexcept {
    return agent::AtBoundary([&] {
        std::string text;
        return lpPath != nullptr && lphDecoded != nullptr && lpdwSize != nullptr &&
               ReadMediaFile(lpPath, &text) && Decode(text, lphDecoded, lpdwSize);
    });
}

BOOL UUCdDeCodingFromMemory(const void *lpData, DWORD dwSize, HGLOBAL *lphDecoded,
                            DWORD *lpdwDecodedSize) noexcept {
    return agent::AtBoundary([&] {
        return lpData != nullptr && lphDecoded != nullptr && lpdwDecodedSize != nullptr &&
               Decode({static_cast<const char *>(lpData), dwSize}, lphDecoded, lpdwDecodedSize);
    });
}

BOOL UUCdEnCodingToMemory(const void *lpData, DWORD dwSize, void **lplpEncoded,
                          DWORD *lpdwEncodedSize) noexcept {
    return agent::AtBoundary([&] {
        return (lpData != nullptr || dwSize == 0) && lplpEncoded != nullptr &&
               lpdwEncodedSize != nullptr && Encode(lpData, dwSize, lplpEncoded, lpdwEncodedSize);
    });
}

}  // extern "C"
