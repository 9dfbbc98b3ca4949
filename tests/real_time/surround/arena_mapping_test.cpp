// Large arenas work alike whether the system maps them or refuses, and they return all their memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

#include "arena.h"
#include "real_time/failing_allocator.h"
#include "real_time/mapping_watch.h"

namespace {

using sonivex::Arena;
using test::AllocationWatch;
using test::MappingWatch;

// The smallest arena that is mapped, 1.75 MiB.
constexpr std::size_t kMinMappedBytes = 7 * (std::size_t{1} << 18);
constexpr std::size_t kLargeSizes[] = {kMinMappedBytes, std::size_t{2} << 20, std::size_t{3} << 20,
                                       std::size_t{4} << 20};

// The memory is zero at first and holds what is written.
void expectServes(Arena& arena) {
    const std::size_t room = arena.room();
    auto* const bytes = arena.take<unsigned char>(room);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % Arena::kAlignment, 0U);
    EXPECT_EQ(std::count(bytes, bytes + room, 0), static_cast<std::ptrdiff_t>(room));
    std::fill_n(bytes, room, static_cast<unsigned char>(3));
    EXPECT_EQ(std::count(bytes, bytes + room, 3), static_cast<std::ptrdiff_t>(room));
    EXPECT_THROW(arena.take<unsigned char>(1), std::bad_alloc);
}

TEST(ArenaMapping, ALargeArenaIsMappedAndUnmappedCompletely) {
    for (const std::size_t bytes : kLargeSizes) {
        const MappingWatch mappings;
        const AllocationWatch allocations;
        {
            Arena arena(bytes);
            EXPECT_EQ(allocations.requested(), 0);
            EXPECT_GE(mappings.bytes(), static_cast<std::ptrdiff_t>(bytes));
            EXPECT_EQ(mappings.bytes(), static_cast<std::ptrdiff_t>(arena.room()));
            expectServes(arena);
        }
        EXPECT_EQ(mappings.bytes(), 0);
    }
}

TEST(ArenaMapping, ASmallerArenaIsNotMapped) {
    const MappingWatch mappings;
    const AllocationWatch allocations;
    {
        Arena arena(kMinMappedBytes - 1);
        EXPECT_EQ(mappings.calls(), 0);
        EXPECT_EQ(allocations.requested(), 1);
    }
    EXPECT_EQ(mappings.calls(), 0);
    EXPECT_EQ(allocations.alive(), 0);
}

TEST(ArenaMapping, TheAllocatorServesWhenTheSystemRefusesToMap) {
    for (const std::size_t bytes : kLargeSizes) {
        const MappingWatch mappings(MappingWatch::Kernel::kRefuses);
        const AllocationWatch allocations;
        {
            Arena arena(bytes);
            EXPECT_EQ(allocations.requested(), 1);
            EXPECT_EQ(arena.room(), bytes);
            expectServes(arena);
        }
        EXPECT_EQ(mappings.calls(), 1);  // only the refused mmap: there is nothing to unmap
        EXPECT_EQ(allocations.alive(), 0);
    }
}

TEST(ArenaMapping, ConstructionThrowsWhenMappingAndAllocatorFail) {
    for (const std::size_t bytes : kLargeSizes) {
        const MappingWatch mappings(MappingWatch::Kernel::kRefuses);
        const AllocationWatch allocations(1);
        EXPECT_THROW(Arena{bytes}, std::bad_alloc);
        EXPECT_EQ(allocations.requested(), 1);
        EXPECT_EQ(mappings.bytes(), 0);
    }
}

}  // namespace
