#include "rigid_sphere.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

using sonivex_tool::kHeadRadius_m;
using sonivex_tool::kSpeedOfSound_m_s;
using sonivex_tool::sphereEars;
using sonivex_tool::spherePressure;

constexpr double kRadiusTime_us = kHeadRadius_m / kSpeedOfSound_m_s * 1e6;

double radians(double deg) {
    return deg * std::numbers::pi / 180.0;
}

TEST(RigidSphere, LeavesLongWavesUnchanged) {
    for (const double incidence_deg : {0.0, 45.0, 90.0, 180.0}) {
        EXPECT_NEAR(std::abs(spherePressure(10.0, incidence_deg)), 1.0, 1e-3) << incidence_deg;
    }
}

// Short waves are reflected as by a wall: the pressure doubles.
TEST(RigidSphere, DoublesThePressureOfShortWavesWhereItFacesTheSource) {
    EXPECT_NEAR(std::abs(spherePressure(20000.0, 0.0)), 2.0, 0.04);
}

// Long waves: Kuhn, JASA 62 (1977), a delay of 3 a / c sin(angle) and no level difference.
TEST(RigidSphere, DelaysLongWavesByThreeRadiiTimesTheSine) {
    for (const double angle_deg : {-90.0, -30.0, 10.0, 60.0, 90.0}) {
        const auto ears = sphereEars(20.0, angle_deg);
        EXPECT_NEAR(ears.delay_us, 3.0 * kRadiusTime_us * std::sin(radians(angle_deg)), 1.0) << angle_deg;
        EXPECT_NEAR(ears.level_db, 0.0, 0.02) << angle_deg;
    }
}

// Short waves travel along straight lines and then along the surface: Woodworth's a / c (angle + sin(angle)).
TEST(RigidSphere, DelaysTheGroupsOfShortWavesAsWoodworthSays) {
    constexpr double kLow_hz = 15000.0;
    constexpr double kHigh_hz = 15100.0;
    for (const double angle_deg : {15.0, 30.0, 45.0}) {
        const auto ratio = [=](double frequency_hz) {
            return spherePressure(frequency_hz, 90.0 - angle_deg) /
                   spherePressure(frequency_hz, 90.0 + angle_deg);
        };
        const double turn = std::arg(ratio(kHigh_hz) / ratio(kLow_hz));
        const double lead_us = turn / (2.0 * std::numbers::pi * (kHigh_hz - kLow_hz)) * 1e6;
        const double woodworth_us = kRadiusTime_us * (radians(angle_deg) + std::sin(radians(angle_deg)));
        EXPECT_NEAR(lead_us, woodworth_us, 0.05 * woodworth_us) << angle_deg;
    }
}

TEST(RigidSphere, ShadowsTheFarEarMoreAtHigherFrequencies) {
    double before_db = 0.0;
    for (const double frequency_hz : {250.0, 500.0, 1000.0, 4000.0, 8000.0}) {
        const double level_db = sphereEars(frequency_hz, 45.0).level_db;
        EXPECT_GT(level_db, before_db) << frequency_hz;
        before_db = level_db;
    }
}

TEST(RigidSphere, SwapsTheEarsForMirroredDirections) {
    for (const double frequency_hz : {300.0, 1000.0, 5000.0}) {
        const auto left = sphereEars(frequency_hz, 25.0);
        const auto right = sphereEars(frequency_hz, -25.0);
        EXPECT_NEAR(left.delay_us, -right.delay_us, 1e-6);
        EXPECT_NEAR(left.level_db, -right.level_db, 1e-9);
        EXPECT_NEAR(sphereEars(frequency_hz, 0.0).level_db, 0.0, 1e-9);
    }
}

}  // namespace
