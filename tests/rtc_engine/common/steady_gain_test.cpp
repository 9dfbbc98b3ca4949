#include "steady_gain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "support/each_vector_target.h"
#include "support/signals/signals.h"

namespace {

constexpr float kThreshold = 1030.0F;

// Reference: the recursion of steady_gain.h, one sample at a time.
float limitOneByOne(float gain, float smoothed_gain, const std::vector<float>& in, std::vector<float>& out) {
    out.clear();
    for (const float x : in) {
        const float kept = gain * 0.9999F;
        const float risen = kept + 0.0001F;
        gain = risen < smoothed_gain ? risen : smoothed_gain;
        if (std::fabs(gain * x) > kThreshold) gain = kThreshold / std::fabs(x);
        out.push_back(gain * x);
    }
    return gain;
}

void expectSameAsOneByOne(float gain, float smoothed_gain, const std::vector<float>& in) {
    std::vector<float> expected;
    const float expected_gain = limitOneByOne(gain, smoothed_gain, in, expected);
    float level = 0.0F;
    for (const float x : in) level = std::max(level, std::fabs(x));

    const int count = static_cast<int>(in.size());
    std::vector<float> apart(in.size() + 1, 77.0F);
    EXPECT_EQ(sonivex::limitWithSteadyTarget(gain, smoothed_gain, kThreshold, level, in.data(), count,
                                             apart.data()),
              expected_gain);
    EXPECT_EQ(apart.back(), 77.0F);
    apart.pop_back();
    EXPECT_EQ(apart, expected);

    std::vector<float> in_place = in;
    EXPECT_EQ(sonivex::limitWithSteadyTarget(gain, smoothed_gain, kThreshold, level, in_place.data(), count,
                                             in_place.data()),
              expected_gain);
    EXPECT_EQ(in_place, expected);
}

// Returns 1 to `longest` samples of noise.
std::vector<float> randomNoise(test::Random& random, int longest, float amplitude) {
    const auto samples = static_cast<std::size_t>(random.between(1, longest));
    return test::noiseFloats(random.bits(), samples, amplitude);
}

TEST(SteadyGain, RisesLikeTheScalarRecursionFromAnyGainForAnyLength) {
    test::forEachVectorTarget([] {
        test::Random random(1);
        for (std::size_t samples = 0; samples < 300 && !testing::Test::HasFailure(); ++samples) {
            const float gain = static_cast<float>(random.between(0, 1000000)) * 1e-6F;
            SCOPED_TRACE(std::to_string(samples) + " samples from gain " + std::to_string(gain));
            expectSameAsOneByOne(gain, 0.998F, test::noiseFloats(random.bits(), samples, 900.0F));
        }
    });
}

TEST(SteadyGain, RisesLikeTheScalarRecursionForSeconds) {
    test::forEachVectorTarget([] {
        test::Random random(2);
        for (const float gain : {0.0F, 0.0625F, 0.4999F, 0.7F, 0.97F}) {
            SCOPED_TRACE(gain);
            expectSameAsOneByOne(gain, 0.998F, test::noiseFloats(random.bits(), 100000, 900.0F));
        }
    });
}

TEST(SteadyGain, StopsAtTheSmoothedGainAtAnyPosition) {
    test::forEachVectorTarget([] {
        test::Random random(3);
        for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i) {
            const float smoothed = static_cast<float>(random.between(300000, 998000)) * 1e-6F;
            const float gain = smoothed - static_cast<float>(random.between(0, 3000)) * 1e-6F;
            SCOPED_TRACE(std::to_string(gain) + " to " + std::to_string(smoothed));
            expectSameAsOneByOne(gain, smoothed, randomNoise(random, 200, 900.0F));
        }
    });
}

TEST(SteadyGain, ALoudSampleLowersTheGainOfLaterSamplesAtAnyPosition) {
    test::forEachVectorTarget([] {
        test::Random random(4);
        for (std::size_t place = 0; place < 100; ++place) {
            SCOPED_TRACE(place);
            for (const float gain : {0.6F, 0.9975F, 0.998F}) {
                std::vector<float> in = test::noiseFloats(random.bits(), 130, 900.0F);
                in[place] = -1900.0F;
                expectSameAsOneByOne(gain, 0.998F, in);
                in[place + 2] = 2300.0F;
                expectSameAsOneByOne(gain, 0.998F, in);
            }
        }
    });
}

// Tries samples that the gain scales exactly to the threshold although threshold / sample is another gain.
TEST(SteadyGain, ASampleExactlyAtTheThresholdIsNotLimited) {
    test::forEachVectorTarget([] {
        int cases = 0;
        for (std::size_t place = 0; place < 100; ++place) {
            std::vector<float> in(100, 1.0F);
            std::vector<float> gains;
            limitOneByOne(0.96F, 0.998F, in, gains);
            const float gain = gains[place];
            float sample = std::nextafter(kThreshold / gain, 1e9F);
            for (int units = 0; units < 4; ++units) {
                if (gain * sample == kThreshold && kThreshold / sample != gain) {
                    in[place] = sample;
                    expectSameAsOneByOne(0.96F, 0.998F, in);
                    ++cases;
                }
                sample = std::nextafter(sample, 0.0F);
            }
        }
        EXPECT_GT(cases, 10);
    });
}

TEST(SteadyGain, MatchesTheScalarRecursionWhenEverySampleIsTooLoud) {
    test::forEachVectorTarget([] {
        test::Random random(5);
        for (int i = 0; i < 100; ++i) {
            expectSameAsOneByOne(0.9F, 0.998F, randomNoise(random, 300, 100000.0F));
        }
    });
}

}  // namespace
