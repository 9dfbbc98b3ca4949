#include "minimum_phase.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

namespace {

using sonivex_irgen::minimumPhaseResponse;

constexpr std::size_t kPoints = 2048;

// Levels in dB of the filter 1 - zero * z^-1.
std::vector<double> oneZeroLevels(double zero) {
    std::vector<double> levels(kPoints / 2 + 1);
    for (std::size_t k = 0; k < levels.size(); ++k) {
        const auto z1 = std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(k) / kPoints);
        levels[k] = 20.0 * std::log10(std::abs(1.0 - zero * z1));
    }
    return levels;
}

TEST(IrgenMinimumPhase, FlatMagnitudeYieldsASingleSample) {
    const std::vector<double> response = minimumPhaseResponse(std::vector<double>(kPoints / 2 + 1, 6.0), 512);
    ASSERT_EQ(response.size(), 512U);
    EXPECT_NEAR(response[0], std::pow(10.0, 0.3), 1e-12);
    for (std::size_t n = 1; n < response.size(); ++n) ASSERT_NEAR(response[n], 0.0, 1e-12) << n;
}

TEST(IrgenMinimumPhase, PlacesTheZeroInsideTheUnitCircle) {
    // A zero at 1/0.8 gives the same magnitude up to a factor, but not the minimum phase.
    const std::vector<double> response = minimumPhaseResponse(oneZeroLevels(0.8), 512);
    EXPECT_NEAR(response[0], 1.0, 1e-9);
    EXPECT_NEAR(response[1], -0.8, 1e-9);
    for (std::size_t n = 2; n < response.size(); ++n) ASSERT_NEAR(response[n], 0.0, 1e-9) << n;
}

TEST(IrgenMinimumPhase, SecondHalfFadesOut) {
    // 1 / (1 - 0.999 z^-1) still rings at the end.
    std::vector<double> levels = oneZeroLevels(0.999);
    for (double& level : levels) level = -level;
    const std::vector<double> response = minimumPhaseResponse(levels, 64);
    EXPECT_NEAR(response[32] / response[31], 0.999, 0.001);
    EXPECT_NEAR(response[48] / response[31], 0.5 * std::pow(0.999, 17), 0.01);
    EXPECT_LT(std::abs(response[63]), 0.01 * response[31]);
}

}  // namespace
