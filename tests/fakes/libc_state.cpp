#include "libc_state.h"

#include "fakes/libc.h"
#include "state.h"

namespace fakes {

namespace {

int allocations = 0;
int allocations_until_failure = 0;

}  // namespace

Libc &TheLibc() {
    static Libc libc;
    return libc;
}

void FailAllocation(int nth) {
    allocations_until_failure = nth;
}

int Allocations() {
    return allocations;
}

namespace internal {

bool AllocationFails() {
    ++allocations;
    return allocations_until_failure > 0 && --allocations_until_failure == 0;
}

void ResetLibc() {
    TheLibc() = {};
    allocations = 0;
    allocations_until_failure = 0;
}

}  // namespace internal

}  // namespace fakes
