#include "fourier.h"

#include <bit>
#include <cassert>
#include <numbers>
#include <utility>

namespace sonivex_tool {

Fourier::Fourier(std::size_t size) : size_(size), turns_(size / 2) {
    assert(std::has_single_bit(size));
    for (std::size_t k = 0; k < turns_.size(); ++k) {
        const double angle = -2.0 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(size);
        turns_[k] = std::polar(1.0, angle);
    }
}

// Radix 2, decimation in time: puts the values into bit-reversed order, then applies butterflies over
// stretches that double in length.
void Fourier::transform(std::vector<std::complex<double>>& x) const {
    assert(x.size() == size_);
    for (std::size_t n = 1, reversed = 0; n < size_; ++n) {
        std::size_t bit = size_ / 2;
        for (; (reversed & bit) != 0; bit /= 2) reversed ^= bit;
        reversed ^= bit;
        if (n < reversed) std::swap(x[n], x[reversed]);
    }
    for (std::size_t half = 1; half < size_; half *= 2) {
        const std::size_t step = size_ / (2 * half);
        for (std::size_t first = 0; first < size_; first += 2 * half) {
            for (std::size_t k = 0; k < half; ++k) {
                std::complex<double>& a = x[first + k];
                std::complex<double>& b = x[first + k + half];
                const std::complex<double> turn = turns_[k * step];
                // The product is written out because std::complex multiplication checks for NaN and infinity
                // and takes three times as long.
                const std::complex<double> turned(b.real() * turn.real() - b.imag() * turn.imag(),
                                                  b.real() * turn.imag() + b.imag() * turn.real());
                b = a - turned;
                a += turned;
            }
        }
    }
}

}  // namespace sonivex_tool
