// Time and sleep: TheLibc().now and TheLibc().sleeps.
#include "fakes/libc.h"
#include "state.h"

extern "C" std::time_t __wrap_time(std::time_t *result) {
    fakes::Enter("time");
    if (result != nullptr) {
        *result = fakes::TheLibc().now;
    }
    return fakes::TheLibc().now;
}

extern "C" unsigned __wrap_sleep(unsigned seconds) {
    fakes::Enter("sleep", std::to_string(seconds));
    fakes::TheLibc().sleeps.push_back(seconds);
    return 0;
}
