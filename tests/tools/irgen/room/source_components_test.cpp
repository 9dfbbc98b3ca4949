#include "source_components.h"

#include <gtest/gtest.h>

#include <cmath>

#include "fft.h"
#include "tools/irgen/heads/synthetic_head.h"

namespace {

using namespace sonivex_irgen;

constexpr std::size_t kSamples = 8192;

const HeadModel& head() {
    static const HeadModel model(directionalTransfers(irgen_test::syntheticHead()), 0.0875);
    return model;
}

const SourceComponents& left30() {
    static const SourceComponents parts =
        loudspeakerComponents(head(), kListeningRoom, {30.0, 101, kSamples});
    return parts;
}

TEST(IrgenSourceComponents, ReverberationIsAttenuatedInTheBass) {
    for (const EarSignals* part : {&left30().reflections, &left30().tail}) {
        const std::vector<double> power = powerSpectrum((*part)[0], kSamples);
        double bass = 0.0;
        double middle = 0.0;
        for (std::size_t k = 4; k < 12; ++k) bass += power[k] / 8.0;        // 23 to 64 Hz
        for (std::size_t k = 85; k < 342; ++k) middle += power[k] / 257.0;  // 500 to 2000 Hz
        EXPECT_LT(10.0 * std::log10(bass / middle), -15.0);
    }
}

TEST(IrgenSourceComponents, LowFrequencyChannelReachesBothEarsAsAUnitSample) {
    const SourceComponents parts = lowFrequencyComponents(head(), kListeningRoom, {0.0, 1090, kSamples});
    for (const std::vector<double>& ear : parts.direct) {
        for (std::size_t n = 0; n < kSamples; ++n) ASSERT_EQ(ear[n], n == 40 ? 1.0 : 0.0) << n;
    }
}

TEST(IrgenSourceComponents, FarEarIsTenDecibelsDownAndOnTimeIfOneEarHearsBothResponses) {
    SourceRecipe recipe{30.0, 101, kSamples};
    const SourceComponents apart = loudspeakerComponents(head(), kListeningRoom, recipe);
    recipe.are_both_heard_by_one_ear = true;
    const SourceComponents together = loudspeakerComponents(head(), kListeningRoom, recipe);
    EXPECT_EQ(together.direct[0], apart.direct[0]);
    EXPECT_EQ(together.reflections, apart.reflections);
    EXPECT_EQ(together.tail, apart.tail);
    const auto arrivals = head().directArrivals(horizontalDirection(30.0), kOrigin_samples);
    const auto later = static_cast<std::size_t>(arrivals[1] - arrivals[0]);
    ASSERT_GT(later, 0U);
    for (std::size_t n = 0; n + later < kSamples; ++n) {
        ASSERT_DOUBLE_EQ(together.direct[1][n], 0.3 * apart.direct[1][n + later]) << n;
    }
}

TEST(IrgenSourceComponents, CopyMakesTheEarsEqual) {
    SourceComponents parts = left30();
    copyLeftToRight(parts);
    EXPECT_EQ(parts.direct[0], parts.direct[1]);
    EXPECT_EQ(parts.reflections[0], parts.reflections[1]);
    EXPECT_EQ(parts.tail[0], parts.tail[1]);
    EXPECT_EQ(parts.tail[0], left30().tail[0]);
}

}  // namespace
