// Quality promises about the impulse responses: rows of measured figures, each with the limits that it must
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

    /** True if the value is within its limits; false for NaN. */
    bool holds() const { return value >= lowest && value <= highest; }
};

/** All figures of one measure. */
struct Row {
    std::string measure;
    std::string unit;
    std::vector<Figure> figures;

    /** True if there are figures and all of them hold. */
    bool holds() const;
};

// Direction.

/** Deviation from Woodworth's delay for a head of this radius; sources at the side. */
Row interauralDelays(const Responses& responses, double head_radius_m);
/** Level of the near ear relative to the far ear in the 4 kHz octave of the direct sound. */
Row trebleLevelDifferences(const Responses& responses);
/** The same in the 500 Hz octave. */
Row middleLevelDifferences(const Responses& responses);
/** Interaural delay of the sources in the middle. */
Row centralDelays(const Responses& responses);
/** Interaural level difference of the direct sound of the sources in the middle. */
Row centralLevelDifferences(const Responses& responses);

// Room.

/** Deviation from the ratio that the room was designed for. */
Row directToReverberantRatios(const Responses& responses);
/** Loudest 1 ms of the early reflections relative to the direct sound. */
Row strongestReflections(const Responses& responses);
/** Deviation from the room's reverberation time in one octave. The limits are fractions of that time. */
Row reverberationTimes(const Responses& responses, double octave_hz, double lowest, double highest);
/** Rms deviation of the tail from an exponential decay. */
Row tailUnevenness(const Responses& responses);
/** Largest rise within the tail. */
Row tailRises(const Responses& responses);
/** Rms deviation of the tail's coherence from a diffuse field's. The modes' centre is left out, as its ears
 *  are equal. */
Row tailCoherenceErrors(const Responses& responses);
/** Level difference of the direct sound between the two sources of a pair. */
Row mirroredDirectLevels(const Responses& responses);
/** Level difference of the whole responses between the two sources of a pair. */
Row mirroredEnergies(const Responses& responses);
/** Correlation of the tails between the two sources of a pair, for each combination of ears. */
Row mirroredTailCorrelations(const Responses& responses);

// Tone and loudness. The modes are measured with the Audio stage behind them.

/** Rms deviation of the front pair's third-octave levels from flat. */
Row frontColourRms(const Responses& responses);
/** Largest deviation of the front pair's third-octave levels from flat. */
Row frontColourWorst(const Responses& responses);
/** Level of the far ear relative to the near ear in cingo. */
Row cingoCrosstalk(const Responses& responses);
/** Correlation of the ears when both front channels play the same. */
Row monoCorrelations(const Responses& responses);
/** Bass lift of the modes and of the Audio stage alone. */
Row bassLifts(const Responses& responses);
/** Loudness change of pink noise through the front pair. */
Row pinkLoudnessChanges(const Responses& responses);
/** Loudness change of a programme with the spectrum of music through the front pair. */
Row musicLoudnessChanges(const Responses& responses);
/** Loudness of a set's loudest source relative to its softest. The low-frequency source is left out, as it is
 *  louder by design. */
Row sourceBalances(const Responses& responses);
/** Level of the low-frequency source relative to the centre, 31 to 125 Hz. */
Row lowFrequencyLevels(const Responses& responses);
/** Ripple of the low-frequency source's response, 31 to 125 Hz. */
Row lowFrequencyRipples(const Responses& responses);

// Unwanted energy, relative to the energy of the whole response.

/** Energy before the earlier ear's onset. */
Row energiesBeforeArrival(const Responses& responses);
/** Energy of the last 64 samples, where a response must have faded out. */
Row energiesAtTheEnd(const Responses& responses);
/** Gain at 0 Hz. */
Row constantParts(const Responses& responses);

/** Every row above. */
std::vector<Row> allRows(const Responses& responses, double head_radius_m);

}  // namespace response_quality
