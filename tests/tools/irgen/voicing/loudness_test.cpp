#include "loudness.h"

#include <ebur128.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>

namespace {

using namespace sonivex_irgen;

// Loudness of a full-scale sine in one channel, measured with libebur128.
double sineLoudness_lufs(double frequency_hz) {
    struct Destroy {
        void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
    };
    const std::unique_ptr<ebur128_state, Destroy> meter(ebur128_init(1, 48000, EBUR128_MODE_I));
    std::vector<double> sine(48000 * 4);
    for (std::size_t n = 0; n < sine.size(); ++n) {
        sine[n] = std::sin(2.0 * std::numbers::pi * frequency_hz * static_cast<double>(n) / 48000.0);
    }
    ebur128_add_frames_double(meter.get(), sine.data(), sine.size());
    double loudness_lufs = 0.0;
    ebur128_loudness_global(meter.get(), &loudness_lufs);
    return loudness_lufs;
}

TEST(IrgenLoudness, KWeightingMatchesALoudnessMeter) {
    for (const double frequency_hz : {30.0, 60.0, 200.0, 997.0, 2500.0, 8000.0, 16000.0}) {
        const double relative_db = 10.0 * std::log10(kWeighting(frequency_hz) / kWeighting(997.0));
        EXPECT_NEAR(relative_db, sineLoudness_lufs(frequency_hz) - sineLoudness_lufs(997.0), 0.1)
            << frequency_hz;
    }
}

TEST(IrgenLoudness, EqualsTheLevelOfAFlatResponse) {
    EXPECT_NEAR(pinkLoudness_db(std::vector<double>(16385, 1.0)), 0.0, 1e-12);
    EXPECT_NEAR(pinkLoudness_db(std::vector<double>(16385, 0.25)), -6.0206, 1e-4);
}

TEST(IrgenLoudness, IgnoresInaudibleFrequencies) {
    std::vector<double> power(16385, 1.0);
    power[0] = power[5] = 1e6;          // 7 Hz
    power[14000] = power[16384] = 1e6;  // 20.5 kHz and more
    EXPECT_NEAR(pinkLoudness_db(power), 0.0, 1e-12);
}

}  // namespace
