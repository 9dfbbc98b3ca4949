// Checks before which call of the filter a flush comes. The steered filter's output is the number of its
// calls since the last flush.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "effect_chain.h"
#include "plugin_search.h"

namespace {

using namespace sonivex_tool;
using testing::ElementsAre;

constexpr int kRate_hz = 48000;
constexpr int kCall_frames = 1024;

// Plays calls of mono silence. @return the first sample of each call that comes out.
std::vector<int> callNumbers(std::vector<double> flush_at_s, int calls = 6) {
    AudioSpec spec;
    spec.format = AV_SAMPLE_FMT_S16;
    spec.rate_hz = kRate_hz;
    spec.layout = defaultLayout(1);
    FilterSettings settings;
    settings.chain = {findEffect("normalizer")};
    settings.call_frames = kCall_frames;
    settings.flush_at_s = std::move(flush_at_s);

    std::vector<int> numbers;
    EffectChain chain(settings, loadPlugin(SONIVEX_STEERED_FILTER), spec, [&numbers](const FramePtr& frame) {
        numbers.push_back(*reinterpret_cast<const int16_t*>(frame->data[0]));
    });
    const FramePtr silence = makeFrame(spec, calls * kCall_frames);
    std::fill_n(reinterpret_cast<int16_t*>(silence->data[0]), silence->nb_samples, int16_t{0});
    chain.push(*silence);
    chain.finish();
    return numbers;
}

double timeOf(double frame) {
    return frame / kRate_hz;
}

TEST(FilterRunFlush, ComesBeforeTheCallThatContainsIt) {
    EXPECT_THAT(callNumbers({}), ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_THAT(callNumbers({timeOf(2 * kCall_frames + 500)}), ElementsAre(1, 2, 1, 2, 3, 4));
}

TEST(FilterRunFlush, AtTheFirstFrameOfACallComesBeforeThisCall) {
    for (int call = 1; call < 6; ++call) {
        std::vector<int> expected;
        for (int i = 0; i < 6; ++i) expected.push_back(i < call ? i + 1 : i - call + 1);
        EXPECT_EQ(callNumbers({timeOf(call * kCall_frames)}), expected) << call;
    }
}

TEST(FilterRunFlush, JustBelowTheFirstFrameOfACallComesBeforeTheCallBefore) {
    for (const double below_frames : {1.0, 0.5, 0.01}) {
        EXPECT_THAT(callNumbers({timeOf(2 * kCall_frames - below_frames)}), ElementsAre(1, 1, 2, 3, 4, 5))
            << below_frames;
    }
}

// 0.576 s are 27 calls, but a little less in doubles: 0.576 * 48000 < 27648.
TEST(FilterRunFlush, IsNotEarlyForATimeThatHasNoExactDouble) {
    ASSERT_LT(0.576 * kRate_hz, 27.0 * kCall_frames);
    const std::vector<int> numbers = callNumbers({0.576}, 28);
    ASSERT_EQ(numbers.size(), 28U);
    EXPECT_EQ(numbers[26], 27);
    EXPECT_EQ(numbers[27], 1);
}

TEST(FilterRunFlush, ComesOnceForAllTimesWithinACall) {
    EXPECT_THAT(callNumbers({timeOf(kCall_frames), timeOf(2 * kCall_frames - 1), timeOf(3 * kCall_frames)}),
                ElementsAre(1, 1, 2, 1, 2, 3));
}

TEST(FilterRunFlush, AtTheBeginningChangesNothingAndAtTheEndDoesNotCome) {
    EXPECT_THAT(callNumbers({0.0, timeOf(6 * kCall_frames)}), ElementsAre(1, 2, 3, 4, 5, 6));
}

}  // namespace
