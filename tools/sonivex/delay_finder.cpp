#include "delay_finder.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>

#include "fourier.h"

namespace sonivex_tool {
namespace {

// Sounds without anything in common reach 5 to 6 times the mean; the effects' outputs 20 and more.
constexpr double kClearPeak = 10.0;
// Relative to the mean of |X||Y|: 30 dB below it a bin counts half.
constexpr double kFloor = 1e-3;

using Bins = std::vector<std::complex<double>>;

/** Adds the phases of one pair's cross-spectrum to a sum. */
class PhaseSum {
  public:
    explicit PhaseSum(const Fourier& fourier)
        : mFourier(fourier), mBefore(fourier.size()), mAfter(fourier.size()), mSum(fourier.size()) {}

    void add(const ChannelPair& pair) {
        transform(pair.before, mBefore);
        transform(pair.after, mAfter);
        double mean = 0.0;
        for (std::size_t k = 0; k < mSum.size(); ++k) mean += std::abs(mBefore[k]) * std::abs(mAfter[k]);
        mean /= static_cast<double>(mSum.size());
        if (!(mean > 0.0) || !std::isfinite(mean)) return;
        for (std::size_t k = 0; k < mSum.size(); ++k) {
            const double level = std::abs(mBefore[k]) * std::abs(mAfter[k]);
            mSum[k] += mBefore[k] * std::conj(mAfter[k]) / (level + kFloor * mean);
        }
    }

    /** Conjugated, so that a forward transform brings it back to time. */
    Bins& sum() { return mSum; }

  private:
    void transform(std::span<const float> samples, Bins& spectrum) const {
        const auto end = std::transform(samples.begin(), samples.end(), spectrum.begin(),
                                        [](float sample) { return static_cast<double>(sample); });
        std::fill(end, spectrum.end(), 0.0);
        mFourier.transform(spectrum);
    }

    const Fourier& mFourier;
    Bins mBefore;
    Bins mAfter;
    Bins mSum;
};

}  // namespace

std::optional<int64_t> findDelay(const std::vector<ChannelPair>& pairs, int longest) {
    if (pairs.empty() || pairs.front().before.empty()) return std::nullopt;
    // So much longer than the sound that a delay in one direction does not wrap into the other.
    const std::size_t size = std::bit_ceil(pairs.front().before.size() + static_cast<std::size_t>(longest));
    const Fourier fourier(size);
    PhaseSum phases(fourier);
    for (const ChannelPair& pair : pairs) phases.add(pair);
    Bins& correlation = phases.sum();
    fourier.transform(correlation);

    double energy = 0.0;
    for (const auto& value : correlation) energy += value.real() * value.real();
    int64_t delay = 0;
    double peak = 0.0;
    for (int64_t lag = -longest; lag <= longest; ++lag) {
        const auto place = static_cast<std::size_t>(lag < 0 ? lag + static_cast<int64_t>(size) : lag);
        const double height = std::abs(correlation[place].real());
        if (height <= peak) continue;
        peak = height;
        delay = lag;
    }
    const double mean = std::sqrt(energy / static_cast<double>(size));
    if (!(peak > kClearPeak * mean)) return std::nullopt;
    return delay;
}

}  // namespace sonivex_tool
