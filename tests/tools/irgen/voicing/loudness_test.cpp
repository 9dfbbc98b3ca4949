#include "loudness.h"

#include <ebur128.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

namespace {

using namespace sonivex_irgen;

// Loudness of one channel, measured with libebur128.
double loudness_lufs(const std::vector<double>& samples) {
    struct Destroy {
        void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
    };
    const std::unique_ptr<ebur128_state, Destroy> meter(ebur128_init(1, 48000, EBUR128_MODE_I));
    ebur128_add_frames_double(meter.get(), samples.data(), samples.size());
    double lufs = 0.0;
    ebur128_loudness_global(meter.get(), &lufs);
    return lufs;
}

// Loudness of a full-scale sine.
double sineLoudness_lufs(double frequency_hz) {
    std::vector<double> sine(48000 * 4);
    for (std::size_t n = 0; n < sine.size(); ++n) {
        sine[n] = std::sin(2.0 * std::numbers::pi * frequency_hz * static_cast<double>(n) / 48000.0);
    }
    return loudness_lufs(sine);
}

// Repeats one period of pink noise from 20 Hz to 20 kHz: a sum of cosines at the bins of a transform of
// kPeriod, with powers of 1 / frequency and random phases.
constexpr int kPeriod = 4096;
std::vector<double> pinkNoise() {
    constexpr double kBin_hz = 48000.0 / kPeriod;
    std::vector<double> noise(kPeriod, 0.0);
    std::mt19937 random(4);
    std::uniform_real_distribution<double> any_phase(0.0, 2.0 * std::numbers::pi);
    for (int bin = 2; bin * kBin_hz <= 20000.0; ++bin) {
        const double phase = any_phase(random);
        const double amplitude = 0.05 / std::sqrt(bin);
        for (int n = 0; n < kPeriod; ++n) {
            const double turns = static_cast<double>((static_cast<long>(bin) * n) % kPeriod) / kPeriod;
            noise[static_cast<std::size_t>(n)] +=
                amplitude * std::cos(2.0 * std::numbers::pi * turns + phase);
        }
    }
    constexpr int kPeriods = 60;
    std::vector<double> repeated;
    for (int i = 0; i < kPeriods; ++i) repeated.insert(repeated.end(), noise.begin(), noise.end());
    return repeated;
}

// Returns y[n] = x[n] + factor * x[n - 1].
std::vector<double> twoTaps(const std::vector<double>& x, double factor) {
    std::vector<double> y = x;
    for (std::size_t n = 1; n < x.size(); ++n) y[n] += factor * x[n - 1];
    return y;
}

// Power response of twoTaps at the bins of a transform of kPeriod.
std::vector<double> powerOfTwoTaps(double factor) {
    std::vector<double> power;
    for (int bin = 0; bin <= kPeriod / 2; ++bin) {
        const double angle = 2.0 * std::numbers::pi * bin / kPeriod;
        power.push_back(1.0 + 2.0 * factor * std::cos(angle) + factor * factor);
    }
    return power;
}

TEST(IrgenLoudness, KWeightingMatchesALoudnessMeter) {
    for (const double frequency_hz : {30.0, 60.0, 200.0, 997.0, 2500.0, 8000.0, 16000.0}) {
        const double relative_db = 10.0 * std::log10(kWeighting(frequency_hz) / kWeighting(997.0));
        EXPECT_NEAR(relative_db, sineLoudness_lufs(frequency_hz) - sineLoudness_lufs(997.0), 0.01)
            << frequency_hz;
    }
}

// The sums of the coefficients in the recommendation give the ends of the curve.
TEST(IrgenLoudness, KWeightingCutsTheBassAndRaisesTheTreble) {
    EXPECT_NEAR(kWeighting(0.0), 0.0, 1e-12);
    EXPECT_NEAR(10.0 * std::log10(kWeighting(24000.0)), 4.0431, 1e-4);
    // The recommendation defines a full-scale sine at 997 Hz as -3.01 LUFS, with an offset of -0.691 dB.
    EXPECT_NEAR(10.0 * std::log10(kWeighting(997.0)), 0.691, 1e-2);
}

TEST(IrgenLoudness, ChangesAsAMeterSaysForPinkNoiseThroughAFilter) {
    const std::vector<double> noise = pinkNoise();
    for (const double factor : {-0.95, -0.5, 0.5, 0.95}) {
        const double measured_db = loudness_lufs(twoTaps(noise, factor)) - loudness_lufs(noise);
        EXPECT_NEAR(pinkLoudness_db(powerOfTwoTaps(factor)), measured_db, 0.02) << factor;
    }
}

TEST(IrgenLoudness, EqualsTheLevelOfAFlatResponse) {
    EXPECT_NEAR(pinkLoudness_db(std::vector<double>(16385, 1.0)), 0.0, 1e-12);
    EXPECT_NEAR(pinkLoudness_db(std::vector<double>(16385, 0.25)), -6.0206, 1e-4);
}

// In steps of 20 Hz, so that a step of another width would leave a limit out.
TEST(IrgenLoudness, CountsBothLimitsOfHearing) {
    constexpr std::size_t kBins = 1201;
    for (const std::size_t bin : {1U, 1000U}) {
        std::vector<double> power(kBins, 0.0);
        power[bin] = 1.0;
        EXPECT_GT(pinkLoudness_db(power), -100.0) << bin;
    }
    for (const std::size_t bin : {0U, 1001U}) {
        std::vector<double> power(kBins, 1.0);
        power[bin] = 1e6;
        EXPECT_NEAR(pinkLoudness_db(power), 0.0, 1e-12) << bin;
    }
}

TEST(IrgenLoudness, IgnoresInaudibleFrequencies) {
    std::vector<double> power(16385, 1.0);
    power[0] = power[5] = 1e6;          // 7 Hz
    power[14000] = power[16384] = 1e6;  // 20.5 kHz and more
    EXPECT_NEAR(pinkLoudness_db(power), 0.0, 1e-12);
}

}  // namespace
