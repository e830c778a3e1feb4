#include "registry_arguments.h"

namespace win32 {

namespace {

using regstore::Status;

constexpr REGSAM kGenericRights = 0xF0000000U;
constexpr REGSAM kMaximumAllowed = 0x02000000U;
constexpr REGSAM kKnownRights = KEY_ALL_ACCESS | kGenericRights | kMaximumAllowed;

static_assert(KES_REG_MAX_KEY_NAME == regstore::kMaxName);
static_assert(KES_REG_MAX_VALUE_NAME == regstore::kMaxName);
static_assert(KES_REG_MAX_DEPTH == regstore::kMaxDepth);
static_assert(KES_REG_MAX_DATA == regstore::kMaxData);
static_assert(HKEY_LOCAL_MACHINE == regstore::kRootKey);

constexpr bool Equals(Status status, std::uint32_t code) {
    return static_cast<std::uint32_t>(status) == code;
}
static_assert(Equals(Status::kSuccess, ERROR_SUCCESS));
static_assert(Equals(Status::kNotFound, ERROR_FILE_NOT_FOUND));
static_assert(Equals(Status::kAccessDenied, ERROR_ACCESS_DENIED));
static_assert(Equals(Status::kInvalidHandle, ERROR_INVALID_HANDLE));
static_assert(Equals(Status::kNoMemory, ERROR_NOT_ENOUGH_MEMORY));
static_assert(Equals(Status::kInvalidData, ERROR_INVALID_DATA));
static_assert(Equals(Status::kInvalidParameter, ERROR_INVALID_PARAMETER));
static_assert(Equals(Status::kDiskFull, ERROR_DISK_FULL));
static_assert(Equals(Status::kBadPath, ERROR_BAD_PATHNAME));
static_assert(Equals(Status::kMoreData, ERROR_MORE_DATA));
static_assert(Equals(Status::kNoMoreItems, ERROR_NO_MORE_ITEMS));
static_assert(Equals(Status::kStoreFailed, ERROR_REGISTRY_IO_FAILED));
static_assert(Equals(Status::kKeyDeleted, ERROR_KEY_DELETED));
static_assert(Equals(Status::kNotActive, ERROR_SERVICE_NOT_ACTIVE));
static_assert(Equals(Status::kNoAnswer, ERROR_TIMEOUT));

}  // namespace

bool IsAccessMask(REGSAM mask) noexcept {
    return mask != 0 && (mask & ~kKnownRights) == 0;
}

std::string_view PathArgument(const char *path) noexcept {
    return path == nullptr ? std::string_view()
                           : std::string_view(path, ::strnlen(path, regstore::kMaxPath + 1));
}

bool TextBuffer::Fits(std::string_view from) const noexcept {
    if (text == nullptr || from.size() < *size)
        return true;
    *size = static_cast<DWORD>(from.size() + 1);
    return false;
}

void TextBuffer::HandOut(std::string_view from) const noexcept {
    if (text != nullptr) {
        std::memcpy(text, from.data(), from.size());
        text[from.size()] = '\0';
    }
    if (size != nullptr)
        *size = static_cast<DWORD>(from.size());
}

void ValueBuffer::HandOutSize(DWORD value_type, DWORD value_size) const noexcept {
    HandOutNumber(value_type, type);
    HandOutNumber(value_size, size);
}

Status ValueBuffer::HandOut(DWORD value_type, DWORD value_size,
                            std::string_view bytes) const noexcept {
    const bool fits = Fits(value_size);
    if (data != nullptr && fits && bytes.size() != value_size)
        return Status::kStoreFailed;
    HandOutSize(value_type, value_size);
    if (!fits)
        return Status::kMoreData;
    if (data != nullptr && value_size != 0)
        std::memcpy(data, bytes.data(), value_size);
    return Status::kSuccess;
}

void HandOutTime(std::uint64_t time, FILETIME *filetime) noexcept {
    if (filetime != nullptr) {
        filetime->dwLowDateTime = static_cast<DWORD>(time);
        filetime->dwHighDateTime = static_cast<DWORD>(time >> 32U);
    }
}

void HandOutNumber(DWORD number, DWORD *where) noexcept {
    if (where != nullptr)
        *where = number;
}

}  // namespace win32
