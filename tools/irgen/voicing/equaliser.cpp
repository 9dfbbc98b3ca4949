#include "equaliser.h"

#include <algorithm>
#include <cmath>

#include "exact_math.h"
#include "minimum_phase.h"
#include "mixing.h"
#include "octave_smoothing.h"

namespace sonivex_irgen {
namespace {

constexpr std::size_t kTaps = 4096;
constexpr double kLimit_db = 12.0;
constexpr double kHeldBelow_hz = 40.0;
constexpr double kHeldAbove_hz = 15500.0;
constexpr double kAirFrom_hz = 11000.0;
constexpr double kAirTo_hz = 14000.0;
constexpr double kReferenceFrom_hz = 400.0;
constexpr double kReferenceTo_hz = 2500.0;
constexpr int kReferencePoints = 12;

double binWidth_hz(const std::vector<double>& bins) {
    return kRate_hz / static_cast<double>(2 * (bins.size() - 1));
}

std::size_t binAt(double frequency_hz, const std::vector<double>& bins) {
    return static_cast<std::size_t>(std::floor(frequency_hz / binWidth_hz(bins) + 0.5));
}

// Mean level in the middle of the spectrum; the rest is compared to it.
double referenceLevel_db(const std::vector<double>& level_db) {
    double sum = 0.0;
    for (int point = 0; point < kReferencePoints; ++point) {
        const double part = static_cast<double>(point) / static_cast<double>(kReferencePoints - 1);
        const double frequency_hz =
            kReferenceFrom_hz * exactExp(part * exactLog(kReferenceTo_hz / kReferenceFrom_hz));
        sum += level_db[binAt(frequency_hz, level_db)];
    }
    return sum / static_cast<double>(kReferencePoints);
}

// Smooths with a triangular window. A rectangular one would let the rounds diverge: it passes some ripples
// with the wrong sign, which each round would then raise.
std::vector<double> smooth(const std::vector<double>& power, double octaves) {
    return smoothOverOctaves(smoothOverOctaves(power, 0.25 * octaves), 0.25 * octaves);
}

// Target minus level at each bin, in dB. Below kHeldBelow_hz and above kHeldAbove_hz the value is held.
std::vector<double> missing_db(const std::vector<EarSignals>& sources, const EqualiserPlan& plan) {
    std::vector<double> level_db = smooth(programmePower(sources, plan.programme), plan.smoothing_octaves);
    for (double& value : level_db) value = powerToDb(std::max(value, 1e-30));
    const double reference_db = referenceLevel_db(level_db);
    std::vector<double> missing(level_db.size());
    const std::size_t lowest = binAt(kHeldBelow_hz, level_db);
    const std::size_t highest = binAt(kHeldAbove_hz, level_db);
    for (std::size_t k = 0; k < missing.size(); ++k) {
        const std::size_t held = std::clamp(k, lowest, highest);
        const double frequency_hz = static_cast<double>(held) * binWidth_hz(level_db);
        missing[k] = airShelf_db(frequency_hz, plan.air_db) - (level_db[held] - reference_db);
    }
    return missing;
}

std::vector<EarSignals> mixGroup(const std::vector<SourceComponents>& group, const EqualiserPlan& plan) {
    if (plan.programme == Programme::kOwnChannel) return mixSummed(group, plan.direct_to_reverberant_db);
    std::vector<EarSignals> sources;
    sources.reserve(group.size());
    for (const SourceComponents& components : group) {
        sources.push_back(mixComponents(components, plan.direct_to_reverberant_db));
    }
    return sources;
}

}  // namespace

double airShelf_db(double frequency_hz, double air_db) {
    if (frequency_hz <= kAirFrom_hz) return 0.0;
    const double s = std::min(exactLog(frequency_hz / kAirFrom_hz) / exactLog(kAirTo_hz / kAirFrom_hz), 1.0);
    return air_db * s * s * (3.0 - 2.0 * s);
}

EqualisedGroup equaliseGroup(const std::vector<SourceComponents>& group, const EqualiserPlan& plan) {
    EqualisedGroup result{mixGroup(group, plan), 0.0};
    std::vector<double> gain_db;
    for (int round = 0; round < plan.rounds; ++round) {
        const std::vector<double> error_db = missing_db(result.sources, plan);
        gain_db.resize(error_db.size(), 0.0);
        for (std::size_t k = 0; k < gain_db.size(); ++k) {
            gain_db[k] = std::clamp(gain_db[k] + plan.strength * error_db[k], -kLimit_db, kLimit_db);
        }
        const std::vector<double> filter = minimumPhaseResponse(gain_db, kTaps);
        std::vector<SourceComponents> filtered;
        filtered.reserve(group.size());
        for (const SourceComponents& components : group)
            filtered.push_back(filterComponents(components, filter));
        result.sources = mixGroup(filtered, plan);
    }
    for (const double gain : gain_db)
        result.largest_gain_db = std::max(result.largest_gain_db, std::abs(gain));
    return result;
}

}  // namespace sonivex_irgen
