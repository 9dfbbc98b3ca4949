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

// Energy of both ears from 300 Hz up.
double energyAbove300Hz(const EarSignals& ears) {
    double sum = 0.0;
    for (const std::vector<double>& ear : ears) {
        const std::vector<double> power = powerSpectrum(ear, kSamples);
        for (std::size_t k = 52; k < power.size(); ++k) sum += power[k];  // 52 * 5.86 Hz = 304.7 Hz
    }
    return sum;
}

EarSignals difference(const EarSignals& a, const EarSignals& b) {
    EarSignals result = a;
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        for (std::size_t n = 0; n < kSamples; ++n) result[ear][n] -= b[ear][n];
    }
    return result;
}

TEST(IrgenSourceComponents, MixHasTheRequestedDirectToReverberantRatio) {
    for (const double ratio_db : {4.5, 8.0, 14.0, 20.0}) {
        const EarSignals mixed = mixComponents(left30(), ratio_db);
        const EarSignals room = difference(mixed, left30().direct);
        const double measured_db =
            10.0 * std::log10(energyAbove300Hz(left30().direct) / energyAbove300Hz(room));
        // The mix assumes that reflections and tail are uncorrelated; hence the tolerance.
        EXPECT_NEAR(measured_db, ratio_db, 0.3);
    }
}

TEST(IrgenSourceComponents, ReflectionsLoseFourDecibelsAndHoldAtMostHalfOfTheReverberantEnergy) {
    // The gain of the reflections is measured where the tail is practically silent.
    SourceComponents parts = left30();
    for (std::vector<double>& ear : parts.tail) {
        for (double& sample : ear) sample *= 1e-9;
        ear[kSamples - 1] = 1.0;  // all of the tail's energy, away from the reflections
    }
    const auto gain_at = [&](double ratio_db) {
        const EarSignals room = difference(mixComponents(parts, ratio_db), parts.direct);
        double product = 0.0;
        double square = 0.0;
        for (std::size_t n = 0; n < 4000; ++n) {
            product += room[0][n] * parts.reflections[0][n];
            square += parts.reflections[0][n] * parts.reflections[0][n];
        }
        return product / square;
    };
    EXPECT_NEAR(20.0 * std::log10(gain_at(-10.0)), -4.0, 1e-3);
    const double half = 0.5 * energyAbove300Hz(parts.direct) / 100.0;
    EXPECT_NEAR(gain_at(20.0), std::sqrt(half / energyAbove300Hz(parts.reflections)), 1e-4);
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

TEST(IrgenSourceComponents, CopyMakesTheEarsEqual) {
    SourceComponents parts = left30();
    copyLeftToRight(parts);
    EXPECT_EQ(parts.direct[0], parts.direct[1]);
    EXPECT_EQ(parts.reflections[0], parts.reflections[1]);
    EXPECT_EQ(parts.tail[0], parts.tail[1]);
    EXPECT_EQ(parts.tail[0], left30().tail[0]);
}

}  // namespace
