// What a head does to a sound by its direction alone.
//
//   power      |H|^2 of a response, averaged over +-1/12 octave
//   average    of power over all directions and both ears, crowded directions counting less
//   T          10 log10(power / average), -30..15 dB
//
// Dividing by the average removes the measuring loudspeaker and suits headphones that are voiced to the
// diffuse field (Middlebrooks 1999). Finer detail than 1/6 octave does not help a sound to leave the head
// (Hassager et al. 2016).
#pragma once

#include <array>
#include <vector>

#include "constants.h"
#include "head_measurements.h"

namespace sonivex_irgen {

/** T of one direction in dB at the kHeadBins bins, for each ear. */
struct DirectionalTransfer {
    Vector3 direction;
    std::array<std::vector<double>, kEars> transfer_db;
};

/** One entry for each measured direction. Held above 15 kHz; faded to 0 dB from 400 down to 120 Hz, where
 * small loudspeakers measure nothing and a head does nothing. */
std::vector<DirectionalTransfer> directionalTransfers(const HeadMeasurements& head);

}  // namespace sonivex_irgen
