// Discrete Fourier transforms and what is read from spectra: the energy of a band, a convolution, a signal
// between its samples. Plain double precision for measuring; nothing here is shared with the generator of the
// responses.
#pragma once

#include <complex>
#include <cstddef>
#include <vector>

namespace response_quality {

using Signal = std::vector<double>;
using Spectrum = std::vector<std::complex<double>>;

/** The least power of two not below n. */
std::size_t powerOfTwoFrom(std::size_t n);

/** In place, radix 2. @param values a power of two of them. @param sign -1 forward, +1 backward (unscaled).
 */
void transform(Spectrum& values, int sign);

/** Bins 0 to points/2 of the signal, padded with zeros. @param points a power of two, not below the signal's
 * size. */
Spectrum spectrumOf(const Signal& signal, std::size_t points);

/** Squared magnitudes of spectrumOf(). */
Signal powerOf(const Signal& signal, std::size_t points);

/** Sum of the bins whose frequency is in [low_hz, high_hz). @param power bins 0 to points/2. */
double bandSum(const Signal& power, double rate_hz, double low_hz, double high_hz);

/** The whole convolution, of the sum of both sizes less one. */
Signal convolve(const Signal& a, const Signal& b);

/** The band-limited signal at `factor` points a sample (a power of two): as many zeros behind its spectrum.
 */
Signal oversample(const Signal& signal, std::size_t factor);

}  // namespace response_quality
