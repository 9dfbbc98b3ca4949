// The second stage of the surround modes: headphone voicing, the same for both ears, at 44.1 kHz.
#pragma once

#include <vector>

namespace sonivex_irgen {

inline constexpr double kAudioLargestMagnitude = 26905.0;
inline constexpr double kAudioDivisor = 24000.0;

/** A unit sample with a faint short tail, more bass and a little air; 6000 samples, finished, not scaled. */
std::vector<double> audioStageResponse();

}  // namespace sonivex_irgen
