#include "support/memory/heap_bytes.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace {

const auto kPage_bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

std::byte* mapped(std::size_t bytes, void* address = nullptr, int more_flags = 0) {
    void* const memory =
        mmap(address, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | more_flags, -1, 0);
    return memory == MAP_FAILED ? nullptr : static_cast<std::byte*>(memory);
}

TEST(HeapBytes, CountsAMappingInWholePagesUntilItIsUnmapped) {
    const std::size_t before = test::heapBytes();
    std::byte* const memory = mapped(99 * kPage_bytes + 1);
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(test::heapBytes() - before, 100 * kPage_bytes);
    memory[99 * kPage_bytes] = std::byte{1};
    EXPECT_EQ(munmap(memory, 99 * kPage_bytes + 1), 0);
    EXPECT_EQ(test::heapBytes(), before);
}

TEST(HeapBytes, CountsTheRestOfAPartlyUnmappedMapping) {
    const std::size_t before = test::heapBytes();
    std::byte* const memory = mapped(100 * kPage_bytes);
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(munmap(memory, 10 * kPage_bytes), 0);
    EXPECT_EQ(test::heapBytes() - before, 90 * kPage_bytes);
    EXPECT_EQ(munmap(memory + 95 * kPage_bytes, 5 * kPage_bytes), 0);
    EXPECT_EQ(test::heapBytes() - before, 85 * kPage_bytes);
    EXPECT_EQ(munmap(memory + 50 * kPage_bytes, kPage_bytes), 0);
    EXPECT_EQ(test::heapBytes() - before, 84 * kPage_bytes);
    EXPECT_EQ(munmap(memory, 100 * kPage_bytes), 0);
    EXPECT_EQ(test::heapBytes(), before);
}

TEST(HeapBytes, CountsAMappingThatReplacesPartOfAnotherOnlyOnce) {
    const std::size_t before = test::heapBytes();
    std::byte* const memory = mapped(100 * kPage_bytes);
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(mapped(20 * kPage_bytes, memory + 40 * kPage_bytes, MAP_FIXED), memory + 40 * kPage_bytes);
    EXPECT_EQ(test::heapBytes() - before, 100 * kPage_bytes);
    EXPECT_EQ(munmap(memory, 100 * kPage_bytes), 0);
    EXPECT_EQ(test::heapBytes(), before);
}

TEST(HeapBytes, DoesNotCountAMappedFile) {
    std::FILE* const file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(ftruncate(fileno(file), static_cast<off_t>(kPage_bytes)), 0);
    const std::size_t before = test::heapBytes();
    void* const memory = mmap(nullptr, kPage_bytes, PROT_READ, MAP_PRIVATE, fileno(file), 0);
    EXPECT_NE(memory, MAP_FAILED);
    EXPECT_EQ(test::heapBytes(), before);
    EXPECT_EQ(munmap(memory, kPage_bytes), 0);
    EXPECT_EQ(test::heapBytes(), before);
    std::fclose(file);
}

TEST(HeapBytes, KeepsTheCountWhenTheKernelRefusesACall) {
    const std::size_t before = test::heapBytes();
    EXPECT_EQ(mapped(0), nullptr);
    std::byte* const memory = mapped(kPage_bytes);
    ASSERT_NE(memory, nullptr);
    EXPECT_EQ(munmap(memory + 1, kPage_bytes), -1);
    EXPECT_EQ(test::heapBytes() - before, kPage_bytes);
    EXPECT_EQ(munmap(memory, kPage_bytes), 0);
    EXPECT_EQ(test::heapBytes(), before);
}

// The allocator takes a small block from its arena and maps a large one.
TEST(HeapBytes, CountsSmallAndLargeAllocationsOnce) {
    constexpr std::size_t kLarge_bytes = 64U << 20U;
    for (const std::size_t bytes : {std::size_t{10000}, kLarge_bytes}) {
        const std::size_t before = test::heapBytes();
        void* const memory = std::malloc(bytes);
        const std::size_t taken = test::heapBytes() - before;
        EXPECT_NE(memory, nullptr);
        std::free(memory);
        EXPECT_GE(taken, bytes);
        EXPECT_LE(taken, bytes + 2 * kPage_bytes);
        EXPECT_EQ(test::heapBytes(), before);
    }
}

}  // namespace
