// Checks the binaural model of the command line on measured head responses.

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "lateral_angle.h"
#include "tools/irgen/heads/synthetic_head.h"

namespace {

// The responses of the open air to the horizontal plane. 100 degrees of azimuth is as far to the side as 80.
TEST(HeardAngle, IsThatOfTheMeasuredDirectionWithinEightDegrees) {
    SONIVEX_NEED_PACKAGED_HEAD();
    const sonivex_irgen::HeadMeasurements& head = *irgen_test::packagedHead();
    int directions = 0;
    for (const auto& [direction, ears, delays_samples] : head.directions) {
        if (std::abs(direction.z) > 0.01) continue;
        ++directions;
        const double lateral_deg = std::asin(direction.y) * 180.0 / std::numbers::pi;
        SCOPED_TRACE(std::to_string(lateral_deg) +
                     (direction.x < 0.0 ? " degrees, behind" : " degrees, in front"));
        ASSERT_EQ(delays_samples[0], delays_samples[1]);
        const auto angle = sonivex_tool::lateralAngle(ears[0], ears[1], static_cast<int>(head.rate_hz));
        ASSERT_TRUE(angle.has_value());
        EXPECT_NEAR(angle->angle_deg, lateral_deg, 8.0);
    }
    EXPECT_GT(directions, 60);
}

}  // namespace
