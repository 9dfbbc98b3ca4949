#include "image_sources.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tools/irgen/heads/synthetic_head.h"

namespace {

using namespace sonivex_irgen;

std::vector<ImageSource> byDelay(const Room& room, double azimuth_deg) {
    std::vector<ImageSource> images = imageSources(room, azimuth_deg);
    std::sort(images.begin(), images.end(),
              [](const ImageSource& a, const ImageSource& b) { return a.delay_s < b.delay_s; });
    return images;
}

constexpr std::size_t k1500Hz = 64;

TEST(IrgenImageSources, FloorAndCeilingReflectionsArriveFirstInTheListeningRoom) {
    const std::vector<ImageSource> images = byDelay(kListeningRoom, 30.0);
    ASSERT_EQ(images.size(), 52U);
    // Worked by hand for the floor: the path is sqrt(1.9^2 + 2.4^2) m = 3.061 m. Distance gives -4.14 dB,
    // absorption (0.610 at 1.5 kHz) -4.09 dB and the loudspeaker, 51.6 degrees off its axis, -1.13 dB.
    EXPECT_NEAR(images[0].delay_s, 0.003385, 1e-6);
    EXPECT_NEAR(images[0].level_db[k1500Hz], -9.36, 0.02);
    EXPECT_LT(images[0].direction.z, -0.7);
    EXPECT_NEAR(images[1].delay_s, 0.004814, 1e-6);
    EXPECT_NEAR(images[1].level_db[k1500Hz], -10.67, 0.02);
    EXPECT_GT(images[1].direction.z, 0.7);
}

TEST(IrgenImageSources, FirstOrderImagesLieBehindTheirWalls) {
    const Room room{{6.0, 5.0, 3.0}, {2.0, 2.0, 1.0}, 1.0, 0.3, 0.3, 0.2, 0.030};
    // The loudspeaker is straight ahead at x = 3. Its images in front and behind are at x = 12 - 3 = 9 and
    // x = -3, which is 7 m and 5 m away.
    const auto is_at = [&](Vector3 direction, double distance_m) {
        const auto images = imageSources(room, 0.0);
        return std::any_of(images.begin(), images.end(), [&](const ImageSource& image) {
            return std::abs(image.delay_s - (distance_m - 1.0) / 343.0) < 1e-9 &&
                   dot(image.direction, direction) > 0.9999;
        });
    };
    EXPECT_TRUE(is_at({1.0, 0.0, 0.0}, 7.0));
    EXPECT_TRUE(is_at({-1.0, 0.0, 0.0}, 5.0));
    const double side_m = std::sqrt(1.0 + 16.0);  // right wall mirrors y = 2 to -2
    EXPECT_TRUE(is_at({1.0 / side_m, -4.0 / side_m, 0.0}, side_m));
    const double left_m = std::sqrt(1.0 + 36.0);  // left wall mirrors y = 2 to 8
    EXPECT_TRUE(is_at({1.0 / left_m, 6.0 / left_m, 0.0}, left_m));
}

TEST(IrgenImageSources, LevelsNeverRiseWithFrequency) {
    for (const ImageSource& image : imageSources(kLargeRoom, 110.0)) {
        ASSERT_EQ(image.level_db.size(), kHeadBins);
        for (std::size_t k = 1; k < kHeadBins; ++k) ASSERT_LE(image.level_db[k], image.level_db[k - 1]);
        ASSERT_LT(image.level_db[0], 0.0);
    }
}

TEST(IrgenImageSources, RightWallAbsorbsMoreThanTheLeftAndTheFloorMoreThanTheCeiling) {
    // Listener and loudspeaker are in the middle of a cube. At 0 Hz (bin 0) the loudspeaker radiates in all
    // directions alike, so only distance and absorption set the level. Absorptions worked by hand: 0.34
    // right, 0.26 left, 0.33 ceiling, 0.345 floor.
    const Room cube{{4.0, 4.0, 4.0}, {2.0, 2.0, 2.0}, 1.0, 0.3, 0.3, 0.2, 0.030};
    const auto absorbed = [&](Vector3 direction) {
        for (const ImageSource& image : imageSources(cube, 0.0)) {
            if (image.delay_s > 0.0125 || dot(image.direction, direction) < 0.9) continue;
            const double distance_m = 1.0 + 343.0 * image.delay_s;
            return 1.0 - std::pow(10.0, image.level_db[0] / 10.0) * distance_m * distance_m;
        }
        return -1.0;
    };
    EXPECT_NEAR(absorbed({0.0, -1.0, 0.0}), 0.34, 1e-9);
    EXPECT_NEAR(absorbed({0.0, 1.0, 0.0}), 0.26, 1e-9);
    EXPECT_NEAR(absorbed({0.0, 0.0, 1.0}), 0.33, 1e-9);
    EXPECT_NEAR(absorbed({0.0, 0.0, -1.0}), 0.345, 1e-9);
    EXPECT_NEAR(absorbed({-1.0, 0.0, 0.0}), 0.3, 1e-9);
}

TEST(IrgenImageSources, WeightFallsFromOneToZeroOverTheLastTwoFifthsOfTheEarlyPart) {
    for (const ImageSource& image : imageSources(kMiddleRoom, -30.0)) {
        if (image.delay_s <= 0.018) {
            ASSERT_EQ(image.weight, 1.0);
        } else {
            ASSERT_LT(image.delay_s, 0.030);
            ASSERT_NEAR(image.weight,
                        0.5 + 0.5 * std::cos(std::numbers::pi * (image.delay_s - 0.018) / 0.012), 1e-12);
        }
    }
}

TEST(IrgenImageSources, FirstReflectionArrivesOnTimeAfterSilence) {
    const HeadModel head(directionalTransfers(irgen_test::syntheticHead()), 0.0875);
    const EarSignals ears = earlyReflections(head, kListeningRoom, 0.0, 2000);
    // The floor's image is on the median plane. Its delay of 3.385 ms after sample 40 leads to sample 202.
    for (const std::vector<double>& ear : ears) {
        for (std::size_t n = 0; n < 202; ++n) ASSERT_EQ(ear[n], 0.0) << n;
        EXPECT_GT(ear[202], 0.1);
    }
}

}  // namespace
