// fstat and read: the real ones, which a test may make fail or fall short.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "fakes/libc.h"
#include "fakes/platform.h"

extern "C" int __real_fstat(int descriptor, struct stat *status);
extern "C" ssize_t __real_read(int descriptor, void *buffer, std::size_t size);

extern "C" int __wrap_fstat(int descriptor, struct stat *status) {
    if (fakes::Enter("fstat") != 0) {
        errno = EIO;
        return -1;
    }
    return __real_fstat(descriptor, status);
}

extern "C" ssize_t __wrap_read(int descriptor, void *buffer, std::size_t size) {
    if (fakes::Enter("read", std::to_string(size)) != 0) {
        errno = EIO;
        return -1;
    }
    return __real_read(descriptor, buffer, size - (fakes::TheLibc().short_reads && size > 0));
}
