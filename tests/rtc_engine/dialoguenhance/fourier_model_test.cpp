// Compares the model's transform with the sum that defines it.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

#include "models/fourier.h"
#include "support/signals/signals.h"

namespace {

std::vector<double> numbers(std::size_t count) {
    std::vector<double> x;
    for (const std::int16_t sample : test::noise(1, static_cast<int>(count), 32767))
        x.push_back(sample / 32768.0);
    return x;
}

std::complex<double> bin(const std::vector<double>& x, std::size_t k) {
    std::complex<double> sum = 0;
    for (std::size_t n = 0; n < x.size(); ++n) {
        const auto turns = static_cast<double>(k * n % x.size()) / static_cast<double>(x.size());
        sum += x[n] * std::polar(1.0, -2 * std::numbers::pi * turns);
    }
    return sum;
}

TEST(FourierModel, EqualsItsDefiningSum) {
    for (const std::size_t n : {2U, 4U, 16U, 2048U, 8192U}) {
        SCOPED_TRACE(n);
        const std::vector<double> x = numbers(n);
        const auto spectrum = model::spectrumOf(x);
        ASSERT_EQ(spectrum.size(), n / 2 + 1);
        for (std::size_t k = 0; k <= n / 2; k += 1 + k * n / 65536) {
            EXPECT_LT(std::abs(spectrum[k] - bin(x, k)), 1e-10) << "bin " << k;
        }
        EXPECT_LT(std::abs(spectrum[n / 2] - bin(x, n / 2)), 1e-10);
    }
}

TEST(FourierModel, RestoresTheSignal) {
    for (const std::size_t n : {2U, 16U, 2048U}) {
        const std::vector<double> x = numbers(n);
        const std::vector<double> back = model::signalOf(model::spectrumOf(x));
        ASSERT_EQ(back.size(), n);
        for (std::size_t i = 0; i < n; ++i) EXPECT_NEAR(back[i], x[i], 1e-13);
    }
}

TEST(FourierModel, IgnoresTheImaginaryPartsOfTheOuterBins) {
    auto spectrum = model::spectrumOf(numbers(16));
    const std::vector<double> plain = model::signalOf(spectrum);
    spectrum.front() += std::complex<double>(0, 3);
    spectrum.back() += std::complex<double>(0, 5);
    EXPECT_EQ(model::signalOf(spectrum), plain);
}

}  // namespace
