#include "diffuseness.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "cross_correlation.h"
#include "decay.h"
#include "interaural.h"
#include "tone.h"

namespace response_quality {
namespace {

constexpr double kLowest_hz = 250.0;
constexpr int kHalfOctaves = 11;  // centres 250 Hz to 8 kHz
constexpr double kEarlyUntil_s = 0.080;
constexpr double kLongestLag_s = 0.001;
constexpr std::array kEarlyOctaves_hz{500.0, 1000.0, 2000.0};

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

// Returns what a diffuse field gives in a band. The curve falls by a third within a half octave around
// 500 Hz, so its value at the centre would not do.
double meanDiffuseCoherence(double low_hz, double high_hz) {
    constexpr int kSteps = 32;
    double sum = 0.0;
    for (int i = 0; i < kSteps; ++i)
        sum += diffuseCoherence(low_hz + (i + 0.5) / kSteps * (high_hz - low_hz));
    return sum / kSteps;
}

// The tail with its decay compensated.
Signal steadyTail(const Signal& ear, std::size_t start, double reverberation_time_s) {
    Signal tail = tailOf(ear, start);
    for (std::size_t n = start; n < tail.size(); ++n) {
        tail[n] *= std::pow(10.0, 3.0 * static_cast<double>(n - start) / kRate_hz / reverberation_time_s);
    }
    return tail;
}

// Largest magnitude of the normalised cross-correlation in a band, within kLongestLag_s.
double largestCorrelation(const Spectrum& a, const Spectrum& b, double low_hz, double high_hz) {
    const double width_hz = kRate_hz / static_cast<double>(2 * (a.size() - 1));
    Spectrum cross(a.size());
    double aa = 0.0;
    double bb = 0.0;
    for (std::size_t k = 1; k < a.size(); ++k) {
        const double frequency_hz = static_cast<double>(k) * width_hz;
        if (frequency_hz < low_hz || frequency_hz >= high_hz) continue;
        cross[k] = std::conj(a[k]) * b[k];
        aa += 2.0 * std::norm(a[k]);  // with the mirror image above half the sample rate
        bb += 2.0 * std::norm(b[k]);
    }
    const auto longest = static_cast<std::size_t>(kLongestLag_s * kRate_hz);
    return worst(correlationOf(cross, 1, longest)) / std::sqrt(aa * bb);
}

}  // namespace

double diffuseCoherence(double frequency_hz) {
    constexpr double kEarDistance_m = 0.15;
    const double kd = 2.0 * std::numbers::pi * frequency_hz * kEarDistance_m / kSpeedOfSound_m_s;
    return std::sin(2.2 * kd) / (2.2 * kd) / std::sqrt(1.0 + std::pow(kd / 2.0, 4.0));
}

double coherenceError(const Ears& ears, double reverberation_time_s) {
    const std::size_t start = tailStart(ears);
    const std::size_t points = powerOfTwoFrom(ears[0].size());
    const Spectrum left = spectrumOf(steadyTail(ears[0], start, reverberation_time_s), points);
    const Spectrum right = spectrumOf(steadyTail(ears[1], start, reverberation_time_s), points);
    double sum = 0.0;
    for (int i = 0; i < kHalfOctaves; ++i) {
        const double low_hz = kLowest_hz * std::exp2(0.5 * i - 0.25);
        const double high_hz = low_hz * std::exp2(0.5);
        const double error =
            bandCorrelation(left, right, low_hz, high_hz) - meanDiffuseCoherence(low_hz, high_hz);
        sum += error * error;
    }
    return std::sqrt(sum / kHalfOctaves);
}

double earlyCorrelation(const Ears& ears) {
    const std::size_t from = std::min(onset(ears[0]), onset(ears[1]));
    const std::size_t to = from + static_cast<std::size_t>(kEarlyUntil_s * kRate_hz);
    std::array<Spectrum, 2> early;
    for (std::size_t ear = 0; ear < 2; ++ear) {
        early[ear] = spectrumOf(Signal(ears[ear].begin() + static_cast<std::ptrdiff_t>(from),
                                       ears[ear].begin() + static_cast<std::ptrdiff_t>(to)),
                                kOctavePoints);
    }
    double sum = 0.0;
    for (const double octave_hz : kEarlyOctaves_hz) {
        sum += largestCorrelation(early[0], early[1], octave_hz / std::numbers::sqrt2,
                                  octave_hz * std::numbers::sqrt2);
    }
    return sum / static_cast<double>(kEarlyOctaves_hz.size());
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
