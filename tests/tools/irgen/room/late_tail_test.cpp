#include "late_tail.h"

#include <gtest/gtest.h>

#include <cmath>

#include "constants.h"
#include "fft.h"

namespace {

using namespace sonivex_irgen;

constexpr std::size_t kSamples = 13000;

double energy(const std::vector<double>& signal, std::size_t from, std::size_t to) {
    double sum = 0.0;
    for (std::size_t n = from; n < to; ++n) sum += signal[n] * signal[n];
    return sum;
}

TEST(IrgenLateTail, EarsAreCoherentInTheBassButNotInTheTreble) {
    EXPECT_NEAR(earCoherence(0.0), 1.0, 1e-12);
    // Worked by hand at 500 Hz: k d = 1.3739; sin(3.0225) / 3.0225 = 0.03930; sqrt(1 + 0.6869^4) = 1.1056.
    EXPECT_NEAR(earCoherence(500.0), 0.03930 / 1.1056, 1e-4);
    EXPECT_LT(std::abs(earCoherence(4000.0)), 0.01);
}

TEST(IrgenLateTail, IsSilentUntilTheDirectSound) {
    for (const std::vector<double>& ear : binauralTail(101, roomDecay(kListeningRoom), kSamples)) {
        ASSERT_EQ(ear.size(), kSamples);
        for (std::size_t n = 0; n <= 40; ++n) ASSERT_EQ(ear[n], 0.0) << n;
        EXPECT_NE(ear[41], 0.0);
    }
}

TEST(IrgenLateTail, DecaysBySixtyDecibelsInTheReverberationTime) {
    TailDecay decay{};
    decay.reverberation_times_s.fill(0.2);
    decay.mixing_s = 0.005;
    // Energies of 10 ms that are 100 ms apart differ by 30 dB; seeds 1 to 20 are averaged.
    double early = 0.0;
    double late = 0.0;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        const std::vector<double> tail = monoTail(seed, decay, kSamples, 48000.0);
        early += energy(tail, 1000, 1480);
        late += energy(tail, 5800, 6280);
    }
    EXPECT_NEAR(10.0 * std::log10(early / late), 30.0, 0.5);
}

TEST(IrgenLateTail, RisesLinearlyUntilTheMixingTime) {
    TailDecay decay{};
    decay.reverberation_times_s.fill(1000.0);
    decay.mixing_s = 0.1;  // 4800 samples from sample 40 on
    double quarter = 0.0;
    double full = 0.0;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        const std::vector<double> tail = monoTail(seed, decay, kSamples, 48000.0);
        quarter += energy(tail, 1140, 1340);
        full += energy(tail, 6000, 6200);
    }
    EXPECT_NEAR(std::sqrt(quarter / full), 0.25, 0.01);
}

TEST(IrgenLateTail, InterauralCoherenceMatchesADiffuseField) {
    TailDecay decay{};
    decay.reverberation_times_s.fill(3.0);
    decay.mixing_s = 0.005;
    constexpr std::size_t kSize = 16384;
    for (const double centre_hz : {250.0, 800.0, 4000.0}) {
        double cross = 0.0;
        double left = 0.0;
        double right = 0.0;
        for (std::uint64_t seed = 1; seed <= 20; ++seed) {
            const EarSignals ears = binauralTail(seed, decay, kSamples);
            const std::vector<Complex> l = realSpectrum(ears[0], kSize);
            const std::vector<Complex> r = realSpectrum(ears[1], kSize);
            const auto first = static_cast<std::size_t>(centre_hz * 0.95 * kSize / kRate_hz);
            const auto last = static_cast<std::size_t>(centre_hz * 1.05 * kSize / kRate_hz);
            for (std::size_t k = first; k <= last; ++k) {
                cross += l[k].re * r[k].re + l[k].im * r[k].im;
                left += squaredMagnitude(l[k]);
                right += squaredMagnitude(r[k]);
            }
        }
        EXPECT_NEAR(cross / std::sqrt(left * right), earCoherence(centre_hz), 0.1) << centre_hz << " Hz";
    }
}

TEST(IrgenLateTail, RoomsDecayFasterInTheTrebleAndMixAccordingToTheirVolume) {
    const TailDecay decay = roomDecay(kListeningRoom);
    EXPECT_NEAR(decay.reverberation_times_s[0], 0.2875, 1e-12);
    EXPECT_NEAR(decay.reverberation_times_s[3], 0.25, 1e-12);
    EXPECT_NEAR(decay.reverberation_times_s[7], 0.175, 1e-12);
    EXPECT_NEAR(decay.mixing_s, 0.008632, 1e-6);  // sqrt(6.0 * 4.6 * 2.7) ms
}

}  // namespace
