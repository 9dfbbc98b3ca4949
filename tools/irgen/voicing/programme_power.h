// Power spectrum at the ears when a group of loudspeakers plays a typical programme. It is flat if the group
// does not colour the programme.
#pragma once

#include <vector>

#include "head_model.h"

namespace sonivex_irgen {

/** Programme that the loudspeakers of a group play. */
enum class Programme {
    kMusicPair,   // both ears hear two channels of music, which are coherent in the bass and differ in the
                  // treble
    kOwnChannel,  // each ear hears both responses of its own channel
    kOneChannel,  // each loudspeaker plays alone
};

/** Power at each frequency for a programme with the same power at all frequencies. For a pair it is the mean
 *  over the ears; for kOneChannel it is the sum over the ears and the mean over the loudspeakers.
 *  @param group signals of both ears for each loudspeaker: two loudspeakers, or any number from one for
 *               kOneChannel; each signal at 48 kHz, at most 32768 samples
 *  @return bins 0 to 16384 of 32768 points */
std::vector<double> programmePower(const std::vector<EarSignals>& group, Programme programme);

/** Coherence of the two channels of music: 0.95 up to 150 Hz, falling linearly over log f to 0.35 at
 *  3 kHz. */
double musicCoherence(double frequency_hz);

}  // namespace sonivex_irgen
