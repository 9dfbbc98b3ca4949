#include "fade.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using sonivex_tool::Fade;

TEST(Fade, IsARaisedCosine) {
    Fade fade(100, false);
    fade.aim(true);
    for (int i = 1; i <= 100; ++i)
        EXPECT_NEAR(fade.next(), 0.5 - 0.5 * std::cos(3.14159265358979 * i / 100.0), 1e-6);
    EXPECT_TRUE(fade.isAtOne());
    EXPECT_EQ(fade.next(), 1.0F);
}

TEST(Fade, TurnsRoundMidwayWithoutAStep) {
    Fade fade(1000, false);
    float last = 0.0F;
    for (int i = 0; i < 5000; ++i) {
        if (i % 337 == 0) fade.aim((i / 337) % 2 == 0);
        const float gain = fade.next();
        EXPECT_LE(std::abs(gain - last), 3.1416F / 2.0F / 1000.0F * 1.01F);
        last = gain;
    }
}

TEST(Fade, CountsTheFramesThatAreLeft) {
    Fade fade(10, true);
    EXPECT_EQ(fade.framesLeft(), 0);
    fade.aim(false);
    for (int left = 10; left > 0; --left) {
        EXPECT_EQ(fade.framesLeft(), left);
        EXPECT_FALSE(fade.isAtZero());
        fade.next();
    }
    EXPECT_TRUE(fade.isAtZero());
}

}  // namespace
