#include "latency.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using sonivex_tool::constantDelayFrames;

constexpr int kSilence = -1;

/** What an effect that changes nothing answers to calls that carry 0, 1, 2, …: the queues themselves. */
std::vector<int> answers(int block, int call, int calls) {
    std::vector<int> queued;
    std::vector<int> ready;
    std::vector<int> out;
    int next = 0;
    const auto move = [](std::vector<int>& from, int count, std::vector<int>& to) {
        to.insert(to.end(), from.begin(), from.begin() + count);
        from.erase(from.begin(), from.begin() + count);
    };
    for (int i = 0; i < calls; ++i) {
        for (int k = 0; k < call; ++k) queued.push_back(next++);
        while (queued.size() >= static_cast<size_t>(block)) move(queued, block, ready);
        if (ready.size() >= static_cast<size_t>(call)) {
            move(ready, call, out);
        } else {
            out.insert(out.end(), static_cast<size_t>(call), kSilence);
        }
    }
    return out;
}

TEST(Latency, CallsOfWholeBlocksAreAnsweredAtOnce) {
    EXPECT_EQ(constantDelayFrames(512, 512), 0);
    EXPECT_EQ(constantDelayFrames(512, 1024), 0);
    EXPECT_EQ(constantDelayFrames(512, 4096), 0);
    EXPECT_EQ(constantDelayFrames(240, 480), 0);
}

TEST(Latency, CallsThatDivideTheBlockAreLateByABlockLessOneCall) {
    EXPECT_EQ(constantDelayFrames(512, 256), 256);
    EXPECT_EQ(constantDelayFrames(512, 128), 384);
    EXPECT_EQ(constantDelayFrames(512, 1), 511);
}

TEST(Latency, ACallLongerThanTheBlockIsLateByItselfUnlessItIsAMultiple) {
    EXPECT_EQ(constantDelayFrames(512, 768), 768);
    EXPECT_EQ(constantDelayFrames(240, 1024), 1024);
}

TEST(Latency, ASizeThatMakesSilenceInTheMiddleHasNoDelay) {
    EXPECT_EQ(constantDelayFrames(512, 100), std::nullopt);
    EXPECT_EQ(constantDelayFrames(512, 300), std::nullopt);
}

TEST(Latency, AgreesWithTheQueuesThemselvesForManyCallSizes) {
    for (const int block : {240, 512}) {
        std::vector<int> calls = {240, 256, 480, 512, 1024};
        for (int call = 1; call <= 1100; call += call < 64 ? 1 : 13) calls.push_back(call);
        for (const int call : calls) {
            // Long enough for every remainder of the block to come up.
            const std::vector<int> out = answers(block, call, block + 4);
            const auto delay = constantDelayFrames(block, call);
            bool isConstant = true;
            size_t silent = 0;
            while (silent < out.size() && out[silent] == kSilence) ++silent;
            for (size_t i = silent; i < out.size(); ++i) isConstant &= out[i] == static_cast<int>(i - silent);
            ASSERT_EQ(delay.has_value(), isConstant) << "block " << block << ", call " << call;
            if (!isConstant) continue;
            ASSERT_EQ(*delay, static_cast<int64_t>(silent)) << "block " << block << ", call " << call;
        }
    }
}

}  // namespace
