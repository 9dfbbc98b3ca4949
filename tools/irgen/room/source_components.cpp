#include "source_components.h"

#include <algorithm>
#include <cmath>

#include "biquad.h"
#include "fft.h"
#include "image_sources.h"
#include "late_tail.h"

namespace sonivex_irgen {
namespace {

constexpr double kRoomFrom_hz = 180.0;
constexpr double kReflections_db = -4.0;
constexpr double kLargestReflectedPart = 0.5;

EarSignals silence(std::size_t samples) {
    EarSignals ears;
    for (std::vector<double>& ear : ears) ear.assign(samples, 0.0);
    return ears;
}

SourceComponents roomComponents(const HeadModel& head, const Room& room, const SourceRecipe& recipe) {
    SourceComponents parts;
    parts.direct = silence(recipe.samples);
    parts.reflections = earlyReflections(head, room, recipe.azimuth_deg, recipe.samples);
    parts.tail = binauralTail(recipe.seed, roomDecay(room), recipe.samples);
    const Biquad bass_cut = highPass({kRoomFrom_hz, kButterworthQ, kRate_hz});
    for (std::vector<double>& ear : parts.reflections) applyFilter(bass_cut, ear);
    for (std::vector<double>& ear : parts.tail) applyFilter(bass_cut, ear);
    return parts;
}

// Energy of both ears from kRatioFrom_hz up, in arbitrary units. Only ratios between signals of one length
// are meaningful.
double comparedEnergy(const EarSignals& ears) {
    double sum = 0.0;
    for (const std::vector<double>& ear : ears) {
        const std::size_t size = nextPowerOfTwo(ear.size());
        const std::vector<double> power = powerSpectrum(ear, size);
        for (std::size_t k = 0; k < power.size(); ++k) {
            const double frequency_hz = static_cast<double>(k) * kRate_hz / static_cast<double>(size);
            if (frequency_hz >= kRatioFrom_hz) sum += power[k];
        }
    }
    return sum;
}

}  // namespace

SourceComponents loudspeakerComponents(const HeadModel& head, const Room& room, const SourceRecipe& recipe) {
    SourceComponents parts = roomComponents(head, room, recipe);
    const Vector3 direction = horizontalDirection(recipe.azimuth_deg);
    const EarSpectra heard_db = head.transfer_db(direction);
    const auto arrivals = head.arrivals(direction, kOrigin_samples);
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        addResponse(earResponse(heard_db[ear]), 1.0, arrivals[ear], parts.direct[ear]);
    }
    return parts;
}

SourceComponents lowFrequencyComponents(const HeadModel& head, const Room& room, const SourceRecipe& recipe) {
    SourceComponents parts = roomComponents(head, room, recipe);
    for (std::vector<double>& ear : parts.direct) ear[static_cast<std::size_t>(kOrigin_samples)] = 1.0;
    return parts;
}

void copyLeftToRight(SourceComponents& components) {
    for (EarSignals* part : {&components.direct, &components.reflections, &components.tail})
        (*part)[1] = (*part)[0];
}

EarSignals mixComponents(const SourceComponents& components, double direct_to_reverberant_db) {
    const double reverberant = comparedEnergy(components.direct) / dbToPower(direct_to_reverberant_db);
    const double in_room = comparedEnergy(components.reflections);
    const double reflected =
        std::min(in_room * dbToPower(kReflections_db), kLargestReflectedPart * reverberant);
    const double reflections_gain = std::sqrt(reflected / in_room);
    const double tail_gain = std::sqrt((reverberant - reflected) / comparedEnergy(components.tail));

    EarSignals ears = components.direct;
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        for (std::size_t n = 0; n < ears[ear].size(); ++n) {
            ears[ear][n] += reflections_gain * components.reflections[ear][n];
            ears[ear][n] += tail_gain * components.tail[ear][n];
        }
    }
    return ears;
}

SourceComponents filterComponents(const SourceComponents& components, const std::vector<double>& filter) {
    SourceComponents filtered = components;
    for (EarSignals* part : {&filtered.direct, &filtered.reflections, &filtered.tail}) {
        for (std::vector<double>& ear : *part) ear = convolveToLength(ear, filter);
    }
    return filtered;
}

}  // namespace sonivex_irgen
