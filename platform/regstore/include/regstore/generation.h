// A number in a file beside the store, which daemon and mapping clients hold in shared memory.
//
// The daemon advances it whenever it begins its service, ends it, or stops trusting its store; it
// is odd while the service runs. A client that maps the store compares it before each read, which
// costs no system call, and says hello again when it changed: the store may have been replaced
// meanwhile.
#ifndef REGSTORE_GENERATION_H
#define REGSTORE_GENERATION_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "regstore/environment.h"

namespace regstore {

class Generation {
  public:
    // Maps the file in the store's folder; kWrite makes it when it is absent. Null on failure.
    static std::unique_ptr<Generation> Open(const std::string &folder, Access access) noexcept;
    ~Generation();
    Generation(const Generation &) = delete;
    Generation &operator=(const Generation &) = delete;

    std::uint64_t Value() const noexcept { return number_->load(std::memory_order_relaxed); }
    // Of the opening with kWrite only: makes the next larger number that is odd, or even.
    void Advance(bool service_runs) noexcept;

  private:
    explicit Generation(std::atomic<std::uint64_t> *number) noexcept : number_(number) {}

    std::atomic<std::uint64_t> *number_;
};

}  // namespace regstore

#endif  // REGSTORE_GENERATION_H
