#include "gain_stage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "support/effects/mixer_owner.h"
#include "support/signals/signals.h"

namespace {

using test::makeMixer;
using test::MixerPointer;

constexpr float kStartGain_db = 20.0F;

// Processes a block of 512 samples with the given peak and returns the gain after it, in dB.
float gainAfterPeak(MixerState& mixer, int peak) {
    std::vector<std::int16_t> block(512, 0);
    block[200] = static_cast<std::int16_t>(-peak);
    std::vector<std::int16_t> out(512);
    return ddagcproc_dB(&mixer, block.data(), 512, out.data(), kStartGain_db);
}

int peakOfLevel(double level_db) {
    return static_cast<int>(std::lround(32768 * std::pow(10.0, level_db / 20)));
}

TEST(NormalizerGainStage, SilenceKeepsTheGainAndStaysSilent) {
    const MixerPointer mixer = makeMixer();
    const std::vector<std::int16_t> in(512, 0);
    std::vector<std::int16_t> out(512, 77);
    EXPECT_EQ(ddagcproc_dB(mixer.get(), in.data(), 512, out.data(), kStartGain_db), 20.0F);
    EXPECT_EQ(out, in);
}

TEST(NormalizerGainStage, UsesTheStartGainOnlyForTheFirstBlock) {
    const MixerPointer mixer = makeMixer();
    EXPECT_EQ(mixer->gainDb, 0.0F);
    EXPECT_EQ(gainAfterPeak(*mixer, 1), 20.0F);
    EXPECT_EQ(mixer->gainInitialised, 1);
    const std::int16_t in = 1;
    std::int16_t out = 0;
    EXPECT_EQ(ddagcproc_dB(mixer.get(), &in, 1, &out, 12.0F), 20.0F);
}

TEST(NormalizerGainStage, LowersTheGainByTheExcessOverFullScale) {
    const MixerPointer mixer = makeMixer();
    EXPECT_NEAR(gainAfterPeak(*mixer, peakOfLevel(-10)), 10.0, 1e-3);
    EXPECT_NEAR(gainAfterPeak(*mixer, peakOfLevel(-21)), 10.0, 1e-3);
}

TEST(NormalizerGainStage, LowersTheGainByAtLeastThreeDecibels) {
    const MixerPointer mixer = makeMixer();
    EXPECT_EQ(gainAfterPeak(*mixer, peakOfLevel(-19)), 17.0F);
    EXPECT_EQ(gainAfterPeak(*mixer, peakOfLevel(-16.5)), 14.0F);
}

TEST(NormalizerGainStage, AFullScaleFirstBlockLowersTheGainToZero) {
    const MixerPointer mixer = makeMixer();
    EXPECT_EQ(gainAfterPeak(*mixer, 32768), 0.0F);
}

TEST(NormalizerGainStage, NeverLowersTheGainBelowZeroDecibels) {
    const MixerPointer mixer = makeMixer();
    EXPECT_NEAR(gainAfterPeak(*mixer, peakOfLevel(-1)), 1.0, 1e-3);
    EXPECT_EQ(gainAfterPeak(*mixer, peakOfLevel(-0.5)), 0.0F);
    EXPECT_EQ(gainAfterPeak(*mixer, 32768), 0.0F);
}

TEST(NormalizerGainStage, KeepsTheGainForAPeakThatJustFits) {
    const MixerPointer mixer = makeMixer();
    EXPECT_EQ(gainAfterPeak(*mixer, 3276), 20.0F);  // -20.002 dBFS
    EXPECT_EQ(gainAfterPeak(*mixer, 3277), 17.0F);  // -19.9998 dBFS
}

TEST(NormalizerGainStage, NeverRaisesTheGain) {
    constexpr std::uint64_t kSeed = 3;
    test::Random random(kSeed);
    for (int run = 0; run < 50; ++run) {
        SCOPED_TRACE("seed " + std::to_string(kSeed) + ", run " + std::to_string(run));
        const MixerPointer mixer = makeMixer();
        float before = 20.0F;
        for (int block = 0; block < 30; ++block) {
            const float after = gainAfterPeak(*mixer, random.between(0, 300 << random.between(0, 6)));
            ASSERT_TRUE(after == before || after == 0.0F || after <= before - 3.0F)
                << before << " to " << after;
            before = after;
        }
    }
}

// The sum level + gain is in float. After a step it should be 0, but a rounding error can leave it above 0,
// which counts as too loud and costs another 3 dB step. The step is audible, so it must not change unnoticed.
TEST(NormalizerGainStage, RoundingCausesASecondStepForSomeSteadyPeaks) {
    const MixerPointer mixer = makeMixer();
    std::vector<int> stepped_again;
    for (int peak = 6000; peak <= 24000; ++peak) {
        mixer->gainInitialised = 0;
        const float first = gainAfterPeak(*mixer, peak);
        const float second = gainAfterPeak(*mixer, peak);
        if (second == first) continue;
        ASSERT_EQ(second, std::max(0.0F, first - 3.0F)) << "peak " << peak;
        stepped_again.push_back(peak);
    }
    const double share = static_cast<double>(stepped_again.size()) / (24000 - 6000 + 1);
    EXPECT_GT(share, 0.1);
    EXPECT_LT(share, 0.4);
}

TEST(NormalizerGainStage, AppliesTheNewGainToTheSameBlock) {
    const MixerPointer mixer = makeMixer();
    std::vector<std::int16_t> in(512, 0);
    in[0] = static_cast<std::int16_t>(peakOfLevel(-10));
    in[511] = 1000;
    std::vector<std::int16_t> out(512);
    ddagcproc_dB(mixer.get(), in.data(), 512, out.data(), kStartGain_db);
    // The gain is now 10 dB and puts the peak at full scale. The limiter takes 1 % and settles another 0.2 %
    // lower.
    EXPECT_NEAR(out[511], 1000 * std::pow(10.0, 0.5) * 0.99 * 0.998, 2);
}

TEST(NormalizerGainStage, TreatsACallWithoutSamplesAsSilence) {
    const MixerPointer mixer = makeMixer();
    const std::int16_t in = -32768;
    std::int16_t out = 55;
    EXPECT_EQ(ddagcproc_dB(mixer.get(), &in, 0, &out, kStartGain_db), 20.0F);
    EXPECT_EQ(ddagcproc_dB(mixer.get(), &in, -1, &out, kStartGain_db), 20.0F);
    EXPECT_EQ(out, 55);
}

}  // namespace
