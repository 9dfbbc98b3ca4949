#include "ear_powers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/signals/signals.h"

namespace {

using sonivex_tool::EarPowers;
using sonivex_tool::earPowersOf;
using Samples = std::vector<double>;

constexpr int kRate_hz = 48000;

Samples noise(std::uint64_t seed, std::size_t count) {
    const std::vector<float> values = test::noiseFloats(seed, count, 0.1F);
    return {values.begin(), values.end()};
}

double energyOf(const Samples& samples) {
    double sum = 0.0;
    for (const double sample : samples) sum += sample * sample;
    return sum;
}

// By Parseval's theorem the bins hold the energy of the samples; bins between the ends count twice.
double energyOf(const EarPowers& powers, const Samples EarPowers::*ear) {
    const Samples& power = powers.*ear;
    const double ends = power.front() + power.back();
    return (2.0 * powers.sum(power, 0.0, 1e6) - ends) / static_cast<double>(2 * (power.size() - 1));
}

TEST(EarPowers, HoldTheEnergyOfASoundOfAnyLength) {
    for (const std::size_t count : {1U, 1000U, 32768U, 32769U, 200000U}) {
        const Samples left = noise(1, count);
        const Samples right = noise(2, count);
        const EarPowers powers = earPowersOf(left, right, kRate_hz);
        EXPECT_NEAR(energyOf(powers, &EarPowers::left) / energyOf(left), 1.0, 1e-9) << count;
        EXPECT_NEAR(energyOf(powers, &EarPowers::right) / energyOf(right), 1.0, 1e-9) << count;
    }
}

TEST(EarPowers, NeedTheSameMemoryForEveryLongSound) {
    const EarPowers powers = earPowersOf(noise(1, 300000), noise(1, 300000), kRate_hz);
    EXPECT_EQ(powers.cross.size(), 32769U);
    EXPECT_DOUBLE_EQ(powers.bin_hz, 48000.0 / 65536.0);
}

TEST(EarPowers, ShareEverythingIfTheEarsAreEqualAndNothingIfTheyAreUnrelated) {
    const Samples sound = noise(1, 200000);
    const EarPowers equal = earPowersOf(sound, sound, kRate_hz);
    for (std::size_t k = 0; k < equal.cross.size(); k += 97) {
        ASSERT_NEAR(equal.cross[k].real(), equal.left[k], 1e-9 * equal.left[k]);
    }
    const EarPowers unrelated = earPowersOf(sound, noise(2, 200000), kRate_hz);
    std::complex<double> shared = 0.0;
    for (const std::complex<double>& value : unrelated.cross) shared += value;
    EXPECT_LT(std::abs(shared), 0.02 * unrelated.sum(unrelated.left, 0.0, 1e6));
}

TEST(EarPowers, AreZeroForAnEmptySound) {
    const EarPowers powers = earPowersOf({}, {}, kRate_hz);
    EXPECT_EQ(powers.sum(powers.left, 0.0, 1e6), 0.0);
}

}  // namespace
