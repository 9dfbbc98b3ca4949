#include "quantiser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "tools/sonivex/audio_samples.h"

namespace {

using namespace sonivex_tool;

constexpr double kSteps = 32768.0;  // of 16 bits in a unit

AudioSpec specOfFormat(AVSampleFormat format, int channels = 1) {
    AudioSpec spec = test::floatSpec(channels);
    spec.format = format;
    return spec;
}

FramePtr doubles(const std::vector<double>& samples, int channels = 1) {
    FramePtr frame =
        makeFrame(specOfFormat(AV_SAMPLE_FMT_DBL, channels), static_cast<int>(samples.size()) / channels);
    std::copy(samples.begin(), samples.end(), reinterpret_cast<double*>(frame->data[0]));
    return frame;
}

std::vector<int> shorts(const AVFrame& frame) {
    const auto* samples = reinterpret_cast<const int16_t*>(frame.data[0]);
    return {samples, samples + frame.nb_samples * frame.ch_layout.nb_channels};
}

std::vector<int> to16(const std::vector<double>& samples, bool dither) {
    Quantiser quantiser(specOfFormat(AV_SAMPLE_FMT_S16), 16, dither);
    return shorts(*quantiser.quantise(*doubles(samples)));
}

// A tone of the given amplitude in steps, with an irrational period.
std::vector<double> tone(double amplitude_steps, int frames) {
    std::vector<double> samples;
    for (int i = 0; i < frames; ++i) samples.push_back(amplitude_steps / kSteps * std::sin(0.1234567 * i));
    return samples;
}

struct Moments {
    double mean = 0.0;
    double power = 0.0;
    double next = 0.0;  // correlation of neighbours
};

// The moments of the error in steps.
Moments errorOf(const std::vector<double>& exact, const std::vector<int>& rounded) {
    Moments moments;
    const auto n = static_cast<double>(exact.size());
    double last = 0.0;
    for (size_t i = 0; i < exact.size(); ++i) {
        const double error = rounded[i] - exact[i] * kSteps;
        moments.mean += error / n;
        moments.power += error * error / n;
        moments.next += error * last / n;
        last = error;
    }
    return moments;
}

TEST(Quantiser, AddsTriangularDitherWhateverTheSignal) {
    constexpr int kFrames = 400'000;
    for (const double amplitude : {0.3, 2.0, 33.0, 20'000.0}) {
        SCOPED_TRACE(amplitude);
        const auto samples = tone(amplitude, kFrames);
        const Moments error = errorOf(samples, to16(samples, true));
        // 1/12 of rounding and 2/12 of the dither. Five standard errors of each estimate.
        EXPECT_NEAR(error.mean, 0.0, 5.0 * 0.5 / std::sqrt(kFrames));
        EXPECT_NEAR(error.power, 0.25, 0.002);
        EXPECT_NEAR(error.next, 0.0, 0.002);
    }
}

TEST(Quantiser, KeepsAToneFarBelowOneStepAudible) {
    // Without dither a tone of 0.3 steps vanishes. With it the tone keeps its level.
    constexpr int kFrames = 400'000;
    const auto samples = tone(0.3, kFrames);
    const auto projection = [&](const std::vector<int>& rounded) {
        double sum = 0.0;
        for (size_t i = 0; i < samples.size(); ++i) sum += rounded[i] * samples[i] * kSteps;
        return sum / (0.3 * 0.3 / 2.0 * kFrames);
    };
    EXPECT_NEAR(projection(to16(samples, true)), 1.0, 0.03);
    EXPECT_EQ(projection(to16(samples, false)), 0.0);
}

TEST(Quantiser, RoundsToTheNearestStepWithoutDither) {
    EXPECT_EQ(
        to16({0.6 / kSteps, -0.6 / kSteps, 0.4 / kSteps, -0.4 / kSteps, 99.51 / kSteps, 1.0, -1.0}, false),
        (std::vector<int>{1, -1, 0, 0, 100, 32767, -32768}));
}

TEST(Quantiser, LeavesSamplesOnTheStepsAndSilenceExact) {
    std::vector<double> samples;
    std::vector<int> expected;
    for (int value = -32768; value <= 32767; ++value) {
        samples.push_back(value / kSteps);
        expected.push_back(value);
    }
    EXPECT_EQ(to16(samples, true), expected);
    EXPECT_EQ(to16(std::vector<double>(5000, 0.0), true), std::vector<int>(5000, 0));
}

TEST(Quantiser, DithersUntilASilenceIsLongerThanAPeriodOfAnyTone) {
    std::vector<double> samples = {0.5 / kSteps};
    samples.resize(20'000, 0.0);
    const auto rounded = to16(samples, true);
    const auto noisy = std::count_if(rounded.begin() + 1, rounded.begin() + kDitherHold_frames,
                                     [](int value) { return value != 0; });
    // A quarter of a triangle of two steps lies beyond half a step.
    EXPECT_NEAR(static_cast<double>(noisy), kDitherHold_frames / 4.0, kDitherHold_frames / 20.0);
    EXPECT_TRUE(
        std::all_of(rounded.begin() + kDitherHold_frames, rounded.end(), [](int v) { return v == 0; }));
}

TEST(Quantiser, DithersEachChannelForItself) {
    std::vector<double> samples;
    for (int i = 0; i < 2000; ++i) {
        samples.push_back(0.25 / kSteps);
        samples.push_back(7.0 / kSteps);
    }
    Quantiser quantiser(specOfFormat(AV_SAMPLE_FMT_S16, 2), 16, true);
    const auto rounded = shorts(*quantiser.quantise(*doubles(samples, 2)));
    int changed = 0;
    for (size_t i = 0; i < rounded.size(); i += 2) {
        changed += rounded[i] != 0 ? 1 : 0;
        ASSERT_EQ(rounded[i + 1], 7);
    }
    EXPECT_GT(changed, 100);
}

TEST(Quantiser, ClipsAndCountsSamplesAboveFullScale) {
    Quantiser quantiser(specOfFormat(AV_SAMPLE_FMT_S16), 16, true);
    const double huge = std::numeric_limits<double>::max();
    const auto rounded =
        shorts(*quantiser.quantise(*doubles({1.0, -1.0, 1.001, -7.5, huge, -huge, std::nan(""), 0.25})));
    EXPECT_EQ(quantiser.clippedSamples(), 4U);
    EXPECT_EQ(rounded[2], 32767);
    EXPECT_EQ(rounded[3], -32768);
    EXPECT_EQ(rounded[4], 32767);
    EXPECT_EQ(rounded[5], -32768);
    EXPECT_EQ(rounded[6], 0);
    EXPECT_GE(rounded[0], 32766);
}

TEST(Quantiser, GivesTheSameBytesInEveryRun) {
    const auto samples = tone(100.0, 5000);
    EXPECT_EQ(to16(samples, true), to16(samples, true));
}

TEST(Quantiser, WritesEveryFormatWithItsOwnZeroAndUnusedBits) {
    const std::vector<double> samples = {0.0, 0.5, -0.5, -1.0};
    Quantiser eight(specOfFormat(AV_SAMPLE_FMT_U8P), 8, true);
    const FramePtr bytes = eight.quantise(*doubles(samples));
    EXPECT_EQ(std::vector<int>(bytes->data[0], bytes->data[0] + 4), (std::vector<int>{128, 192, 64, 0}));

    Quantiser twenty_four(specOfFormat(AV_SAMPLE_FMT_S32), 24, true);
    const FramePtr words = twenty_four.quantise(*doubles({0.5, 1.0 / 3.0}));
    const auto* values = reinterpret_cast<const int32_t*>(words->data[0]);
    EXPECT_EQ(values[0], 1 << 30);
    EXPECT_EQ(values[1] % 256, 0);
    EXPECT_NEAR(values[1] / 2147483648.0, 1.0 / 3.0, 2.0 / 8388608.0);

    Quantiser planar(specOfFormat(AV_SAMPLE_FMT_S16P, 2), 16, true);
    const FramePtr planes = planar.quantise(*doubles({0.25, -0.25, 0.5, -0.5}, 2));
    EXPECT_EQ(reinterpret_cast<const int16_t*>(planes->data[0])[1], 16384);
    EXPECT_EQ(reinterpret_cast<const int16_t*>(planes->data[1])[0], -8192);
}

}  // namespace
