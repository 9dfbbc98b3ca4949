#include "rate_choice.h"

#include <gtest/gtest.h>

namespace {

using sonivex_tool::chooseRate_hz;

const std::vector<int> kTwoRates_hz = {44100, 48000};
const std::vector<int> kThreeRates_hz = {16000, 44100, 48000};

TEST(RateChoice, KeepsARateThatIsSupported) {
    for (const int rate_hz : kThreeRates_hz) EXPECT_EQ(chooseRate_hz(rate_hz, kThreeRates_hz), rate_hz);
}

TEST(RateChoice, TakesTheSimplestRatio) {
    EXPECT_EQ(chooseRate_hz(22050, kThreeRates_hz), 44100);
    EXPECT_EQ(chooseRate_hz(24000, kThreeRates_hz), 48000);
    EXPECT_EQ(chooseRate_hz(32000, kThreeRates_hz), 48000);
    EXPECT_EQ(chooseRate_hz(88200, kTwoRates_hz), 44100);
    EXPECT_EQ(chooseRate_hz(176400, kTwoRates_hz), 44100);
    EXPECT_EQ(chooseRate_hz(96000, kTwoRates_hz), 48000);
    EXPECT_EQ(chooseRate_hz(192000, kTwoRates_hz), 48000);
    EXPECT_EQ(chooseRate_hz(384000, kTwoRates_hz), 48000);
    EXPECT_EQ(chooseRate_hz(8000, kThreeRates_hz), 16000);
    EXPECT_EQ(chooseRate_hz(8000, kTwoRates_hz), 48000);
    EXPECT_EQ(chooseRate_hz(11025, kThreeRates_hz), 44100);
    EXPECT_EQ(chooseRate_hz(2822400, kTwoRates_hz), 44100);
}

TEST(RateChoice, NeverCutsBandwidthBelowTheAudible) {
    // 16000 is in a simple ratio to these rates too, but it would leave only 8 kHz.
    EXPECT_EQ(chooseRate_hz(96000, kThreeRates_hz), 48000);
    EXPECT_EQ(chooseRate_hz(64000, kThreeRates_hz), 48000);
    EXPECT_EQ(chooseRate_hz(32000, {16000, 44100}), 44100);
}

TEST(RateChoice, TakesTheNextHigherRateWithoutASimpleRatio) {
    EXPECT_EQ(chooseRate_hz(47999, kThreeRates_hz), 48000);
    EXPECT_EQ(chooseRate_hz(44099, kThreeRates_hz), 44100);
    EXPECT_EQ(chooseRate_hz(15999, kThreeRates_hz), 16000);
    EXPECT_EQ(chooseRate_hz(50001, kThreeRates_hz), 48000);
    EXPECT_EQ(chooseRate_hz(1'000'003, kTwoRates_hz), 48000);
}

}  // namespace
