// Memory for secrets: cleared for good when its owner goes out of scope.
#ifndef AMSTEXML_WIPED_H
#define AMSTEXML_WIPED_H

#include <cstring>

template <typename T>
struct WIPED {
    WIPED() noexcept = default;
    WIPED(const WIPED &) = delete;
    WIPED &operator=(const WIPED &) = delete;
    ~WIPED() { explicit_bzero(&value, sizeof value); }

    T value = {};
};

#endif  // AMSTEXML_WIPED_H
