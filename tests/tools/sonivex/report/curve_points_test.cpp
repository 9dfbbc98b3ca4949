#include "curve_points.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/signals/signals.h"

namespace {

using sonivex_tool::clockAxis;
using sonivex_tool::piecesOf;
using sonivex_tool::TimedValue;

TEST(CurvePieces, EndWhereValuesAreMissing) {
    const auto pieces = piecesOf({{0.0, {}}, {1.0, 5.0}, {2.0, 6.0}, {3.0, {}}, {4.0, 7.0}}, 5.0, 10);
    ASSERT_EQ(pieces.size(), 2U);
    EXPECT_EQ(pieces[0].size(), 2U);
    EXPECT_EQ(pieces[1].size(), 1U);
    EXPECT_TRUE(piecesOf({}, 0.0, 10).empty());
}

TEST(CurvePieces, OfALongCurveKeepTheExtremesOfEachStretch) {
    constexpr int kValues = 36000;
    constexpr int kColumns = 600;
    const std::vector<float> noise = test::noiseFloats(9, kValues);
    std::vector<TimedValue> values;
    for (int i = 0; i < kValues; ++i) values.push_back({0.1 * i, noise[static_cast<std::size_t>(i)]});
    const auto pieces = piecesOf(values, 3600.0, kColumns);
    ASSERT_EQ(pieces.size(), 1U);
    EXPECT_LE(pieces[0].size(), 2U * kColumns + 2);
    const auto by_height = [](const auto& one, const auto& other) { return one.y < other.y; };
    const auto [low, high] = std::minmax_element(pieces[0].begin(), pieces[0].end(), by_height);
    EXPECT_EQ(static_cast<float>(low->y), *std::min_element(noise.begin(), noise.end()));
    EXPECT_EQ(static_cast<float>(high->y), *std::max_element(noise.begin(), noise.end()));
    EXPECT_TRUE(std::is_sorted(pieces[0].begin(), pieces[0].end(),
                               [](const auto& one, const auto& other) { return one.x < other.x; }));
}

TEST(ClockAxes, HaveAFewTicksAtAnyLength) {
    for (const double length_s : {0.0, 1.0 / 48000.0, 0.5, 1.0, 59.0, 180.0, 3600.0, 90000.0, 1e6}) {
        const auto axis = clockAxis(length_s);
        EXPECT_GE(axis.ticks.size(), 2U) << length_s;
        EXPECT_LE(axis.ticks.size(), 12U) << length_s;
        EXPECT_GT(axis.high, 0.0) << length_s;
        EXPECT_LE(axis.ticks.back().value, axis.high * 1.001) << length_s;
    }
}

TEST(ClockAxes, ReadLikeAClock) {
    EXPECT_EQ(clockAxis(180.0).ticks.back().label, "3:00");
    EXPECT_EQ(clockAxis(7200.0).ticks.back().label, "2:00:00");
}

}  // namespace
