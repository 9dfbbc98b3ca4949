// One loudspeaker as the ears hear it, in three components: direct sound, early reflections and late tail.
// Their relative levels are set by mixing.h.
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
    double azimuth_deg = 0.0;  // left positive
    std::uint64_t seed = 0;    // of its reverberation
    std::size_t samples = 0;   // length of each component
    /** True if one channel is played through both responses to the same ear. The far ear's direct sound then
     *  arrives with the near ear's and is 10 dB softer: two arrivals of one channel at one ear would comb. */
    bool are_both_heard_by_one_ear = false;
};

/** Makes the components of a loudspeaker. Reflections and tail are high-passed at 180 Hz: the bass stays dry,
 *  even and mono. */
SourceComponents loudspeakerComponents(const HeadModel& head, const Room& room, const SourceRecipe& recipe);

/** Makes the components of the low-frequency channel: a unit sample in both ears, with the reflections and
 *  the tail of a loudspeaker at the recipe's azimuth. */
SourceComponents lowFrequencyComponents(const HeadModel& head, const Room& room, const SourceRecipe& recipe);

/** Replaces the right ear's signals with the left ear's. */
void copyLeftToRight(SourceComponents& components);

/** Convolves every component with a filter and keeps the length. */
SourceComponents filterComponents(const SourceComponents& components, const std::vector<double>& filter);

}  // namespace sonivex_irgen
