#include "arena.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <vector>

namespace {

using sonivex::Arena;

constexpr std::size_t kMib = std::size_t{1} << 20;
// Arenas of at least this size are mapped in pages of their own.
constexpr std::size_t kMinBytesForHugePages = 2 * kMib - kMib / 4;

constexpr std::size_t kArenaSizes[] = {
    64, 4096, kMib, kMinBytesForHugePages - 64, kMinBytesForHugePages, 2 * kMib, 5 * kMib / 2, 4 * kMib};

TEST(ConvolutionArena, ArraysAreAlignedAndZeroAndDoNotOverlap) {
    for (const std::size_t bytes : kArenaSizes) {
        SCOPED_TRACE(bytes);
        Arena arena(bytes);
        EXPECT_GE(arena.room(), bytes);
        std::vector<unsigned char*> arrays;
        std::vector<std::size_t> sizes;
        for (std::size_t size = 1; arena.room() >= Arena::bytesOf<unsigned char>(size);
             size = 2 * size + 13) {
            arrays.push_back(arena.take<unsigned char>(size));
            sizes.push_back(size);
        }
        for (std::size_t i = 0; i < arrays.size(); ++i) {
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(arrays[i]) % Arena::kAlignment, 0U);
            EXPECT_EQ(std::count(arrays[i], arrays[i] + sizes[i], 0), static_cast<std::ptrdiff_t>(sizes[i]));
            std::fill_n(arrays[i], sizes[i], static_cast<unsigned char>(i + 1));
        }
        for (std::size_t i = 0; i < arrays.size(); ++i) {
            EXPECT_EQ(std::count(arrays[i], arrays[i] + sizes[i], static_cast<unsigned char>(i + 1)),
                      static_cast<std::ptrdiff_t>(sizes[i]));
        }
    }
}

TEST(ConvolutionArena, AnArrayTakesWholeAlignmentUnits) {
    EXPECT_EQ(Arena::bytesOf<float>(0), 0U);
    EXPECT_EQ(Arena::bytesOf<float>(1), 64U);
    EXPECT_EQ(Arena::bytesOf<float>(16), 64U);
    EXPECT_EQ(Arena::bytesOf<float>(17), 128U);
    EXPECT_EQ(Arena::bytesOf<double>(17), 192U);
    Arena arena(256);
    arena.take<float>(17);
    EXPECT_EQ(arena.room(), 128U);
    arena.take<char>(1);
    EXPECT_EQ(arena.room(), 64U);
}

TEST(ConvolutionArena, RejectsAnArrayThatDoesNotFitAndStillServesASmallerOne) {
    for (const std::size_t bytes : kArenaSizes) {
        SCOPED_TRACE(bytes);
        Arena arena(bytes);
        const std::size_t room = arena.room();
        EXPECT_THROW(arena.take<unsigned char>(room + 1), std::bad_alloc);
        EXPECT_EQ(arena.room(), room);
        EXPECT_NE(arena.take<unsigned char>(room), nullptr);
        EXPECT_EQ(arena.room(), 0U);
        EXPECT_THROW(arena.take<unsigned char>(1), std::bad_alloc);
    }
}

TEST(ConvolutionArena, AllOfItsMemoryIsWritable) {
    for (const std::size_t bytes : kArenaSizes) {
        Arena arena(bytes);
        const std::size_t room = arena.room();
        std::fill_n(arena.take<unsigned char>(room), room, static_cast<unsigned char>(7));
    }
}

TEST(ConvolutionArena, UsesHugePagesForAtLeastSevenEighthsOfAHugePage) {
    EXPECT_EQ(Arena(kMinBytesForHugePages - 64).room(), kMinBytesForHugePages - 64);
#if defined(__linux__)
    EXPECT_EQ(Arena(kMinBytesForHugePages).room(), 2 * kMib);
    EXPECT_EQ(Arena(2 * kMib).room(), 2 * kMib);
    EXPECT_EQ(Arena(5 * kMib / 2 + 1).room(), 5 * kMib / 2 + 4096);  // the remainder takes whole small pages
    EXPECT_EQ(Arena(2 * kMib + kMinBytesForHugePages).room(), 4 * kMib);
    Arena arena(kMinBytesForHugePages);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(arena.take<char>(1)) % (2 * kMib), 0U);
#endif
}

}  // namespace
