#include "band_energies.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "fourier.h"

namespace study {

std::size_t Spectrum::firstFrom(double frequency_hz) const {
    const double bin = std::ceil(frequency_hz / bin_hz);
    return static_cast<std::size_t>(std::clamp(bin, 0.0, static_cast<double>(bins.size())));
}

Spectrum spectrumOf(std::span<const double> samples, int rate_hz) {
    const std::size_t size = std::bit_ceil(std::max<std::size_t>(2 * samples.size(), 2));
    Spectrum spectrum;
    spectrum.bins.assign(samples.begin(), samples.end());
    spectrum.bins.resize(size);
    sonivex_tool::Fourier(size).transform(spectrum.bins);
    spectrum.bins.resize(size / 2 + 1);
    spectrum.bin_hz = static_cast<double>(rate_hz) / static_cast<double>(size);
    return spectrum;
}

double bandEnergy(const Spectrum& spectrum, double low_hz, double high_hz) {
    double sum = 0.0;
    for (std::size_t k = spectrum.firstFrom(low_hz); k < spectrum.firstFrom(high_hz); ++k) {
        sum += std::norm(spectrum.bins[k]);
    }
    return sum;
}

}  // namespace study
