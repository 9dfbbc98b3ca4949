#include "band_energies.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using study::bandEnergy;
using study::Spectrum;
using study::spectrumOf;

constexpr int kRate_hz = 8000;

// Returns a second of two tones: amplitude 1 at 300 Hz and 0.5 at 2000 Hz.
std::vector<double> tones() {
    std::vector<double> samples;
    for (int n = 0; n < kRate_hz; ++n) {
        const double turn = 2.0 * std::numbers::pi * n / kRate_hz;
        samples.push_back(std::sin(300.0 * turn) + 0.5 * std::sin(2000.0 * turn));
    }
    return samples;
}

TEST(BandEnergies, HoldTheTonesOfTheirBands) {
    const Spectrum spectrum = spectrumOf(tones(), kRate_hz);
    const double low = bandEnergy(spectrum, 200.0, 400.0);
    const double high = bandEnergy(spectrum, 1900.0, 2100.0);
    EXPECT_NEAR(10.0 * std::log10(low / high), 20.0 * std::log10(2.0), 0.02);
    EXPECT_LT(bandEnergy(spectrum, 800.0, 1200.0), 1e-4 * high);
}

TEST(BandEnergies, AddUpOverNeighbouringBands) {
    const Spectrum spectrum = spectrumOf(tones(), kRate_hz);
    EXPECT_NEAR(bandEnergy(spectrum, 200.0, 300.0) + bandEnergy(spectrum, 300.0, 400.0),
                bandEnergy(spectrum, 200.0, 400.0), 1e-6);
}

// An impulse has the same energy in every bin: 1. Its 2 samples become 4 points, 2000 Hz apart.
TEST(BandEnergies, CountBinsFromTheLowerLimitUpToTheUpperOne) {
    const Spectrum spectrum = spectrumOf(std::vector<double>{1.0, 0.0}, kRate_hz);
    EXPECT_EQ(spectrum.bin_hz, 2000.0);
    ASSERT_EQ(spectrum.bins.size(), 3U);
    EXPECT_DOUBLE_EQ(bandEnergy(spectrum, 2000.0, 4000.0), 1.0);
    EXPECT_DOUBLE_EQ(bandEnergy(spectrum, 0.0, 1e6), 3.0);
    EXPECT_EQ(bandEnergy(spectrum, 2001.0, 3999.0), 0.0);
}

TEST(BandEnergies, AreZeroForAnEmptySound) {
    EXPECT_EQ(bandEnergy(spectrumOf({}, kRate_hz), 0.0, 4000.0), 0.0);
}

}  // namespace
