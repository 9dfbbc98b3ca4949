// The synthetic sphere is what its theory says, so that it can stand for a second head.
#include "tools/irgen/heads/rigid_sphere.h"

#include <gtest/gtest.h>

#include <cmath>

#include "directional_transfer.h"
#include "fft.h"
#include "interaural_delay.h"

namespace {

using namespace sonivex_irgen;

constexpr irgen_test::RigidSphere kSphere{0.0875, 90.0, 48000.0, 10, 15};

const HeadMeasurements& sphere() {
    static const HeadMeasurements head = irgen_test::rigidSphere(kSphere);
    return head;
}

const HeadMeasurement& fromLeft() {
    for (const HeadMeasurement& measured : sphere().directions) {
        if (measured.direction.y > 0.9999) return measured;
    }
    throw std::logic_error("the grid has no direction at the side");
}

double level_db(const std::vector<double>& response, double frequency_hz) {
    const std::vector<double> power = powerSpectrum(response, 4096);
    return 10.0 * std::log10(power[static_cast<std::size_t>(std::lround(frequency_hz / 48000.0 * 4096.0))]);
}

TEST(IrgenRigidSphere, DoublesThePressureAtTheFacingEarInTheTreble) {
    EXPECT_NEAR(level_db(fromLeft().ears[0], 10000.0), 6.0, 0.3);
    EXPECT_NEAR(level_db(fromLeft().ears[0], 60.0), 0.0, 0.5);
}

TEST(IrgenRigidSphere, CastsNoShadowOnTheFarEarInTheBassAndABrightSpotOppositeTheSource) {
    EXPECT_NEAR(level_db(fromLeft().ears[1], 60.0), 0.0, 0.5);
    // All ways around the sphere meet at the point opposite the source; 30 degrees off it, they do not.
    for (const HeadMeasurement& measured : sphere().directions) {
        const bool is_off_the_spot = std::abs(measured.direction.y - 0.5 * std::sqrt(3.0)) < 1e-6;
        if (!is_off_the_spot) continue;
        EXPECT_GT(level_db(fromLeft().ears[1], 5000.0), level_db(measured.ears[1], 5000.0) + 3.0)
            << measured.direction.z;
    }
}

TEST(IrgenRigidSphere, DelaysByThreeRadiiInTheBassAndByWoodworthAtTheOnset) {
    // The delay of a sphere falls from 3 a / c, 765 us, in the bass to Woodworth's 656 us above 1.5 kHz.
    for (const DirectionalTransfer& transfer : directionalTransfers(sphere())) {
        if (transfer.direction.y < 0.9999) continue;
        EXPECT_GT(transfer.low_frequency_delay_s, 680e-6);
        EXPECT_LT(transfer.low_frequency_delay_s, 765e-6);
    }
    // The shadow takes the treble out of the far ear's onset, which then reaches a tenth of its peak later.
    EXPECT_GT(fitHeadRadius_m(sphere()), 0.0875);
    EXPECT_LT(fitHeadRadius_m(sphere()), 0.0950);
}

TEST(IrgenRigidSphere, IsSymmetric) {
    for (const HeadMeasurement& left : sphere().directions) {
        for (const HeadMeasurement& right : sphere().directions) {
            const Vector3 mirrored{right.direction.x, -right.direction.y, right.direction.z};
            if (length(left.direction - mirrored) > 1e-6) continue;
            ASSERT_EQ(left.ears[0], right.ears[1]);
        }
    }
}

}  // namespace
