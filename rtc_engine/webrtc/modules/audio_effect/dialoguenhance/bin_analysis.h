// One pass over the spectra of a frame, for everything that its gains need.
#pragma once

#include "bin.h"
#include "centre_presence.h"

namespace sonivex {

/** What a frame leaves behind, per bin. */
struct Magnitudes {
    float* centre;  // |centreOf(left, right)|
    float* side;    // |left - right|
};

/** Per bin, centreShare of each channel. */
struct CentreShares {
    float* left;
    float* right;
};

/** @param magnitudes [bins] of the frame before; they become those of this one.
 *  @param shares     [bins] written.
 *  @return both fluxes, each summed from the first bin on in float.
 *  Arrays must not overlap. Real-time safe. */
Fluxes analyseBins(const Bin* left, const Bin* right, int bins, Magnitudes magnitudes, CentreShares shares);

}  // namespace sonivex
