#include "interaural.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "cross_correlation.h"
#include "speech.h"

namespace response_quality {
namespace {

constexpr double kOnsetPart = 0.1;
constexpr std::size_t kOversampling = 8;
constexpr std::size_t kArrivalSamples = 2048;  // holds every arrival; the response is faint where it is cut
constexpr double kLongestDelay_s = 0.001;
constexpr double kWaveformUntil_hz = 1500.0;

Signal arrival(const Signal& ear) {
    return {ear.begin(), ear.begin() + static_cast<std::ptrdiff_t>(std::min(ear.size(), kArrivalSamples))};
}

// Energy of noise with the spectrum of speech behind a response of this power spectrum.
double speechEnergy(const Signal& power) {
    const double width_hz = kRate_hz / static_cast<double>(2 * (power.size() - 1));
    double sum = 0.0;
    for (std::size_t k = 0; k < power.size(); ++k) {
        sum += power[k] * speechDensity(static_cast<double>(k) * width_hz);
    }
    return sum;
}

// Left over right in some octaves of two power spectra.
Signal octaveDifferences_db(const Signal& left, const Signal& right, std::span<const double> octaves_hz,
                            double rate_hz) {
    Signal differences_db;
    for (const double octave_hz : octaves_hz) {
        differences_db.push_back(
            10.0 * std::log10(octaveSum(left, rate_hz, octave_hz) / octaveSum(right, rate_hz, octave_hz)));
    }
    return differences_db;
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

double lowFrequencyDelay_us(const Ears& ears, double rate_hz) {
    const auto longest = static_cast<std::size_t>(kLongestDelay_s * rate_hz);
    const std::size_t points = powerOfTwoFrom(std::max(ears[0].size(), ears[1].size()) + longest + 1);
    const Spectrum left = spectrumOf(ears[0], points);
    const Spectrum right = spectrumOf(ears[1], points);
    Spectrum cross(left.size());
    for (std::size_t k = 0; k < cross.size(); ++k) {
        const double frequency_hz = static_cast<double>(k) * rate_hz / static_cast<double>(points);
        if (frequency_hz > kWaveformUntil_hz) break;
        cross[k] = std::conj(left[k]) * right[k] * speechDensity(frequency_hz);
    }
    const Signal correlation = correlationOf(cross, kOversampling, longest);
    const auto best = std::max_element(correlation.begin(), correlation.end()) - correlation.begin();
    const double delay_samples =
        static_cast<double>(best) / static_cast<double>(kOversampling) - static_cast<double>(longest);
    return delay_samples / rate_hz * 1e6;
}

Signal octaveDifferences_db(const Ears& ears, std::span<const double> octaves_hz, double rate_hz) {
    return octaveDifferences_db(powerOf(ears[0], kOctavePoints), powerOf(ears[1], kOctavePoints), octaves_hz,
                                rate_hz);
}

double levelDifference_db(const Ears& ears, double octave_hz) {
    return octaveDifferences_db(ears, {&octave_hz, 1}, kRate_hz).front();
}

LevelDifferences levelDifferences(const Ears& ears) {
    const Signal left = powerOf(ears[0], kOctavePoints);
    const Signal right = powerOf(ears[1], kOctavePoints);
    LevelDifferences differences;
    const Signal octaves_db = octaveDifferences_db(left, right, kLevelOctaves_hz, kRate_hz);
    std::copy(octaves_db.begin(), octaves_db.end(), differences.octaves_db.begin());
    differences.speech_db = 10.0 * std::log10(speechEnergy(left) / speechEnergy(right));
    return differences;
}

double levelDifference_db(const Ears& ears) {
    return 10.0 * std::log10(energyOf(ears[0]) / energyOf(ears[1]));
}

}  // namespace response_quality
