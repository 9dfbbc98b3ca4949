#include "fft.h"

#include <cassert>
#include <map>
#include <utility>

#include "exact_math.h"

namespace sonivex_irgen {
namespace {

// exp(-2 pi i k / size) for k up to size/2, computed once for each size. The cache has no lock; the generator
// has one thread.
const std::vector<Complex>& twiddles(std::size_t size) {
    static std::map<std::size_t, std::vector<Complex>> by_size;
    std::vector<Complex>& factors = by_size[size];
    if (factors.empty()) {
        factors.resize(size / 2 + 1);
        for (std::size_t k = 0; k < factors.size(); ++k) {
            const double angle = 2.0 * kPi * static_cast<double>(k) / static_cast<double>(size);
            factors[k] = {exactCos(angle), -exactSin(angle)};
        }
    }
    return factors;
}

void reorderByReversedBits(std::vector<Complex>& values) {
    const std::size_t size = values.size();
    std::size_t reversed = 0;
    for (std::size_t i = 1; i < size; ++i) {
        std::size_t bit = size >> 1;
        for (; (reversed & bit) != 0; bit >>= 1) reversed ^= bit;
        reversed |= bit;
        if (i < reversed) std::swap(values[i], values[reversed]);
    }
}

}  // namespace

void fft(std::vector<Complex>& values) {
    const std::size_t size = values.size();
    assert(size == nextPowerOfTwo(size));
    const std::vector<Complex>& factors = twiddles(size);
    reorderByReversedBits(values);
    for (std::size_t half = 1; half < size; half *= 2) {
        const std::size_t stride = size / (2 * half);
        for (std::size_t start = 0; start < size; start += 2 * half) {
            for (std::size_t k = 0; k < half; ++k) {
                const Complex even = values[start + k];
                const Complex odd = factors[k * stride] * values[start + k + half];
                values[start + k] = even + odd;
                values[start + k + half] = even - odd;
            }
        }
    }
}

void inverseFft(std::vector<Complex>& values) {
    for (Complex& value : values) value.im = -value.im;
    fft(values);
    const double scale = 1.0 / static_cast<double>(values.size());
    for (Complex& value : values) value = {value.re * scale, -value.im * scale};
}

std::vector<Complex> realSpectrum(const std::vector<double>& signal, std::size_t size) {
    assert(signal.size() <= size);
    std::vector<Complex> values(size);
    for (std::size_t n = 0; n < signal.size(); ++n) values[n].re = signal[n];
    fft(values);
    values.resize(size / 2 + 1);
    return values;
}

std::vector<double> realSignal(const std::vector<Complex>& bins) {
    const std::size_t half = bins.size() - 1;
    std::vector<Complex> values(2 * half);
    for (std::size_t k = 0; k <= half; ++k) values[k] = bins[k];
    for (std::size_t k = 1; k < half; ++k) values[2 * half - k] = {bins[k].re, -bins[k].im};
    inverseFft(values);
    std::vector<double> signal(2 * half);
    for (std::size_t n = 0; n < signal.size(); ++n) signal[n] = values[n].re;
    return signal;
}

std::vector<double> powerSpectrum(const std::vector<double>& signal, std::size_t size) {
    const std::vector<Complex> bins = realSpectrum(signal, size);
    std::vector<double> power(bins.size());
    for (std::size_t k = 0; k < bins.size(); ++k) power[k] = squaredMagnitude(bins[k]);
    return power;
}

std::vector<double> convolveToLength(const std::vector<double>& signal, const std::vector<double>& filter) {
    const std::size_t size = nextPowerOfTwo(signal.size() + filter.size());
    std::vector<Complex> product = realSpectrum(signal, size);
    const std::vector<Complex> factor = realSpectrum(filter, size);
    for (std::size_t k = 0; k < product.size(); ++k) product[k] = product[k] * factor[k];
    std::vector<double> result = realSignal(product);
    result.resize(signal.size());
    return result;
}

std::size_t nextPowerOfTwo(std::size_t n) {
    std::size_t power = 1;
    while (power < n) power *= 2;
    return power;
}

}  // namespace sonivex_irgen
