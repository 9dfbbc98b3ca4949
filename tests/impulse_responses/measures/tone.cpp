#include "tone.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "filters.h"

namespace response_quality {
namespace {

constexpr std::size_t kPoints = 32768;
constexpr double kLowest_hz = 20.0;
constexpr double kHighest_hz = 20000.0;

// Coherence of the channels of music: 0.95 up to 150 Hz, falling linearly over log f to 0.35 at 3 kHz.
double musicCoherence(double frequency_hz) {
    if (frequency_hz <= 150.0) return 0.95;
    if (frequency_hz >= 3000.0) return 0.35;
    return 0.95 - 0.6 * std::log(frequency_hz / 150.0) / std::log(3000.0 / 150.0);
}

// Power density of the programme in dB with an arbitrary reference.
double programme_db(double frequency_hz, Programme programme) {
    const double pink_db = -10.0 * std::log10(frequency_hz);
    if (programme == Programme::kPink) return pink_db;
    double music_db = pink_db;
    music_db -= 1.5 * std::log2(std::clamp(frequency_hz, 100.0, 4000.0) / 100.0);
    // From 4 kHz up the slope is 3 dB/octave steeper than between 100 Hz and 4 kHz.
    if (frequency_hz > 4000.0) music_db -= 4.5 * std::log2(frequency_hz / 4000.0);
    if (frequency_hz < 40.0) music_db -= 12.0 * std::log2(40.0 / frequency_hz);
    return music_db;
}

double binWidth_hz(const Signal& power, double rate_hz) {
    return rate_hz / static_cast<double>(2 * (power.size() - 1));
}

// Exact centre of a third octave: 10^(band / 10) Hz, a tenth of a decade apart.
double thirdOctaveCentre_hz(int band) {
    return std::pow(10.0, band / 10.0);
}

}  // namespace

Signal frontPairPower(const ResponseSet& set) {
    const bool is_own_channel_only = feedsEachEarItsOwnChannel(set);
    Signal power(kPoints / 2 + 1, 0.0);
    for (std::size_t ear = 0; ear < 2; ++ear) {
        const Spectrum first = spectrumOf(set.sources[0].ears[ear], kPoints);
        const Spectrum second = spectrumOf(set.sources[1].ears[ear], kPoints);
        for (std::size_t k = 0; k < power.size(); ++k) {
            const double frequency_hz = static_cast<double>(k) * kRate_hz / kPoints;
            const double rho = is_own_channel_only ? 1.0 : musicCoherence(frequency_hz);
            const double both = std::norm(first[k]) + std::norm(second[k]) +
                                2.0 * rho * (first[k] * std::conj(second[k])).real();
            power[k] += both / 2.0;
        }
    }
    return power;
}

Signal sourcePower(const Ears& ears) {
    Signal power = powerOf(ears[0], kPoints);
    const Signal right = powerOf(ears[1], kPoints);
    for (std::size_t k = 0; k < power.size(); ++k) power[k] += right[k];
    return power;
}

Signal responsePower(const Signal& response) {
    return powerOf(response, kPoints);
}

double bandLevel_db(const Signal& power, double rate_hz, double low_hz, double high_hz) {
    const double width_hz = binWidth_hz(power, rate_hz);
    double sum = 0.0;
    double total = 0.0;
    for (std::size_t k = 1; k < power.size(); ++k) {
        const double frequency_hz = static_cast<double>(k) * width_hz;
        if (frequency_hz < low_hz || frequency_hz > high_hz) continue;
        sum += power[k] / frequency_hz;
        total += 1.0 / frequency_hz;
    }
    return 10.0 * std::log10(sum / total);
}

Signal colour_db(const Signal& power, double lowest_hz, double highest_hz) {
    Signal levels_db;
    for (int band = 13; band <= 43; ++band) {
        const double centre_hz = thirdOctaveCentre_hz(band);
        // The nominal limits are within 2 % of the exact centres.
        if (centre_hz < 0.97 * lowest_hz || centre_hz > 1.03 * highest_hz) continue;
        const double half = std::pow(10.0, 0.05);
        levels_db.push_back(bandLevel_db(power, kRate_hz, centre_hz / half, centre_hz * half));
    }
    const double mean_db =
        std::accumulate(levels_db.begin(), levels_db.end(), 0.0) / static_cast<double>(levels_db.size());
    for (double& level_db : levels_db) level_db -= mean_db;
    return levels_db;
}

double rms(const Signal& values) {
    double sum = 0.0;
    for (const double value : values) sum += value * value;
    return std::sqrt(sum / static_cast<double>(values.size()));
}

double worst(const Signal& values) {
    double largest = 0.0;
    for (const double value : values) largest = std::max(largest, std::abs(value));
    return largest;
}

double bassLift_db(const Signal& power, double rate_hz) {
    return bandLevel_db(power, rate_hz, 50.0, 80.0) - bandLevel_db(power, rate_hz, 400.0, 2000.0);
}

double loudnessChange_lu(const Signal& power, Programme programme) {
    const double width_hz = binWidth_hz(power, kRate_hz);
    double heard = 0.0;
    double played = 0.0;
    for (std::size_t k = 1; k < power.size(); ++k) {
        const double frequency_hz = static_cast<double>(k) * width_hz;
        if (frequency_hz < kLowest_hz || frequency_hz > kHighest_hz) continue;
        const double weight =
            std::pow(10.0, programme_db(frequency_hz, programme) / 10.0) * kCurve(frequency_hz, kRate_hz);
        heard += weight * power[k];
        played += weight;
    }
    return 10.0 * std::log10(heard / played);
}

}  // namespace response_quality
