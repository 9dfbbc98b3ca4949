// The discrete Fourier transform in double, of one length at a time, written to be obviously right.
#pragma once

#include <complex>
#include <vector>

namespace model {

/** X[k] = sum over n of x[n] * exp(-2 pi i k n / N), k = 0..N/2. @param x N numbers, N a power of two. */
std::vector<std::complex<double>> spectrumOf(const std::vector<double>& x);

/** What spectrumOf makes this spectrum of. @param spectrum N/2 + 1 bins; the imaginary parts of the first and
 *  the last do not count. */
std::vector<double> signalOf(const std::vector<std::complex<double>>& spectrum);

}  // namespace model
