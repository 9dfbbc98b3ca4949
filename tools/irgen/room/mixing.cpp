#include "mixing.h"

#include <algorithm>
#include <cmath>

#include "fft.h"
#include "minimum_phase.h"
#include "octave_smoothing.h"

namespace sonivex_irgen {
namespace {

constexpr std::size_t kPoints = 32768;
constexpr std::size_t kTaps = 4096;
constexpr double kHalfOctave = 0.5;
constexpr double kEvenUpTo_hz = 4000.0;
constexpr double kAt8kHz_db = 1.0;
constexpr double kAt16kHz_db = 3.0;
constexpr double kReflections_db = -4.0;    // largest gain of the reflections
constexpr double kReflectedPart = 0.35;     // largest part of the reverberant power
constexpr double kSmallestTailPart = 0.05;  // of the reverberant power
constexpr double kHeldBelow_hz = 250.0;     // the room has next to no power further down
constexpr double kHeldAbove_hz = 12000.0;
constexpr double kLimit_db = 30.0;
constexpr double kBroadbandFrom_hz = 300.0;
constexpr double kSmallestPower = 1e-30;  // keeps the ratios finite

double binFrequency_hz(std::size_t bin) {
    return static_cast<double>(bin) * kRate_hz / static_cast<double>(kPoints);
}

std::size_t binAt(double frequency_hz) {
    return static_cast<std::size_t>(std::floor(frequency_hz * static_cast<double>(kPoints) / kRate_hz + 0.5));
}

// Sum of both ears' |H|^2.
std::vector<double> powerAtTheEars(const EarSignals& ears) {
    std::vector<double> sum = powerSpectrum(ears[0], kPoints);
    const std::vector<double> right = powerSpectrum(ears[1], kPoints);
    for (std::size_t k = 0; k < sum.size(); ++k) sum[k] += right[k];
    return sum;
}

double total(const std::vector<double>& power) {
    double sum = 0.0;
    for (const double value : power) sum += value;
    return sum;
}

double broadbandEnergy(const EarSignals& ears) {
    const std::vector<double> power = powerAtTheEars(ears);
    double sum = 0.0;
    for (std::size_t k = 0; k < power.size(); ++k) {
        if (binFrequency_hz(k) >= kBroadbandFrom_hz) sum += power[k];
    }
    return sum;
}

// Minimum-phase filter with a power gain at each bin.
std::vector<double> gainFilter(const std::vector<double>& gains) {
    const std::size_t lowest = binAt(kHeldBelow_hz);
    const std::size_t highest = binAt(kHeldAbove_hz);
    std::vector<double> gain_db(gains.size());
    for (std::size_t k = 0; k < gains.size(); ++k) {
        const double held = gains[std::clamp(k, lowest, highest)];
        gain_db[k] = std::clamp(powerToDb(std::max(held, kSmallestPower)), -kLimit_db, kLimit_db);
    }
    return minimumPhaseResponse(gain_db, kTaps);
}

// How the reverberation gets its level.
struct RoomFilters {
    std::vector<double> reflections;
    // Brings the tail to the energy of the direct sound, so that the limits of its filter mean the same for
    // every loudspeaker.
    double tail_scale;
    std::vector<double> tail;
};

RoomFilters roomFilters(const SourceComponents& heard, double level_db) {
    const std::vector<double> direct = powerAtTheEars(heard.direct);
    const std::vector<double> tail = powerAtTheEars(heard.tail);
    const double tail_power_scale = total(direct) / total(tail);
    const std::vector<double> p_direct = smoothOverOctaves(direct, kHalfOctave);
    const std::vector<double> p_reflections =
        smoothOverOctaves(powerAtTheEars(heard.reflections), kHalfOctave);
    const std::vector<double> p_tail = smoothOverOctaves(tail, kHalfOctave);
    const double largest_reflections = dbToPower(kReflections_db);

    std::vector<double> reflections_gain(p_direct.size());
    std::vector<double> tail_gain(p_direct.size());
    for (std::size_t k = 0; k < p_direct.size(); ++k) {
        const double reverberant = p_direct[k] * dbToPower(-wantedRatio_db(binFrequency_hz(k), level_db));
        reflections_gain[k] = std::min(
            largest_reflections, kReflectedPart * reverberant / std::max(p_reflections[k], kSmallestPower));
        const double rest =
            std::max(reverberant - reflections_gain[k] * p_reflections[k], kSmallestTailPart * reverberant);
        tail_gain[k] = rest / std::max(tail_power_scale * p_tail[k], kSmallestPower);
    }
    return {gainFilter(reflections_gain), std::sqrt(tail_power_scale), gainFilter(tail_gain)};
}

EarSignals mixThrough(const RoomFilters& filters, const SourceComponents& components) {
    EarSignals ears = components.direct;
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        const std::vector<double> reflections =
            convolveToLength(components.reflections[ear], filters.reflections);
        const std::vector<double> tail = convolveToLength(components.tail[ear], filters.tail);
        for (std::size_t n = 0; n < ears[ear].size(); ++n) {
            ears[ear][n] += reflections[n] + filters.tail_scale * tail[n];
        }
    }
    return ears;
}

void add(const EarSignals& more, EarSignals& sum) {
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        for (std::size_t n = 0; n < sum[ear].size(); ++n) sum[ear][n] += more[ear][n];
    }
}

}  // namespace

double wantedRatio_db(double frequency_hz, double level_db) {
    const double octaves = exactLog2(std::max(frequency_hz, kEvenUpTo_hz) / kEvenUpTo_hz);
    if (octaves <= 1.0) return level_db + octaves * kAt8kHz_db;
    return level_db + kAt8kHz_db + (std::min(octaves, 2.0) - 1.0) * (kAt16kHz_db - kAt8kHz_db);
}

EarSignals mixComponents(const SourceComponents& components, double level_db) {
    return mixThrough(roomFilters(components, level_db), components);
}

std::vector<EarSignals> mixSummed(const std::vector<SourceComponents>& group, double level_db) {
    SourceComponents sum = group.front();
    for (std::size_t i = 1; i < group.size(); ++i) {
        add(group[i].direct, sum.direct);
        add(group[i].reflections, sum.reflections);
        add(group[i].tail, sum.tail);
    }
    const RoomFilters filters = roomFilters(sum, level_db);
    std::vector<EarSignals> sources;
    sources.reserve(group.size());
    for (const SourceComponents& components : group) sources.push_back(mixThrough(filters, components));
    return sources;
}

EarSignals mixBroadband(const SourceComponents& components, double ratio_db) {
    const double reverberant = broadbandEnergy(components.direct) * dbToPower(-ratio_db);
    const double in_room = broadbandEnergy(components.reflections);
    const double reflected = std::min(in_room * dbToPower(kReflections_db), kReflectedPart * reverberant);
    const double reflections_gain = std::sqrt(reflected / in_room);
    const double tail_gain = std::sqrt((reverberant - reflected) / broadbandEnergy(components.tail));
    EarSignals ears = components.direct;
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        for (std::size_t n = 0; n < ears[ear].size(); ++n) {
            ears[ear][n] += reflections_gain * components.reflections[ear][n];
            ears[ear][n] += tail_gain * components.tail[ear][n];
        }
    }
    return ears;
}

}  // namespace sonivex_irgen
