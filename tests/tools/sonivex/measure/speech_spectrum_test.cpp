#include "speech_spectrum.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using sonivex_tool::speechDensity;

// A third octave holds the density at its centre times its width, which is proportional to the centre.
double bandLevel_db(double centre_hz) {
    return 10.0 * std::log10(speechDensity(centre_hz) * centre_hz);
}

TEST(SpeechSpectrum, HasThePublishedThirdOctaveLevels) {
    EXPECT_NEAR(bandLevel_db(1000.0), 53.7, 1e-9);
    EXPECT_NEAR(bandLevel_db(std::pow(10.0, 2.7)), 62.1, 1e-9);      // 500 Hz
    EXPECT_NEAR(bandLevel_db(std::pow(10.0, 2.1)), 57.7, 1e-9);      // 125 Hz
    EXPECT_NEAR(bandLevel_db(std::pow(10.0, 4.19999)), 40.7, 1e-3);  // 16 kHz
}

TEST(SpeechSpectrum, JoinsTheBandsLinearlyInDecibels) {
    EXPECT_NEAR(bandLevel_db(std::pow(10.0, 2.95)), (56.8 + 53.7) / 2.0, 1e-9);  // between 800 and 1000 Hz
}

TEST(SpeechSpectrum, IsZeroWhereNoLevelsArePublished) {
    for (const double frequency_hz : {-1.0, 0.0, 62.0, 16000.0, 1e9}) {
        EXPECT_EQ(speechDensity(frequency_hz), 0.0) << frequency_hz;
    }
}

}  // namespace
