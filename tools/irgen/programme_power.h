// The power that an ear receives, at each frequency, when a typical programme comes from a group of
// loudspeakers. A group that leaves the programme's colour alone has a flat one.
#pragma once

#include <vector>

#include "head_model.h"

namespace sonivex_irgen {

/** What the loudspeakers of a group play. */
enum class Programme {
    kMusicPair,   // two channels of music, which agree in the bass and differ in the treble, heard by both
                  // ears
    kOwnChannel,  // each ear hears both responses of its own channel
    kOneChannel,  // each loudspeaker plays alone
};

/** Bins 0 to 16384 of 32768 points. @param group the ears' signals for each loudspeaker: two, or one or more
 * for kOneChannel. */
std::vector<double> programmePower(const std::vector<EarSignals>& group, Programme programme);

/** How much the two channels of music agree: 0.95 up to 150 Hz, falling with log f to 0.35 at 3 kHz. */
double musicCoherence(double frequency_hz);

}  // namespace sonivex_irgen
