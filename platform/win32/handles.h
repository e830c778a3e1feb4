// The table behind HANDLE: files and events.
//
// State model
//   A handle is a slot's number and the slot's generation, which changes with every use of the
//   slot, so that a handle that was closed is known as such when its slot serves another object.
//   Handles are positive, fit 32 bits, and are neither 0 nor INVALID_HANDLE_VALUE. An object lives
//   until its handle is closed and the last call that found it has returned. One lock, never held
//   while an object works.
#ifndef WIN32_HANDLES_H
#define WIN32_HANDLES_H

#include <ntwin32/types.h>

#include <memory>
#include <variant>

#include "event.h"
#include "file.h"

namespace win32 {

using Object = std::variant<std::monostate, std::shared_ptr<File>, std::shared_ptr<Event>>;

// Throws std::bad_alloc without memory; gives 0 when there are too many open handles.
HANDLE InsertObject(Object object);

// The object of a handle; empty when the handle is not open or names an object of another kind.
template <typename Kind>
std::shared_ptr<Kind> FindObject(HANDLE handle);

// False when the handle is not open.
bool RemoveObject(HANDLE handle);

}  // namespace win32

#endif  // WIN32_HANDLES_H
