// Lists of separately allocated blocks: what this library hands out, and the name buffers that it
// works with. A null pointer stands behind the last block, so that no count is needed to release.
#ifndef AMRSET_BLOCKS_H
#define AMRSET_BLOCKS_H

#include <ntwin32/types.h>

#include <cstdlib>
#include <type_traits>

#include "registry/handles.h"
#include "registry/trace.h"

// What a failed allocation traces: of the array of pointers, and of a block (with its index).
struct BLOCK_TEXTS {
    const char *szArray;
    const char *szBlock;
};

template <typename T>
void FreeBlocks(T **lplpBlocks) noexcept {
    for (T **lplpNext = lplpBlocks; lplpNext != nullptr && *lplpNext != nullptr; ++lplpNext) {
        std::free(*lplpNext);
    }
    std::free(static_cast<void *>(lplpBlocks));
}

template <typename T>
struct BlocksPolicy {
    using Type = T **;
    static Type None() noexcept { return nullptr; }
    static void Close(Type lplpBlocks) noexcept { FreeBlocks(lplpBlocks); }
};
template <typename T>
using AutoBlocks = AutoHandle<BlocksPolicy<T>>;

// An empty text of cbBlock bytes; what lies behind it is not touched, because a table has many.
[[nodiscard]] inline char *AllocateText(std::size_t cbBlock) noexcept {
    auto *lpszText = static_cast<char *>(std::malloc(cbBlock));
    if (lpszText != nullptr) {
        lpszText[0] = '\0';
    }
    return lpszText;
}

template <typename T>
[[nodiscard]] T *AllocateBlock(std::size_t cbBlock) noexcept {
    if constexpr (std::is_same_v<T, char>) {
        return AllocateText(cbBlock);
    } else if constexpr (std::is_void_v<T>) {
        return std::malloc(cbBlock);
    } else {
        return static_cast<T *>(std::calloc(1, cbBlock));
    }
}

// dwCount blocks of cbBlock bytes: empty texts, or zeroed records, or (of void) bytes that the
// caller fills at once. Null when there is no memory.
template <typename T>
[[nodiscard]] T **AllocateBlocks(const char *szFunction, const BLOCK_TEXTS &texts, DWORD dwCount,
                                 std::size_t cbBlock) noexcept {
    static constexpr char TRACE_SOURCE[] = "amrset";
    AutoBlocks<T> blocks(static_cast<T **>(std::calloc(std::size_t{dwCount} + 1, sizeof(T *))));
    if (!blocks.IsValid()) {
        TRACE_AS(szFunction, TRACE_MEMORY, texts.szArray, 0);
        return nullptr;
    }
    for (DWORD i = 0; i < dwCount; ++i) {
        blocks.Get()[i] = AllocateBlock<T>(cbBlock);
        if (blocks.Get()[i] == nullptr) {
            TRACE_AS(szFunction, TRACE_MEMORY, texts.szBlock, static_cast<int>(i));
            return nullptr;
        }
    }
    return blocks.Release();
}

#endif  // AMRSET_BLOCKS_H
