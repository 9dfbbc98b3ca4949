#include "mixing.h"

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

// Energy of both ears in a band.
double energy(const EarSignals& ears, double low_hz, double high_hz) {
    double sum = 0.0;
    for (const std::vector<double>& ear : ears) {
        const std::vector<double> power = powerSpectrum(ear, kSamples);
        for (std::size_t k = 0; k < power.size(); ++k) {
            const double frequency_hz = static_cast<double>(k) * kRate_hz / kSamples;
            if (frequency_hz >= low_hz && frequency_hz < high_hz) sum += power[k];
        }
    }
    return sum;
}

double octaveEnergy(const EarSignals& ears, double centre_hz) {
    return energy(ears, centre_hz / std::sqrt(2.0), centre_hz * std::sqrt(2.0));
}

EarSignals difference(const EarSignals& a, const EarSignals& b) {
    EarSignals result = a;
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        for (std::size_t n = 0; n < kSamples; ++n) result[ear][n] -= b[ear][n];
    }
    return result;
}

EarSignals sum(const EarSignals& a, const EarSignals& b) {
    EarSignals result = a;
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        for (std::size_t n = 0; n < kSamples; ++n) result[ear][n] += b[ear][n];
    }
    return result;
}

double ratio_db(const EarSignals& direct, const EarSignals& mixed, double octave_hz) {
    return 10.0 *
           std::log10(octaveEnergy(direct, octave_hz) / octaveEnergy(difference(mixed, direct), octave_hz));
}

TEST(IrgenMixing, WantedRatioRisesAbove4kHz) {
    EXPECT_EQ(wantedRatio_db(0.0, 6.0), 6.0);
    EXPECT_EQ(wantedRatio_db(4000.0, 6.0), 6.0);
    EXPECT_NEAR(wantedRatio_db(4000.0 * std::sqrt(2.0), 6.0), 6.5, 1e-12);
    EXPECT_NEAR(wantedRatio_db(8000.0, 6.0), 7.0, 1e-12);
    EXPECT_NEAR(wantedRatio_db(8000.0 * std::sqrt(2.0), 6.0), 8.0, 1e-12);
    EXPECT_NEAR(wantedRatio_db(16000.0, 6.0), 9.0, 1e-12);
    EXPECT_NEAR(wantedRatio_db(24000.0, 6.0), 9.0, 1e-12);
}

TEST(IrgenMixing, EveryOctaveHasTheWantedRatio) {
    for (const double level_db : {5.0, 8.0, 12.0}) {
        const EarSignals mixed = mixComponents(left30(), level_db);
        for (const double octave_hz : {500.0, 1000.0, 2000.0, 4000.0, 8000.0}) {
            // The tolerance: reflections and tail are taken as uncorrelated, and gains move within an octave.
            EXPECT_NEAR(ratio_db(left30().direct, mixed, octave_hz), wantedRatio_db(octave_hz, level_db), 1.0)
                << level_db << " dB, " << octave_hz << " Hz";
        }
    }
}

TEST(IrgenMixing, RoomOfAnyColourGetsTheSameRatio) {
    SourceComponents bright = left30();
    for (EarSignals* part : {&bright.reflections, &bright.tail}) {
        for (std::vector<double>& ear : *part) {
            for (std::size_t n = kSamples - 1; n > 0; --n) ear[n] = 7.0 * (ear[n] - 0.9 * ear[n - 1]);
        }
    }
    const EarSignals mixed = mixComponents(bright, 6.0);
    for (const double octave_hz : {500.0, 1000.0, 2000.0, 4000.0}) {
        EXPECT_NEAR(ratio_db(bright.direct, mixed, octave_hz), 6.0, 1.0) << octave_hz;
    }
}

// The reflections' share when the tail lies apart from them: all of its energy is in one late sample.
double reflectedEnergy(double level_db) {
    SourceComponents parts = left30();
    for (std::vector<double>& ear : parts.tail) {
        ear.assign(kSamples, 0.0);
        ear[kSamples - 1] = 1.0;
    }
    EarSignals early = difference(mixComponents(parts, level_db), parts.direct);
    for (std::vector<double>& ear : early) {
        for (std::size_t n = 6000; n < kSamples; ++n) ear[n] = 0.0;
    }
    return octaveEnergy(early, 1000.0);
}

TEST(IrgenMixing, ReflectionsLoseFourDecibelsAndHoldAtMost35PercentOfTheReverberation) {
    const double in_room = octaveEnergy(left30().reflections, 1000.0);
    EXPECT_NEAR(10.0 * std::log10(reflectedEnergy(-20.0) / in_room), -4.0, 0.1);
    const double allowed = 0.35 * octaveEnergy(left30().direct, 1000.0) / 100.0;
    EXPECT_NEAR(10.0 * std::log10(reflectedEnergy(20.0) / allowed), 0.0, 1.0);
}

TEST(IrgenMixing, SummedLoudspeakersShareOneFilterThatIsRightForTheirSum) {
    SourceComponents other = loudspeakerComponents(head(), kListeningRoom, {-30.0, 102, kSamples});
    // An ear would judge the second loudspeaker alone as four times as reverberant.
    for (std::vector<double>& ear : other.direct) {
        for (double& sample : ear) sample *= 0.5;
    }
    const std::vector<EarSignals> mixed = mixSummed({left30(), other}, 6.0);
    ASSERT_EQ(mixed.size(), 2U);
    const EarSignals direct = sum(left30().direct, other.direct);
    const EarSignals heard = sum(mixed[0], mixed[1]);
    for (const double octave_hz : {500.0, 1000.0, 2000.0, 4000.0}) {
        EXPECT_NEAR(ratio_db(direct, heard, octave_hz), 6.0, 1.0) << octave_hz;
    }
    EXPECT_GT(ratio_db(left30().direct, mixed[0], 1000.0), ratio_db(other.direct, mixed[1], 1000.0) + 3.0);
}

TEST(IrgenMixing, BroadbandMixHasItsRatioOverAllEnergyAbove300Hz) {
    for (const double wanted_db : {8.0, 20.0}) {
        const EarSignals mixed = mixBroadband(left30(), wanted_db);
        const EarSignals room = difference(mixed, left30().direct);
        const double measured_db =
            10.0 * std::log10(energy(left30().direct, 300.0, 24000.0) / energy(room, 300.0, 24000.0));
        EXPECT_NEAR(measured_db, wanted_db, 0.3);
    }
}

}  // namespace
