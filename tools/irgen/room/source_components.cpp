#include "source_components.h"

#include <algorithm>
#include <cstdint>

#include "biquad.h"
#include "fft.h"
#include "image_sources.h"
#include "late_tail.h"

namespace sonivex_irgen {
namespace {

constexpr double kRoomFrom_hz = 180.0;
// Amplitude of the far ear's direct sound if both responses reach one ear.
constexpr double kFarEarPart = 0.3;

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

}  // namespace

SourceComponents loudspeakerComponents(const HeadModel& head, const Room& room, const SourceRecipe& recipe) {
    SourceComponents parts = roomComponents(head, room, recipe);
    const Vector3 direction = horizontalDirection(recipe.azimuth_deg);
    const EarSpectra heard_db = head.transfer_db(direction);
    const auto arrivals = head.directArrivals(direction, kOrigin_samples);
    const std::int64_t near = std::min(arrivals[0], arrivals[1]);
    for (std::size_t ear = 0; ear < kEars; ++ear) {
        const std::vector<double> response = earResponse(heard_db[ear]);
        if (recipe.are_both_heard_by_one_ear && arrivals[ear] != near) {
            addResponse(response, kFarEarPart, near, parts.direct[ear]);
        } else {
            addResponse(response, 1.0, arrivals[ear], parts.direct[ear]);
        }
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

SourceComponents filterComponents(const SourceComponents& components, const std::vector<double>& filter) {
    SourceComponents filtered = components;
    for (EarSignals* part : {&filtered.direct, &filtered.reflections, &filtered.tail}) {
        for (std::vector<double>& ear : *part) ear = convolveToLength(ear, filter);
    }
    return filtered;
}

}  // namespace sonivex_irgen
