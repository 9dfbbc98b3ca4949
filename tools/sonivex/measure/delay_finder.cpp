#include "delay_finder.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <numbers>

#include "fourier.h"

namespace sonivex_tool {
namespace {

// Minimum height of the peak over the RMS of the correlation. Unrelated sounds reach 5 to 6, the effects'
// outputs 20 and more.
constexpr double kClearPeak = 10.0;
// Maximum height of any other peak, as a share of the highest: tones reach 0.9, the effects' outputs 0.4.
constexpr double kHighestRival = 0.7;
// Lags this close to the peak belong to it: 1 ms at 48 kHz. A low-passed sound has a wide peak.
constexpr int64_t kPeakWidth_samples = 48;
// Length of each fade as a share of the recording.
constexpr double kFadeShare = 0.05;
// Floor relative to the mean of |X||Y|: a bin 30 dB below the mean has half the weight.
constexpr double kFloor = 1e-3;

using Bins = std::vector<std::complex<double>>;

// Returns a window with half a Hann window at either end and 1 in between.
std::vector<double> fades(std::size_t size) {
    std::vector<double> window(size, 1.0);
    const auto length = static_cast<std::size_t>(kFadeShare * static_cast<double>(size));
    for (std::size_t n = 0; n < length; ++n) {
        const double place = (static_cast<double>(n) + 0.5) / static_cast<double>(length);
        window[n] = window[size - 1 - n] = 0.5 - 0.5 * std::cos(std::numbers::pi * place);
    }
    return window;
}

// Sums the phases of the cross-spectra of channel pairs.
class PhaseSum {
  public:
    // `samples` is the length of every recording.
    PhaseSum(const Fourier& fourier, std::size_t samples)
        : fourier_(fourier),
          window_(fades(samples)),
          before_(fourier.size()),
          after_(fourier.size()),
          sum_(fourier.size()) {}

    void add(const ChannelPair& pair) {
        transform(pair.before, before_);
        transform(pair.after, after_);
        double mean = 0.0;
        for (std::size_t k = 0; k < sum_.size(); ++k) mean += std::abs(before_[k]) * std::abs(after_[k]);
        mean /= static_cast<double>(sum_.size());
        if (!(mean > 0.0) || !std::isfinite(mean)) return;
        for (std::size_t k = 0; k < sum_.size(); ++k) {
            const double level = std::abs(before_[k]) * std::abs(after_[k]);
            sum_[k] += before_[k] * std::conj(after_[k]) / (level + kFloor * mean);
        }
    }

    // The sum is conjugated: a forward transform turns it into the correlation over time.
    Bins& sum() { return sum_; }

  private:
    void transform(std::span<const float> samples, Bins& spectrum) const {
        const auto end =
            std::transform(samples.begin(), samples.end(), window_.begin(), spectrum.begin(),
                           [](float sample, double weight) { return static_cast<double>(sample) * weight; });
        std::fill(end, spectrum.end(), 0.0);
        fourier_.transform(spectrum);
    }

    const Fourier& fourier_;
    std::vector<double> window_;
    Bins before_;
    Bins after_;
    Bins sum_;
};

// Returns |c| at each lag from -longest to longest.
std::vector<double> heights(const Bins& correlation, int longest) {
    std::vector<double> all;
    for (int64_t lag = -longest; lag <= longest; ++lag) {
        const auto place = static_cast<std::size_t>(lag < 0 ? lag + std::ssize(correlation) : lag);
        all.push_back(std::abs(correlation[place].real()));
    }
    return all;
}

// Returns the greatest value outside the neighbourhood of `peak`.
double highestRival(const std::vector<double>& all, int64_t peak) {
    double highest = 0.0;
    for (int64_t place = 0; place < std::ssize(all); ++place) {
        if (std::abs(place - peak) > kPeakWidth_samples)
            highest = std::max(highest, all[static_cast<std::size_t>(place)]);
    }
    return highest;
}

}  // namespace

std::optional<int64_t> findDelay(const std::vector<ChannelPair>& pairs, int longest) {
    if (pairs.empty() || pairs.front().before.empty()) return std::nullopt;
    const std::size_t samples = pairs.front().before.size();
    // Zero padding of at least `longest` samples keeps a delay in one direction from wrapping into the other.
    const std::size_t size = std::bit_ceil(samples + static_cast<std::size_t>(longest));
    const Fourier fourier(size);
    PhaseSum phases(fourier, samples);
    for (const ChannelPair& pair : pairs) phases.add(pair);
    Bins& correlation = phases.sum();
    fourier.transform(correlation);

    double energy = 0.0;
    for (const auto& value : correlation) energy += value.real() * value.real();
    const double mean = std::sqrt(energy / static_cast<double>(size));
    const std::vector<double> all = heights(correlation, longest);
    const auto highest = std::max_element(all.begin(), all.end());
    const int64_t place = highest - all.begin();
    if (!(*highest > kClearPeak * mean) || highestRival(all, place) > kHighestRival * *highest)
        return std::nullopt;
    return place - longest;
}

}  // namespace sonivex_tool
