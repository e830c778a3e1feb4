// malloc and calloc: in an object of its own, so that only tests that wrap them have it.
#include <cstddef>

#include "libc_state.h"

extern "C" void *__real_malloc(std::size_t size);
extern "C" void *__real_calloc(std::size_t count, std::size_t size);

extern "C" void *__wrap_malloc(std::size_t size) {
    return fakes::internal::AllocationFails() ? nullptr : __real_malloc(size);
}

extern "C" void *__wrap_calloc(std::size_t count, std::size_t size) {
    return fakes::internal::AllocationFails() ? nullptr : __real_calloc(count, size);
}
