// A process of its own that works for a benchmark: it may hold a registry server and a large store
// for itself, beside others that hold theirs.
#ifndef BENCH_SUPPORT_WORKER_H
#define BENCH_SUPPORT_WORKER_H

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <stdexcept>

namespace bench {

// What a worker does `times` times when it is asked to.
using Work = std::function<void(long times)>;

// Seconds that a piece of work took.
inline double Measure(const Work &work, long times) {
    const auto begin = std::chrono::steady_clock::now();
    work(times);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// The same in the calling thread's own time, which other work on the machine does not stretch. For
// work that never waits.
inline double MeasureOwnTime(const Work &work, long times) {
    const auto now = [] {
        struct timespec time = {};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
    };
    const double begin = now();
    work(times);
    return now() - begin;
}

class Worker {
  public:
    // `prepare` runs in the new process and gives its work; what it owns ends with the worker.
    explicit Worker(const std::function<Work()> &prepare) {
        int to_worker[2];
        int from_worker[2];
        if (::pipe(to_worker) != 0 || ::pipe(from_worker) != 0)
            throw std::runtime_error("no pipe");
        process_ = ::fork();
        if (process_ == 0) {
            ::close(to_worker[1]);
            ::close(from_worker[0]);
            Serve(prepare(), to_worker[0], from_worker[1]);
        }
        ::close(to_worker[0]);
        ::close(from_worker[1]);
        orders_ = to_worker[1];
        answers_ = from_worker[0];
    }
    Worker(const Worker &) = delete;
    Worker &operator=(const Worker &) = delete;
    ~Worker() {
        // An order, not the end of the pipe: later workers hold copies of it.
        const long no_more = 0;
        (void)!::write(orders_, &no_more, sizeof no_more);
        ::close(orders_);
        ::close(answers_);
        ::waitpid(process_, nullptr, 0);
    }

    // Seconds of its own time that the worker took to do its work so many times.
    double Run(long times) {
        double seconds = 0;
        if (::write(orders_, &times, sizeof times) != sizeof times ||
            ::read(answers_, &seconds, sizeof seconds) != sizeof seconds)
            throw std::runtime_error("the worker has ended");
        return seconds;
    }

  private:
    // Ends the process when it is to work no more, with every destructor of what `work` owns run.
    [[noreturn]] static void Serve(Work work, int orders, int answers) {
        long times = 0;
        while (::read(orders, &times, sizeof times) == sizeof times && times > 0) {
            const double seconds = MeasureOwnTime(work, times);
            if (::write(answers, &seconds, sizeof seconds) != sizeof seconds)
                break;
        }
        work = nullptr;
        ::_exit(0);
    }

    pid_t process_ = -1;
    int orders_ = -1;
    int answers_ = -1;
};

}  // namespace bench

#endif  // BENCH_SUPPORT_WORKER_H
