#include "peak_limiter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "au2_limiter.h"
#include "odd_floats.h"
#include "scalar/scalar_peak_limiter.h"
#include "support/each_vector_target.h"
#include "support/signals/signals.h"

namespace {

using test::kInfinity;
using test::kNotANumber;

sonivex::PeakLimiterFields fieldsOf(Au2LimiterState& state) {
    return {.idle_gain = state.idleGain,
            .gain = state.gain,
            .smoothed_gain = state.smoothedTarget,
            .delay = state.delayLine,
            .maximum_tree = state.peakTree,
            .write_index = state.writeIndex,
            .is_limiting = state.limiting,
            .tree_depth = state.treeDepth,
            .tree_leaves = state.treeSize,
            .index_mask = state.indexMask,
            .threshold = state.threshold,
            .detects_per_sample = state.lookahead};
}

bool areSameFloats(const float* a, const float* b, std::size_t count) {
    return std::equal(a, a + count, b, [](float x, float y) {
        return std::bit_cast<std::uint32_t>(x) == std::bit_cast<std::uint32_t>(y) ||
               (std::isnan(x) && std::isnan(y));
    });
}

void expectSameState(const Au2LimiterState& a, const Au2LimiterState& b) {
    EXPECT_TRUE(areSameFloats(&a.idleGain, &b.idleGain, 1));
    EXPECT_TRUE(areSameFloats(&a.gain, &b.gain, 1)) << a.gain << " " << b.gain;
    EXPECT_TRUE(areSameFloats(&a.smoothedTarget, &b.smoothedTarget, 1));
    EXPECT_TRUE(areSameFloats(a.delayLine, b.delayLine, std::size(a.delayLine)));
    EXPECT_TRUE(areSameFloats(a.peakTree, b.peakTree, std::size(a.peakTree)));
    EXPECT_EQ(a.writeIndex, b.writeIndex);
    EXPECT_EQ(a.limiting, b.limiting);
    EXPECT_EQ(a.treeDepth, b.treeDepth);
    EXPECT_EQ(a.treeSize, b.treeSize);
    EXPECT_EQ(a.indexMask, b.indexMask);
    EXPECT_TRUE(areSameFloats(&a.threshold, &b.threshold, 1));
    EXPECT_EQ(a.lookahead, b.lookahead);
}

// Runs the library's limiter and the scalar one side by side and compares output and state after every call.
class LimiterPair {
  public:
    LimiterPair() {
        std::memset(static_cast<void*>(&ours_), 0x3C, sizeof ours_);  // reset does not clear unused fields
        au2_limiter_reset(&ours_);
        scalar_ = ours_;
    }

    template <typename Change>
    void change(Change change) {
        change(ours_);
        change(scalar_);
    }

    // Alternates between in-place and out-of-place processing.
    void limit(const std::vector<float>& in) {
        const int count = static_cast<int>(in.size());
        std::vector<float> expected(in.size());
        const bool has_exceeded = model::limitPeaks(fieldsOf(scalar_), in.data(), count, expected.data());
        std::vector<float> out = in;
        is_in_place_ = !is_in_place_;
        const float* const from = is_in_place_ ? out.data() : in.data();
        EXPECT_EQ(sonivex::limitPeaks(fieldsOf(ours_), from, count, out.data()), has_exceeded);
        EXPECT_TRUE(areSameFloats(out.data(), expected.data(), in.size()));
        expectSameState(ours_, scalar_);
    }

    const Au2LimiterState& state() const { return ours_; }

  private:
    Au2LimiterState ours_;
    Au2LimiterState scalar_;
    bool is_in_place_ = false;
};

// Noise with a uniform distribution over -magnitude..magnitude and one sample of exactly `magnitude`.
std::vector<float> noiseUpTo(test::Random& random, std::size_t samples, float magnitude) {
    std::vector<float> noise = test::noiseFloats(random.bits(), samples, magnitude);
    if (samples > 0) noise[random.bits() % samples] = magnitude;
    return noise;
}

std::size_t callSize(test::Random& random) {
    const int longest[] = {4, 40, 70, 300, 1024, 4096};
    return static_cast<std::size_t>(random.between(1, longest[random.between(0, 5)]));
}

TEST(PeakLimiter, EqualsTheScalarLimiterForAnyLevelsAndCallSizes) {
    test::forEachVectorTarget([] {
        for (const std::uint64_t seed : {1U, 2U, 3U, 4U, 5U}) {
            SCOPED_TRACE("seed " + std::to_string(seed));
            test::Random random(seed);
            LimiterPair pair;
            for (int call = 0; call < 300 && !testing::Test::HasFailure(); ++call) {
                SCOPED_TRACE("call " + std::to_string(call));
                const float levels[] = {0.0F, 1e-40F, 900.0F, 30000.0F, 33000.0F, 45000.0F, 400000.0F};
                pair.limit(noiseUpTo(random, callSize(random), levels[random.between(0, 6)]));
            }
        }
    });
}

TEST(PeakLimiter, EqualsTheScalarLimiterForLevelsAroundTheCeiling) {
    test::forEachVectorTarget([] {
        test::Random random(11);
        LimiterPair pair;
        for (int call = 0; call < 500 && !testing::Test::HasFailure(); ++call) {
            SCOPED_TRACE("call " + std::to_string(call));
            // From units in the last place up to more than the headroom that the idle gain of 0.998 leaves.
            const float distance = std::ldexp(1.0F, -random.between(3, 24));
            const float sign = random.between(0, 1) == 0 ? -1.0F : 1.0F;
            pair.limit(noiseUpTo(random, callSize(random), sonivex::kCeiling * (1.0F + sign * distance)));
        }
    });
}

TEST(PeakLimiter, EqualsTheScalarLimiterWhileTheGainRises) {
    test::forEachVectorTarget([] {
        test::Random random(12);
        for (const float loudest : {32500.0F, 36000.0F, 60000.0F, 1e6F, 1e20F, 3e38F, kInfinity}) {
            SCOPED_TRACE(loudest);
            LimiterPair pair;
            pair.limit({loudest});
            EXPECT_EQ(pair.state().limiting, 1);
            for (int call = 0; call < 60; ++call) pair.limit(noiseUpTo(random, callSize(random), 20000.0F));
        }
    });
}

TEST(PeakLimiter, EqualsTheScalarLimiterForCallsShorterThanTheWindow) {
    test::forEachVectorTarget([] {
        for (std::size_t samples = 1; samples <= 130; ++samples) {
            SCOPED_TRACE(samples);
            LimiterPair pair;
            pair.limit(std::vector<float>(samples, 50000.0F));
            pair.limit(std::vector<float>(samples, 40000.0F));
            pair.limit(std::vector<float>(samples, 40000.0F));
            pair.limit(std::vector<float>(samples, 60000.0F));
            pair.limit(std::vector<float>(samples, 1.0F));
            pair.limit(std::vector<float>(samples, 41000.0F));
        }
    });
}

TEST(PeakLimiter, EqualsTheScalarLimiterForNaNsInfinitiesAndDenormals) {
    test::forEachVectorTarget([] {
        test::Random random(13);
        const float odd[] = {kNotANumber, kInfinity, -kInfinity, -0.0F, 0.0F, 1e-45F, -1e-38F, 3e38F};
        LimiterPair pair;
        for (int call = 0; call < 300 && !testing::Test::HasFailure(); ++call) {
            SCOPED_TRACE("call " + std::to_string(call));
            std::vector<float> in = noiseUpTo(random, callSize(random), 30000.0F);
            for (int i = random.between(0, 3); i > 0; --i) {
                in[random.bits() % in.size()] = odd[random.between(0, 7)];
            }
            pair.limit(in);
            pair.limit(std::vector<float>(callSize(random), odd[random.between(0, 7)]));
        }
    });
}

TEST(PeakLimiter, EqualsTheScalarLimiterForAnyThresholdAndIdleGain) {
    test::forEachVectorTarget([] {
        for (const float threshold : {0.0F, 1e-40F, 100.0F, kInfinity, kNotANumber}) {
            for (const float idle_gain : {1.0F, 0.0F, -0.0F, -1.0F, 5.0F, kInfinity, kNotANumber}) {
                SCOPED_TRACE(std::to_string(threshold) + " " + std::to_string(idle_gain));
                test::Random random(14);
                LimiterPair pair;
                pair.change([&](Au2LimiterState& state) {
                    state.threshold = threshold;
                    state.idleGain = idle_gain;
                });
                for (const float level : {0.0F, 90.0F, 110.0F, 50.0F, 99.9F, 0.0F}) {
                    pair.limit(noiseUpTo(random, callSize(random), level));
                    pair.limit(noiseUpTo(random, 500, level));
                }
            }
        }
    });
}

TEST(PeakLimiter, EqualsTheScalarLimiterWhenDetectionChangesBetweenCalls) {
    test::Random random(15);
    LimiterPair pair;
    for (int call = 0; call < 400 && !testing::Test::HasFailure(); ++call) {
        SCOPED_TRACE("call " + std::to_string(call));
        const int detects_per_sample = random.between(0, 1);
        pair.change([&](Au2LimiterState& state) { state.lookahead = detects_per_sample; });
        pair.limit(noiseUpTo(random, callSize(random), 50000.0F));
    }
}

}  // namespace
