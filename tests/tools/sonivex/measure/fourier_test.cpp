#include "fourier.h"

#include <gtest/gtest.h>

#include <numbers>

#include "support/signals/signals.h"

namespace {

TEST(FourierTransform, MatchesTheDefiningSum) {
    for (const std::size_t size : {1U, 2U, 4U, 8U, 256U}) {
        const std::vector<float> parts = test::noiseFloats(3, 2 * size);
        std::vector<std::complex<double>> x;
        for (std::size_t n = 0; n < size; ++n) x.emplace_back(parts[2 * n], parts[2 * n + 1]);
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
