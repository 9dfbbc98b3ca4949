#include "pcm.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "support/signals.h"

namespace {

TEST(Pcm, FractionsAreCutTowardZero) {
    EXPECT_EQ(sonivex::truncateToInt16(0.99F), 0);
    EXPECT_EQ(sonivex::truncateToInt16(-0.99F), 0);
    EXPECT_EQ(sonivex::truncateToInt16(1.99F), 1);
    EXPECT_EQ(sonivex::truncateToInt16(-1.99F), -1);
    EXPECT_EQ(sonivex::truncateToInt16(32440.32F), 32440);
    EXPECT_EQ(sonivex::truncateToInt16(-32440.32F), -32440);
}

TEST(Pcm, WhatDoesNotFitSaturates) {
    EXPECT_EQ(sonivex::truncateToInt16(32767.0F), 32767);
    EXPECT_EQ(sonivex::truncateToInt16(32767.5F), 32767);
    EXPECT_EQ(sonivex::truncateToInt16(32768.0F), 32767);
    EXPECT_EQ(sonivex::truncateToInt16(1e30F), 32767);
    EXPECT_EQ(sonivex::truncateToInt16(std::numeric_limits<float>::infinity()), 32767);
    EXPECT_EQ(sonivex::truncateToInt16(-32768.0F), -32768);
    EXPECT_EQ(sonivex::truncateToInt16(-32768.5F), -32768);
    EXPECT_EQ(sonivex::truncateToInt16(-1e30F), -32768);
    EXPECT_EQ(sonivex::truncateToInt16(-std::numeric_limits<float>::infinity()), -32768);
}

TEST(Pcm, NotANumberIsSilence) {
    EXPECT_EQ(sonivex::truncateToInt16(std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(sonivex::truncateToInt16(-std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST(Pcm, Every16BitSampleSurvivesTheWayThroughFloat) {
    std::vector<std::int16_t> all;
    for (int sample = -32768; sample <= 32767; ++sample) all.push_back(static_cast<std::int16_t>(sample));
    const int count = static_cast<int>(all.size());
    std::vector<float> floats(all.size());
    std::vector<std::int16_t> back(all.size());

    sonivex::int16ToFloat(all.data(), count, floats.data());
    sonivex::floatToInt16(floats.data(), count, back.data());

    EXPECT_EQ(floats.front(), -32768.0F);
    EXPECT_EQ(floats.back(), 32767.0F);
    EXPECT_EQ(back, all);
}

TEST(Pcm, TheMostNegativeSampleHasMagnitude32768) {
    const std::vector<std::int16_t> pcm{5, -32768, 32767};
    EXPECT_EQ(sonivex::largestMagnitude(pcm.data(), 3), 32768);
    EXPECT_EQ(sonivex::largestMagnitude(pcm.data() + 2, 1), 32767);
}

TEST(Pcm, AnEmptyBlockHasMagnitudeZero) {
    const std::int16_t pcm = 7;
    const float number = 7;
    EXPECT_EQ(sonivex::largestMagnitude(&pcm, 0), 0);
    EXPECT_EQ(sonivex::largestMagnitude(&pcm, -3), 0);
    EXPECT_EQ(sonivex::largestMagnitude(&number, 0), 0.0F);
}

TEST(Pcm, ThePeakIsFoundAtEveryPlaceOfABlock) {
    for (int length = 1; length <= 40; ++length) {
        for (int place = 0; place < length; ++place) {
            std::vector<std::int16_t> pcm(static_cast<std::size_t>(length), 3);
            pcm[static_cast<std::size_t>(place)] = -4;
            ASSERT_EQ(sonivex::largestMagnitude(pcm.data(), length), 4) << length << " " << place;
            const std::vector<float> floats(pcm.begin(), pcm.end());
            ASSERT_EQ(sonivex::largestMagnitude(floats.data(), length), 4.0F) << length << " " << place;
        }
    }
}

}  // namespace
