#include "effect_runs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

using test::Pcm;

// The neutral gain of dialogue enhancement is 4/3 times 0.998, rounded to three digits. At voice level 0 it
// is all that the effect does.
TEST(StudyRuns, DialogueComesOutInTimeAndAtItsNeutralLevel) {
    const Pcm in = test::noise(1, 2 * 512 * 40, 4000);
    const Pcm out = study::dialogueOf(in, 0.0);
    ASSERT_EQ(out.size(), in.size() - 2 * 3 * 512);
    for (std::size_t i = 4000; i < out.size(); ++i)
        EXPECT_NEAR(out[i], in[i] * 4.0 / 3.0 * 0.998, 2.0 + 0.0005 * std::abs(in[i])) << i;
}

// A peak of 1 / 20 of full scale leaves room for the whole gain of 20 dB.
TEST(StudyRuns, TheNormalizerRaisesQuietSamplesTenfoldInTime) {
    const Pcm in = test::noise(1, 2 * 512 * 10 + 100, 1600);
    const Pcm out = study::normalizedOf(in, 2);
    ASSERT_EQ(out.size(), std::size_t{2} * 512 * 11);
    for (std::size_t i = 0; i < in.size(); ++i) EXPECT_NEAR(out[i], 10.0 * in[i], 0.01 * 16000) << i;
}

// An impulse from the left reaches the left ear first and within the first 100 frames.
TEST(StudyRuns, SurroundPutsTheLeftChannelOnTheLeft) {
    for (const auto& type : study::kSurroundTypes) {
        Pcm in(2 * 4800);
        in[0] = 16000;
        const Pcm out = study::surroundOf(in, 2, type);
        ASSERT_EQ(out.size(), in.size());
        const auto largest = std::max_element(out.begin(), out.begin() + 2 * 100,
                                              [](int a, int b) { return std::abs(a) < std::abs(b); });
        EXPECT_EQ((largest - out.begin()) % 2, 0) << type.name;
        EXPECT_GT(std::abs(*largest), 1000) << type.name;
    }
}

}  // namespace
