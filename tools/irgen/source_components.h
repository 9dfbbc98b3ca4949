// One loudspeaker as the ears hear it, in three parts that are levelled against each other.
#pragma once

#include <cstdint>
#include <vector>

#include "head_model.h"
#include "room.h"

namespace sonivex_irgen {

struct SourceComponents {
    EarSignals direct;
    EarSignals reflections;
    EarSignals tail;
};

/** What a loudspeaker is made from. */
struct SourceRecipe {
    double azimuth_deg;   // left positive
    std::uint64_t seed;   // of its reverberation
    std::size_t samples;  // of each part
};

/** The three parts, with reflections and tail above 180 Hz only: the bass stays dry, even and mono. */
SourceComponents loudspeakerComponents(const HeadModel& head, const Room& room, const SourceRecipe& recipe);

/** The parts of the low-frequency channel: a unit sample in both ears, in the room of a loudspeaker in front.
 */
SourceComponents lowFrequencyComponents(const HeadModel& head, const Room& room, const SourceRecipe& recipe);

/** Give the right ear what the left one has. */
void copyLeftToRight(SourceComponents& components);

/** Add the parts up so that the direct energy is `direct_to_reverberant_db` above the rest, both ears, above
 * 300 Hz. The reflections are at least 4 dB lower than the room has them and at most half of the reverberant
 * energy. */
EarSignals mixComponents(const SourceComponents& components, double direct_to_reverberant_db);

/** Filter every part. */
SourceComponents filterComponents(const SourceComponents& components, const std::vector<double>& filter);

}  // namespace sonivex_irgen
