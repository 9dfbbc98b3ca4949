#include "noise.h"

#include <cmath>

namespace sonivex_irgen {

std::uint64_t SplitMix64::next() {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31);
}

double GaussianNoise::next() {
    std::uint64_t sum = 0;
    for (int output = 0; output < 2; ++output) {
        const std::uint64_t bits = bits_.next();
        for (int shift = 0; shift < 64; shift += 16) sum += (bits >> shift) & 0xFFFFU;
    }
    // Eight uniform values in 0..65535 have the mean 8 * 32767.5 and the deviation 65536 * sqrt(8 / 12).
    return (static_cast<double>(sum) - 8.0 * 32767.5) / (65536.0 * std::sqrt(8.0 / 12.0));
}

std::vector<double> gaussianNoise(std::uint64_t seed, std::size_t count) {
    GaussianNoise noise(seed);
    std::vector<double> values(count);
    for (double& value : values) value = noise.next();
    return values;
}

}  // namespace sonivex_irgen
