// The discrete Fourier transform of real signals in double, written to be obviously right.
#pragma once

#include <complex>
#include <vector>

namespace model {

/** X[k] = sum over n of x[n] * exp(-2 pi i k n / N), k = 0..N/2
 *  @param x N numbers, N a power of two */
std::vector<std::complex<double>> spectrumOf(const std::vector<double>& x);

/** Inverse of spectrumOf.
 *  @param spectrum N/2 + 1 bins; the imaginary parts of the first and the last bin are ignored */
std::vector<double> signalOf(const std::vector<std::complex<double>>& spectrum);

}  // namespace model
