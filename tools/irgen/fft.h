// Discrete Fourier transform in double, radix 2, with a fixed order of operations.
//   forward: X[k] = sum over n of x[n] * exp(-2 pi i k n / size)
//   inverse: x[n] = 1/size * sum over k of X[k] * exp(+2 pi i k n / size)
#pragma once

#include <cstddef>
#include <vector>

namespace sonivex_irgen {

/** Plain pair of doubles: std::complex leaves its multiplication to the compiler's library. */
struct Complex {
    double re = 0.0;
    double im = 0.0;
};

inline Complex operator+(Complex a, Complex b) {
    return {a.re + b.re, a.im + b.im};
}
inline Complex operator-(Complex a, Complex b) {
    return {a.re - b.re, a.im - b.im};
}
inline Complex operator*(Complex a, Complex b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
inline Complex operator*(double a, Complex b) {
    return {a * b.re, a * b.im};
}
inline double squaredMagnitude(Complex a) {
    return a.re * a.re + a.im * a.im;
}

/** Transform in place; the size must be a power of two. */
void fft(std::vector<Complex>& values);
void inverseFft(std::vector<Complex>& values);

/** The size/2 + 1 bins of a real signal, padded with zeros to `size`, a power of two not below its length. */
std::vector<Complex> realSpectrum(const std::vector<double>& signal, std::size_t size);

/** The real signal of size/2 + 1 bins: 2 * (bins - 1) samples. */
std::vector<double> realSignal(const std::vector<Complex>& bins);

/** |X|^2 of realSpectrum. */
std::vector<double> powerSpectrum(const std::vector<double>& signal, std::size_t size);

/** Linear convolution of a signal with a filter, cut to the signal's length. */
std::vector<double> convolveToLength(const std::vector<double>& signal, const std::vector<double>& filter);

/** The smallest power of two not below n, at least 1. */
std::size_t nextPowerOfTwo(std::size_t n);

}  // namespace sonivex_irgen
