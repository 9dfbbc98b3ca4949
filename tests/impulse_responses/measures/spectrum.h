// Signals and their discrete Fourier transforms: energy, band energy, convolution, oversampling. The code is
// plain double precision for measuring and shares nothing with the generator of the responses.
#pragma once

#include <complex>
#include <cstddef>
#include <span>
#include <vector>

namespace response_quality {

using Signal = std::vector<double>;
using Spectrum = std::vector<std::complex<double>>;

/** Sum of the squares. */
double energyOf(std::span<const double> signal);

/** Smallest power of two that is not below n. */
std::size_t powerOfTwoFrom(std::size_t n);

/** Radix-2 transform in place, unscaled.
 *  @param values their number is a power of two
 *  @param sign   -1 forward, +1 inverse */
void transform(Spectrum& values, int sign);

/** Bins 0 to points/2 of the signal, padded with zeros.
 *  @param points a power of two, not below the signal's size */
Spectrum spectrumOf(const Signal& signal, std::size_t points);

/** |X|^2 at the bins of spectrumOf(). */
Signal powerOf(const Signal& signal, std::size_t points);

/** Sum of the bins whose frequency is in [low_hz, high_hz).
 *  @param power bins 0 to points/2 */
double bandSum(const Signal& power, double rate_hz, double low_hz, double high_hz);

/** Points that make a spectrum fine enough for octaves from 125 Hz on, for signals of up to this length. */
inline constexpr std::size_t kOctavePoints = 32768;

/** Sum of the bins of an octave: from centre_hz / sqrt(2) up to centre_hz sqrt(2). */
double octaveSum(const Signal& power, double rate_hz, double centre_hz);

/** Full linear convolution of a.size() + b.size() - 1 samples. */
Signal convolve(const Signal& a, const Signal& b);

/** The signal behind a delay, which need not be whole and is not negative.
 *  @return longer than the signal by the delay, rounded up */
Signal delayed(const Signal& signal, double delay_samples);

/** Band-limited interpolation to `factor` points per sample (a power of two) by appending zeros to the
 *  spectrum. */
Signal oversample(const Signal& signal, std::size_t factor);

}  // namespace response_quality
