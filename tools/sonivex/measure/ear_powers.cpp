#include "ear_powers.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "fourier.h"

namespace sonivex_tool {
namespace {

constexpr std::size_t kLongestBlock_samples = 32768;

// The block's transform; the zeros behind it keep the correlation of its ends apart.
void transformBlock(const Fourier& fourier, std::span<const double> block,
                    std::vector<std::complex<double>>& bins) {
    std::fill(bins.begin(), bins.end(), 0.0);
    std::copy(block.begin(), block.end(), bins.begin());
    fourier.transform(bins);
}

}  // namespace

std::size_t EarPowers::firstFrom(double frequency_hz) const {
    const double bin = std::ceil(frequency_hz / bin_hz);
    return static_cast<std::size_t>(std::clamp(bin, 0.0, static_cast<double>(cross.size())));
}

double EarPowers::sum(const std::vector<double>& power, double low_hz, double high_hz) const {
    double total = 0.0;
    for (std::size_t k = firstFrom(low_hz); k < firstFrom(high_hz); ++k) total += power[k];
    return total;
}

EarPowers earPowersOf(std::span<const double> left, std::span<const double> right, int rate_hz) {
    const std::size_t block =
        std::min(std::bit_ceil(std::max<std::size_t>(left.size(), 1)), kLongestBlock_samples);
    const std::size_t size = 2 * block;
    const Fourier fourier(size);
    EarPowers powers;
    powers.left.assign(block + 1, 0.0);
    powers.right.assign(block + 1, 0.0);
    powers.cross.assign(block + 1, 0.0);
    powers.bin_hz = static_cast<double>(rate_hz) / static_cast<double>(size);
    std::vector<std::complex<double>> left_bins(size);
    std::vector<std::complex<double>> right_bins(size);
    for (std::size_t first = 0; first < left.size(); first += block) {
        const std::size_t count = std::min(block, left.size() - first);
        transformBlock(fourier, left.subspan(first, count), left_bins);
        transformBlock(fourier, right.subspan(first, count), right_bins);
        for (std::size_t k = 0; k <= block; ++k) {
            powers.left[k] += std::norm(left_bins[k]);
            powers.right[k] += std::norm(right_bins[k]);
            powers.cross[k] += left_bins[k] * std::conj(right_bins[k]);
        }
    }
    return powers;
}

}  // namespace sonivex_tool
