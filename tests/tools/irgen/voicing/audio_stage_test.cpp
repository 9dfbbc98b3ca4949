#include "audio_stage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "biquad.h"
#include "fft.h"

namespace {

// Mean level between two frequencies, in which every octave has the same weight.
double level_db(const std::vector<double>& power, double from_hz, double to_hz) {
    double sum = 0.0;
    double total = 0.0;
    for (std::size_t k = 1; k < power.size(); ++k) {
        const double frequency_hz = static_cast<double>(k) * 44100.0 / 32768.0;
        if (frequency_hz < from_hz || frequency_hz > to_hz) continue;
        sum += power[k] / frequency_hz;
        total += 1.0 / frequency_hz;
    }
    return 10.0 * std::log10(sum / total);
}

TEST(IrgenAudioStage, LiftsTheBassAndLeavesTheRestFlat) {
    const std::vector<double> power =
        sonivex_irgen::powerSpectrum(sonivex_irgen::audioStageResponse(), 32768);
    const double middle_db = level_db(power, 400.0, 2000.0);
    EXPECT_NEAR(level_db(power, 50.0, 80.0) - middle_db, 4.2, 0.4);
    for (double centre_hz = 250.0; centre_hz < 10000.0; centre_hz *= std::cbrt(2.0)) {
        EXPECT_NEAR(level_db(power, centre_hz / 1.12, centre_hz * 1.12) - middle_db, 0.0, 1.0) << centre_hz;
    }
}

TEST(IrgenAudioStage, IsAUnitImpulseWithAFaintTail) {
    const std::vector<double> response = sonivex_irgen::audioStageResponse();
    ASSERT_EQ(response.size(), 6000U);
    for (std::size_t n = 0; n < 40; ++n) ASSERT_EQ(response[n], 0.0) << n;
    EXPECT_GT(response[40], 1.0);
    // Above 300 Hz the filters have rung out after 100 samples. The voicing moves the -28 dB by tenths.
    std::vector<double> tail = response;
    std::fill(tail.begin(), tail.begin() + 140, 0.0);
    sonivex_irgen::applyFilter(sonivex_irgen::highPass({300.0, 0.7, 44100.0}), tail);
    const auto energy_db = [&](std::size_t from, std::size_t to) {
        double sum = 0.0;
        for (std::size_t n = from; n < to; ++n) sum += tail[n] * tail[n];
        return 10.0 * std::log10(sum);
    };
    EXPECT_NEAR(energy_db(0, 6000), -28.0, 0.6);
    EXPECT_NEAR(energy_db(440, 880) - energy_db(2640, 3080), 60.0 * 2200.0 / 44100.0 / 0.12, 2.0);
}

}  // namespace
