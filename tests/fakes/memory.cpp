// The memory blocks of libNTwin32, each with the size that was asked for.
#include <ntwin32/memory.h>

#include <algorithm>
#include <map>
#include <memory>

#include "state.h"

namespace fakes {

namespace {

struct Block {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
};

std::map<HGLOBAL, Block> &Blocks() {
    static std::map<HGLOBAL, Block> blocks;
    return blocks;
}

}  // namespace

int GlobalBlocks() {
    return static_cast<int>(Blocks().size());
}

namespace internal {

void ResetMemory() {
    Blocks().clear();
}

}  // namespace internal

}  // namespace fakes

using namespace fakes;

HGLOBAL GlobalAlloc(UINT uFlags, size_t cbBytes) noexcept {
    if (Enter("GlobalAlloc", std::to_string(cbBytes)) != 0) {
        return nullptr;
    }
    // Not zeroed unless asked for: a reader that relies on zeros it did not ask for shows.
    auto bytes = std::make_unique<char[]>(cbBytes + 1);
    std::fill_n(bytes.get(), cbBytes, (uFlags & GMEM_ZEROINIT) != 0 ? '\0' : '\x5A');
    const HGLOBAL block = bytes.get();
    Blocks()[block] = {std::move(bytes), cbBytes};
    return block;
}

size_t GlobalSize(HGLOBAL hMem) noexcept {
    if (Enter("GlobalSize") != 0) {
        return 0;
    }
    const auto found = Blocks().find(hMem);
    return found == Blocks().end() ? 0 : found->second.size;
}

HGLOBAL GlobalFree(HGLOBAL hMem) noexcept {
    Enter("GlobalFree");
    if (hMem == nullptr) {
        return nullptr;
    }
    const bool freed = Blocks().erase(hMem) == 1;
    EXPECT_TRUE(freed) << "GlobalFree of what is no block";
    return freed ? nullptr : hMem;
}
