#include "quality_rows.h"

#include <algorithm>

namespace response_quality {

bool Row::holds() const {
    return !figures.empty() &&
           std::all_of(figures.begin(), figures.end(), [](const Figure& figure) { return figure.holds(); });
}

std::vector<Row> allRows(const Responses& responses, double head_radius_m) {
    return {interauralDelays(responses, head_radius_m),
            trebleLevelDifferences(responses),
            middleLevelDifferences(responses),
            centralDelays(responses),
            centralLevelDifferences(responses),
            directToReverberantRatios(responses),
            strongestReflections(responses),
            reverberationTimes(responses, 500.0, -0.3, 0.3),
            reverberationTimes(responses, 1000.0, -0.2, 0.2),
            reverberationTimes(responses, 2000.0, -0.2, 0.2),
            reverberationTimes(responses, 4000.0, -0.35, 0.2),
            reverberationTimes(responses, 8000.0, -0.35, 0.2),
            tailUnevenness(responses),
            tailRises(responses),
            tailCoherenceErrors(responses),
            mirroredDirectLevels(responses),
            mirroredEnergies(responses),
            mirroredTailCorrelations(responses),
            frontColourRms(responses),
            frontColourWorst(responses),
            cingoCrosstalk(responses),
            monoCorrelations(responses),
            energiesBeforeArrival(responses),
            energiesAtTheEnd(responses),
            constantParts(responses),
            bassLifts(responses),
            pinkLoudnessChanges(responses),
            musicLoudnessChanges(responses),
            sourceBalances(responses),
            lowFrequencyLevels(responses),
            lowFrequencyRipples(responses)};
}

}  // namespace response_quality
