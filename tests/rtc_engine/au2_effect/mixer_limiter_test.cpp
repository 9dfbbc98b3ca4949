#include "mixer_limiter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "models/normalizer_model.h"
#include "support/signals/signal_matchers.h"
#include "support/signals/signals.h"

namespace {

constexpr float kCeiling = 32440.32F;

std::unique_ptr<PeakLimiterState> makeLimiter(int per_sample_detect = 0) {
    auto limiter = std::make_unique<PeakLimiterState>();
    std::memset(static_cast<void*>(limiter.get()), 0xA5, sizeof *limiter);
    limiter_reset(limiter.get());
    limiter->threshold = kCeiling;
    limiter->perSampleDetect = per_sample_detect;
    return limiter;
}

TEST(MixerLimiter, ResetKeepsTheCeilingAndTheDetectionMode) {
    const auto limiter = makeLimiter();
    limiter->threshold = 123.0F;
    limiter->perSampleDetect = 4;
    limiter->gain = 0.1F;
    limiter->limiting = 1;
    limiter->writeIndex = 9;
    limiter_reset(limiter.get());
    EXPECT_EQ(limiter->threshold, 123.0F);
    EXPECT_EQ(limiter->perSampleDetect, 4);
    EXPECT_EQ(limiter->unityGain, 1.0F);
    EXPECT_EQ(limiter->gain, 1.0F);
    EXPECT_EQ(limiter->smoothedGain, 1.0F);
    EXPECT_EQ(std::count(limiter->delay, limiter->delay + 64, 0.0F), 64);
    EXPECT_EQ(std::count(limiter->maxTree, limiter->maxTree + 128, 0.0F), 128);
    EXPECT_EQ(limiter->writeIndex, 0);
    EXPECT_EQ(limiter->limiting, 0);
    EXPECT_EQ(limiter->treeLevels, 6);
    EXPECT_EQ(limiter->leafCount, 64);
    EXPECT_EQ(limiter->indexMask, 63);
}

TEST(MixerLimiter, BlockDetectionAddsNoLatency) {
    const auto limiter = makeLimiter();
    std::vector<float> in(200, 0.0F);
    in[50] = 20000.0F;
    std::vector<float> out(200);
    EXPECT_EQ(limiter_proc(limiter.get(), in.data(), 200, out.data()), 0);
    EXPECT_NEAR(out[50], 20000, 50);
    EXPECT_EQ(std::count(out.begin(), out.end(), 0.0F), 199);
}

TEST(MixerLimiter, BlockDetectionUsesThePeakLevelForEverySample) {
    // The position of the loud sample does not affect the gain of the samples before it.
    std::vector<std::vector<float>> starts;
    for (const std::size_t place : {100U, 399U}) {
        const auto limiter = makeLimiter();
        std::vector<float> in(400, 10.0F);
        in[place] = 50000.0F;
        std::vector<float> out(400);
        EXPECT_EQ(limiter_proc(limiter.get(), in.data(), 400, out.data()), 1);
        starts.emplace_back(out.begin(), out.begin() + 100);
    }
    EXPECT_EQ(starts[0], starts[1]);
    EXPECT_NEAR(starts[0][99], 10 * kCeiling / 50000, 0.1);
}

TEST(MixerLimiter, PerSampleDetectionDelaysTheOutputBySixtyThreeSamples) {
    const auto limiter = makeLimiter(1);
    std::vector<float> in(200, 0.0F);
    in[50] = 20000.0F;
    std::vector<float> out(200);
    limiter_proc(limiter.get(), in.data(), 200, out.data());
    EXPECT_NEAR(out[113], 20000, 50);
    EXPECT_EQ(std::count(out.begin(), out.end(), 0.0F), 199);
}

TEST(MixerLimiter, PerSampleDetectionLowersTheGainBeforeThePeak) {
    const auto limiter = makeLimiter(1);
    std::vector<float> in(200, 1000.0F);
    in[100] = 60000.0F;
    std::vector<float> out(200);
    EXPECT_EQ(limiter_proc(limiter.get(), in.data(), 200, out.data()), 1);
    EXPECT_NEAR(out[99], 998, 1.0);                       // the peak is not yet known
    EXPECT_NEAR(out[162], 1000 * kCeiling / 60000, 2.0);  // the sample before the peak
    EXPECT_LE(out[163], 32440.3223F);
}

TEST(MixerLimiter, IgnoresCallsWithoutSamples) {
    const auto limiter = makeLimiter();
    const PeakLimiterState before = *limiter;
    float sample = 99999.0F;
    EXPECT_EQ(limiter_proc(limiter.get(), &sample, 0, &sample), 0);
    EXPECT_EQ(limiter_proc(limiter.get(), &sample, -1, &sample), 0);
    EXPECT_EQ(sample, 99999.0F);
    EXPECT_EQ(std::memcmp(&before, limiter.get(), sizeof before), 0);
}

class MixerLimiterDetection : public testing::TestWithParam<model::Detection> {};

TEST_P(MixerLimiterDetection, MatchesTheModelToTheBitInPlaceAndOutOfPlace) {
    for (const std::uint64_t seed : {5U, 6U, 7U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        test::Random random(seed);
        const int detect = GetParam() == model::Detection::kEachSample ? 1 : 0;
        const auto in_place = makeLimiter(detect);
        const auto apart = makeLimiter(detect);
        model::Limiter reference(GetParam());
        for (int block = 0; block < 100; ++block) {
            const test::Pcm pcm = test::bursts(random.bits(), random.between(1, 900));
            std::vector<float> in;
            for (const std::int16_t sample : pcm) in.push_back(static_cast<float>(sample) * 3.3F);
            std::vector<float> out(in.size());
            std::vector<float> same = in;
            const int count = static_cast<int>(in.size());
            const int engaged = limiter_proc(apart.get(), in.data(), count, out.data());
            EXPECT_EQ(limiter_proc(in_place.get(), same.data(), count, same.data()), engaged);
            const float loudest = *std::max_element(
                in.begin(), in.end(), [](float a, float b) { return std::abs(a) < std::abs(b); });
            EXPECT_EQ(engaged, std::abs(loudest) > kCeiling ? 1 : 0);
            const test::SignalFormat format{.channels = 1, .full_scale = 32768};
            ASSERT_TRUE(test::sameSignal(out, reference.process(in), format)) << "block " << block;
            ASSERT_TRUE(test::sameSignal(same, out, format)) << "block " << block;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, MixerLimiterDetection,
                         testing::Values(model::Detection::kLoudestOfTheCall, model::Detection::kEachSample),
                         [](const auto& suite) {
                             return suite.param == model::Detection::kEachSample ? "EachSample"
                                                                                 : "LoudestOfTheCall";
                         });

}  // namespace
