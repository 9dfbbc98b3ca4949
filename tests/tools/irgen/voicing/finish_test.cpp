#include "finish.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "noise.h"

namespace {

using namespace sonivex_irgen;

TEST(IrgenFinish, SumsToZeroAndEndsInSilence) {
    std::vector<double> response = gaussianNoise(11, 7000);
    finishResponse({4.0, 15.0, 0.3, 48000.0}, response);
    EXPECT_NEAR(std::accumulate(response.begin(), response.end(), 0.0), 0.0, 1e-9);
    for (std::size_t n = 6990; n < 7000; ++n) EXPECT_LT(std::abs(response[n]), 1e-4) << n;
}

TEST(IrgenFinish, ChangesTheBeginningOnlyByTheFilters) {
    std::vector<double> response(7000, 0.0);
    response[40] = 1.0;
    finishResponse({0.0, 15.0, 0.3, 48000.0}, response);
    for (std::size_t n = 0; n < 40; ++n) EXPECT_EQ(response[n], 0.0);
    EXPECT_NEAR(response[40], 1.0, 0.002);
}

TEST(IrgenFinish, ShelfLiftsTheBass) {
    // Correlation with a cosine and a sine of 60 Hz gives the gain at that frequency.
    const auto gain_at_60_hz = [](double shelf_db) {
        std::vector<double> response(13000, 0.0);
        response[40] = 1.0;
        finishResponse({shelf_db, 12.0, 0.25, 48000.0}, response);
        double re = 0.0;
        double im = 0.0;
        for (std::size_t n = 0; n < response.size(); ++n) {
            re += response[n] * std::cos(2.0 * std::acos(-1.0) * 60.0 * static_cast<double>(n) / 48000.0);
            im += response[n] * std::sin(2.0 * std::acos(-1.0) * 60.0 * static_cast<double>(n) / 48000.0);
        }
        return 10.0 * std::log10(re * re + im * im);
    };
    EXPECT_NEAR(gain_at_60_hz(4.0) - gain_at_60_hz(0.0), 3.67, 0.1);
}

TEST(IrgenQuantise, RoundsTheFirst256SamplesToTheNearestInteger) {
    std::vector<double> response(256, 0.0);
    response[0] = 0.5;
    response[1] = -0.5;
    response[2] = 1.49;
    response[3] = -1.51;
    const std::vector<std::int16_t> table = quantise(response, 1.0);
    EXPECT_EQ(table[0], 1);
    EXPECT_EQ(table[1], 0);
    EXPECT_EQ(table[2], 1);
    EXPECT_EQ(table[3], -2);
}

TEST(IrgenQuantise, CarriesLaterRoundingErrorsToPreserveTheSum) {
    std::vector<double> response(1257, 0.3);
    response.back() = 5.0;
    const std::vector<std::int16_t> table = quantise(response, 1.0);
    EXPECT_EQ(std::accumulate(table.begin(), table.begin() + 256, 0), 0);
    EXPECT_EQ(std::accumulate(table.begin() + 256, table.end(), 0), 300 + 5);
}

TEST(IrgenQuantise, EndsWithTheLastSampleOfHalfAUnit) {
    std::vector<double> response(2000, 0.3);
    response[1000] = -0.5;
    const std::vector<std::int16_t> table = quantise(response, 1.0);
    ASSERT_EQ(table.size(), 2000U);
    EXPECT_NE(std::accumulate(table.begin(), table.begin() + 1001, 0), 0);
    for (std::size_t n = 1001; n < table.size(); ++n) ASSERT_EQ(table[n], 0) << n;
    EXPECT_EQ(quantise({0.1, -0.2, 0.3}, 1.0), (std::vector<std::int16_t>{0, 0, 0}));
}

TEST(IrgenQuantise, KeepsThePeakExact) {
    for (const double peak : {9597.0, 32392.0, 26905.0, 16805.0}) {
        std::vector<double> response = {0.1, -0.7312345678912345, 0.2};
        const std::vector<std::int16_t> table = quantise(response, peak / peakMagnitude(response));
        EXPECT_EQ(table[1], -static_cast<int>(peak));
    }
}

TEST(IrgenQuantise, RejectsValuesThatDoNotFitIn16Bits) {
    EXPECT_EQ(quantise({32767.0, -32768.0}, 1.0), (std::vector<std::int16_t>{32767, -32768}));
    EXPECT_THROW(quantise({32767.6}, 1.0), UnmetTableFact);
    EXPECT_THROW(quantise({-32769.0}, 1.0), UnmetTableFact);
    EXPECT_THROW(quantise({std::nan("")}, 1.0), UnmetTableFact);
}

}  // namespace
