// Directional transfer functions: the part of a head's response that depends on the direction alone.
//
//   power      |H|^2 of a response, averaged over +-1/12 octave
//   average    weighted mean of power over all directions and both ears; directions in a dense part of the
//              grid weigh less
//   T          10 log10(power / average), limited to -30..15 dB
//
// Dividing by the average removes the measuring loudspeaker and suits headphones that are voiced to the
// diffuse field (Middlebrooks 1999). Detail finer than 1/6 octave does not improve externalisation
// (Hassager et al. 2016).
#pragma once

#include <array>
#include <vector>

#include "constants.h"
#include "head_measurements.h"

namespace sonivex_irgen {

/** T of one direction. */
struct DirectionalTransfer {
    Vector3 direction;  // unit vector towards the source
    /** T in dB at the kHeadBins bins, for each ear. */
    std::array<std::vector<double>, kEars> transfer_db;
    /** Interaural delay below 1.5 kHz as measured, positive if the left ear leads. */
    double low_frequency_delay_s = 0.0;
};

/** Computes T for each measured direction, in the order of the measurements.
 *  T keeps its value at 15 kHz above that frequency. It fades to 0 dB from 150 down to 50 Hz, where small
 *  loudspeakers measure nothing useful. Not higher: measured heads keep 2 dB between the ears at 125 Hz and
 *  more than 3 dB at 250 Hz for a source at the side. */
std::vector<DirectionalTransfer> directionalTransfers(const HeadMeasurements& head);

}  // namespace sonivex_irgen
