#include "low_frequency_delay.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "speech_spectrum.h"

namespace {

using namespace sonivex_irgen;

std::vector<double> pulseAt(std::size_t sample) {
    std::vector<double> response(512, 0.0);
    response[sample] = 1.0;
    return response;
}

TEST(IrgenLowFrequencyDelay, IsTheDistanceOfTwoPulses) {
    EXPECT_NEAR(lowFrequencyDelay_s({pulseAt(40), pulseAt(70)}, 48000.0, 0.0), 30.0 / 48000.0, 1e-12);
    EXPECT_NEAR(lowFrequencyDelay_s({pulseAt(70), pulseAt(40)}, 48000.0, 0.0), -30.0 / 48000.0, 1e-12);
    EXPECT_EQ(lowFrequencyDelay_s({pulseAt(40), pulseAt(40)}, 48000.0, 0.0), 0.0);
}

TEST(IrgenLowFrequencyDelay, IsNoneWithoutASound) {
    EXPECT_EQ(lowFrequencyDelay_s({pulseAt(40), std::vector<double>(512, 0.0)}, 48000.0, 0.0), 0.0);
}

TEST(IrgenLowFrequencyDelay, IsTheSameAtEverySampleRate) {
    for (const double rate_hz : {32000.0, 44100.0, 96000.0, 192000.0}) {
        const double delay_s = 20.0 / rate_hz;
        EXPECT_NEAR(lowFrequencyDelay_s({pulseAt(40), pulseAt(60)}, rate_hz, 0.0), delay_s, 1.4e-6)
            << rate_hz;
    }
}

TEST(IrgenLowFrequencyDelay, AddsTheDelayThatTheResponsesDoNotHold) {
    EXPECT_NEAR(lowFrequencyDelay_s({pulseAt(40), pulseAt(50)}, 48000.0, 20.0 / 48000.0), 30.0 / 48000.0,
                1e-12);
}

TEST(IrgenLowFrequencyDelay, IgnoresWhatLiesAbove1500Hz) {
    // A much louder tone burst at 6 kHz arrives at the wrong time.
    std::vector<double> right = pulseAt(60);
    for (std::size_t n = 0; n < 256; ++n) {
        const double window = std::sin(std::numbers::pi * static_cast<double>(n) / 256.0);
        right[100 + n] +=
            10.0 * window * window * std::sin(2.0 * std::numbers::pi * static_cast<double>(n) / 8.0);
    }
    EXPECT_NEAR(lowFrequencyDelay_s({pulseAt(40), right}, 48000.0, 0.0), 20.0 / 48000.0, 1.4e-6);
}

TEST(IrgenSpeechSpectrum, HasTheThirdOctavesOfTheMeanSpectrum) {
    // Third octaves of 500 Hz and 1 kHz: 62.1 and 53.7 dB. The upper one is twice as wide.
    const double twice_db = 10.0 * std::log10(2.0);
    EXPECT_NEAR(speechDensity_db(500.0) - speechDensity_db(1000.0), 62.1 - 53.7 + twice_db, 1e-9);
    EXPECT_NEAR(speechDensity_db(125.0) - speechDensity_db(1000.0), 57.7 - 53.7 + 3.0 * twice_db, 1e-9);
    // The third octaves of Byrne et al. 1994, men and women together, from 63 Hz on.
    const double bands_db[] = {38.6, 43.5, 54.4, 57.7, 56.8, 60.2, 60.3, 59.0, 62.1, 62.1, 60.5, 56.8, 53.7,
                               53.0, 52.0, 48.7, 48.1, 46.8, 45.6, 44.5, 44.3, 43.7, 43.4, 41.3, 40.7};
    for (int band = 0; band < 25; ++band) {
        const double octaves = (band - 12) / 3.0;
        EXPECT_NEAR(speechDensity_db(1000.0 * std::exp2(octaves)), bands_db[band] - octaves * twice_db, 1e-9)
            << band;
    }
    EXPECT_EQ(speechDensity_db(10.0), speechDensity_db(60.0));
    EXPECT_EQ(speechDensity_db(20000.0), speechDensity_db(17000.0));
}

}  // namespace
