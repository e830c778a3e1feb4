// Blocks of GlobalAlloc.
//
// State model
//   Every live block stands in one table with its size, so that a size is exact and an address that
//   is no block is known without being read. One lock; nothing is called under it but the table.
#include <ntwin32/memory.h>

#include <cstdlib>
#include <mutex>
#include <unordered_map>

#include "last_error.h"

namespace {

class BlockTable {
  public:
    void Insert(HGLOBAL block, size_t size) {
        const std::lock_guard lock(mutex_);
        sizes_.insert_or_assign(KeyOf(block), size);
    }
    bool Remove(HGLOBAL block) {
        const std::lock_guard lock(mutex_);
        return sizes_.erase(KeyOf(block)) != 0;
    }
    size_t SizeOf(HGLOBAL block) const {
        const std::lock_guard lock(mutex_);
        const auto found = sizes_.find(KeyOf(block));
        return found != sizes_.end() ? found->second : 0;
    }

  private:
    // Inverted, so that a leak checker does not take the table for an owner of the block.
    static uintptr_t KeyOf(HGLOBAL block) { return ~reinterpret_cast<uintptr_t>(block); }

    mutable std::mutex mutex_;
    std::unordered_map<uintptr_t, size_t> sizes_;
};

// Lives as long as the process: destructors that run at its end may still release blocks.
BlockTable &Blocks() {
    static auto *table = new BlockTable;
    return *table;
}

HGLOBAL Allocate(size_t size, bool zeroed) {
    const size_t at_least_one = size != 0 ? size : 1;
    return zeroed ? std::calloc(1, at_least_one) : std::malloc(at_least_one);
}

HGLOBAL AllocateBlock(size_t size, bool zeroed) {
    HGLOBAL block = Allocate(size, zeroed);
    if (block == nullptr) {
        return win32::Fail(ERROR_NOT_ENOUGH_MEMORY, block);
    }
    try {
        Blocks().Insert(block, size);
    } catch (...) {
        std::free(block);
        throw;
    }
    return block;
}

}  // namespace

extern "C" {

HGLOBAL GlobalAlloc(UINT uFlags, size_t cbBytes) noexcept {
    if ((uFlags & ~GMEM_ZEROINIT) != 0) {
        return win32::Fail(ERROR_INVALID_PARAMETER, HGLOBAL{});
    }
    return win32::AtBoundary(HGLOBAL{},
                             [&] { return AllocateBlock(cbBytes, (uFlags & GMEM_ZEROINIT) != 0); });
}

size_t GlobalSize(HGLOBAL hMem) noexcept {
    return win32::AtBoundary(size_t{0}, [&] { return Blocks().SizeOf(hMem); });
}

HGLOBAL GlobalFree(HGLOBAL hMem) noexcept {
    if (hMem == nullptr) {
        return nullptr;
    }
    return win32::AtBoundary(hMem, [&] {
        if (!Blocks().Remove(hMem)) {
            return win32::Fail(ERROR_INVALID_HANDLE, hMem);
        }
        std::free(hMem);
        return HGLOBAL{};
    });
}

}  // extern "C"
