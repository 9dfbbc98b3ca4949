// Computes in one pass over the spectra of a frame everything that its gains need.
#pragma once

#include "bin.h"
#include "centre_presence.h"

namespace sonivex {

/** Magnitudes per bin, kept for the next frame. */
struct Magnitudes {
    float* centre;  // |centreOf(left, right)|
    float* side;    // |left - right|
};

/** centreShare of each channel, per bin. */
struct CentreShares {
    float* left;
    float* right;
};

/** Analyses one frame.
 *  @param left, right [bins] spectra of the frame.
 *  @param magnitudes  [bins] of the previous frame, replaced by those of this frame.
 *  @param shares      [bins] overwritten.
 *  @return both fluxes, each summed in float from the first bin on.
 *  Arrays must not overlap.
 *  [any, concurrent] real-time safe */
Fluxes analyseBins(const Bin* left, const Bin* right, int bins, Magnitudes magnitudes, CentreShares shares);

}  // namespace sonivex
