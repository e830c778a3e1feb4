// An event: a flag that one thread sets and others wait for.
//
// State model
//   Signalled or not. With manual reset a signal lets every waiter go and stays until Reset;
//   without, one waiter takes it with it. The event's own lock guards the flag and is a leaf:
//   nothing else is locked under it.
#ifndef WIN32_EVENT_H
#define WIN32_EVENT_H

#include <pthread.h>

#include <ntwin32/types.h>

namespace win32 {

class Event {
  public:
    // Throws std::bad_alloc when the system has no more of its objects.
    Event(bool manual_reset, bool signalled);
    ~Event();
    Event(const Event &) = delete;
    Event &operator=(const Event &) = delete;

    void Set() noexcept;
    void Reset() noexcept;
    // False when the time was over first. INFINITE waits without limit.
    bool Wait(DWORD milliseconds) noexcept;

  private:
    // Not std::condition_variable: a wait by the monotonic clock is what the thread sanitizer of
    // Debian 12's compiler does not know from it.
    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t changed_;
    const bool manual_reset_;
    bool signalled_;
};

}  // namespace win32

#endif  // WIN32_EVENT_H
