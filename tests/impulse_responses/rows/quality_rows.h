// Quality promises about the impulse responses: rows of figures, each with the limits that it must keep.
#pragma once

#include <array>
#include <vector>

#include "measured_head.h"
#include "response_sets.h"
#include "row.h"

namespace response_quality {

// Direction. In the two-channel modes each ear hears only its own channel. Rows that compare the ears with a
// head's, or judge how alike they are, leave these sets out.

/** Delay between the onsets of the ears, deviation from Woodworth's for a head of this radius; sources at the
 *  side, without the two-channel modes. */
Row onsetDelays(const Responses& responses, double head_radius_m);
/** Interaural delay of the direct sound below 1.5 kHz, mean of a mirrored pair, deviation from the measured
 *  head's; without the two-channel modes. */
Row lowFrequencyDelays(const Responses& responses, const MeasuredHead& head);
/** Interaural delay of the sources in the middle, without the centre of the modes, whose ears are equal. */
Row centralDelays(const Responses& responses);
/** Level of the near ear relative to the far ear in the 4 kHz octave of the direct sound. */
Row trebleLevelDifferences(const Responses& responses);
/** The same in the 500 Hz octave, without the two-channel modes. */
Row middleLevelDifferences(const Responses& responses);
/** Octaves in which the direct sound is compared with the measured head. */
inline constexpr std::array kLowOctaves_hz{125.0, 250.0, 500.0};
/** The same in each of kLowOctaves_hz, mean of a mirrored pair, deviation from the measured head's; without
 *  the two-channel modes. */
std::array<Row, kLowOctaves_hz.size()> lowLevelRows(const Responses& responses, const MeasuredHead& head);
/** Interaural level difference of the direct sound of the sources of centralDelays(). */
Row centralLevelDifferences(const Responses& responses);

/** Rows on the level of the near ear relative to the far ear, whole responses. */
struct WholeLevelRows {
    Row octaves;           // 250 Hz to 8 kHz, mean of a mirrored pair
    Row each;              // the same for every loudspeaker by itself
    Row speech;            // noise with the spectrum of speech, mean of a mirrored pair
    Row mirrored_octaves;  // difference between the two sources of a pair in an octave
    Row mirrored_speech;   // the same for speech
};

/** The rows of whole responses. The mirrored ones leave out the two-channel modes, where a single loudspeaker
 *  has no direction. */
WholeLevelRows wholeLevelRows(const Responses& responses);

// Room.

/** Rows on the direct-to-reverberant ratio, mean of a mirrored pair. */
struct RatioRows {
    Row mean;    // of the octaves 500 Hz to 4 kHz
    Row lowest;  // octave of 500 Hz to 8 kHz
    Row spread;  // highest less lowest of these octaves
};

/** The rows of ratios, without the two-channel modes, where an ear hears the sum of two responses. */
RatioRows ratioRows(const Responses& responses);

/** Rows on the ratio of the sum that each ear hears in the two-channel modes, as in RatioRows. */
struct SumRatioRows {
    Row lowest;
    Row spread;
};

/** The rows of sums. */
SumRatioRows sumRatioRows(const Responses& responses);

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
/** Interaural correlation of the first 80 ms, mean of a set's loudspeakers in front, in the centre or around.
 *  The low-frequency source, the modes' centre and the two-channel modes are left out. */
Row earlyCorrelations(const Responses& responses);
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
/** Rms deviation from flat of the third-octave levels of one loudspeaker of type 1 alone. */
Row loudspeakerColours(const Responses& responses);
/** Rms deviation from flat of the third-octave levels of a mono programme from the front pair of type 1. */
Row phantomColourRms(const Responses& responses);
/** Largest deviation of these levels. */
Row phantomColourWorst(const Responses& responses);
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

/** Every row above. Rows that need the measured head are left out without it. */
std::vector<Row> allRows(const Responses& responses, const HeadReference& head);

}  // namespace response_quality
