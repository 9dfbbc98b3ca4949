#include "level_meter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tools/sonivex/audio_samples.h"

namespace {

using sonivex_tool::LevelMeter;
using sonivex_tool::LevelReport;

constexpr double kPi = std::numbers::pi;

LevelReport measure(int channels, const std::function<double(int64_t, int)>& value) {
    LevelMeter meter(test::floatSpec(channels));
    for (int64_t block = 0; block < 50; ++block) {
        meter.add(*test::floatFrame(
            channels, 4800, [&](int i, int c) { return static_cast<float>(value(4800 * block + i, c)); }));
    }
    return meter.result();
}

// The power of a sine is half the square of its peak, so its RMS lies 3.01 dB below the peak.
TEST(LevelMeter, MeasuresEachChannelAndAllChannelsTogether) {
    const auto report = measure(2, [](int64_t n, int c) {
        return (c == 0 ? 0.1 : 0.01) * std::sin(2.0 * kPi * 1000.0 / 48000.0 * static_cast<double>(n));
    });
    EXPECT_EQ(report.frames, 240000);
    ASSERT_EQ(report.channels.size(), 2U);
    EXPECT_NEAR(report.channels[0].rms_dbfs.value(), -23.01, 0.01);
    EXPECT_NEAR(report.channels[1].rms_dbfs.value(), -43.01, 0.01);
    EXPECT_NEAR(report.channels[0].sample_peak_dbfs.value(), -20.0, 0.01);
    EXPECT_NEAR(report.channels[1].sample_peak_dbfs.value(), -40.0, 0.01);
    EXPECT_NEAR(report.channels[0].integrated_lufs.value(), -23.0, 0.1);
    // (0.005 + 0.00005) / 2
    EXPECT_NEAR(report.all.rms_dbfs.value(), -25.98, 0.01);
    EXPECT_NEAR(report.all.sample_peak_dbfs.value(), -20.0, 0.01);
}

// A sine at a quarter of the rate, sampled 45 degrees off its peaks, hides 3 dB between the samples.
TEST(LevelMeter, FindsTruePeaksBetweenTheSamples) {
    const auto report = measure(
        1, [](int64_t n, int) { return 0.5 * std::sin(kPi / 2.0 * static_cast<double>(n) + kPi / 4.0); });
    EXPECT_NEAR(report.all.sample_peak_dbfs.value(), -9.03, 0.01);
    EXPECT_NEAR(report.all.true_peak_dbtp.value(), -6.02, 0.3);
}

TEST(LevelMeter, FindsTheFirstAudibleFrameOfAnyChannel) {
    const auto report = measure(2, [](int64_t n, int c) { return c == 1 && n >= 12345 ? 0.01 : 0.0005; });
    EXPECT_EQ(report.first_audible_frame, 12345);
    EXPECT_EQ(measure(2, [](int64_t, int) { return 0.0005; }).first_audible_frame, std::nullopt);
}

TEST(LevelMeter, ReportsNoLevelForSilence) {
    const auto report = measure(2, [](int64_t, int) { return 0.0; });
    for (const auto& levels : {report.all, report.channels.at(0), report.channels.at(1)}) {
        EXPECT_FALSE(levels.rms_dbfs || levels.sample_peak_dbfs || levels.true_peak_dbtp);
        EXPECT_FALSE(levels.integrated_lufs);
    }
}

}  // namespace
