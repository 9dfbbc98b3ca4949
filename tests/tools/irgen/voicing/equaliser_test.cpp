#include "equaliser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "biquad.h"
#include "fft.h"
#include "noise.h"

namespace {

using namespace sonivex_irgen;

constexpr std::size_t kSamples = 8192;

// A source with coloured direct sound in a faint room of the same colour.
SourceComponents coloured(std::size_t arrival, std::uint64_t seed) {
    SourceComponents parts;
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        parts.direct[ear].assign(kSamples, 0.0);
        parts.direct[ear][arrival + 7 * ear] = 1.0;
        parts.reflections[ear].assign(kSamples, 0.0);
        parts.reflections[ear][400 + arrival] = 0.3;
        parts.tail[ear] = gaussianNoise(seed + ear, kSamples);
        for (std::size_t n = 0; n < kSamples; ++n) {
            parts.tail[ear][n] *= n < 100 ? 0.0 : std::exp(-static_cast<double>(n) / 1000.0);
        }
        for (EarSignals* part : {&parts.direct, &parts.reflections, &parts.tail}) {
            applyFilter(peak({1000.0, 0.7, kRate_hz}, 6.0), (*part)[ear]);
            applyFilter(highShelf({5000.0, 0.7, kRate_hz}, -5.0), (*part)[ear]);
        }
    }
    return parts;
}

double bandLevel_db(const std::vector<double>& power, double centre_hz) {
    double sum = 0.0;
    double bins = 0.0;
    for (std::size_t k = 0; k < power.size(); ++k) {
        const double frequency_hz = static_cast<double>(k) * kRate_hz / 32768.0;
        if (frequency_hz < centre_hz * std::pow(2.0, -1.0 / 6.0) ||
            frequency_hz > centre_hz * std::pow(2.0, 1.0 / 6.0)) {
            continue;
        }
        sum += power[k];
        bins += 1.0;
    }
    return 10.0 * std::log10(sum / bins);
}

TEST(IrgenEqualiser, MakesTheProgrammeFlatInThirdOctaves) {
    for (const Programme programme :
         {Programme::kMusicPair, Programme::kOwnChannel, Programme::kOneChannel}) {
        const EqualiserPlan plan{programme, 0.0, 1.0 / 3.0, 3, 1.0, 10.0};
        // An ear that hears both responses of a channel hears them at the same time.
        const std::size_t second_arrival = programme == Programme::kOwnChannel ? 34 : 41;
        const EqualisedGroup group = equaliseGroup({coloured(34, 1), coloured(second_arrival, 5)}, plan);
        const std::vector<double> power = programmePower(group.sources, programme);
        const double reference_db = bandLevel_db(power, 1000.0);
        for (const double centre_hz : {100.0, 250.0, 500.0, 2000.0, 4000.0, 8000.0, 12500.0}) {
            EXPECT_NEAR(bandLevel_db(power, centre_hz) - reference_db, 0.0, 1.0)
                << centre_hz << " Hz, programme " << static_cast<int>(programme);
        }
    }
}

TEST(IrgenEqualiser, MoreRoundsDoNotRaiseRipples) {
    const auto ripple_db = [](int rounds) {
        const EqualiserPlan plan{Programme::kMusicPair, 0.0, 1.0 / 3.0, rounds, 1.0, 10.0};
        const EqualisedGroup group = equaliseGroup({coloured(34, 1), coloured(41, 5)}, plan);
        const std::vector<double> power = programmePower(group.sources, Programme::kMusicPair);
        std::vector<double> levels_db;
        for (int band = -9; band <= 9; ++band) {
            levels_db.push_back(bandLevel_db(power, 1000.0 * std::pow(2.0, band / 3.0)));
        }
        const auto [lowest, highest] = std::minmax_element(levels_db.begin(), levels_db.end());
        return *highest - *lowest;
    };
    EXPECT_LT(ripple_db(10), ripple_db(3) + 0.1);
}

TEST(IrgenEqualiser, PreservesTheLevelDifferenceBetweenTheEars) {
    // The right ear hears everything that the left ear hears, at half the amplitude.
    SourceComponents halved = coloured(34, 1);
    for (EarSignals* part : {&halved.direct, &halved.reflections, &halved.tail}) {
        (*part)[1] = (*part)[0];
        for (double& sample : (*part)[1]) sample *= 0.5;
    }
    const EqualiserPlan plan{Programme::kOneChannel, 0.0, 0.5, 1, 0.7, 10.0};
    const EqualisedGroup group = equaliseGroup({halved}, plan);
    const std::vector<Complex> left = realSpectrum(group.sources[0][0], kSamples);
    const std::vector<Complex> right = realSpectrum(group.sources[0][1], kSamples);
    for (std::size_t k = 50; k < 4000; k += 50) {
        ASSERT_NEAR(squaredMagnitude(left[k]) / squaredMagnitude(right[k]), 4.0, 1e-9) << k;
    }
}

TEST(IrgenEqualiser, LimitsItsGainToTwelveDecibels) {
    SourceComponents parts = coloured(34, 1);
    for (EarSignals* part : {&parts.direct, &parts.reflections, &parts.tail}) {
        for (std::vector<double>& ear : *part) applyFilter(peak({6000.0, 0.7, kRate_hz}, -30.0), ear);
    }
    const EqualisedGroup group =
        equaliseGroup({parts}, {Programme::kOneChannel, 0.0, 1.0 / 3.0, 3, 1.0, 10.0});
    EXPECT_EQ(group.largest_gain_db, 12.0);
}

TEST(IrgenEqualiser, AirShelfRisesBetween11And14kHz) {
    EXPECT_EQ(airShelf_db(11000.0, 2.5), 0.0);
    EXPECT_NEAR(airShelf_db(std::sqrt(11000.0 * 14000.0), 2.5), 1.25, 1e-12);
    EXPECT_NEAR(airShelf_db(14000.0, 2.5), 2.5, 1e-12);
    EXPECT_NEAR(airShelf_db(20000.0, 2.5), 2.5, 1e-12);
}

TEST(IrgenProgrammePower, SumsAPairByTheCoherenceOfItsChannels) {
    EXPECT_NEAR(musicCoherence(20.0), 0.95, 1e-12);
    EXPECT_NEAR(musicCoherence(std::sqrt(150.0 * 3000.0)), 0.65, 1e-12);
    EXPECT_NEAR(musicCoherence(20000.0), 0.35, 1e-12);

    // Each ear hears one loudspeaker with gain 1 and the other with gain 0.5, without delay.
    EarSignals left;
    left[0] = {1.0};
    left[1] = {0.5};
    EarSignals right;
    right[0] = {0.5};
    right[1] = {1.0};
    EXPECT_NEAR(programmePower({left, right}, Programme::kMusicPair)[16384], 1.25 + 0.35, 1e-12);
    EXPECT_NEAR(programmePower({left, right}, Programme::kMusicPair)[10], 1.25 + 0.95, 1e-12);
    EXPECT_NEAR(programmePower({left, right}, Programme::kOwnChannel)[100], 2.25, 1e-12);
    EXPECT_NEAR(programmePower({left, right}, Programme::kOneChannel)[100], 1.25, 1e-12);
}

}  // namespace
