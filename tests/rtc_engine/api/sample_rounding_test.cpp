// Floats to int16 and back: values worked out by hand.
#include "sample_rounding.h"

#include <gtest/gtest.h>

#include <limits>

#include "common_effects.h"
#include "rtc_engine/float_settings.h"

namespace {

using sonivex::floatOf;
using sonivex::roundToInt16;

constexpr float kStep = 0x1p-15F;

TEST(SampleRounding, TakesTheNearestInteger) {
    EXPECT_EQ(roundToInt16(0.0F), 0);
    EXPECT_EQ(roundToInt16(-0.0F), 0);
    EXPECT_EQ(roundToInt16(0.25F), 8192);
    EXPECT_EQ(roundToInt16(-0.25F), -8192);
    EXPECT_EQ(roundToInt16(0.49F * kStep), 0);
    EXPECT_EQ(roundToInt16(0.51F * kStep), 1);
    EXPECT_EQ(roundToInt16(-0.49F * kStep), 0);
    EXPECT_EQ(roundToInt16(-0.51F * kStep), -1);
    EXPECT_EQ(roundToInt16(1000.75F * kStep), 1001);
    EXPECT_EQ(roundToInt16(-1000.75F * kStep), -1001);
}

TEST(SampleRounding, TakesTheEvenOneOfTwoNeighbours) {
    EXPECT_EQ(roundToInt16(0.5F * kStep), 0);
    EXPECT_EQ(roundToInt16(1.5F * kStep), 2);
    EXPECT_EQ(roundToInt16(2.5F * kStep), 2);
    EXPECT_EQ(roundToInt16(-0.5F * kStep), 0);
    EXPECT_EQ(roundToInt16(-1.5F * kStep), -2);
    EXPECT_EQ(roundToInt16(-2.5F * kStep), -2);
    EXPECT_EQ(roundToInt16(32765.5F * kStep), 32766);
    EXPECT_EQ(roundToInt16(32766.5F * kStep), 32766);
    EXPECT_EQ(roundToInt16(-32767.5F * kStep), -32768);
}

TEST(SampleRounding, LimitsToTheRange) {
    EXPECT_EQ(roundToInt16(1.0F), 32767);
    EXPECT_EQ(roundToInt16(32767.5F * kStep), 32767);
    EXPECT_EQ(roundToInt16(-1.0F), -32768);
    EXPECT_EQ(roundToInt16(-32768.5F * kStep), -32768);
    EXPECT_EQ(roundToInt16(1e30F), 32767);
    EXPECT_EQ(roundToInt16(-1e30F), -32768);
    EXPECT_EQ(roundToInt16(std::numeric_limits<float>::max()), 32767);
    EXPECT_EQ(roundToInt16(std::numeric_limits<float>::infinity()), 32767);
    EXPECT_EQ(roundToInt16(-std::numeric_limits<float>::infinity()), -32768);
}

TEST(SampleRounding, TurnsNaNAndDenormalsIntoSilence) {
    EXPECT_EQ(roundToInt16(std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(roundToInt16(-std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(roundToInt16(std::numeric_limits<float>::denorm_min()), 0);
}

TEST(SampleRounding, ReturnsEveryInt16Unchanged) {
    for (int sample = -32768; sample <= 32767; ++sample) {
        const auto number = static_cast<std::int16_t>(sample);
        ASSERT_EQ(floatOf(number), static_cast<float>(sample) / 32768.0F);
        ASSERT_EQ(roundToInt16(floatOf(number)), sample);
    }
}

// The host's rounding mode must not show, neither in the conversion nor in the effect.
TEST(SampleRounding, IsTheSameInEveryRoundingModeOfTheHost) {
    const test::Pcm in = test::bursts(2, 2 * 4096);
    test::Planes planes = test::planesOf(in, 2);
    for (auto& plane : planes) {
        for (std::size_t i = 0; i < plane.size(); ++i) plane[i] += static_cast<float>(i % 8) / 8.0F * kStep;
    }
    const auto expected = test::streamed(test::makeNormalizer(2).get(), planes, {4096});
    for (const int mode : {FE_TOWARDZERO, FE_UPWARD, FE_DOWNWARD}) {
        const test::FloatSettings settings(test::SmallNumbers::kZero, mode);
        EXPECT_EQ(test::streamed(test::makeNormalizer(2).get(), planes, {4096}), expected) << "mode " << mode;
    }
}

TEST(FloatCalls, AreTheInt16CallsWithConversions) {
    for (const test::CommonEffect& kind : test::commonEffects()) {
        SCOPED_TRACE(kind.name);
        constexpr int kFrames = 4096;
        const test::Pcm in = test::bursts(8, kFrames * kind.channels_in);
        std::vector<float> samples;
        for (const std::int16_t sample : in) samples.push_back(floatOf(sample));
        std::vector<float> out(static_cast<std::size_t>(kFrames * kind.channels_out), -9.0F);
        const auto effect = kind.make();
        EXPECT_EQ(sonivex_process_float(effect.get(), samples.data(), out.data(), kFrames), SONIVEX_OK);
        std::vector<float> expected;
        for (const std::int16_t sample : test::processed(kind.make().get(), in, {kFrames}))
            expected.push_back(floatOf(sample));
        EXPECT_EQ(out, expected);

        // In place.
        const auto again = kind.make();
        EXPECT_EQ(sonivex_process_float(again.get(), samples.data(), samples.data(), kFrames), SONIVEX_OK);
        samples.resize(out.size());
        EXPECT_EQ(samples, expected);
    }
}

}  // namespace
