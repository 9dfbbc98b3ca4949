#include "read_ahead.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <stdexcept>

#include "interrupt.h"

namespace {

using sonivex_tool::ReadAhead;

TEST(ReadAhead, HandsOutEveryItemInOrderThenNothing) {
    int produced = 0;
    ReadAhead<int> ahead(
        4, [&]() -> std::optional<int> { return produced < 500 ? std::optional(produced++) : std::nullopt; },
        [] {});
    for (int i = 0; i < 500; ++i) EXPECT_EQ(ahead.next(), i);
    EXPECT_EQ(ahead.next(), std::nullopt);
    EXPECT_EQ(ahead.next(), std::nullopt);
}

TEST(ReadAhead, HandsOutWhatCameBeforeAnErrorThenThrowsIt) {
    int produced = 0;
    ReadAhead<int> ahead(
        8,
        [&]() -> std::optional<int> {
            if (produced == 3) throw std::runtime_error("broken");
            return produced++;
        },
        [] {});
    for (int i = 0; i < 3; ++i) EXPECT_EQ(ahead.next(), i);
    EXPECT_THROW(ahead.next(), std::runtime_error);
}

TEST(ReadAhead, ProducesNoMoreThanItsCapacityInAdvance) {
    std::atomic<int> produced = 0;
    ReadAhead<int> ahead(
        3, [&]() -> std::optional<int> { return produced++; }, [] {});
    // Three items wait in the queue and the thread holds a fourth.
    while (produced < 4) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(produced, 4);
}

// The read waits in the kernel for a byte that never comes.
TEST(ReadAhead, EndsAReadThatWaitsForeverWhenItIsDestroyed) {
    sonivex_tool::installSignalHandlers();
    std::array<int, 2> pipe_ends{};
    ASSERT_EQ(pipe(pipe_ends.data()), 0);
    std::atomic<bool> is_stopped = false;
    std::atomic<bool> has_started = false;
    {
        ReadAhead<char> ahead(
            1,
            [&]() -> std::optional<char> {
                char byte = 0;
                has_started = true;
                while (read(pipe_ends[0], &byte, 1) != 1) {
                    if (is_stopped) return std::nullopt;
                }
                return byte;
            },
            [&] { is_stopped = true; });
        while (!has_started) std::this_thread::yield();
    }
    EXPECT_TRUE(is_stopped);
    close(pipe_ends[0]);
    close(pipe_ends[1]);
}

}  // namespace
