#include "interaural.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace response_quality {
namespace {

constexpr double kOnsetPart = 0.1;
constexpr std::size_t kOversampling = 8;
constexpr std::size_t kArrivalSamples = 2048;  // holds every arrival; the response is faint where it is cut

double energy(const Signal& signal) {
    double sum = 0.0;
    for (const double value : signal) sum += value * value;
    return sum;
}

Signal arrival(const Signal& ear) {
    return {ear.begin(), ear.begin() + static_cast<std::ptrdiff_t>(std::min(ear.size(), kArrivalSamples))};
}

}  // namespace

std::size_t onset(const Signal& signal) {
    double peak = 0.0;
    for (const double value : signal) peak = std::max(peak, std::abs(value));
    for (std::size_t n = 0; n < signal.size(); ++n) {
        if (std::abs(signal[n]) >= kOnsetPart * peak) return n;
    }
    return 0;
}

double interauralDelay_us(const Ears& ears) {
    const auto left = static_cast<double>(onset(oversample(arrival(ears[0]), kOversampling)));
    const auto right = static_cast<double>(onset(oversample(arrival(ears[1]), kOversampling)));
    return (right - left) / (static_cast<double>(kOversampling) * kRate_hz) * 1e6;
}

double woodworthDelay_us(double azimuth_deg, double head_radius_m) {
    // Lateral angle: 110 degrees of azimuth is as far to the side as 70.
    const double lateral = std::asin(std::sin(azimuth_deg * std::numbers::pi / 180.0));
    return head_radius_m / kSpeedOfSound_m_s * (lateral + std::sin(lateral)) * 1e6;
}

double levelDifference_db(const Ears& ears, double centre_hz) {
    const std::size_t points = powerOfTwoFrom(std::max(ears[0].size(), ears[1].size()));
    const double low_hz = centre_hz / std::numbers::sqrt2;
    const double high_hz = centre_hz * std::numbers::sqrt2;
    return 10.0 * std::log10(bandSum(powerOf(ears[0], points), kRate_hz, low_hz, high_hz) /
                             bandSum(powerOf(ears[1], points), kRate_hz, low_hz, high_hz));
}

double levelDifference_db(const Ears& ears) {
    return 10.0 * std::log10(energy(ears[0]) / energy(ears[1]));
}

}  // namespace response_quality
