#include "presence_meter.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/signals/signals.h"

namespace {

using sonivex_tool::meanPresence;
using sonivex_tool::PresenceMeter;

constexpr int kRate_hz = 48000;
constexpr std::size_t kFrames = 24000;

// Noise in the left channel at `left` and in the right one at `right`.
std::vector<float> stereo(float left, float right) {
    const std::vector<float> noise = test::noiseFloats(3, kFrames, 0.3F);
    std::vector<float> samples;
    for (const float value : noise) samples.insert(samples.end(), {left * value, right * value});
    return samples;
}

std::vector<float> amplified(std::vector<float> samples, float left, float right) {
    for (std::size_t i = 0; i < samples.size(); i += 2) {
        samples[i] *= left;
        samples[i + 1] *= right;
    }
    return samples;
}

double presenceOf(const std::vector<float>& input, const std::vector<float>& output) {
    PresenceMeter meter(kRate_hz);
    meter.addInput(input);
    meter.addOutput(output);
    EXPECT_EQ(meter.readings().size(), kFrames / 2048);
    double sum = 0.0;
    for (const auto& reading : meter.readings()) sum += reading.presence.value_or(-100.0);
    return sum / static_cast<double>(meter.readings().size());
}

// Of equal channels the whole is centre, so the gain is 1 + presence.
TEST(PresenceMeter, ReadsTheGainOfTheCentre) {
    const std::vector<float> centre = stereo(1.0F, 1.0F);
    EXPECT_NEAR(presenceOf(centre, centre), 0.0, 1e-6);
    EXPECT_NEAR(presenceOf(centre, amplified(centre, 1.4F, 1.4F)), 0.4, 1e-5);
    EXPECT_NEAR(presenceOf(centre, amplified(centre, 2.0F, 2.0F)), 1.0, 1e-5);
}

// Of sound in one channel alone, |L|^2 / (|L|^2 + |L - R|^2) is a half.
TEST(PresenceMeter, CountsOneSideAsHalfACentre) {
    const std::vector<float> side = stereo(1.0F, 0.0F);
    EXPECT_NEAR(presenceOf(side, amplified(side, 1.2F, 1.0F)), 0.4, 1e-5);
}

TEST(PresenceMeter, ReadsNothingInSilence) {
    PresenceMeter meter(kRate_hz);
    const std::vector<float> silence(2 * kFrames);
    meter.addOutput(silence);
    meter.addInput(silence);
    ASSERT_FALSE(meter.readings().empty());
    for (const auto& reading : meter.readings()) EXPECT_FALSE(reading.presence);
}

TEST(PresenceMeter, TakesTheMeanOfTheReadingsThatThereAre) {
    EXPECT_EQ(meanPresence({{0.0, 0.25}, {0.1, std::nullopt}, {0.2, 0.75}}), 0.5);
    EXPECT_EQ(meanPresence({{0.0, std::nullopt}}), std::nullopt);
    EXPECT_EQ(meanPresence({}), std::nullopt);
}

TEST(PresenceMeter, ReadsTheSameHoweverTheSoundsAreCut) {
    const std::vector<float> input = stereo(1.0F, 0.6F);
    const std::vector<float> output = amplified(input, 1.3F, 1.1F);
    const double whole = presenceOf(input, output);
    PresenceMeter meter(kRate_hz);
    for (std::size_t first = 0; first < input.size(); first += 2 * 480) {
        const std::size_t count = std::min<std::size_t>(2 * 480, input.size() - first);
        meter.addInput(std::span(input).subspan(first, count));
        if (first >= 2 * 4800) meter.addOutput(std::span(output).subspan(first - 2 * 4800, count));
    }
    meter.addOutput(std::span(output).last(2 * 4800));
    double sum = 0.0;
    for (const auto& reading : meter.readings()) sum += *reading.presence;
    EXPECT_NEAR(sum / static_cast<double>(meter.readings().size()), whole, 1e-9);
}

}  // namespace
