#include "source_measures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "support/signals/signals.h"

namespace {

using sonivex_tool::kOctaves_hz;
using sonivex_tool::measureRatios;
using sonivex_tool::measureSource;
using sonivex_tool::OctaveMeasures;
using sonivex_tool::SourceMeasures;

constexpr int kRate_hz = 48000;
constexpr size_t kLength = 8000;

using Signal = std::vector<double>;

struct Pulse {
    size_t place;
    double gain;
};

Signal pulses(const std::vector<Pulse>& all) {
    Signal signal(kLength, 0.0);
    for (const Pulse& pulse : all) signal[pulse.place] += pulse.gain;
    return signal;
}

double us(double samples) {
    return samples / kRate_hz * 1e6;
}

// Adds a tone burst under a Hann window, of `length` samples. Its energy is 3/16 of amplitude^2 * length.
void addBurst(Signal& signal, double frequency_hz, double amplitude, size_t from, size_t length) {
    for (size_t n = 0; n < length; ++n) {
        const double place = static_cast<double>(n) / static_cast<double>(length);
        const double window = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * place);
        signal[from + n] +=
            amplitude * window *
            std::sin(2.0 * std::numbers::pi * frequency_hz * static_cast<double>(n) / kRate_hz);
    }
}

TEST(SourceMeasures, FindTheDelayBetweenTwoPulsesToTheSample) {
    for (const int samples : {-36, -1, 0, 5, 31, 48}) {
        SCOPED_TRACE(samples);
        const auto right = static_cast<size_t>(100 + samples);
        const SourceMeasures figures = measureSource(pulses({{100, 1.0}}), pulses({{right, 0.25}}), kRate_hz);
        ASSERT_TRUE(figures.delay_us);
        EXPECT_NEAR(*figures.delay_us, us(samples), 1e-9);
    }
}

TEST(SourceMeasures, ReadTheDelayInEighthsOfASample) {
    // Neighbouring pulses of 5/8 and 3/8 delay low frequencies by three eighths of a sample.
    const SourceMeasures figures =
        measureSource(pulses({{100, 1.0}}), pulses({{110, 0.625}, {111, 0.375}}), kRate_hz);
    EXPECT_NEAR(*figures.delay_us, us(10.375), 1e-9);
}

TEST(SourceMeasures, TakeTheDelayFromLowFrequenciesOfTheDirectSound) {
    Signal left = pulses({{100, 1.0}});
    Signal right = pulses({{112, 1.0}});
    // Above 1.5 kHz and after the direct sound, the ears suggest other delays.
    addBurst(left, 4000.0, 0.4, 100, 100);
    addBurst(right, 4000.0, 0.4, 115, 100);
    left[1000] = 0.9;
    right[990] = 0.9;
    const SourceMeasures figures = measureSource(left, right, kRate_hz);
    EXPECT_NEAR(*figures.delay_us, us(12.0), us(0.125));
}

TEST(SourceMeasures, WeightTheDelayByTheSpectrumOfSpeech) {
    // 12 samples of delay at 500 Hz, none at 1200 Hz. Near their tops, the two correlations a cos(2 pi f lag)
    // are parabolas with the bends a f^2, so the lag is the mean of both, weighted by a f^2. The density of
    // speech is 12.6 dB higher at 500 Hz, 18 times: 12 * 18 * 500^2 / (18 * 500^2 + 1200^2) = 9.1. Without
    // the weight it would be 1.8.
    const auto ear = [](size_t low_from, size_t high_from) {
        Signal signal(kLength, 0.0);
        addBurst(signal, 500.0, 0.5, low_from, 96);
        addBurst(signal, 1200.0, 0.5, high_from, 96);
        return signal;
    };
    const SourceMeasures figures = measureSource(ear(104, 110), ear(116, 110), kRate_hz);
    EXPECT_NEAR(*figures.delay_us, us(9.1), us(2.0));
}

TEST(SourceMeasures, GiveTheLevelDifferenceOfAScaledCopyInEveryOctave) {
    const std::vector<float> noise = test::noiseFloats(3, kLength);
    const Signal left(noise.begin(), noise.end());
    Signal right = left;
    for (double& gain : right) gain *= -0.5;
    const SourceMeasures figures = measureSource(left, right, kRate_hz);
    EXPECT_NEAR(*figures.level_difference.direct_db, 6.0206, 1e-4);
    EXPECT_NEAR(*figures.level_difference.whole_db, 6.0206, 1e-4);
    for (const OctaveMeasures& octave : figures.octaves) {
        EXPECT_NEAR(*octave.level_difference.direct_db, 6.0206, 1e-4);
        EXPECT_NEAR(*octave.level_difference.whole_db, 6.0206, 1e-4);
    }
}

TEST(SourceMeasures, SwappingTheEarsSwapsTheSigns) {
    const Signal near = pulses({{60, 1.0}, {900, 0.3}});
    const Signal far = pulses({{80, 0.4}, {940, 0.2}});
    const SourceMeasures left = measureSource(near, far, kRate_hz);
    const SourceMeasures right = measureSource(far, near, kRate_hz);
    EXPECT_DOUBLE_EQ(*left.delay_us, -*right.delay_us);
    for (size_t i = 0; i < kOctaves_hz.size(); ++i) {
        const OctaveMeasures& a = left.octaves.at(i);
        const OctaveMeasures& b = right.octaves.at(i);
        EXPECT_NEAR(*a.level_difference.whole_db, -*b.level_difference.whole_db, 1e-9);
        EXPECT_NEAR(*a.direct_to_reverberant_db, *b.direct_to_reverberant_db, 1e-9);
        EXPECT_NEAR(*a.early_correlation, *b.early_correlation, 1e-9);
    }
}

TEST(SourceMeasures, SeparateTheDirectLevelDifferenceFromThatOfTheWhole) {
    // Direct sound at the left ear only four times as strong; the room is mirrored and makes up for it.
    const SourceMeasures figures =
        measureSource(pulses({{100, 1.0}, {2000, 0.5}}), pulses({{100, 0.5}, {2000, 1.0}}), kRate_hz);
    for (const OctaveMeasures& octave : figures.octaves) {
        EXPECT_NEAR(*octave.level_difference.direct_db, 6.0206, 1e-4);
    }
    EXPECT_NEAR(*figures.level_difference.direct_db, 6.0206, 1e-4);
    EXPECT_NEAR(*figures.level_difference.whole_db, 0.0, 1e-9);
}

TEST(SourceMeasures, EndTheDirectSoundAfterTwoAndAHalfMilliseconds) {
    // 2.5 ms are 120 samples from the arrival on.
    const auto ratio = [](size_t place) {
        const Signal ear = pulses({{100, 1.0}, {place, 0.5}, {4000, 0.5}});
        return *measureRatios(ear, ear, kRate_hz).octaves.back().direct_to_reverberant_db;
    };
    // 1 + 1/4 over 1/4, and 1 over 1/4 + 1/4; the two pulses of a part interfere a little.
    EXPECT_NEAR(ratio(219), 10.0 * std::log10(1.25 / 0.25), 0.3);
    EXPECT_NEAR(ratio(220), 10.0 * std::log10(1.0 / 0.5), 0.3);
}

TEST(SourceMeasures, GiveTheRatioOfAnEchoInEveryOctave) {
    const Signal left = pulses({{50, 1.0}, {1500, 0.2}});
    const Signal right = pulses({{80, 0.5}, {1700, 0.1}});
    for (const OctaveMeasures& octave : measureSource(left, right, kRate_hz).octaves) {
        EXPECT_NEAR(*octave.direct_to_reverberant_db, 20.0 * std::log10(5.0), 1e-6);
    }
}

TEST(SourceMeasures, AddTheEnergiesOfBothEarsBeforeTheRatio) {
    const Signal left = pulses({{50, 1.0}});
    const Signal right = pulses({{50, 0.5}, {1700, 0.5}});
    for (const OctaveMeasures& octave : measureSource(left, right, kRate_hz).octaves) {
        EXPECT_NEAR(*octave.direct_to_reverberant_db, 10.0 * std::log10(1.25 / 0.25), 1e-6);
    }
}

TEST(SourceMeasures, GiveEachOctaveTheRatioOfItsOwnTail) {
    // A pulse has the same density everywhere: its share of the energy in an octave is the octave's width
    // over half the sample rate. The tail is one burst in each octave, 10 to 24 dB below.
    Signal ear = pulses({{50, 1.0}});
    constexpr size_t kBurst = 6000;
    const auto wanted_db = [](size_t octave) { return 10.0 + 2.0 * static_cast<double>(octave); };
    for (size_t i = 0; i < kOctaves_hz.size(); ++i) {
        const double centre_hz = kOctaves_hz.at(i);
        const double direct = centre_hz / std::numbers::sqrt2 / (kRate_hz / 2.0);
        const double tail = direct * std::pow(10.0, -wanted_db(i) / 10.0);
        addBurst(ear, centre_hz, std::sqrt(tail / (3.0 / 16.0 * kBurst)), 1000, kBurst);
    }
    const SourceMeasures figures = measureRatios(ear, ear, kRate_hz);
    for (size_t i = 0; i < kOctaves_hz.size(); ++i) {
        // A whole number of bins stands for the octave: at 125 Hz, 30 of 2.9 Hz each.
        EXPECT_NEAR(*figures.octaves.at(i).direct_to_reverberant_db, wanted_db(i), 0.2) << kOctaves_hz.at(i);
    }
}

TEST(SourceMeasures, CorrelateShiftedCopiesFully) {
    const SourceMeasures figures = measureSource(pulses({{100, 1.0}, {1500, 0.4}, {2900, -0.3}}),
                                                 pulses({{130, 0.5}, {1530, 0.2}, {2930, -0.15}}), kRate_hz);
    for (const OctaveMeasures& octave : figures.octaves) EXPECT_NEAR(*octave.early_correlation, 1.0, 0.001);
}

TEST(SourceMeasures, HalveTheCorrelationIfHalfOfTheEnergyDiffers) {
    const SourceMeasures figures =
        measureSource(pulses({{100, 1.0}, {1500, 1.0}}), pulses({{100, 1.0}, {2200, 1.0}}), kRate_hz);
    // The echoes lie more than 1 ms apart. In low octaves a filtered pulse is so long that they still meet.
    for (size_t i = 4; i < kOctaves_hz.size(); ++i) {
        EXPECT_NEAR(*figures.octaves.at(i).early_correlation, 0.5, 0.03) << kOctaves_hz.at(i);
    }
}

TEST(SourceMeasures, LeaveWhatComesAfterEightyMillisecondsOutOfTheCorrelation) {
    // 80 ms are 3840 samples, from the arrival at the earlier ear on.
    const auto correlation = [](size_t echo) {
        return *measureSource(pulses({{100, 1.0}, {echo, 1.0}}), pulses({{110, 1.0}}), kRate_hz)
                    .octaves.back()
                    .early_correlation;
    };
    EXPECT_NEAR(correlation(3940), 1.0, 0.001);
    EXPECT_NEAR(correlation(3939), std::sqrt(0.5), 0.01);
}

TEST(SourceMeasures, LeaveOutWhatIsNotDefined) {
    const SourceMeasures silent = measureSource(Signal(kLength, 0.0), Signal(kLength, 0.0), kRate_hz);
    EXPECT_FALSE(silent.delay_us);
    EXPECT_FALSE(silent.level_difference.direct_db);
    const SourceMeasures one_ear = measureSource(pulses({{10, 1.0}}), Signal(kLength, 0.0), kRate_hz);
    EXPECT_FALSE(one_ear.delay_us);
    EXPECT_FALSE(one_ear.level_difference.whole_db);
    for (const auto& figures : {silent, one_ear}) {
        for (const OctaveMeasures& octave : figures.octaves) {
            EXPECT_FALSE(octave.direct_to_reverberant_db);  // there is no room in any of them
            EXPECT_FALSE(octave.level_difference.direct_db);
            EXPECT_FALSE(octave.level_difference.whole_db);
            EXPECT_FALSE(octave.early_correlation);
        }
    }
}

TEST(SourceMeasures, OfRatiosAloneCompareNoEars) {
    const Signal ear = pulses({{10, 1.0}, {1000, 0.1}});
    const SourceMeasures figures = measureRatios(ear, ear, kRate_hz);
    EXPECT_FALSE(figures.delay_us);
    EXPECT_FALSE(figures.level_difference.whole_db);
    for (const OctaveMeasures& octave : figures.octaves) {
        EXPECT_NEAR(*octave.direct_to_reverberant_db, 20.0, 1e-6);
        EXPECT_FALSE(octave.level_difference.direct_db);
        EXPECT_FALSE(octave.early_correlation);
    }
}

TEST(SourceMeasures, AcceptResponsesShorterThanTheirParts) {
    const SourceMeasures figures = measureSource(Signal{0.0, 1.0}, Signal{1.0}, kRate_hz);
    EXPECT_NEAR(*figures.delay_us, us(-1.0), 1e-9);
    EXPECT_FALSE(measureSource({}, {}, kRate_hz).delay_us);
}

}  // namespace
