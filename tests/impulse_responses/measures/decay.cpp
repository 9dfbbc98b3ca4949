#include "decay.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>

#include "filters.h"
#include "interaural.h"

namespace response_quality {
namespace {

constexpr double kDirect_s = 0.0025;
constexpr double kComparedFrom_hz = 300.0;  // the responses leave the room out of the bass
constexpr double kReflectionsUntil_s = 0.015;
constexpr double kReflection_s = 0.001;
constexpr double kDecayFrom_s = 0.010;
constexpr int kMaxDecayRounds = 50;
constexpr double kDecayPrecision_s = 1e-5;
constexpr double kUnevennessStep_s = 0.005;
constexpr double kRiseStep_s = 0.010;

std::size_t samplesIn(double time_s) {
    return static_cast<std::size_t>(std::lround(time_s * kRate_hz));
}

std::size_t firstOnset(const Ears& ears) {
    return std::min(onset(ears[0]), onset(ears[1]));
}

// Energy of both ears from kComparedFrom_hz up.
double comparedEnergy(const Ears& ears) {
    double sum = 0.0;
    for (const Signal& ear : ears) {
        const std::size_t points = powerOfTwoFrom(std::max<std::size_t>(ear.size(), 4096));
        const Signal power = powerOf(ear, points);
        // The factor of 2 adds the bins above half the sample rate, which mirror those below.
        sum += 2.0 * bandSum(power, kRate_hz, kComparedFrom_hz, kRate_hz) / static_cast<double>(points);
    }
    return sum;
}

double sumOf(std::span<const double> values) {
    double sum = 0.0;
    for (const double value : values) sum += value;
    return sum;
}

// Sum of both ears' squared samples, high-passed at kComparedFrom_hz.
Signal energyCurve(const Ears& ears) {
    Signal curve(std::max(ears[0].size(), ears[1].size()), 0.0);
    for (const Signal& ear : ears) {
        const Signal heard = butterworthHighPass(ear, kComparedFrom_hz, kRate_hz);
        for (std::size_t n = 0; n < heard.size(); ++n) curve[n] += heard[n] * heard[n];
    }
    return curve;
}

// y = offset + slope x
struct Line {
    double offset = 0.0;
    double slope = 0.0;
};

// Least-squares fit to values at x = 0, 1, 2 and so on.
Line fitLine(std::span<const double> y) {
    const auto count = static_cast<double>(y.size());
    const double mean_x = (count - 1.0) / 2.0;
    const double mean_y = sumOf(y) / count;
    double xy = 0.0;
    double xx = 0.0;
    for (std::size_t i = 0; i < y.size(); ++i) {
        const double x = static_cast<double>(i) - mean_x;
        xy += x * (y[i] - mean_y);
        xx += x * x;
    }
    return {mean_y - xy / xx * mean_x, xy / xx};
}

// Energy that an exponential decay still holds at the end of the curve.
double missingEnergy(const Signal& energy, double time_s) {
    const double per_sample = std::pow(10.0, -6.0 / (kRate_hz * time_s));
    double sum = 0.0;  // of all values, decayed to the end of the curve
    for (const double value : energy) sum = (sum + value) * per_sample;
    const double at_end = sum / static_cast<double>(energy.size());
    return at_end * time_s * kRate_hz / (6.0 * std::numbers::ln10);
}

// Schroeder's backward integral in dB: for each sample, the energy from there on.
Signal integrated_db(const Signal& energy, double missing) {
    Signal levels_db(energy.size());
    double sum = missing;
    for (std::size_t n = energy.size(); n-- > 0;) {
        sum += energy[n];
        levels_db[n] = 10.0 * std::log10(sum);
    }
    return levels_db;
}

// Energies in dB of consecutive steps from the tail's start to its closing fade.
Signal tailSteps_db(const Ears& ears, double faded_part, double step_s) {
    const Signal curve = energyCurve(ears);
    const std::size_t step = samplesIn(step_s);
    const std::size_t end = fadeStart(curve, faded_part);
    Signal levels_db;
    for (std::size_t n = tailStart(ears); n + step <= end; n += step) {
        levels_db.push_back(10.0 * std::log10(sumOf(std::span(curve).subspan(n, step))));
    }
    return levels_db;
}

}  // namespace

Signal directSound(const Signal& response) {
    const auto first = response.begin() + static_cast<std::ptrdiff_t>(onset(response));
    return {first, first + static_cast<std::ptrdiff_t>(samplesIn(kDirect_s))};
}

Ears directSound(const Ears& ears) {
    return {directSound(ears[0]), directSound(ears[1])};
}

Ears directSoundInPlace(const Ears& ears) {
    Ears placed;
    for (std::size_t ear = 0; ear < 2; ++ear) {
        const Signal direct = directSound(ears[ear]);
        placed[ear].assign(onset(ears[ear]), 0.0);
        placed[ear].insert(placed[ear].end(), direct.begin(), direct.end());
    }
    return placed;
}

Signal reverberantSound(const Signal& response) {
    const std::size_t first = onset(response) + samplesIn(kDirect_s);
    return {response.begin() + static_cast<std::ptrdiff_t>(first), response.end()};
}

double strongestReflection_db(const Ears& ears) {
    const std::size_t size = samplesIn(kReflectionsUntil_s);
    Ears early;  // from each ear's own onset
    for (std::size_t ear = 0; ear < 2; ++ear) {
        const Signal heard = butterworthHighPass(ears[ear], kComparedFrom_hz, kRate_hz);
        const auto first = heard.begin() + static_cast<std::ptrdiff_t>(onset(ears[ear]));
        early[ear].assign(first, first + static_cast<std::ptrdiff_t>(size));
    }
    const std::size_t length = samplesIn(kReflection_s);
    double strongest = 0.0;
    for (std::size_t n = samplesIn(kDirect_s); n + length <= size; ++n) {
        double energy = 0.0;
        for (const Signal& ear : early) energy += energyOf(std::span(ear).subspan(n, length));
        strongest = std::max(strongest, energy);
    }
    return 10.0 * std::log10(strongest / comparedEnergy(directSound(ears)));
}

double reverberationTime_s(const Ears& ears, double octave_hz, double faded_part) {
    const std::size_t from = firstOnset(ears) + samplesIn(kDecayFrom_s);
    const std::size_t to = fadeStart(ears[0], faded_part);
    Signal energy(to - from, 0.0);
    for (const Signal& ear : ears) {
        const Signal band = octaveBand(ear, octave_hz, kRate_hz);
        for (std::size_t n = from; n < to; ++n) energy[n - from] += band[n] * band[n];
    }
    // The missing energy depends on the reverberation time, so iterate from a typical one.
    double time_s = 0.2;
    for (int round = 0; round < kMaxDecayRounds; ++round) {
        const double last_s = time_s;
        time_s = -60.0 / (fitLine(integrated_db(energy, missingEnergy(energy, time_s))).slope * kRate_hz);
        if (std::abs(time_s - last_s) < kDecayPrecision_s) break;
    }
    return time_s;
}

std::size_t fadeStart(const Signal& ear, double faded_part) {
    return static_cast<std::size_t>((1.0 - faded_part) * static_cast<double>(ear.size()));
}

double tailUnevenness_db(const Ears& ears, double faded_part) {
    const Signal levels_db = tailSteps_db(ears, faded_part, kUnevennessStep_s);
    const Line line = fitLine(levels_db);
    double sum = 0.0;
    for (std::size_t i = 0; i < levels_db.size(); ++i) {
        const double distance_db = levels_db[i] - line.offset - line.slope * static_cast<double>(i);
        sum += distance_db * distance_db;
    }
    return std::sqrt(sum / static_cast<double>(levels_db.size()));
}

double tailRise_db(const Ears& ears, double faded_part) {
    const Signal levels_db = tailSteps_db(ears, faded_part, kRiseStep_s);
    double largest_db = -1000.0;
    for (std::size_t i = 1; i < levels_db.size(); ++i) {
        largest_db = std::max(largest_db, levels_db[i] - levels_db[i - 1]);
    }
    return largest_db;
}

std::size_t tailStart(const Ears& ears) {
    return firstOnset(ears) + samplesIn(kTailFrom_s);
}

}  // namespace response_quality
