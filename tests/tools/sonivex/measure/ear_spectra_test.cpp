#include "ear_spectra.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

using sonivex_tool::Band;
using sonivex_tool::EarSpectra;
using sonivex_tool::Fourier;
using sonivex_tool::octaveAround;

constexpr int kRate_hz = 48000;
constexpr size_t kSize = 4096;
constexpr double kBin_hz = static_cast<double>(kRate_hz) / kSize;

// Returns a tone that fills the transform with a whole number of periods.
std::vector<double> tone(double periods, double amplitude) {
    std::vector<double> samples(kSize);
    for (size_t n = 0; n < kSize; ++n) {
        samples[n] = amplitude * std::cos(2.0 * std::numbers::pi * periods * static_cast<double>(n) / kSize);
    }
    return samples;
}

TEST(EarSpectra, FindEachEarsEnergyInItsBand) {
    const std::vector<double> left = tone(100.0, 0.5);   // 1172 Hz
    const std::vector<double> right = tone(400.0, 0.2);  // 4688 Hz
    const EarSpectra spectra(Fourier(kSize), left, right, kRate_hz);
    EXPECT_NEAR(spectra.leftEnergy(octaveAround(1000.0)), 0.125 * kSize, 1e-6);
    EXPECT_NEAR(spectra.rightEnergy(octaveAround(4000.0)), 0.02 * kSize, 1e-6);
    EXPECT_NEAR(spectra.rightEnergy(octaveAround(1000.0)), 0.0, 1e-9);
    EXPECT_NEAR(spectra.leftEnergy(octaveAround(4000.0)), 0.0, 1e-9);
}

TEST(EarSpectra, GiveTheLowEndToABandAndTheHighEndToTheNext) {
    const EarSpectra spectra(Fourier(kSize), tone(100.0, 1.0), {}, kRate_hz);
    EXPECT_NEAR(spectra.leftEnergy({100.0 * kBin_hz, 200.0 * kBin_hz}), 0.5 * kSize, 1e-6);
    EXPECT_NEAR(spectra.leftEnergy({50.0 * kBin_hz, 100.0 * kBin_hz}), 0.0, 1e-6);
}

TEST(EarSpectra, SpreadAPulseOverTheOctavesByTheirWidth) {
    const EarSpectra spectra(Fourier(kSize), std::vector<double>{2.0}, {}, kRate_hz);
    // The octave around 8 kHz is 5657 Hz wide, of 24000.
    EXPECT_NEAR(spectra.leftEnergy(octaveAround(8000.0)), 4.0 * 5656.85 / 24000.0, 0.002);
}

TEST(EarSpectra, CorrelateAtTheLagOfTheRightEarInSteps) {
    std::vector<double> left(1000, 0.0);
    std::vector<double> right(1000, 0.0);
    left[100] = 1.0;
    right[107] = 0.5;
    const EarSpectra spectra(Fourier(kSize), left, right, kRate_hz);
    const auto heights = spectra.crossCorrelation({0.0, 1e6}, 384, [](double) { return 1.0; });
    ASSERT_EQ(heights.size(), 769U);
    const auto highest = std::max_element(heights.begin(), heights.end());
    EXPECT_EQ(highest - heights.begin() - 384, 7 * 8);
    EXPECT_NEAR(*highest, 0.5, 0.001);  // 0 Hz and half the sample rate are missing
}

TEST(EarSpectra, WeightTheCorrelationByFrequency) {
    const std::vector<double> ear = tone(100.0, 1.0);
    const EarSpectra spectra(Fourier(kSize), ear, ear, kRate_hz);
    const auto heights =
        spectra.crossCorrelation({0.0, 2000.0}, 0, [](double frequency_hz) { return frequency_hz; });
    EXPECT_NEAR(heights.at(0), 0.5 * kSize * 100.0 * kBin_hz, 1e-3);
}

}  // namespace
