// Tests of the measures themselves, on signals whose figures are known.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "decay.h"
#include "diffuseness.h"
#include "filters.h"
#include "interaural.h"
#include "spectrum.h"
#include "support/signals/signals.h"
#include "tone.h"

namespace response_quality {
namespace {

constexpr std::uint64_t kSeed = 7;

Signal noise(std::size_t size, std::uint64_t seed) {
    const std::vector<float> floats = test::noiseFloats(seed, size);
    return {floats.begin(), floats.end()};
}

Signal impulse(std::size_t size, std::size_t at) {
    Signal signal(size, 0.0);
    signal[at] = 1.0;
    return signal;
}

// A unit direct sound at sample 40, with decaying noise from 3 ms after it that has 8 dB less energy.
Ears syntheticRoom(double reverberation_time_s) {
    Ears ears{noise(13000, kSeed), noise(13000, kSeed + 1)};
    for (Signal& ear : ears) {
        double energy = 0.0;
        for (std::size_t n = 0; n < ear.size(); ++n) {
            const double t_s = (static_cast<double>(n) - 40.0) / kRate_hz;
            ear[n] *= t_s < 0.003 ? 0.0 : std::pow(10.0, -3.0 * t_s / reverberation_time_s);
            energy += ear[n] * ear[n];
        }
        for (double& value : ear) value *= std::sqrt(std::pow(10.0, -0.8) / energy);
        ear[40] = 1.0;
    }
    return ears;
}

TEST(QualityMeasures, TransformMatchesItsDefiningSum) {
    const Signal signal = noise(32, kSeed);
    const Spectrum found = spectrumOf(signal, 32);
    for (std::size_t k = 0; k < found.size(); ++k) {
        std::complex<double> sum;
        for (std::size_t n = 0; n < signal.size(); ++n) {
            sum += signal[n] * std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(k * n) / 32.0);
        }
        EXPECT_NEAR(std::abs(found[k] - sum), 0.0, 1e-12) << "seed " << kSeed << ", bin " << k;
    }
}

TEST(QualityMeasures, ConvolutionMatchesItsDefiningSum) {
    const Signal a = noise(21, kSeed);
    const Signal b = noise(14, kSeed + 1);
    const Signal found = convolve(a, b);
    ASSERT_EQ(found.size(), 34u);
    for (std::size_t n = 0; n < found.size(); ++n) {
        double sum = 0.0;
        for (std::size_t i = 0; i < a.size(); ++i) {
            if (i <= n && n - i < b.size()) sum += a[i] * b[n - i];
        }
        EXPECT_NEAR(found[n], sum, 1e-12) << "seed " << kSeed;
    }
}

TEST(QualityMeasures, OversamplingPassesThroughTheSamples) {
    const Signal signal = noise(64, kSeed);
    const Signal fine = oversample(signal, 8);
    ASSERT_EQ(fine.size(), 512u);
    for (std::size_t n = 0; n < signal.size(); ++n)
        EXPECT_NEAR(fine[8 * n], signal[n], 1e-12) << "seed " << kSeed;
}

TEST(QualityMeasures, OversamplingInterpolatesASineBetweenTheSamples) {
    Signal sine(64);
    const auto at = [](double n) { return std::sin(2.0 * std::numbers::pi * 5.0 * n / 64.0); };
    for (std::size_t n = 0; n < sine.size(); ++n) sine[n] = at(static_cast<double>(n));
    const Signal fine = oversample(sine, 8);
    for (std::size_t n = 0; n < fine.size(); ++n)
        EXPECT_NEAR(fine[n], at(static_cast<double>(n) / 8.0), 1e-12);
}

TEST(QualityMeasures, OctaveBandIsThreeDecibelsDownAtBothEdges) {
    const Signal power = powerOf(octaveBand(impulse(16384, 0), 1000.0, kRate_hz), 16384);
    const auto level_db = [&power](double frequency_hz) {
        return 10.0 *
               std::log10(power[static_cast<std::size_t>(std::lround(frequency_hz / kRate_hz * 16384.0))]);
    };
    EXPECT_NEAR(level_db(1000.0), -0.53, 0.1);  // 10 log10 of (1 + 2^-4)^-2
    EXPECT_NEAR(level_db(707.1), -3.02, 0.2);
    EXPECT_NEAR(level_db(1414.2), -3.02, 0.2);
    EXPECT_LT(level_db(250.0), -35.0);
    EXPECT_LT(level_db(4000.0), -35.0);
}

TEST(QualityMeasures, KCurveMatchesTheTabulatedCoefficientsAt48kHz) {
    // Response of the tabulated coefficients at half the sample rate, where z is -1; worked by hand.
    const double shelf = (1.53512485958697 + 2.69169618940638 + 1.19839281085285) /
                         (1.0 + 1.69065929318241 + 0.73248077421585);
    const double bass_cut = 4.0 / (1.0 + 1.99004745483398 + 0.99007225036621);
    EXPECT_NEAR(kCurve(24000.0, 48000.0), shelf * shelf * bass_cut * bass_cut, 1e-9);
    // The calibration of ITU-R BS.1770: the curve is at +0.691 dB at 997 Hz.
    EXPECT_NEAR(10.0 * std::log10(kCurve(997.0, 48000.0)), 0.691, 0.01);
}

TEST(QualityMeasures, InterauralDelayIsTheDifferenceOfTheArrivals) {
    EXPECT_NEAR(interauralDelay_us({impulse(4096, 40), impulse(4096, 52)}), 250.0, 1e-9);
    EXPECT_NEAR(interauralDelay_us({impulse(4096, 52), impulse(4096, 40)}), -250.0, 1e-9);
}

TEST(QualityMeasures, WoodworthsDelayMatchesValuesWorkedByHand) {
    EXPECT_NEAR(woodworthDelay_us(30.0, 0.0875), 0.0875 / 343.0 * (0.5235988 + 0.5) * 1e6, 1e-3);
    EXPECT_NEAR(woodworthDelay_us(-90.0, 0.0875), -0.0875 / 343.0 * (1.5707963 + 1.0) * 1e6, 1e-3);
    EXPECT_NEAR(woodworthDelay_us(140.0, 0.0875), woodworthDelay_us(40.0, 0.0875), 1e-9);
}

TEST(QualityMeasures, LevelDifferenceIsTheEnergyRatioOfTheEars) {
    Ears ears{impulse(4096, 40), impulse(4096, 40)};
    for (double& value : ears[1]) value *= 0.5;
    EXPECT_NEAR(levelDifference_db(ears), 6.0206, 1e-4);
    EXPECT_NEAR(levelDifference_db(ears, 500.0), 6.0206, 1e-4);
}

TEST(QualityMeasures, RatioAndReverberationTimeMatchTheSyntheticRoom) {
    for (const double time_s : {0.15, 0.27}) {
        SCOPED_TRACE("seed " + std::to_string(kSeed) + ", time " + std::to_string(time_s));
        const Ears ears = syntheticRoom(time_s);
        EXPECT_NEAR(directToReverberant_db(ears), 8.0, 0.3);
        for (const double octave_hz : {1000.0, 2000.0, 4000.0, 8000.0}) {
            EXPECT_NEAR(reverberationTime_s(ears, octave_hz, 0.25), time_s, 0.1 * time_s) << octave_hz;
        }
        EXPECT_LT(tailUnevenness_db(ears, 0.25), 1.0);
        EXPECT_LT(tailRise_db(ears, 0.25), 0.0);
    }
}

TEST(QualityMeasures, ReverberationTimeDoesNotDependOnTheTableLength) {
    Ears ears = syntheticRoom(0.27);
    for (Signal& ear : ears) ear.resize(7000);
    EXPECT_NEAR(reverberationTime_s(ears, 2000.0, 0.3), 0.27, 0.1 * 0.27) << "seed " << kSeed;
}

TEST(QualityMeasures, StrongestReflectionIsTheEchoAfterTheDirectSound) {
    Ears ears{impulse(4096, 40), impulse(4096, 52)};
    ears[0][40 + 400] = 0.25;
    ears[1][52 + 400] = 0.25;
    ears[0][40 + 800] = 1.0;  // later than 15 ms
    EXPECT_NEAR(strongestReflection_db(ears), -12.04, 0.1);
}

TEST(QualityMeasures, CoherenceErrorIsSmallForADiffuseFieldOnly) {
    // Two noises are mixed in the frequency domain so that their coherence is that of a diffuse field.
    const std::size_t points = 16384;
    Spectrum x(points);
    Spectrum y(points);
    const Signal first = noise(points, kSeed);
    const Signal second = noise(points, kSeed + 1);
    for (std::size_t n = 0; n < points; ++n) x[n] = first[n];
    for (std::size_t n = 0; n < points; ++n) y[n] = second[n];
    transform(x, -1);
    transform(y, -1);
    Spectrum left(points);
    Spectrum right(points);
    for (std::size_t k = 1; k < points; ++k) {
        const double frequency_hz = static_cast<double>(std::min(k, points - k)) * kRate_hz / points;
        const double common = std::sqrt((1.0 + diffuseCoherence(frequency_hz)) / 2.0);
        const double different = std::sqrt((1.0 - diffuseCoherence(frequency_hz)) / 2.0);
        left[k] = common * x[k] + different * y[k];
        right[k] = common * x[k] - different * y[k];
    }
    transform(left, 1);
    transform(right, 1);
    Ears ears{Signal(13000), Signal(13000)};
    for (std::size_t n = 40; n < 13000; ++n) {
        const double decay = std::pow(10.0, -3.0 * static_cast<double>(n) / kRate_hz / 0.25);
        ears[0][n] = decay * left[n].real();
        ears[1][n] = decay * right[n].real();
    }
    EXPECT_LT(coherenceError(ears, 0.25, 0.25), 0.13) << "seed " << kSeed;
    EXPECT_GT(coherenceError({ears[0], ears[0]}, 0.25, 0.25), 0.5) << "seed " << kSeed;
}

TEST(QualityMeasures, CorrelationDistinguishesEqualInvertedAndIndependentSignals) {
    const Signal a = noise(8192, kSeed);
    Signal b = a;
    for (double& value : b) value *= -2.0;
    EXPECT_NEAR(correlation(a, a), 1.0, 1e-12);
    EXPECT_NEAR(correlation(a, b), -1.0, 1e-12);
    EXPECT_NEAR(correlation(a, b, 300.0, 12000.0), -1.0, 1e-12);
    EXPECT_NEAR(correlation(a, noise(8192, kSeed + 1)), 0.0, 0.05) << "seed " << kSeed;
}

TEST(QualityMeasures, FlatResponseHasNoColourBassLiftOrLoudnessChange) {
    const Signal power = responsePower(impulse(4096, 40));
    EXPECT_NEAR(worst(colour_db(power, 80.0, 12500.0)), 0.0, 1e-9);
    EXPECT_EQ(colour_db(power, 80.0, 12500.0).size(), 23u);
    EXPECT_EQ(colour_db(power, 250.0, 12500.0).size(), 18u);
    EXPECT_NEAR(bassLift_db(power, kRate_hz), 0.0, 1e-9);
    EXPECT_NEAR(loudnessChange_lu(power, Programme::kPink), 0.0, 1e-9);
    EXPECT_NEAR(loudnessChange_lu(power, Programme::kMusic), 0.0, 1e-9);
}

TEST(QualityMeasures, TiltedResponseShowsItsTiltAsColour) {
    // The power rises by 3 dB per octave, so each third octave is 1 dB above the one below.
    Signal power(16385);
    for (std::size_t k = 0; k < power.size(); ++k) power[k] = static_cast<double>(k);
    const Signal colour = colour_db(power, 400.0, 2500.0);
    ASSERT_EQ(colour.size(), 9u);
    for (std::size_t i = 0; i < colour.size(); ++i) EXPECT_NEAR(colour[i], static_cast<double>(i) - 4.0, 0.1);
    EXPECT_NEAR(rms(colour), std::sqrt(60.0 / 9.0), 0.1);
    EXPECT_NEAR(worst(colour), 4.0, 0.1);
}

TEST(QualityMeasures, MusicWeightsTrebleLessThanPinkNoiseDoes) {
    Signal power(16385, 1.0);
    for (std::size_t k = 0; k < power.size(); ++k) {
        if (static_cast<double>(k) * kRate_hz / 32768.0 > 4000.0) power[k] = 4.0;
    }
    EXPECT_LT(loudnessChange_lu(power, Programme::kMusic), loudnessChange_lu(power, Programme::kPink) - 1.0);
}

}  // namespace
}  // namespace response_quality
