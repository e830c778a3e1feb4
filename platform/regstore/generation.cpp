#include "regstore/generation.h"

#include <new>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/descriptor.h"

namespace regstore {

namespace {

constexpr char kFile[] = "/generation";
using Number = std::atomic<std::uint64_t>;
static_assert(Number::is_always_lock_free && sizeof(Number) == sizeof(std::uint64_t));

}  // namespace

std::unique_ptr<Generation> Generation::Open(const std::string &folder, Access access) noexcept {
    const bool write = access == Access::kWrite;
    const std::string path = folder + kFile;
    const base::UniqueDescriptor file(
        ::open(path.c_str(), (write ? O_RDWR | O_CREAT : O_RDONLY) | O_CLOEXEC | O_NOFOLLOW, 0600));
    struct stat about = {};
    if (!file || ::fstat(file.Get(), &about) != 0 || !S_ISREG(about.st_mode))
        return nullptr;
    if (about.st_size < static_cast<off_t>(sizeof(Number)) &&
        (!write || ::ftruncate(file.Get(), sizeof(Number)) != 0))
        return nullptr;
    void *const memory = ::mmap(nullptr, sizeof(Number), write ? PROT_READ | PROT_WRITE : PROT_READ,
                                MAP_SHARED, file.Get(), 0);
    if (memory == MAP_FAILED)
        return nullptr;
    return std::unique_ptr<Generation>(new (std::nothrow)
                                           Generation(static_cast<Number *>(memory)));
}

Generation::~Generation() {
    ::munmap(number_, sizeof(Number));
}

void Generation::Advance(bool service_runs) noexcept {
    const std::uint64_t next = Value() + 1;
    const bool odd = next % 2 != 0;
    number_->store(odd == service_runs ? next : next + 1, std::memory_order_relaxed);
}

}  // namespace regstore
