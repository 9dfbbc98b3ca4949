#include "diffuseness.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "decay.h"

namespace response_quality {
namespace {

constexpr double kLowest_hz = 250.0;
constexpr int kHalfOctaves = 11;  // centres 250 Hz to 8 kHz

// Real part of the normalised cross spectrum of a band.
double bandCorrelation(const Spectrum& a, const Spectrum& b, double low_hz, double high_hz) {
    const double width_hz = kRate_hz / static_cast<double>(2 * (a.size() - 1));
    double ab = 0.0;
    double aa = 0.0;
    double bb = 0.0;
    for (std::size_t k = 1; k < a.size(); ++k) {
        const double frequency_hz = static_cast<double>(k) * width_hz;
        if (frequency_hz < low_hz || frequency_hz >= high_hz) continue;
        ab += (a[k] * std::conj(b[k])).real();
        aa += std::norm(a[k]);
        bb += std::norm(b[k]);
    }
    return ab / std::sqrt(aa * bb);
}

// The tail up to the closing fade, with its decay compensated.
Signal steadyTail(const Signal& ear, std::size_t start, double reverberation_time_s, double faded_part) {
    Signal tail = tailOf(ear, start);
    tail.resize(fadeStart(ear, faded_part));
    for (std::size_t n = start; n < tail.size(); ++n) {
        tail[n] *= std::pow(10.0, 3.0 * static_cast<double>(n - start) / kRate_hz / reverberation_time_s);
    }
    return tail;
}

}  // namespace

double diffuseCoherence(double frequency_hz) {
    constexpr double kEarDistance_m = 0.15;
    const double kd = 2.0 * std::numbers::pi * frequency_hz * kEarDistance_m / kSpeedOfSound_m_s;
    return std::sin(2.2 * kd) / (2.2 * kd) / std::sqrt(1.0 + std::pow(kd / 2.0, 4.0));
}

double coherenceError(const Ears& ears, double reverberation_time_s, double faded_part) {
    const std::size_t start = tailStart(ears);
    const std::size_t points = powerOfTwoFrom(ears[0].size());
    const Spectrum left = spectrumOf(steadyTail(ears[0], start, reverberation_time_s, faded_part), points);
    const Spectrum right = spectrumOf(steadyTail(ears[1], start, reverberation_time_s, faded_part), points);
    double sum = 0.0;
    for (int i = 0; i < kHalfOctaves; ++i) {
        const double centre_hz = kLowest_hz * std::exp2(0.5 * i);
        const double found =
            bandCorrelation(left, right, centre_hz * std::exp2(-0.25), centre_hz * std::exp2(0.25));
        const double error = found - diffuseCoherence(centre_hz);
        sum += error * error;
    }
    return std::sqrt(sum / kHalfOctaves);
}

double correlation(const Signal& a, const Signal& b, double low_hz, double high_hz) {
    const std::size_t points = powerOfTwoFrom(std::max(a.size(), b.size()));
    return bandCorrelation(spectrumOf(a, points), spectrumOf(b, points), low_hz, high_hz);
}

Signal tailOf(const Signal& ear, std::size_t start) {
    Signal tail = ear;
    std::fill(tail.begin(), tail.begin() + static_cast<std::ptrdiff_t>(std::min(start, tail.size())), 0.0);
    return tail;
}

double correlation(const Signal& a, const Signal& b) {
    double ab = 0.0;
    double aa = 0.0;
    double bb = 0.0;
    for (std::size_t n = 0; n < std::min(a.size(), b.size()); ++n) {
        ab += a[n] * b[n];
        aa += a[n] * a[n];
        bb += b[n] * b[n];
    }
    return ab / std::sqrt(aa * bb);
}

}  // namespace response_quality
