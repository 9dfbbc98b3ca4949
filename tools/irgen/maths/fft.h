// Radix-2 discrete Fourier transform in double precision with a fixed order of operations.
//   forward: X[k] = sum over n of x[n] * exp(-2 pi i k n / size)
//   inverse: x[n] = 1/size * sum over k of X[k] * exp(+2 pi i k n / size)
// The twiddle factors are cached without a lock; the generator has one thread.
#pragma once

#include <cstddef>
#include <vector>

namespace sonivex_irgen {

/** Pair of doubles with a fixed multiplication; that of std::complex depends on the compiler's library. */
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

/** |a|^2 */
inline double squaredMagnitude(Complex a) {
    return a.re * a.re + a.im * a.im;
}

/** Forward transform in place; the size must be a power of two. */
void fft(std::vector<Complex>& values);

/** Inverse transform in place, scaled by 1/size; the size must be a power of two. */
void inverseFft(std::vector<Complex>& values);

/** Forward transform of a real signal that is padded with zeros to `size`.
 *  @param size a power of two, not below the signal's length
 *  @return bins 0 to size/2 */
std::vector<Complex> realSpectrum(const std::vector<double>& signal, std::size_t size);

/** Inverse of realSpectrum.
 *  @param bins bins 0 to size/2
 *  @return size = 2 * (bins - 1) samples */
std::vector<double> realSignal(const std::vector<Complex>& bins);

/** |X|^2 at the bins of realSpectrum. */
std::vector<double> powerSpectrum(const std::vector<double>& signal, std::size_t size);

/** Linear convolution of a signal with a filter, cut to the signal's length. */
std::vector<double> convolveToLength(const std::vector<double>& signal, const std::vector<double>& filter);

/** Smallest power of two that is not below n; at least 1. */
std::size_t nextPowerOfTwo(std::size_t n);

}  // namespace sonivex_irgen
