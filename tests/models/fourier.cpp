#include "models/fourier.h"

#include <cmath>
#include <numbers>

namespace model {
namespace {

using Complex = std::complex<double>;

// exp(-2 pi i k / n), k = 0..n/2 - 1.
std::vector<Complex> unitRoots(std::size_t n) {
    std::vector<Complex> roots;
    for (std::size_t k = 0; k < n / 2; ++k) {
        const double turn = -2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n);
        roots.emplace_back(std::cos(turn), std::sin(turn));
    }
    return roots;
}

// Radix-2 transform of every `stride`th number, from the transforms of its even and its odd elements.
void transform(const Complex* x, std::size_t n, std::size_t stride, const std::vector<Complex>& roots,
               Complex* out) {
    if (n == 1) {
        out[0] = x[0];
        return;
    }
    const std::size_t half = n / 2;
    transform(x, half, 2 * stride, roots, out);
    transform(x + stride, half, 2 * stride, roots, out + half);
    for (std::size_t k = 0; k < half; ++k) {
        const Complex even = out[k];
        const Complex odd = roots[k * stride] * out[half + k];
        out[k] = even + odd;
        out[half + k] = even - odd;
    }
}

std::vector<Complex> transform(const std::vector<Complex>& x) {
    std::vector<Complex> out(x.size());
    transform(x.data(), x.size(), 1, unitRoots(x.size()), out.data());
    return out;
}

}  // namespace

std::vector<Complex> spectrumOf(const std::vector<double>& x) {
    std::vector<Complex> spectrum = transform({x.begin(), x.end()});
    spectrum.resize(x.size() / 2 + 1);
    return spectrum;
}

// The inverse is conj(transform(conj(X))) / n. The signal is real, so the outer conjugate can be left out.
std::vector<double> signalOf(const std::vector<Complex>& spectrum) {
    const std::size_t half = spectrum.size() - 1;
    std::vector<Complex> whole(2 * half);
    whole[0] = spectrum[0].real();
    whole[half] = spectrum[half].real();
    for (std::size_t k = 1; k < half; ++k) {
        whole[k] = std::conj(spectrum[k]);
        whole[2 * half - k] = spectrum[k];
    }
    std::vector<double> x;
    for (const Complex& number : transform(whole)) {
        x.push_back(number.real() / static_cast<double>(2 * half));
    }
    return x;
}

}  // namespace model
