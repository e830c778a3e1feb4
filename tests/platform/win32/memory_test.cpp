// Memory blocks: exact sizes, zeroing, addresses that are no blocks.
#include <ntwin32/file.h>
#include <ntwin32/memory.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <thread>
#include <vector>

// The sanitizers ask for these: a request that is too large shall give null, as it does without
// them.
extern "C" __attribute__((visibility("default"))) const char *__asan_default_options() {
    return "allocator_may_return_null=1";
}
extern "C" __attribute__((visibility("default"))) const char *__tsan_default_options() {
    return "allocator_may_return_null=1";
}

namespace {

class BlockSize : public testing::TestWithParam<size_t> {};

TEST_P(BlockSize, IsWhatWasAskedFor) {
    HGLOBAL block = GlobalAlloc(GMEM_FIXED, GetParam());
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(GlobalSize(block), GetParam());
    std::fill_n(static_cast<char *>(block), GetParam(), 'x');
    EXPECT_EQ(GlobalFree(block), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Sizes, BlockSize,
                         testing::Values(0, 1, 7, 8, 15, 16, 17, 4095, 4096, 4097, 1 << 20,
                                         (1 << 22) + 1));

TEST(Block, IsZeroedWhenAskedFor) {
    for (int round = 0; round < 10; ++round) {
        HGLOBAL dirty = GlobalAlloc(GMEM_FIXED, 1000);
        std::fill_n(static_cast<char *>(dirty), 1000, 'x');
        GlobalFree(dirty);
        HGLOBAL block = GlobalAlloc(GMEM_ZEROINIT, 1000);
        const auto *bytes = static_cast<const char *>(block);
        EXPECT_EQ(std::count(bytes, bytes + 1000, '\0'), 1000);
        GlobalFree(block);
    }
}

TEST(Block, OfNoBytesHasAnAddressOfItsOwn) {
    HGLOBAL first = GlobalAlloc(GMEM_FIXED, 0);
    HGLOBAL second = GlobalAlloc(GMEM_ZEROINIT, 0);
    EXPECT_NE(first, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(GlobalFree(first), nullptr);
    EXPECT_EQ(GlobalFree(second), nullptr);
}

TEST(Block, IsRefusedWithUnknownFlags) {
    EXPECT_EQ(GlobalAlloc(0x0002, 8), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(GlobalAlloc(GMEM_ZEROINIT | 0x8000, 8), nullptr);
}

TEST(Block, IsNullWithoutMemory) {
    const size_t too_much = SIZE_MAX / 2;
    EXPECT_EQ(GlobalAlloc(GMEM_FIXED, too_much), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY));
    EXPECT_EQ(GlobalAlloc(GMEM_ZEROINIT, too_much), nullptr);
}

TEST(ForeignAddress, HasNoSizeAndIsGivenBack) {
    HGLOBAL block = GlobalAlloc(GMEM_FIXED, 16);
    int local = 0;
    const std::vector<char> heap(16);
    const HGLOBAL foreign[] = {
        &local, const_cast<char *>(heap.data()), static_cast<char *>(block) + 1,
        reinterpret_cast<HGLOBAL>(uintptr_t{1}), reinterpret_cast<HGLOBAL>(UINTPTR_MAX)};
    for (HGLOBAL address : foreign) {
        EXPECT_EQ(GlobalSize(address), 0u);
        EXPECT_EQ(GlobalFree(address), address);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    }
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(ForeignAddress, IsABlockThatWasReleased) {
    HGLOBAL block = GlobalAlloc(GMEM_FIXED, 16);
    ASSERT_EQ(GlobalFree(block), nullptr);
    EXPECT_EQ(GlobalSize(block), 0u);
    EXPECT_EQ(GlobalFree(block), block);
}

TEST(NullBlock, HasNoSizeAndIsReleased) {
    EXPECT_EQ(GlobalSize(nullptr), 0u);
    EXPECT_EQ(GlobalFree(nullptr), nullptr);
}

TEST(Block, MayBeUsedFromAnyThread) {
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (size_t number = 1; number <= 4; ++number) {
        threads.emplace_back([number] {
            for (size_t round = 0; round < 500; ++round) {
                HGLOBAL block = GlobalAlloc(GMEM_ZEROINIT, number * 100 + round % 7);
                EXPECT_EQ(GlobalSize(block), number * 100 + round % 7);
                EXPECT_EQ(GlobalFree(block), nullptr);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

}  // namespace
