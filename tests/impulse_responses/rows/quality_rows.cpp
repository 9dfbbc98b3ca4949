#include "quality_rows.h"

#include <algorithm>

namespace response_quality {

bool Row::holds() const {
    return !figures.empty() &&
           std::all_of(figures.begin(), figures.end(), [](const Figure& figure) { return figure.holds(); });
}

std::vector<Row> allRows(const Responses& responses, const HeadReference& head) {
    std::vector<Row> rows{onsetDelays(responses, head.radius_m)};
    if (head.measured.has_value()) {
        rows.push_back(lowFrequencyDelays(responses, *head.measured));
        for (const Row& row : lowLevelRows(responses, *head.measured)) rows.push_back(row);
    }
    const WholeLevelRows whole = wholeLevelRows(responses);
    const RatioRows ratios = ratioRows(responses);
    const SumRatioRows sum_ratios = sumRatioRows(responses);
    const std::vector<Row> others{
        trebleLevelDifferences(responses),
        middleLevelDifferences(responses),
        whole.octaves,
        whole.each,
        whole.speech,
        whole.mirrored_speech,
        whole.mirrored_octaves,
        centralDelays(responses),
        centralLevelDifferences(responses),
        ratios.mean,
        ratios.lowest,
        ratios.spread,
        sum_ratios.lowest,
        sum_ratios.spread,
        earlyCorrelations(responses),
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
        loudspeakerColours(responses),
        phantomColourRms(responses),
        phantomColourWorst(responses),
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
        lowFrequencyRipples(responses),
    };
    rows.insert(rows.end(), others.begin(), others.end());
    return rows;
}

}  // namespace response_quality
