#include "spectrogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace {

using sonivex_plotting::GreyImage;
using sonivex_tool::SpectrogramMeter;

constexpr int kRate_hz = 48000;

std::vector<float> sine(double frequency_hz, double peak, int frames) {
    std::vector<float> samples;
    for (int i = 0; i < frames; ++i) {
        const auto value =
            static_cast<float>(peak * std::sin(2.0 * std::numbers::pi * frequency_hz * i / kRate_hz));
        samples.insert(samples.end(), {value, value});
    }
    return samples;
}

GreyImage imageOf(const std::vector<float>& samples, std::size_t most_columns = 100) {
    SpectrogramMeter meter(kRate_hz, most_columns);
    meter.add(samples);
    return meter.finish();
}

int valueAt(const GreyImage& image, int column, int row) {
    return image.values.at(static_cast<std::size_t>(row * image.width + column));
}

int brightestRow(const GreyImage& image, int column) {
    int brightest = 0;
    for (int row = 1; row < image.height; ++row) {
        if (valueAt(image, column, row) > valueAt(image, column, brightest)) brightest = row;
    }
    return brightest;
}

// Rows are equally far apart in log frequency, the highest on top.
int rowOf(const GreyImage& image, double frequency_hz) {
    const double place = std::log(frequency_hz / sonivex_tool::kLowestRow_hz) /
                         std::log(sonivex_tool::kHighestRow_hz / sonivex_tool::kLowestRow_hz);
    return image.height - 1 - static_cast<int>(std::floor(place * image.height));
}

// At low frequencies the window of 2048 samples does not separate neighbouring rows: it is off by up to
// half a bin.
TEST(Spectrograms, ShowASineAtItsFrequency) {
    constexpr double kBin_hz = kRate_hz / 2048.0;
    for (const double frequency_hz : {200.0, 1000.0, 5000.0, 15000.0}) {
        const GreyImage image = imageOf(sine(frequency_hz, 0.1, kRate_hz));
        const int row = brightestRow(image, image.width / 2);
        EXPECT_GE(row, rowOf(image, frequency_hz + kBin_hz) - 1) << frequency_hz;
        EXPECT_LE(row, rowOf(image, frequency_hz - kBin_hz) + 1) << frequency_hz;
    }
}

// From -110 to -10 dB there are 255 values: a sine of -60 dB has half of them, within a step of the image.
TEST(Spectrograms, ShowASineAtItsLevel) {
    const GreyImage image = imageOf(sine(1500.0, 0.001, kRate_hz));
    const int column = image.width / 2;
    EXPECT_NEAR(valueAt(image, column, brightestRow(image, column)), 127, 255 / 31 + 1);
}

TEST(Spectrograms, OfSilenceAreDark) {
    const GreyImage image = imageOf(std::vector<float>(2UL * kRate_hz));
    EXPECT_EQ(*std::max_element(image.values.begin(), image.values.end()), 0);
    EXPECT_GT(image.width, 0);
}

TEST(Spectrograms, OfOneSampleHaveOneColumn) {
    const GreyImage image = imageOf({0.5F, 0.5F});
    EXPECT_EQ(image.width, 1);
    EXPECT_EQ(imageOf({}).width, 0);
}

TEST(Spectrograms, OfALongSoundKeepTheirSizeAndTheirTimes) {
    std::vector<float> samples(2UL * 10 * kRate_hz);
    const std::vector<float> tone = sine(1000.0, 0.5, kRate_hz);
    std::copy(tone.begin(), tone.end(), samples.begin() + 2L * 7 * kRate_hz);
    SpectrogramMeter meter(kRate_hz, 50);
    meter.add(samples);
    const GreyImage image = meter.finish();
    EXPECT_LE(image.width, 50);
    EXPECT_GT(image.width, 25);
    const int row = rowOf(image, 1000.0);
    const auto column = [&](double seconds) { return static_cast<int>(seconds / meter.column_s()); };
    EXPECT_GT(valueAt(image, column(7.5), row), 200);
    EXPECT_EQ(valueAt(image, column(6.0), row), 0);
    EXPECT_EQ(valueAt(image, column(9.0), row), 0);
}

}  // namespace
