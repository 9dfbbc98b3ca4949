#include "biquad.h"

#include <gtest/gtest.h>

#include <cmath>

#include "fft.h"

namespace {

using namespace sonivex_irgen;

constexpr double kRate = 48000.0;

double gain_db(const Biquad& filter, double frequency_hz) {
    return 10.0 * std::log10(powerResponse(filter, frequency_hz, kRate));
}

TEST(IrgenBiquad, HighPassIsThreeDecibelsDownAtItsCutoffAndFallsTwelvePerOctave) {
    const Biquad filter = highPass({180.0, kButterworthQ, kRate});
    EXPECT_NEAR(gain_db(filter, 180.0), -3.0103, 1e-3);
    EXPECT_NEAR(gain_db(filter, 5.0) - gain_db(filter, 10.0), -12.04, 0.01);
    EXPECT_NEAR(gain_db(filter, 5000.0), 0.0, 1e-3);
}

TEST(IrgenBiquad, ShelvesReachFullGainOnTheirSideAndHalfOfItAtTheirCorner) {
    const Biquad low = lowShelf({110.0, kButterworthQ, kRate}, 4.0);
    EXPECT_NEAR(gain_db(low, 2.0), 4.0, 0.01);
    EXPECT_NEAR(gain_db(low, 110.0), 2.0, 0.01);
    EXPECT_NEAR(gain_db(low, 10000.0), 0.0, 0.01);

    const Biquad high = highShelf({3000.0, kButterworthQ, kRate}, -6.0);
    EXPECT_NEAR(gain_db(high, 50.0), 0.0, 0.01);
    EXPECT_NEAR(gain_db(high, 3000.0), -3.0, 0.01);
    EXPECT_NEAR(gain_db(high, 23999.0), -6.0, 0.01);
}

TEST(IrgenBiquad, PeakHasItsGainOnlyAtItsFrequency) {
    const Biquad filter = peak({300.0, 0.8, kRate}, -1.0);
    EXPECT_NEAR(gain_db(filter, 300.0), -1.0, 1e-6);
    EXPECT_NEAR(gain_db(filter, 5.0), 0.0, 0.01);
    EXPECT_NEAR(gain_db(filter, 20000.0), 0.0, 0.01);
}

TEST(IrgenBiquad, FilteredImpulseHasTheComputedPowerResponse) {
    const Biquad filter = lowShelf({2000.0, kButterworthQ, kRate}, 6.0);
    std::vector<double> signal(4096, 0.0);
    signal[0] = 1.0;
    applyFilter(filter, signal);
    const std::vector<double> power = powerSpectrum(signal, signal.size());
    for (std::size_t k = 1; k < power.size(); k += 97) {
        const double frequency_hz = static_cast<double>(k) * kRate / 4096.0;
        ASSERT_NEAR(power[k], powerResponse(filter, frequency_hz, kRate), 1e-9) << frequency_hz << " Hz";
    }
}

}  // namespace
