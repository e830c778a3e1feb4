// What the registry functions' arguments must keep before anything is asked of a store, and how
// results are handed out.
#ifndef WIN32_REGISTRY_ARGUMENTS_H
#define WIN32_REGISTRY_ARGUMENTS_H

#include <cstring>
#include <string_view>

#include <ntwin32/registry.h>

#include "regstore/names.h"
#include "regstore/status.h"

namespace win32 {

// Whether an access mask is well formed: some of the specific, standard, generic and maximum
// allowed rights, and nothing else. Rights are not enforced.
bool IsAccessMask(REGSAM mask) noexcept;

// A caller's name or path: null is the empty one. What is longer than the limit comes out one byte
// longer than it, which no store accepts.
inline std::string_view NameArgument(const char *name) noexcept {
    return name == nullptr ? std::string_view()
                           : std::string_view(name, ::strnlen(name, regstore::kMaxName + 1));
}
std::string_view PathArgument(const char *path) noexcept;

// A caller's buffer for a text: both null when it is not wanted.
struct TextBuffer {
    char *text;
    DWORD *size;

    bool IsSound() const noexcept { return text == nullptr || size != nullptr; }
    // Tells the capacity needed when it is too small. For every text: first look, then hand out.
    bool Fits(std::string_view from) const noexcept;
    // The text with its terminator; the size without it.
    void HandOut(std::string_view from) const noexcept;
};

// A caller's buffers for a value.
struct ValueBuffer {
    DWORD *type;
    BYTE *data;
    DWORD *size;

    bool IsSound() const noexcept { return data == nullptr || size != nullptr; }
    DWORD Capacity() const noexcept { return data == nullptr ? 0 : *size; }
    bool Fits(DWORD value_size) const noexcept { return data == nullptr || value_size <= *size; }
    void HandOutSize(DWORD value_type, DWORD value_size) const noexcept;
    // Type, size and, when a buffer was given, the data; kMoreData with type and size when it is
    // too small. An answer without data stands for data that did not fit.
    regstore::Status HandOut(DWORD value_type, DWORD value_size,
                             std::string_view bytes) const noexcept;
};

void HandOutTime(std::uint64_t time, FILETIME *filetime) noexcept;
void HandOutNumber(DWORD number, DWORD *where) noexcept;

}  // namespace win32

#endif  // WIN32_REGISTRY_ARGUMENTS_H
