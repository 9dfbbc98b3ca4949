// Tests of transforms, filters and weights on signals whose figures are known.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "filters.h"
#include "interaural.h"
#include "spectrum.h"
#include "speech.h"
#include "test_signals.h"

namespace response_quality {
namespace {

TEST(SpectrumMeasures, TransformMatchesItsDefiningSum) {
    const Signal signal = noise(32, kSeed);
    const Spectrum found = spectrumOf(signal, 32);
    for (std::size_t k = 0; k < found.size(); ++k) {
        std::complex<double> sum;
        for (std::size_t n = 0; n < signal.size(); ++n) {
            sum += signal[n] * std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(k * n) / 32.0);
        }
        EXPECT_NEAR(std::abs(found[k] - sum), 0.0, 1e-12) << "seed " << kSeed << ", bin " << k;
    }
}

TEST(SpectrumMeasures, ConvolutionMatchesItsDefiningSum) {
    const Signal a = noise(21, kSeed);
    const Signal b = noise(14, kSeed + 1);
    const Signal found = convolve(a, b);
    ASSERT_EQ(found.size(), 34u);
    for (std::size_t n = 0; n < found.size(); ++n) {
        double sum = 0.0;
        for (std::size_t i = 0; i < a.size(); ++i) {
            if (i <= n && n - i < b.size()) sum += a[i] * b[n - i];
        }
        EXPECT_NEAR(found[n], sum, 1e-12) << "seed " << kSeed;
    }
}

TEST(SpectrumMeasures, OversamplingPassesThroughTheSamples) {
    const Signal signal = noise(64, kSeed);
    const Signal fine = oversample(signal, 8);
    ASSERT_EQ(fine.size(), 512u);
    for (std::size_t n = 0; n < signal.size(); ++n)
        EXPECT_NEAR(fine[8 * n], signal[n], 1e-12) << "seed " << kSeed;
}

TEST(SpectrumMeasures, OversamplingInterpolatesASineBetweenTheSamples) {
    Signal sine(64);
    const auto at = [](double n) { return std::sin(2.0 * std::numbers::pi * 5.0 * n / 64.0); };
    for (std::size_t n = 0; n < sine.size(); ++n) sine[n] = at(static_cast<double>(n));
    const Signal fine = oversample(sine, 8);
    for (std::size_t n = 0; n < fine.size(); ++n)
        EXPECT_NEAR(fine[n], at(static_cast<double>(n) / 8.0), 1e-12);
}

TEST(SpectrumMeasures, DelayMovesASignalByWholeAndBrokenSamples) {
    const Signal signal = noise(50, kSeed);
    const Signal whole = delayed(signal, 3.0);
    ASSERT_EQ(whole.size(), 53u);
    for (std::size_t n = 0; n < signal.size(); ++n) EXPECT_NEAR(whole[n + 3], signal[n], 1e-12) << kSeed;
    const Ears ears{impulse(400, 200), delayed(impulse(400, 200), 6.5)};
    EXPECT_NEAR(lowFrequencyDelay_us(ears, kRate_hz), 6.5 / 0.048, 1e-9);
}

TEST(SpectrumMeasures, OctaveBandIsThreeDecibelsDownAtBothEdges) {
    const Signal power = powerOf(octaveBand(impulse(16384, 0), 1000.0, kRate_hz), 16384);
    const auto level_db = [&power](double frequency_hz) {
        return 10.0 *
               std::log10(power[static_cast<std::size_t>(std::lround(frequency_hz / kRate_hz * 16384.0))]);
    };
    EXPECT_NEAR(level_db(1000.0), -0.53, 0.1);  // 10 log10 of (1 + 2^-4)^-2
    EXPECT_NEAR(level_db(707.1), -3.02, 0.2);
    EXPECT_NEAR(level_db(1414.2), -3.02, 0.2);
    EXPECT_LT(level_db(250.0), -35.0);
    EXPECT_LT(level_db(4000.0), -35.0);
}

TEST(SpectrumMeasures, KCurveMatchesTheTabulatedCoefficientsAt48kHz) {
    // Response of the tabulated coefficients at half the sample rate, where z is -1; worked by hand.
    const double shelf = (1.53512485958697 + 2.69169618940638 + 1.19839281085285) /
                         (1.0 + 1.69065929318241 + 0.73248077421585);
    const double bass_cut = 4.0 / (1.0 + 1.99004745483398 + 0.99007225036621);
    EXPECT_NEAR(kCurve(24000.0, 48000.0), shelf * shelf * bass_cut * bass_cut, 1e-9);
    // The calibration of ITU-R BS.1770: the curve is at +0.691 dB at 997 Hz.
    EXPECT_NEAR(10.0 * std::log10(kCurve(997.0, 48000.0)), 0.691, 0.01);
}

TEST(SpectrumMeasures, SpeechHasThePublishedBandLevels) {
    const auto level_db = [](double frequency_hz) { return 10.0 * std::log10(speechDensity(frequency_hz)); };
    // 62.1 dB at 500 Hz and 53.7 dB at 1 kHz, whose band is a decade's 0.3 wider, which is 3 dB.
    const double centre_hz = std::pow(10.0, 2.7);
    EXPECT_NEAR(level_db(1000.0) - level_db(centre_hz), 53.7 - 62.1 - 3.0, 1e-9);
    // Halfway to the next band on log f the level is halfway from 53.7 to 53.0 dB.
    EXPECT_NEAR(level_db(std::pow(10.0, 3.05)) - level_db(1000.0), -0.35 - 0.5, 1e-9);
    EXPECT_EQ(speechDensity(0.0), 0.0);
    EXPECT_EQ(speechDensity(55.0), 0.0);
    EXPECT_EQ(speechDensity(17000.0), 0.0);
}

}  // namespace
}  // namespace response_quality
