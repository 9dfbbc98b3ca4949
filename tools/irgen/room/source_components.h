// One loudspeaker as the ears hear it, in three components: direct sound, early reflections and late tail.
// Their relative levels are set when they are mixed.
#pragma once

#include <cstdint>
#include <vector>

#include "head_model.h"
#include "room.h"

namespace sonivex_irgen {

/** Components of one loudspeaker, all of the same length. */
struct SourceComponents {
    EarSignals direct;
    EarSignals reflections;
    EarSignals tail;
};

/** Parameters of one loudspeaker. */
struct SourceRecipe {
    double azimuth_deg;   // left positive
    std::uint64_t seed;   // of its reverberation
    std::size_t samples;  // length of each component
};

/** Makes the components of a loudspeaker. Reflections and tail are high-passed at 180 Hz: the bass stays dry,
 *  even and mono. */
SourceComponents loudspeakerComponents(const HeadModel& head, const Room& room, const SourceRecipe& recipe);

/** Makes the components of the low-frequency channel: a unit sample in both ears, with the reflections and
 *  the tail of a loudspeaker at the recipe's azimuth. */
SourceComponents lowFrequencyComponents(const HeadModel& head, const Room& room, const SourceRecipe& recipe);

/** Replaces the right ear's signals with the left ear's. */
void copyLeftToRight(SourceComponents& components);

/** Mixes the components to a direct-to-reverberant ratio, counted over both ears from 300 Hz up. The
 *  reflections are at least 4 dB below their level in the room and hold at most half of the reverberant
 *  energy; the tail holds the rest. */
EarSignals mixComponents(const SourceComponents& components, double direct_to_reverberant_db);

/** Convolves every component with a filter and keeps the length. */
SourceComponents filterComponents(const SourceComponents& components, const std::vector<double>& filter);

}  // namespace sonivex_irgen
