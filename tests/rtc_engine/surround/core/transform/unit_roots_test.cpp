#include "unit_roots.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using sonivex::UnitRoots;

// Half a unit in the last place of `number`.
long double halfUnitOf(double number) {
    return std::ldexp(1.0L, std::ilogb(number) - 53);
}

// Expects correct rounding: no double is nearer. The C library's long double has 11 bits more than double,
// but its last bit may be wrong.
void expectNearest(double number, long double exact) {
    ASSERT_LE(std::fabs(exact - static_cast<long double>(number)), halfUnitOf(number) * 1.001L);
}

// Computes from the nearer end of the quarter turn, because the rounding of the angle would matter near the
// far end.
long double exactSine(int k, int steps) {
    constexpr long double kQuarter = std::numbers::pi_v<long double> / 2;
    const auto angle = [&](int count) {
        return kQuarter * static_cast<long double>(count) / static_cast<long double>(steps);
    };
    return 2 * k <= steps ? std::sin(angle(k)) : std::cos(angle(steps - k));
}

TEST(UnitRoots, AreTheNearestDoublesToSineAndCosine) {
    for (const int steps : {1, 2, 4, 8, 64, 128, 1024, 8192, 65536}) {
        SCOPED_TRACE(steps);
        const UnitRoots roots(steps);
        EXPECT_EQ(roots.at(0).sine, 0.0);
        for (int k = 0; k < steps; ++k) {
            const sonivex::UnitPoint point = roots.at(k);
            expectNearest(point.cosine, exactSine(steps - k, steps));
            if (k > 0) expectNearest(point.sine, exactSine(k, steps));
        }
    }
}

TEST(UnitRoots, AreExactAtKnownAngles) {
    const UnitRoots roots(2);
    EXPECT_EQ(roots.at(0).cosine, 1.0);
    EXPECT_EQ(roots.at(1).cosine, 0.70710678118654752440);
    EXPECT_EQ(roots.at(1).sine, 0.70710678118654752440);
}

TEST(UnitRoots, AreSymmetricToTheLastBit) {
    const UnitRoots roots(4096);
    for (int k = 1; k < 4096; ++k) {
        ASSERT_EQ(roots.at(k).cosine, roots.at(4096 - k).sine) << k;
    }
}

}  // namespace
