#include "registry_arguments.h"

namespace win32 {

namespace {

constexpr REGSAM kGenericRights = 0xF0000000U;
constexpr REGSAM kMaximumAllowed = 0x02000000U;
constexpr REGSAM kKnownRights = KEY_ALL_ACCESS | kGenericRights | kMaximumAllowed;

}  // namespace

bool IsAccessMask(REGSAM mask) noexcept {
    return mask != 0 && (mask & ~kKnownRights) == 0;
}

}  // namespace win32
