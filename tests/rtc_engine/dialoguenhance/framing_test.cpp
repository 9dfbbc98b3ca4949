#include "framing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <numeric>
#include <vector>

namespace {

using sonivex::makeSineWindow;

std::vector<float> windowOf(int points) {
    std::vector<float> window(static_cast<std::size_t>(points), -1.0F);
    makeSineWindow(points, window.data());
    return window;
}

TEST(SineWindow, IsHalfAPeriodFromZeroToZero) {
    for (const int points : {2048, 4096, 8192}) {
        const std::vector<float> window = windowOf(points);
        EXPECT_EQ(window.front(), 0.0F);
        EXPECT_EQ(window.back(), 0.0F);
        for (int i = 1; i < points - 1; ++i) {
            const long double angle = std::numbers::pi_v<long double> * i / (points - 1);
            const float exact = static_cast<float>(std::sin(angle));
            ASSERT_FLOAT_EQ(window[static_cast<std::size_t>(i)], exact) << i;
        }
    }
}

/* pi/4, pi/2 and 3 pi/4 lie on samples. */
TEST(SineWindow, HasTheValuesOfATable) {
    const float half = std::sqrt(0.5F);
    const std::vector<float> window = windowOf(5);
    EXPECT_FLOAT_EQ(window[1], half);
    EXPECT_EQ(window[2], 1.0F);
    EXPECT_FLOAT_EQ(window[3], half);
}

TEST(SineWindow, ItsSquaresAQuarterApartSumToTwo) {
    constexpr int kHop = 512;
    const std::vector<float> window = windowOf(4 * kHop);
    for (std::size_t i = 0; i < kHop; ++i) {
        double sum = 0;
        for (std::size_t part = 0; part < 4; ++part) {
            const double w = window[i + part * kHop];
            sum += w * w;
        }
        // Not exactly: the period is N - 1 points, one short of four hops.
        ASSERT_NEAR(sum, 2.0, 0.0016) << i;
    }
}

TEST(Framing, SplitsFramesIntoChannels) {
    const std::vector<float> in = {1, -2, 3, -4, 5, -6};
    std::vector<float> left(3);
    std::vector<float> right(3);
    sonivex::splitStereo(in.data(), 3, left.data(), right.data());
    EXPECT_EQ(left, (std::vector<float>{1, 3, 5}));
    EXPECT_EQ(right, (std::vector<float>{-2, -4, -6}));
}

TEST(Framing, AppendingDropsTheOldestHop) {
    std::vector<float> buffer = {1, 2, 3, 4, 5, 6, 7, 8};
    const std::vector<float> hop = {9, 10};
    sonivex::appendHop(hop.data(), 2, buffer.data(), 8);
    EXPECT_EQ(buffer, (std::vector<float>{3, 4, 5, 6, 7, 8, 9, 10}));
    sonivex::appendSilence(2, buffer.data(), 8);
    EXPECT_EQ(buffer, (std::vector<float>{5, 6, 7, 8, 9, 10, 0, 0}));
}

TEST(Framing, AFrameIsTheInputUnderTheWindow) {
    const std::vector<float> in = {2, -3, 4};
    const std::vector<float> window = {0, 0.5F, 0.25F};
    std::vector<float> frame(3, 9.0F);
    sonivex::applyWindow(in.data(), window.data(), 3, frame.data());
    EXPECT_EQ(frame, (std::vector<float>{0, -1.5F, 1}));
}

TEST(Framing, OverlappingFramesAddUnderTheWindow) {
    const std::vector<float> frame = {2, -3, 4};
    const std::vector<float> window = {0, 0.5F, 0.25F};
    std::vector<float> out = {7, 1, 2};
    sonivex::overlapAdd(frame.data(), window.data(), 3, out.data());
    EXPECT_EQ(out, (std::vector<float>{7, -0.5F, 3}));
}

TEST(Framing, EmittedFramesAreInterleavedAndTwoThirdsAsLoud) {
    const std::vector<float> left = {3, 0.1F};
    const std::vector<float> right = {-1.5F, 1};
    std::vector<float> out(4);
    sonivex::emitStereo(left.data(), right.data(), 2, out.data());
    EXPECT_EQ(out, (std::vector<float>{2, -1, 0.1F / 1.5F, 1 / 1.5F}));
}

/* A division: the product with the rounded 2/3 is another float for many samples. */
TEST(Framing, EmittedSamplesAreTheNearestFloatsToTheQuotient) {
    int differs_from_product = 0;
    std::vector<float> samples(20000);
    std::iota(samples.begin(), samples.end(), 1.0F);
    std::vector<float> out(2 * samples.size());
    sonivex::emitStereo(samples.data(), samples.data(), static_cast<int>(samples.size()), out.data());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        ASSERT_EQ(out[2 * i], static_cast<float>(static_cast<double>(samples[i]) / 1.5));
        differs_from_product += out[2 * i] != samples[i] * (1.0F / 1.5F) ? 1 : 0;
    }
    EXPECT_GT(differs_from_product, 1000);
}

}  // namespace
