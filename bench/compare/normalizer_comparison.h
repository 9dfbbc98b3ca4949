// Compares the normalizer with FFmpeg's alimiter, stereo, at the same gain: speech with peaks at -20 dBFS,
// raised by 20 dB, and music with peaks at -1 dBFS, whose level does not change.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

/** Checks both outputs, then reports their processor times and ratio. Throws std::runtime_error if an output
 *  is wrong. */
void compareNormalizer(Report& report, const Effort& effort);

}  // namespace compare
