#include "fourier.h"

#include <gtest/gtest.h>

#include <numbers>
#include <random>

namespace {

TEST(FourierTransform, MatchesTheDefiningSum) {
    std::mt19937 random(3);
    std::normal_distribution<double> value;
    for (const std::size_t size : {1U, 2U, 4U, 8U, 256U}) {
        std::vector<std::complex<double>> x(size);
        for (auto& sample : x) sample = {value(random), value(random)};
        std::vector<std::complex<double>> fast = x;
        sonivex_tool::Fourier(size).transform(fast);
        for (std::size_t k = 0; k < size; ++k) {
            std::complex<double> sum = 0.0;
            for (std::size_t n = 0; n < size; ++n) {
                const double angle = -2.0 * std::numbers::pi * static_cast<double>(k * n % size);
                sum += x[n] * std::polar(1.0, angle / static_cast<double>(size));
            }
            EXPECT_LT(std::abs(fast[k] - sum), 1e-12 * static_cast<double>(size)) << size << " " << k;
        }
    }
}

}  // namespace
