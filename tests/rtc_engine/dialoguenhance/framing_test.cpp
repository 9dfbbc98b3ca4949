#include "framing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <string>
#include <vector>

#include "support/each_vector_target.h"
#include "support/signals/signals.h"

namespace {

using sonivex::makeSineWindow;

std::vector<float> windowOf(int points) {
    std::vector<float> window(static_cast<std::size_t>(points), -1.0F);
    makeSineWindow(points, window.data());
    return window;
}

TEST(DialogueWindow, IsHalfASinePeriodFromZeroToZero) {
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

// With 5 points, samples 1 to 3 lie at pi/4, pi/2 and 3 pi/4.
TEST(DialogueWindow, MatchesKnownValues) {
    const float half = std::sqrt(0.5F);
    const std::vector<float> window = windowOf(5);
    EXPECT_FLOAT_EQ(window[1], half);
    EXPECT_EQ(window[2], 1.0F);
    EXPECT_FLOAT_EQ(window[3], half);
}

TEST(DialogueWindow, SquaresAQuarterApartSumToTwo) {
    constexpr int kHop = 512;
    const std::vector<float> window = windowOf(4 * kHop);
    for (std::size_t i = 0; i < kHop; ++i) {
        double sum = 0;
        for (std::size_t part = 0; part < 4; ++part) {
            const double w = window[i + part * kHop];
            sum += w * w;
        }
        // Not exactly 2: the period is N - 1 points, one short of four hops.
        ASSERT_NEAR(sum, 2.0, 0.0016) << i;
    }
}

TEST(DialogueFraming, SplitsFramesIntoChannels) {
    const std::vector<float> in = {1, -2, 3, -4, 5, -6};
    std::vector<float> left(3);
    std::vector<float> right(3);
    sonivex::splitStereo(in.data(), 3, left.data(), right.data());
    EXPECT_EQ(left, (std::vector<float>{1, 3, 5}));
    EXPECT_EQ(right, (std::vector<float>{-2, -4, -6}));
}

TEST(DialogueHopRing, ANewHopReplacesTheOldest) {
    sonivex::HopRing hops;
    std::vector<int> ring = {0, 0, 0, 0};
    std::vector<int> frame;
    for (const int number : {1, 2, 3, 4, 5, 6}) {
        hops.advance();
        ring[static_cast<std::size_t>(hops.placeOf(3))] = number;
        frame.clear();
        for (int i = 0; i < 4; ++i) frame.push_back(ring[static_cast<std::size_t>(hops.placeOf(i))]);
    }
    EXPECT_EQ(frame, (std::vector<int>{3, 4, 5, 6}));
}

TEST(DialogueFraming, MultipliesTheInputByTheWindow) {
    const std::vector<float> in = {2, -3, 4};
    const std::vector<float> window = {0, 0.5F, 0.25F};
    std::vector<float> frame(3, 9.0F);
    sonivex::applyWindow(in.data(), window.data(), 3, frame.data());
    EXPECT_EQ(frame, (std::vector<float>{0, -1.5F, 1}));
}

TEST(DialogueFraming, AddsWindowedFramesToTheOverlap) {
    const std::vector<float> frame = {2, -3, 4};
    const std::vector<float> window = {0, 0.5F, 0.25F};
    std::vector<float> out = {7, 1, 2};
    sonivex::overlapAdd(frame.data(), window.data(), 3, out.data());
    EXPECT_EQ(out, (std::vector<float>{7, -0.5F, 3}));
}

TEST(DialogueFraming, StartsAnOverlapByOverwritingIt) {
    const std::vector<float> frame = {2, -3, -1};
    const std::vector<float> window = {0.5F, 0.5F, 0};
    std::vector<float> out = {7, 1, 2};
    sonivex::startOverlap(frame.data(), window.data(), 3, out.data());
    EXPECT_EQ(out, (std::vector<float>{1, -1.5F, 0}));
    EXPECT_FALSE(std::signbit(out[2]));
}

TEST(DialogueFraming, EmitsInterleavedFramesAtTwoThirdsOfTheLevel) {
    const std::vector<float> left = {3, 0.1F};
    const std::vector<float> right = {-1.5F, 1};
    std::vector<float> out(4);
    sonivex::emitStereo(left.data(), right.data(), 2, out.data());
    EXPECT_EQ(out, (std::vector<float>{2, -1, 0.1F / 1.5F, 1 / 1.5F}));
}

// The level change is a division; the product with the rounded 2/3 differs for many samples.
TEST(DialogueFraming, EmitsTheQuotientsRoundedToNearest) {
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

// Tries every start and count, with a guard after the output.
TEST(DialogueFraming, VectorResultsEqualTheScalarOnes) {
    constexpr float kGuard = 77;
    const std::vector<float> in = test::noiseFloats(1, 200);
    const std::vector<float> window = test::noiseFloats(2, 200);
    const std::vector<float> before = test::noiseFloats(3, 200);
    test::forEachVectorTarget([&] {
        for (std::size_t first = 0; first < 5; ++first) {
            for (std::size_t count = 0; count <= 70; ++count) {
                SCOPED_TRACE(std::to_string(count) + " from " + std::to_string(first));
                const float* const x = in.data() + first;
                const float* const w = window.data() + 2 * first;
                const int samples = static_cast<int>(count);
                std::vector<float> framed(count + 1, kGuard);
                std::vector<float> started = framed;
                std::vector<float> added = framed;
                std::vector<float> left = framed;
                std::vector<float> right = framed;
                std::vector<float> emitted(2 * count + 1, kGuard);
                std::copy_n(before.begin(), count, added.begin());
                sonivex::applyWindow(x, w, samples, framed.data());
                sonivex::startOverlap(x, w, samples, started.data());
                sonivex::overlapAdd(x, w, samples, added.data());
                sonivex::splitStereo(x, samples, left.data(), right.data());
                sonivex::emitStereo(x, w, samples, emitted.data());
                for (std::size_t i = 0; i < count; ++i) {
                    const float product = x[i] * w[i];
                    ASSERT_EQ(framed[i], product);
                    ASSERT_EQ(started[i], product);
                    ASSERT_EQ(added[i], before[i] + product);
                    ASSERT_EQ(left[i], x[2 * i]);
                    ASSERT_EQ(right[i], x[2 * i + 1]);
                    ASSERT_EQ(emitted[2 * i], x[i] / 1.5F);
                    ASSERT_EQ(emitted[2 * i + 1], w[i] / 1.5F);
                }
                for (const auto* out : {&framed, &started, &added, &left, &right, &emitted}) {
                    ASSERT_EQ(out->back(), kGuard);
                }
            }
        }
    });
}

}  // namespace
