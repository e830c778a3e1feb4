#include "event.h"

#include <ntwin32/event.h>

#include <cerrno>
#include <ctime>
#include <memory>
#include <new>

#include "handles.h"
#include "last_error.h"

namespace win32 {
namespace {

class Lock {
  public:
    explicit Lock(pthread_mutex_t *mutex) noexcept : mutex_(mutex) { ::pthread_mutex_lock(mutex_); }
    ~Lock() { ::pthread_mutex_unlock(mutex_); }
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;

  private:
    pthread_mutex_t *mutex_;
};

timespec Deadline(DWORD milliseconds) noexcept {
    constexpr long kNanoseconds = 1'000'000'000;
    timespec deadline;
    ::clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += milliseconds / 1000;
    deadline.tv_nsec += static_cast<long>(milliseconds % 1000) * 1'000'000;
    if (deadline.tv_nsec >= kNanoseconds) {
        deadline.tv_nsec -= kNanoseconds;
        ++deadline.tv_sec;
    }
    return deadline;
}

std::shared_ptr<Event> FindEvent(HANDLE handle) {
    std::shared_ptr<Event> event = FindObject<Event>(handle);
    if (event == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
    }
    return event;
}

}  // namespace

Event::Event(bool manual_reset, bool signalled)
    : manual_reset_(manual_reset), signalled_(signalled) {
    pthread_condattr_t attributes;
    ::pthread_condattr_init(&attributes);
    ::pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    const int result = ::pthread_cond_init(&changed_, &attributes);
    ::pthread_condattr_destroy(&attributes);
    if (result != 0) {
        throw std::bad_alloc();
    }
}

Event::~Event() {
    ::pthread_cond_destroy(&changed_);
    ::pthread_mutex_destroy(&mutex_);
}

void Event::Set() noexcept {
    const Lock lock(&mutex_);
    signalled_ = true;
    if (manual_reset_) {
        ::pthread_cond_broadcast(&changed_);
    } else {
        ::pthread_cond_signal(&changed_);
    }
}

void Event::Reset() noexcept {
    const Lock lock(&mutex_);
    signalled_ = false;
}

bool Event::Wait(DWORD milliseconds) noexcept {
    const timespec deadline = Deadline(milliseconds);
    const Lock lock(&mutex_);
    while (!signalled_) {
        if (milliseconds == INFINITE) {
            ::pthread_cond_wait(&changed_, &mutex_);
        } else if (::pthread_cond_timedwait(&changed_, &mutex_, &deadline) == ETIMEDOUT) {
            break;
        }
    }
    const bool taken = signalled_;
    if (!manual_reset_) {
        signalled_ = false;
    }
    return taken;
}

}  // namespace win32

using win32::AtBoundary;
using win32::Event;
using win32::Fail;

extern "C" {

HANDLE CreateEvent(const void * /*lpEventAttributes*/, BOOL bManualReset, BOOL bInitialState,
                   const char *lpName) noexcept {
    if (lpName != nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, HANDLE{0});
    }
    return AtBoundary(HANDLE{0}, [&] {
        const HANDLE handle =
            win32::InsertObject(std::make_shared<Event>(bManualReset != 0, bInitialState != 0));
        return handle != 0 ? handle : Fail(ERROR_NOT_ENOUGH_MEMORY, handle);
    });
}

BOOL SetEvent(HANDLE hEvent) noexcept {
    return AtBoundary(BOOL{FALSE}, [&] {
        const std::shared_ptr<Event> event = win32::FindEvent(hEvent);
        if (event != nullptr) {
            event->Set();
        }
        return event != nullptr ? TRUE : FALSE;
    });
}

BOOL ResetEvent(HANDLE hEvent) noexcept {
    return AtBoundary(BOOL{FALSE}, [&] {
        const std::shared_ptr<Event> event = win32::FindEvent(hEvent);
        if (event != nullptr) {
            event->Reset();
        }
        return event != nullptr ? TRUE : FALSE;
    });
}

DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds) noexcept {
    return AtBoundary(DWORD{WAIT_FAILED}, [&] {
        const std::shared_ptr<Event> event = win32::FindEvent(hHandle);
        if (event == nullptr) {
            return WAIT_FAILED;
        }
        return event->Wait(dwMilliseconds) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
    });
}

}  // extern "C"
