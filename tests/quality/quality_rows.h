// What we promise about the impulse responses, row by row: each measured figure with the limits that it must
// keep.
#pragma once

#include <string>
#include <vector>

#include "response_sets.h"

namespace response_quality {

/** One measured figure. */
struct Figure {
    std::string of;  // the set, source or ear that was measured
    double value = 0.0;
    double lowest = 0.0;
    double highest = 0.0;

    /** False for a value that is not a number. */
    bool holds() const { return value >= lowest && value <= highest; }
};

/** All figures of one kind. */
struct Row {
    std::string measure;
    std::string unit;
    std::vector<Figure> figures;

    bool holds() const;
};

// Direction.

/** Against Woodworth's for a head of this radius. */
Row interauralDelays(const Responses& responses, double head_radius_m);
/** Of the direct sound, in the 4 kHz octave: more at the ear on the source's side. */
Row trebleLevelDifferences(const Responses& responses);
/** Of the direct sound, in the 500 Hz octave. */
Row middleLevelDifferences(const Responses& responses);
/** Sources in the middle reach both ears at the same time. */
Row centralDelays(const Responses& responses);
/** And at the same level. */
Row centralLevelDifferences(const Responses& responses);

// Room.

/** Against what the room was made for. */
Row directToReverberantRatios(const Responses& responses);
Row strongestReflections(const Responses& responses);
/** Against the room's, in parts of it, for one octave. */
Row reverberationTimes(const Responses& responses, double octave_hz, double lowest, double highest);
Row tailUnevenness(const Responses& responses);
Row tailRises(const Responses& responses);
/** Not of the modes' centre, whose ears are equal. */
Row tailCoherenceErrors(const Responses& responses);
Row mirroredDirectLevels(const Responses& responses);
Row mirroredEnergies(const Responses& responses);
Row mirroredTailCorrelations(const Responses& responses);

// Tone and loudness: the modes with the Audio stage behind them.

Row frontColourRms(const Responses& responses);
Row frontColourWorst(const Responses& responses);
Row cingoCrosstalk(const Responses& responses);
/** What the ears still have in common when both channels play the same. */
Row monoCorrelations(const Responses& responses);
Row bassLifts(const Responses& responses);
Row pinkLoudnessChanges(const Responses& responses);
Row musicLoudnessChanges(const Responses& responses);
/** Loudest against softest source of a set; the low-frequency source is meant to be louder. */
Row sourceBalances(const Responses& responses);
Row lowFrequencyLevels(const Responses& responses);
Row lowFrequencyRipples(const Responses& responses);

// Cleanness, against the whole energy.

Row energiesBeforeArrival(const Responses& responses);
Row energiesAtTheEnd(const Responses& responses);
Row constantParts(const Responses& responses);

/** Every row above. */
std::vector<Row> allRows(const Responses& responses, double head_radius_m);

}  // namespace response_quality
