#include "waveform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/signals/signals.h"

namespace {

using sonivex_tool::Extent;
using sonivex_tool::WaveformMeter;

TEST(Waveforms, KeepEachFrameOfAShortSound) {
    WaveformMeter meter(8);
    const std::vector<float> samples{0.1F, -0.2F, 0.3F, 0.4F};
    meter.add(samples, 2);
    ASSERT_EQ(meter.extents().size(), 2U);
    EXPECT_EQ(meter.stretch_frames(), 1);
    EXPECT_EQ(meter.extents()[0].low, -0.2F);
    EXPECT_EQ(meter.extents()[0].high, 0.1F);
    EXPECT_EQ(meter.extents()[1].low, 0.3F);
}

TEST(Waveforms, LoseNoExtremeOfALongSoundHoweverItIsCut) {
    constexpr std::size_t kFrames = 10007;
    const std::vector<float> samples = test::noiseFloats(5, kFrames);
    for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, std::size_t{480}, kFrames}) {
        WaveformMeter meter(64);
        for (std::size_t first = 0; first < kFrames; first += piece)
            meter.add(std::span(samples).subspan(first, std::min(piece, kFrames - first)), 1);
        const auto stretch = static_cast<std::size_t>(meter.stretch_frames());
        ASSERT_EQ(stretch, 256U);
        ASSERT_EQ(meter.extents().size(), (kFrames + stretch - 1) / stretch);
        for (std::size_t i = 0; i < meter.extents().size(); ++i) {
            const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(i * stretch);
            const auto end =
                samples.begin() + static_cast<std::ptrdiff_t>(std::min((i + 1) * stretch, kFrames));
            EXPECT_EQ(meter.extents()[i].low, *std::min_element(begin, end)) << i;
            EXPECT_EQ(meter.extents()[i].high, *std::max_element(begin, end)) << i;
        }
    }
}

TEST(Waveforms, OfNothingAreEmpty) {
    WaveformMeter meter(8);
    meter.add({}, 2);
    EXPECT_TRUE(meter.extents().empty());
}

}  // namespace
