// Compares calls of several blocks, which the engine renders two at a time, with calls of one block each. The
// sound must be the same apart from the latency that the call length causes.
#include <gtest/gtest.h>

#include "models/surround_model.h"
#include "support/effects/surround_effect.h"
#include "support/signals/signal_matchers.h"

namespace {

constexpr std::size_t kStream_frames = 24000;

struct LengthsCase {
    int type;
    int channels;
    int limiter;
};

std::vector<LengthsCase> everyLengthsCase() {
    std::vector<LengthsCase> cases;
    for (const int type : {1, 13}) {
        for (const int channels : {1, 2, 6, 8}) {
            for (const int limiter : {0, 1}) cases.push_back({type, channels, limiter});
        }
    }
    return cases;
}

// Loud enough to engage the limiter and the clip, with a stretch of silence.
test::Pcm streamOf(std::size_t width, std::uint64_t seed) {
    test::Pcm in = test::bursts(seed, static_cast<int>(kStream_frames * width));
    for (std::size_t i = in.size() / 2; i < in.size() / 2 + 3000 * width; ++i) in[i] = 0;
    return in;
}

class SurroundCallLengths : public ::testing::TestWithParam<LengthsCase> {
  protected:
    test::Pcm outputIn(const std::vector<int>& calls) const {
        return test::SurroundEffect(GetParam().channels, GetParam().type, 2, GetParam().limiter)
            .process(in_, calls);
    }
    void expectSameSound(const std::vector<int>& calls) const {
        ASSERT_TRUE(test::sameSignal(outputIn(calls), model::servedInCalls(blocks_, calls)));
    }

    const test::Pcm in_ = streamOf(test::surroundWidth(GetParam().channels), 6);
    const test::Pcm blocks_ = outputIn(test::callsOf(240, kStream_frames));
};

TEST_P(SurroundCallLengths, CallsOfSeveralBlocksEqualCallsOfOneBlock) {
    for (const int frames : {480, 720, 960, 2400, 9600}) {
        SCOPED_TRACE(frames);
        const test::Pcm out = outputIn(test::callsOf(frames, kStream_frames));
        ASSERT_GE(out.size(), kStream_frames);
        const auto end = blocks_.begin() + static_cast<std::ptrdiff_t>(out.size());
        EXPECT_TRUE(test::sameSignal(out, test::Pcm(blocks_.begin(), end)));
    }
}

TEST_P(SurroundCallLengths, CallsThatEndWithinABlockOnlyAddLatency) {
    for (const int frames : {1024, 1152, 1536, 441, 512, 100}) {
        SCOPED_TRACE(frames);
        expectSameSound(test::callsOf(frames, kStream_frames));
    }
}

TEST_P(SurroundCallLengths, CallsOfAnyLengthOnlyAddLatency) {
    for (const int longest : {240, 700, 3000}) {
        SCOPED_TRACE(longest);
        expectSameSound(test::randomCalls(static_cast<std::uint64_t>(longest), kStream_frames, longest));
    }
}

INSTANTIATE_TEST_SUITE_P(Layouts, SurroundCallLengths, ::testing::ValuesIn(everyLengthsCase()));

}  // namespace
