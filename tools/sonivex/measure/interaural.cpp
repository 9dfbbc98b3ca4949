#include "interaural.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace sonivex_tool {
namespace {

constexpr double kLongestDelay_s = 0.001;  // a large head causes 0.8 ms
constexpr double kSilence_rms = 1e-4;      // -80 dBFS, well above the rounding noise of 16-bit samples
constexpr double kLargestLevel_db = 100.0;
constexpr double kAudibleDelay_us = 20.0;
constexpr double kAudibleLevel_db = 1.0;

double energyOf(std::span<const double> samples) {
    double sum = 0.0;
    for (const double sample : samples) sum += sample * sample;
    return sum;
}

// Returns the sum over n of left[n] * right[n + lag].
double correlationAt(std::span<const double> left, std::span<const double> right, std::ptrdiff_t lag) {
    const auto size = static_cast<std::ptrdiff_t>(left.size());
    const std::ptrdiff_t first = std::max<std::ptrdiff_t>(0, -lag);
    const std::ptrdiff_t last = std::min(size, size - lag);
    double sum = 0.0;
    for (std::ptrdiff_t n = first; n < last; ++n) {
        sum += left[static_cast<std::size_t>(n)] * right[static_cast<std::size_t>(n + lag)];
    }
    return sum;
}

struct Top {
    double place = 0.0;  // relative to the middle value, -0.5 to 0.5
    double height = 0.0;
};

// Returns the top of the parabola through three neighbouring values, of which the middle one is greatest.
Top topOfParabola(double before, double middle, double after) {
    const double bend = before - 2.0 * middle + after;
    if (bend >= 0.0) return {0.0, middle};
    const double place = std::clamp(0.5 * (before - after) / bend, -0.5, 0.5);
    return {place, middle - 0.25 * (before - after) * place};
}

int signBeyond(double value, double threshold) {
    if (std::abs(value) < threshold) return 0;
    return value > 0.0 ? 1 : -1;
}

}  // namespace

InterauralDifference compareEars(std::span<const double> left, std::span<const double> right, int rate_hz) {
    InterauralDifference result;
    const double left_energy = energyOf(left);
    const double right_energy = energyOf(right);
    const double silence = kSilence_rms * kSilence_rms * static_cast<double>(left.size());
    if (std::max(left_energy, right_energy) <= silence) return result;

    result.is_silent = false;
    const double smallest = std::pow(10.0, -kLargestLevel_db / 10.0) * std::max(left_energy, right_energy);
    result.level_db = 10.0 * std::log10(std::max(left_energy, smallest) / std::max(right_energy, smallest));

    // One extra lag on either side gives every candidate two neighbours.
    const auto longest = static_cast<std::ptrdiff_t>(std::ceil(kLongestDelay_s * rate_hz));
    std::vector<double> correlations;
    for (std::ptrdiff_t lag = -longest - 1; lag <= longest + 1; ++lag) {
        correlations.push_back(correlationAt(left, right, lag));
    }
    const auto top = std::max_element(correlations.begin() + 1, correlations.end() - 1);
    if (*top <= 0.0) return result;
    const Top between = topOfParabola(*(top - 1), *top, *(top + 1));
    const auto lag = static_cast<double>(top - correlations.begin() - longest - 1);
    result.delay_us = (lag + between.place) / rate_hz * 1e6;
    result.likeness = between.height / std::sqrt(left_energy * right_energy);
    return result;
}

std::string heardSide(const InterauralDifference& ears) {
    if (ears.is_silent) return "silent";
    const int by_time = signBeyond(ears.delay_us, kAudibleDelay_us);
    const int by_level = signBeyond(ears.level_db, kAudibleLevel_db);
    if (by_time * by_level < 0) return "unclear";
    const int side = by_time + by_level;
    if (side == 0) return "middle";
    return side > 0 ? "left" : "right";
}

}  // namespace sonivex_tool
