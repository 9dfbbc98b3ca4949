#include "loudness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "failure.h"
#include "tools/sonivex/audio_samples.h"

namespace {

using sonivex_tool::Loudness;
using sonivex_tool::LoudnessMeter;

// Measures ten seconds of a 997 Hz sine with the given peak level in the channels that `is_on` selects.
Loudness sineLoudness(int channels, double peak_dbfs, const std::function<bool(int)>& is_on) {
    const double peak = std::pow(10.0, peak_dbfs / 20.0);
    LoudnessMeter meter(test::floatSpec(channels));
    for (int block = 0; block < 100; ++block) {
        meter.add(*test::floatFrame(channels, 4800, [&](int i, int c) {
            const double phase = 2.0 * std::numbers::pi * 997.0 * (4800.0 * block + i) / 48000.0;
            return is_on(c) ? static_cast<float>(peak * std::sin(phase)) : 0.0F;
        }));
    }
    return meter.result();
}

// EBU Tech 3341, cases 1 and 2: a stereo sine of -23 dBFS peak is -23 LUFS, within 0.1 LU.
TEST(LoudnessMeter, MeasuresAStereoSineAtItsPeakLevel) {
    for (const double level : {-23.0, -33.0}) {
        const Loudness loudness = sineLoudness(2, level, [](int) { return true; });
        ASSERT_TRUE(loudness.integrated_lufs.has_value());
        EXPECT_NEAR(*loudness.integrated_lufs, level, 0.1);
        ASSERT_TRUE(loudness.sample_peak_dbfs.has_value());
        EXPECT_NEAR(*loudness.sample_peak_dbfs, level, 0.01);
    }
}

// ITU-R BS.1770 weights surround channels by 1.41 (+1.5 dB) and leaves out the low-frequency channel.
TEST(LoudnessMeter, WeightsTheLoudspeakersOfFivePointOne) {
    const Loudness front = sineLoudness(6, -23.0, [](int c) { return c < 2; });
    const Loudness back = sineLoudness(6, -23.0, [](int c) { return c >= 4; });
    const Loudness low = sineLoudness(6, -23.0, [](int c) { return c == 3; });
    EXPECT_NEAR(front.integrated_lufs.value_or(0.0), -23.0, 0.1);
    EXPECT_NEAR(back.integrated_lufs.value_or(0.0), -23.0 + 10.0 * std::log10(1.41), 0.1);
    EXPECT_FALSE(low.integrated_lufs.has_value());
    EXPECT_NEAR(low.sample_peak_dbfs.value_or(0.0), -23.0, 0.01);
}

TEST(LoudnessMeter, ReportsNoLoudnessForSilence) {
    const Loudness loudness = sineLoudness(2, -23.0, [](int) { return false; });
    EXPECT_FALSE(loudness.integrated_lufs.has_value());
    EXPECT_FALSE(loudness.sample_peak_dbfs.has_value());
}

TEST(LoudnessMeter, RefusesRatesAndChannelCountsThatItCannotMeasure) {
    using sonivex_tool::whyUnmeasurable;
    EXPECT_EQ(whyUnmeasurable(test::floatSpec(64, 4000)), "");
    EXPECT_EQ(whyUnmeasurable(test::floatSpec(1, 2822400)), "");
    for (const auto& spec : {test::floatSpec(65), test::floatSpec(1, 3999), test::floatSpec(1, 2822401)}) {
        EXPECT_NE(whyUnmeasurable(spec), "");
        EXPECT_THROW(LoudnessMeter{spec}, sonivex_tool::Failure);
    }
}

}  // namespace
