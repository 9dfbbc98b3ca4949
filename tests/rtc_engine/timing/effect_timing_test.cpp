#include "effect_timing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

using sonivex::delayOfCalls_frames;

constexpr int kSilence = -1;

// Returns the output of an effect that changes nothing but has the queues of effect_timing.h. Each call
// carries the next of `numbers`.
std::vector<int> answers(int block, int call, int calls, const std::vector<int>& numbers) {
    std::vector<int> queued;
    std::vector<int> ready;
    std::vector<int> out;
    const auto move = [](std::vector<int>& from, int count, std::vector<int>& to) {
        to.insert(to.end(), from.begin(), from.begin() + count);
        from.erase(from.begin(), from.begin() + count);
    };
    auto next = numbers.begin();
    for (int i = 0; i < calls; ++i, next += call) {
        queued.insert(queued.end(), next, next + call);
        while (queued.size() >= static_cast<size_t>(block)) move(queued, block, ready);
        if (ready.size() >= static_cast<size_t>(call)) {
            move(ready, call, out);
        } else {
            out.insert(out.end(), static_cast<size_t>(call), kSilence);
        }
    }
    return out;
}

TEST(QueueLatency, IsZeroForCallsOfWholeBlocks) {
    EXPECT_EQ(delayOfCalls_frames(512, 512), 0);
    EXPECT_EQ(delayOfCalls_frames(512, 1024), 0);
    EXPECT_EQ(delayOfCalls_frames(512, 4096), 0);
    EXPECT_EQ(delayOfCalls_frames(240, 480), 0);
}

TEST(QueueLatency, IsABlockLessOneCallForCallsThatDivideTheBlock) {
    EXPECT_EQ(delayOfCalls_frames(512, 256), 256);
    EXPECT_EQ(delayOfCalls_frames(512, 128), 384);
    EXPECT_EQ(delayOfCalls_frames(512, 1), 511);
}

TEST(QueueLatency, IsOneCallForLongerCallsThatAreNoMultipleOfTheBlock) {
    EXPECT_EQ(delayOfCalls_frames(512, 768), 768);
    EXPECT_EQ(delayOfCalls_frames(240, 1024), 1024);
}

TEST(QueueLatency, IsUndefinedForSizesThatCauseSilentGaps) {
    EXPECT_EQ(delayOfCalls_frames(512, 100), std::nullopt);
    EXPECT_EQ(delayOfCalls_frames(512, 300), std::nullopt);
}

TEST(QueueLatency, MatchesSimulatedQueuesForManyCallSizes) {
    constexpr int kLongestCall = 1100;
    std::vector<int> numbers((512 + 4) * kLongestCall);
    std::iota(numbers.begin(), numbers.end(), 0);
    for (const int block : {240, 512}) {
        for (int call = 1; call <= kLongestCall; call += call < 64 ? 1 : 5) {
            // The run is long enough for every remainder of the block to occur.
            const std::vector<int> out = answers(block, call, block + 4, numbers);
            const auto delay = delayOfCalls_frames(block, call);
            const auto sound = std::find_if(out.begin(), out.end(), [](int n) { return n != kSilence; });
            const bool is_constant = std::equal(sound, out.end(), numbers.begin());
            ASSERT_EQ(delay.has_value(), is_constant) << "block " << block << ", call " << call;
            if (!is_constant) continue;
            ASSERT_EQ(*delay, sound - out.begin()) << "block " << block << ", call " << call;
        }
    }
}

}  // namespace
