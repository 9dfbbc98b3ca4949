#include "fft.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

#include "noise.h"

namespace {

using namespace sonivex_irgen;

std::complex<double> slowBin(const std::vector<double>& x, std::size_t k, std::size_t size) {
    std::complex<double> sum;
    for (std::size_t n = 0; n < x.size(); ++n) {
        sum += x[n] * std::polar(1.0, -2.0 * std::numbers::pi * static_cast<double>(k * n % size) /
                                          static_cast<double>(size));
    }
    return sum;
}

TEST(IrgenFft, MatchesTheDefiningSum) {
    for (const std::size_t size : {1U, 2U, 4U, 64U, 512U}) {
        SCOPED_TRACE("noise of seed 3, size " + std::to_string(size));
        const std::vector<double> x = gaussianNoise(3, size);
        const std::vector<Complex> bins = realSpectrum(x, size);
        ASSERT_EQ(bins.size(), size / 2 + 1);
        for (std::size_t k = 0; k < bins.size(); ++k) {
            const std::complex<double> expected = slowBin(x, k, size);
            ASSERT_NEAR(bins[k].re, expected.real(), 1e-11) << "bin " << k;
            ASSERT_NEAR(bins[k].im, expected.imag(), 1e-11) << "bin " << k;
        }
    }
}

TEST(IrgenFft, RealSignalInvertsRealSpectrum) {
    const std::vector<double> x = gaussianNoise(4, 32768);
    const std::vector<double> back = realSignal(realSpectrum(x, x.size()));
    ASSERT_EQ(back.size(), x.size());
    for (std::size_t n = 0; n < x.size(); ++n) ASSERT_NEAR(back[n], x[n], 1e-12) << n;
}

TEST(IrgenFft, ConvolutionMatchesTheDefiningSumAndKeepsTheSignalLength) {
    const std::vector<double> x = gaussianNoise(5, 300);
    const std::vector<double> h = gaussianNoise(6, 47);
    const std::vector<double> y = convolveToLength(x, h);
    ASSERT_EQ(y.size(), x.size());
    for (std::size_t n = 0; n < y.size(); ++n) {
        double expected = 0.0;
        for (std::size_t k = 0; k < h.size() && k <= n; ++k) expected += h[k] * x[n - k];
        ASSERT_NEAR(y[n], expected, 1e-11) << n;
    }
}

TEST(IrgenFft, NextPowerOfTwoIsTheSmallestThatIsNotBelow) {
    EXPECT_EQ(nextPowerOfTwo(0), 1U);
    EXPECT_EQ(nextPowerOfTwo(1), 1U);
    EXPECT_EQ(nextPowerOfTwo(4096), 4096U);
    EXPECT_EQ(nextPowerOfTwo(4097), 8192U);
}

}  // namespace
