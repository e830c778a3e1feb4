#ifndef FAKES_LIBC_STATE_H
#define FAKES_LIBC_STATE_H

namespace fakes::internal {

// Counts an allocation and tells whether it is the one that is to fail.
bool AllocationFails();

}  // namespace fakes::internal

#endif  // FAKES_LIBC_STATE_H
