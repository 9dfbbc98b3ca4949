#include "au2_limiter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "au2_limiter_owner.h"
#include "models/normalizer_model.h"
#include "support/signals/signal_matchers.h"
#include "support/signals/signals.h"

namespace {

constexpr float kCeiling = 32440.32F;
// ceiling / x * x rounds twice and can exceed the ceiling by one unit in the last place.
constexpr float kCeilingWithRounding = 32440.3223F;

// Creation promises nothing about the contents of the record, so this fills it with garbage before the reset.
sonivex::Au2LimiterOwner makeLimiter() {
    auto limiter = sonivex::makeAu2Limiter();
    std::memset(static_cast<void*>(limiter.get()), 0xA5, sizeof *limiter);
    au2_limiter_reset(limiter.get());
    return limiter;
}

std::vector<float> limit(Au2LimiterState& state, const std::vector<float>& in, int expected_result) {
    std::vector<float> out(in.size(), -1.0F);
    EXPECT_EQ(au2_limiter_proc(&state, in.data(), static_cast<int>(in.size()), out.data()), expected_result);
    return out;
}

TEST(Au2Limiter, ResetGivesEveryFieldItsStartValue) {
    const auto limiter = makeLimiter();
    EXPECT_EQ(limiter->idleGain, 1.0F);
    EXPECT_EQ(limiter->gain, 1.0F);
    EXPECT_EQ(limiter->smoothedTarget, 1.0F);
    EXPECT_EQ(std::count(limiter->delayLine, limiter->delayLine + 64, 0.0F), 64);
    EXPECT_EQ(std::count(limiter->peakTree, limiter->peakTree + 128, 0.0F), 128);
    EXPECT_EQ(limiter->writeIndex, 0);
    EXPECT_EQ(limiter->limiting, 0);
    EXPECT_EQ(limiter->treeDepth, 6);
    EXPECT_EQ(limiter->treeSize, 64);
    EXPECT_EQ(limiter->indexMask, 63);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(limiter->threshold), 0x46FD70A4U);
    EXPECT_EQ(limiter->lookahead, 0);
}

TEST(Au2Limiter, TheIdleGainSettlesTwoThousandthsBelowOne) {
    const auto limiter = makeLimiter();
    const std::vector<float> out = limit(*limiter, std::vector<float>(480, 16000.0F), 0);
    EXPECT_NEAR(out.front(), 0.9998 * 16000, 0.01);
    EXPECT_NEAR(out.back(), 0.0999 / 0.1001 * 16000, 0.1);
    EXPECT_TRUE(std::is_sorted(out.rbegin(), out.rend()));
    EXPECT_EQ(limiter->limiting, 0);
}

TEST(Au2Limiter, EngagesAtTheFirstSampleOfALoudBlockAndKeepsTheCeiling) {
    const auto limiter = makeLimiter();
    std::fill(std::begin(limiter->peakTree), std::end(limiter->peakTree),
              1e9F);  // the limiter must clear it when it engages
    std::vector<float> in(480, 100.0F);
    in.back() = -40000.0F;

    const std::vector<float> out = limit(*limiter, in, 1);

    const float target = kCeiling / 40000.0F;
    EXPECT_EQ(out.front(), (1.0F * 0.8999F + target * 0.0999F) * 100.0F);
    EXPECT_NEAR(out[400], target * 0.0999 / 0.1001 * 100, 0.01);
    EXPECT_EQ(limiter->limiting, 1);
    for (const float y : out) ASSERT_LE(std::fabs(y), kCeilingWithRounding);
    EXPECT_EQ(std::count(limiter->peakTree + 128, limiter->peakTree + 512, 0.0F), 384);
}

TEST(Au2Limiter, HoldsASampleAtTheCeilingIfTheGainLeavesItTooLoud) {
    const auto limiter = makeLimiter();
    const std::vector<float> out = limit(*limiter, {40000.0F}, 1);
    EXPECT_NEAR(out[0], kCeiling, 0.005);
    EXPECT_EQ(limiter->gain, kCeiling / 40000.0F);
}

TEST(Au2Limiter, ReleasesWhenTheLoudLevelLeavesTheWindow) {
    const auto limiter = makeLimiter();
    limit(*limiter, std::vector<float>(480, 40000.0F), 1);
    limit(*limiter, std::vector<float>(63, 1000.0F), 0);
    EXPECT_EQ(limiter->limiting, 1);
    limit(*limiter, {1000.0F}, 0);
    EXPECT_EQ(limiter->limiting, 0);
}

TEST(Au2Limiter, RaisesTheGainByTheReleaseStepAfterTheRelease) {
    const auto limiter = makeLimiter();
    limit(*limiter, std::vector<float>(480, 64880.0F), 1);  // gain slightly below 0.5
    const float before = limiter->gain;
    limit(*limiter, std::vector<float>(64, 1000.0F), 0);  // the release happens at the last of these
    limit(*limiter, std::vector<float>(100, 1000.0F), 0);
    const double left = std::pow(0.9999, 101);
    EXPECT_NEAR(limiter->gain, before * left + (1 - left), 1e-4);
}

TEST(Au2Limiter, IgnoresCallsWithoutSamples) {
    const auto limiter = makeLimiter();
    limit(*limiter, std::vector<float>(100, 40000.0F), 1);
    const Au2LimiterState before = *limiter;
    float out = 5.0F;
    const float in = 40000.0F;
    EXPECT_EQ(au2_limiter_proc(limiter.get(), &in, 0, &out), 0);
    EXPECT_EQ(au2_limiter_proc(limiter.get(), &in, -7, &out), 0);
    EXPECT_EQ(out, 5.0F);
    EXPECT_EQ(std::memcmp(&before, limiter.get(), sizeof before), 0);
}

TEST(Au2Limiter, ProcessAndFreeRejectANullState) {
    const float in = 1.0F;
    float out = 5.0F;
    EXPECT_EQ(au2_limiter_proc(nullptr, &in, 1, &out), -1);
    EXPECT_EQ(out, 5.0F);
    EXPECT_EQ(au2_limiter_free(nullptr), -1);
}

TEST(Au2Limiter, CreateAndFreeReturnZero) {
    Au2LimiterState* state = nullptr;
    EXPECT_EQ(au2_limiter_create(&state), 0);
    EXPECT_EQ(au2_limiter_free(state), 0);
}

TEST(Au2Limiter, DoesNotEngageAtExactlyTheCeiling) {
    const auto limiter = makeLimiter();
    limit(*limiter, {kCeiling}, 0);
    EXPECT_EQ(limiter->limiting, 0);
    limit(*limiter, {std::nextafter(kCeiling, 1e9F)}, 1);
    EXPECT_EQ(limiter->limiting, 1);
}

TEST(Au2Limiter, ReleasesWhenTheWindowMaximumEqualsTheCeiling) {
    const auto limiter = makeLimiter();
    limit(*limiter, {40000.0F}, 1);
    limit(*limiter, std::vector<float>(63, kCeiling), 0);
    EXPECT_EQ(limiter->limiting, 1);
    limit(*limiter, {kCeiling}, 0);
    EXPECT_EQ(limiter->limiting, 0);
}

TEST(Au2Limiter, SmoothingAndReleaseFactorsAreExact) {
    const auto limiter = makeLimiter();
    // Processes one idle sample from chosen gains, so that each result is a single factor.
    const auto gains_after_a_sample = [&](float smoothed, float gain, float idle) {
        au2_limiter_reset(limiter.get());
        limiter->smoothedTarget = smoothed;
        limiter->gain = gain;
        limiter->idleGain = idle;
        limit(*limiter, {0.0F}, 0);
    };
    gains_after_a_sample(1.0F, 1.0F, 0.0F);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(limiter->smoothedTarget), 0x3F665FD9U);
    gains_after_a_sample(0.0F, 1.0F, 1.0F);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(limiter->smoothedTarget), 0x3DCC985FU);
    gains_after_a_sample(1.0F, 0.0F, 1.0F);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(limiter->gain), 0x38D1B717U);
    // The gain is so large that the step vanishes in rounding.
    gains_after_a_sample(0x1p40F, 0x1p30F, 0.0F);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(limiter->gain * 0x1p-30F), 0x3F7FF972U);
}

TEST(Au2Limiter, ANaNDoesNotDisturbLaterSamples) {
    const auto limiter = makeLimiter();
    const auto undisturbed = makeLimiter();
    std::vector<float> in(300, 1000.0F);
    const std::vector<float> expected = limit(*undisturbed, in, 0);
    in[10] = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> out = limit(*limiter, in, 0);
    EXPECT_TRUE(std::isnan(out[10]));
    EXPECT_TRUE(std::equal(out.begin() + 11, out.end(), expected.begin() + 11));
}

TEST(Au2Limiter, ANaNLeavesNoTraceInPerSampleDetection) {
    for (int position = 64; position < 128; ++position) {
        const auto limiter = makeLimiter();
        limiter->lookahead = 1;
        std::vector<float> in(300, 40000.0F);
        in[static_cast<std::size_t>(position)] = std::numeric_limits<float>::quiet_NaN();
        const std::vector<float> out = limit(*limiter, in, 1);
        const auto nans = std::count_if(out.begin(), out.end(), [](float y) { return std::isnan(y); });
        EXPECT_EQ(nans, 1) << "NaN at " << position;
        EXPECT_FALSE(std::isnan(limiter->gain)) << "NaN at " << position;
    }
}

TEST(Au2Limiter, RecoversFromInfinity) {
    const auto limiter = makeLimiter();
    limit(*limiter, {std::numeric_limits<float>::infinity()}, 1);
    limit(*limiter, std::vector<float>(100000, 1000.0F), 0);
    EXPECT_NEAR(limiter->gain, 0.0999 / 0.1001, 1e-4);
}

class Au2LimiterDetection : public testing::TestWithParam<model::Detection> {};

TEST_P(Au2LimiterDetection, MatchesTheModelToTheBitForAnyCallSize) {
    for (const std::uint64_t seed : {1U, 2U, 3U, 4U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        test::Random random(seed);
        const auto limiter = makeLimiter();
        limiter->lookahead = GetParam() == model::Detection::kEachSample ? 3 : 0;
        model::Limiter reference(GetParam());
        const test::Pcm pcm = test::bursts(seed, 60000);
        for (std::size_t done = 0; done < pcm.size();) {
            const std::size_t length =
                std::min(static_cast<std::size_t>(random.between(1, 700)), pcm.size() - done);
            std::vector<float> in;
            for (std::size_t i = done; i < done + length; ++i)
                in.push_back(static_cast<float>(pcm[i]) * 1.7F);
            std::vector<float> out(length);
            au2_limiter_proc(limiter.get(), in.data(), static_cast<int>(length), out.data());
            ASSERT_TRUE(test::sameSignal(out, reference.process(in), {.channels = 1, .full_scale = 32768}))
                << "from sample " << done;
            for (const float y : out) ASSERT_LE(std::fabs(y), kCeilingWithRounding);
            done += length;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, Au2LimiterDetection,
                         testing::Values(model::Detection::kLoudestOfTheCall, model::Detection::kEachSample),
                         [](const auto& suite) {
                             return suite.param == model::Detection::kEachSample ? "EachSample"
                                                                                 : "LoudestOfTheCall";
                         });

}  // namespace
