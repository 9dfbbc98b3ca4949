// The normalizer against FFmpeg's alimiter, stereo, at the same gain: speech whose peaks are at -20 dBFS,
// raised by 20 dB, and music at -1 dBFS, left as loud as it is.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

void compareNormalizer(Report& report, const Effort& effort);

}  // namespace compare
