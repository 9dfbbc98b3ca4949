// Tests of the measures of differences between the ears, on signals whose figures are known.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "diffuseness.h"
#include "filters.h"
#include "interaural.h"
#include "measured_head.h"
#include "test_signals.h"

namespace response_quality {
namespace {

TEST(InterauralMeasures, InterauralDelayIsTheDifferenceOfTheArrivals) {
    EXPECT_NEAR(interauralDelay_us({impulse(4096, 40), impulse(4096, 52)}), 250.0, 1e-9);
    EXPECT_NEAR(interauralDelay_us({impulse(4096, 52), impulse(4096, 40)}), -250.0, 1e-9);
}

TEST(InterauralMeasures, WoodworthsDelayMatchesValuesWorkedByHand) {
    EXPECT_NEAR(woodworthDelay_us(30.0, 0.0875), 0.0875 / 343.0 * (0.5235988 + 0.5) * 1e6, 1e-3);
    EXPECT_NEAR(woodworthDelay_us(-90.0, 0.0875), -0.0875 / 343.0 * (1.5707963 + 1.0) * 1e6, 1e-3);
    EXPECT_NEAR(woodworthDelay_us(140.0, 0.0875), woodworthDelay_us(40.0, 0.0875), 1e-9);
}

TEST(InterauralMeasures, LevelDifferenceIsTheEnergyRatioOfTheEars) {
    Ears ears{impulse(4096, 40), impulse(4096, 40)};
    for (double& value : ears[1]) value *= 0.5;
    EXPECT_NEAR(levelDifference_db(ears), 6.0206, 1e-4);
    EXPECT_NEAR(levelDifference_db(ears, 500.0), 6.0206, 1e-4);
}

TEST(InterauralMeasures, LowFrequencyDelayIsTheDistanceOfTwoPulses) {
    for (const std::ptrdiff_t samples : {-24, -12, 0, 5, 34}) {
        const Ears pulses{impulse(160, 60), impulse(160, static_cast<std::size_t>(60 + samples))};
        EXPECT_NEAR(lowFrequencyDelay_us(pulses, 48000.0), static_cast<double>(samples) / 0.048, 1e-9);
        EXPECT_NEAR(lowFrequencyDelay_us(pulses, 44100.0), static_cast<double>(samples) / 0.0441, 1e-9);
    }
}

TEST(InterauralMeasures, LowFrequencyDelayIgnoresWhatIsAbove1500Hz) {
    // A stronger arrival in the treble comes 20 samples before the arrival of all frequencies.
    const Signal treble = butterworthHighPass(impulse(400, 40), 8000.0, kRate_hz);
    const Ears ears{impulse(400, 48), sum(impulse(400, 60), treble, 4.0)};
    EXPECT_NEAR(lowFrequencyDelay_us(ears, kRate_hz), 250.0, 2.7);
}

TEST(InterauralMeasures, LevelDifferencesOfACopyAreItsGain) {
    const Signal left = noise(7000, kSeed);
    Signal right = left;
    for (double& value : right) value *= 0.5;
    const LevelDifferences found = levelDifferences({left, right});
    for (const double octave_db : found.octaves_db) EXPECT_NEAR(octave_db, 6.0206, 1e-4) << "seed " << kSeed;
    EXPECT_NEAR(found.speech_db, 6.0206, 1e-4) << "seed " << kSeed;
}

TEST(InterauralMeasures, LevelDifferenceOfSpeechWeighsEachFrequencyAsSpeechDoes) {
    // Sines of 1000 Hz, 6 dB louder at the left ear, and of 4000 Hz, equal at both.
    const Signal low = sine(683);
    const Signal high = sine(2731);
    const LevelDifferences found = levelDifferences({sum(high, low, 2.0), sum(high, low, 1.0)});
    EXPECT_NEAR(found.octaves_db[2], 6.0206, 1e-4);
    EXPECT_NEAR(found.octaves_db[4], 0.0, 1e-4);
    // The density of speech is 10^5.37 / 1000 at 1 kHz and 10^4.56 / 4000 at 4 kHz: 234.4 and 9.1.
    EXPECT_NEAR(found.speech_db, 10.0 * std::log10((4.0 * 234.4 + 9.1) / (234.4 + 9.1)), 0.02);
}

TEST(InterauralMeasures, NearestDirectionIsTheOneWithTheSmallestAngle) {
    const auto direction = [](double x, double y, double z, double mark) {
        return MeasuredDirection{{x, y, z}, {Signal{mark}, Signal{}}};
    };
    const MeasuredHead head{48000.0,
                            {direction(0.0, 0.0, 1.0, 1.0), direction(0.0, 1.0, 0.0, 2.0),
                             direction(0.0, -1.0, 0.0, 3.0), direction(1.0, 0.0, 0.0, 4.0)}};
    EXPECT_EQ(head.nearest(80.0)[0][0], 2.0);
    EXPECT_EQ(head.nearest(-110.0)[0][0], 3.0);
    EXPECT_EQ(head.nearest(-20.0)[0][0], 4.0);
}

TEST(InterauralMeasures, CoherenceErrorIsSmallForADiffuseFieldOnly) {
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
    EXPECT_LT(coherenceError(ears, 0.25), 0.13) << "seed " << kSeed;
    EXPECT_GT(coherenceError({ears[0], ears[0]}, 0.25), 0.5) << "seed " << kSeed;
}

TEST(InterauralMeasures, EarlyCorrelationFindsACopyWithin1ms) {
    const Signal a = noise(8192, kSeed);
    Signal inverted(8192, 0.0);
    for (std::size_t n = 24; n < inverted.size(); ++n) inverted[n] = -0.5 * a[n - 24];
    EXPECT_NEAR(earlyCorrelation({a, a}), 1.0, 1e-9) << "seed " << kSeed;
    EXPECT_NEAR(earlyCorrelation({a, inverted}), 1.0, 0.03) << "seed " << kSeed;
    Signal late(8192, 0.0);
    for (std::size_t n = 480; n < late.size(); ++n) late[n] = a[n - 480];
    EXPECT_LT(earlyCorrelation({a, late}), 0.45) << "seed " << kSeed;
}

TEST(InterauralMeasures, EarlyCorrelationIsThatOfPartlyCommonNoise) {
    const Signal x = noise(8192, kSeed);
    Signal mixed = noise(8192, kSeed + 1);
    for (std::size_t n = 0; n < mixed.size(); ++n) mixed[n] = 0.6 * x[n] + 0.8 * mixed[n];
    EXPECT_NEAR(earlyCorrelation({x, mixed}), 0.6, 0.12) << "seed " << kSeed;
}

TEST(InterauralMeasures, EarlyCorrelationEndsAfter80ms) {
    const Signal a = noise(8192, kSeed);
    Signal b = noise(8192, kSeed + 1);
    std::copy_n(a.begin(), 3840, b.begin());
    EXPECT_GT(earlyCorrelation({a, b}), 0.97) << "seed " << kSeed;
}

TEST(InterauralMeasures, CorrelationDistinguishesEqualInvertedAndIndependentSignals) {
    const Signal a = noise(8192, kSeed);
    Signal b = a;
    for (double& value : b) value *= -2.0;
    EXPECT_NEAR(correlation(a, a), 1.0, 1e-12);
    EXPECT_NEAR(correlation(a, b), -1.0, 1e-12);
    EXPECT_NEAR(correlation(a, b, 300.0, 12000.0), -1.0, 1e-12);
    EXPECT_NEAR(correlation(a, noise(8192, kSeed + 1)), 0.0, 0.05) << "seed " << kSeed;
}

}  // namespace
}  // namespace response_quality
