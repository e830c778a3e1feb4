// The public functions of libtracelog.
//
// State model
//   g_lowest_taken is the lowest level that anybody takes: every one while there is a listener, the
//   log's lowest level while a log is open, none otherwise. It alone decides, without a lock,
//   whether a record is worth formatting, and is always set from the state that g_mutex guards: the
//   log, its lowest level, the listener. One lock, no order to keep. The listener runs under it, so
//   that TraceLogSetListener returns only when the former one has finished; a record that a
//   listener traces itself, though it must not, is dropped before the lock. fork() happens under
//   the lock, so that a child never finds it held.
#include <pthread.h>
#include <tracelog.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>

#include "log_file.h"
#include "record.h"

namespace {

constexpr std::uint32_t kDefaultSizeLimit = 1024 * 1024;
constexpr int kMaxGenerations = 99;

// The log lives as long as the process: destructors that run at its end may trace as well.
union LifelongLog {
    constexpr LifelongLog() noexcept : file() {}
    ~LifelongLog() {}
    tracelog::LogFile file;
};

constinit std::atomic<int> g_lowest_taken{INT_MAX};
pthread_mutex_t g_mutex = PTHREAD_MUTEX_INITIALIZER;
constinit LifelongLog g_log;
constinit int g_lowest_written = INT_MAX;
constinit TRACELOG_LISTENER g_listener = nullptr;
constinit void *g_listener_context = nullptr;
constinit pid_t g_process = 0;
constinit thread_local bool t_is_listening = false;

class Lock {
  public:
    Lock() noexcept { ::pthread_mutex_lock(&g_mutex); }
    ~Lock() { ::pthread_mutex_unlock(&g_mutex); }
    Lock(const Lock &) = delete;
    Lock &operator=(const Lock &) = delete;
};

class ErrnoKeeper {
  public:
    ErrnoKeeper() noexcept : saved_(errno) {}
    ~ErrnoKeeper() { errno = saved_; }
    ErrnoKeeper(const ErrnoKeeper &) = delete;
    ErrnoKeeper &operator=(const ErrnoKeeper &) = delete;

  private:
    int saved_;
};

// A listener that forks holds the lock already.
void BeforeFork() {
    if (!t_is_listening) {
        ::pthread_mutex_lock(&g_mutex);
    }
}

void AfterForkInParent() {
    if (!t_is_listening) {
        ::pthread_mutex_unlock(&g_mutex);
    }
}

void AfterForkInChild() {
    g_process = ::getpid();
    if (!t_is_listening) {
        ::pthread_mutex_unlock(&g_mutex);
    }
}

void PrepareProcess() {
    g_process = ::getpid();
    ::pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild);
}

void PrepareProcessOnce() noexcept {
    static pthread_once_t once = PTHREAD_ONCE_INIT;
    ::pthread_once(&once, PrepareProcess);
}

// Call with the lock held after every change of what it guards.
void UpdateLowestTaken() noexcept {
    int lowest = INT_MAX;
    if (g_listener != nullptr) {
        lowest = INT_MIN;
    } else if (g_log.file.IsOpen()) {
        lowest = g_lowest_written;
    }
    g_lowest_taken.store(lowest, std::memory_order_relaxed);
}

void TellListener(const tracelog::Origin &origin, const tracelog::Text &text) noexcept {
    const TRACELOG_RECORD record = {origin.level, origin.line, origin.source, origin.function,
                                    text.bytes};
    t_is_listening = true;
    g_listener(&record, g_listener_context);
    t_is_listening = false;
}

void WriteRecord(const tracelog::Origin &origin, const tracelog::Text &text) noexcept {
    char line[tracelog::kMaxLine];
    const std::size_t length = tracelog::FormatLine(origin, text, line);
    g_log.file.Write(line, length, origin.time);
}

}  // namespace

extern "C" {

int TraceLogInit(uint32_t dwFlags, const char *szProgram, int nLowestLevel, int nGenerations,
                 uint32_t dwSizeLimit) noexcept {
    if (t_is_listening) {
        return 0;
    }
    const ErrnoKeeper keeper;
    PrepareProcessOnce();
    const Lock lock;
    const bool valid = dwFlags == 0 && nGenerations >= 0 && nGenerations <= kMaxGenerations;
    if (valid) {
        g_log.file.Open(szProgram, nGenerations,
                        dwSizeLimit != 0 ? dwSizeLimit : kDefaultSizeLimit);
    } else {
        g_log.file.Close();
    }
    g_lowest_written = nLowestLevel;
    UpdateLowestTaken();
    return g_log.file.IsOpen() ? 1 : 0;
}

void TraceLog(int nLevel, const char *szSource, const char *szFunction, int nLine,
              const char *szFormat, ...) noexcept {
    if (nLevel < g_lowest_taken.load(std::memory_order_relaxed) || t_is_listening) {
        return;
    }
    const ErrnoKeeper keeper;
    tracelog::Text text;
    va_list arguments;
    va_start(arguments, szFormat);
    tracelog::FormatText(szFormat, arguments, &text);
    va_end(arguments);

    const Lock lock;
    tracelog::Origin origin = {{}, g_process, nLevel, szSource, szFunction, nLine};
    ::clock_gettime(CLOCK_REALTIME, &origin.time);
    if (g_listener != nullptr) {
        TellListener(origin, text);
    }
    if (g_log.file.IsOpen() && nLevel >= g_lowest_written) {
        WriteRecord(origin, text);
    }
}

void TraceLogSetListener(TRACELOG_LISTENER pfnListener, void *lpContext) noexcept {
    if (t_is_listening) {
        return;
    }
    const ErrnoKeeper keeper;
    PrepareProcessOnce();
    const Lock lock;
    g_listener = pfnListener;
    g_listener_context = lpContext;
    UpdateLowestTaken();
}

void TraceLogClose(void) noexcept {
    if (t_is_listening) {
        return;
    }
    const ErrnoKeeper keeper;
    const Lock lock;
    g_log.file.Close();
    UpdateLowestTaken();
}

}  // extern "C"
