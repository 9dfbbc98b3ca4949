// Impulse response of the Audio stage, the second convolution of the surround modes. It voices the sound for
// headphones, the same for both ears, at 44.1 kHz.
#pragma once

#include <vector>

namespace sonivex_irgen {

/** Largest magnitude of the table of integers. */
inline constexpr double kAudioLargestMagnitude = 26905.0;

/** Designs the response: a unit sample with a faint, short tail, more bass and a little air.
 *  @return kAudioFormat.samples samples with the steps of finishResponse applied, but not scaled to
 *  kAudioLargestMagnitude */
std::vector<double> audioStageResponse();

}  // namespace sonivex_irgen
