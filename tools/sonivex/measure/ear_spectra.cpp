#include "ear_spectra.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numbers>

namespace sonivex_tool {

namespace {

// Returns the bins below half the sample rate.
std::vector<std::complex<double>> lowerHalf(const Fourier& fourier, std::span<const double> samples) {
    assert(samples.size() <= fourier.size());
    std::vector<std::complex<double>> bins(fourier.size());
    std::copy(samples.begin(), samples.end(), bins.begin());
    fourier.transform(bins);
    bins.resize(fourier.size() / 2);
    return bins;
}

}  // namespace

Band octaveAround(double centre_hz) {
    return {centre_hz / std::numbers::sqrt2, centre_hz * std::numbers::sqrt2};
}

// Each ear has a transform of its own. One could serve both, as the signals are real, but rounding would
// carry a trace of one ear into the other, and a silent ear must stay silent.
EarSpectra::EarSpectra(const Fourier& fourier, std::span<const double> left, std::span<const double> right,
                       int rate_hz)
    : size_(fourier.size()),
      bin_hz_(static_cast<double>(rate_hz) / static_cast<double>(size_)),
      left_(lowerHalf(fourier, left)),
      right_(lowerHalf(fourier, right)) {}

EarSpectra::Bins EarSpectra::binsOf(const Band& band) const {
    const auto bin = [&](double frequency_hz) {
        return std::clamp<std::size_t>(static_cast<std::size_t>(std::ceil(frequency_hz / bin_hz_)), 1,
                                       left_.size());
    };
    return {bin(band.low_hz), bin(band.high_hz)};
}

double EarSpectra::energy(const std::vector<std::complex<double>>& ear, const Band& band) const {
    const Bins bins = binsOf(band);
    double sum = 0.0;
    for (std::size_t k = bins.first; k < bins.end; ++k) sum += std::norm(ear[k]);
    // Every bin has a mirror image above half the sample rate.
    return 2.0 * sum / static_cast<double>(size_);
}

std::vector<double> EarSpectra::crossCorrelation(const Band& band, std::ptrdiff_t longest,
                                                 const std::function<double(double)>& weight) const {
    std::vector<double> correlation(static_cast<std::size_t>(2 * longest + 1), 0.0);
    const Bins bins = binsOf(band);
    for (std::size_t k = bins.first; k < bins.end; ++k) {
        const double angle =
            2.0 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(size_) * kLag;
        const std::complex<double> step = std::polar(1.0, angle);
        std::complex<double> term = 2.0 / static_cast<double>(size_) *
                                    weight(static_cast<double>(k) * bin_hz_) * std::conj(left_[k]) *
                                    right_[k] * std::polar(1.0, -angle * static_cast<double>(longest));
        for (double& value : correlation) {
            value += term.real();
            // The product is written out because std::complex multiplication checks for NaN and infinity.
            term = {term.real() * step.real() - term.imag() * step.imag(),
                    term.real() * step.imag() + term.imag() * step.real()};
        }
    }
    return correlation;
}

}  // namespace sonivex_tool
