// The rules that the registry functions' arguments must keep before anything is asked of a store.
#ifndef WIN32_REGISTRY_ARGUMENTS_H
#define WIN32_REGISTRY_ARGUMENTS_H

#include <ntwin32/registry.h>

namespace win32 {

// Whether an access mask is well formed: some of the specific, standard, generic and maximum
// allowed rights, and nothing else. Rights are not enforced.
bool IsAccessMask(REGSAM mask) noexcept;

}  // namespace win32

#endif  // WIN32_REGISTRY_ARGUMENTS_H
