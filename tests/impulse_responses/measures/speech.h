// Long-term average spectrum of speech. It is the weight for the differences between the ears that count in
// speech.
#pragma once

namespace response_quality {

/** Power density of speech at a frequency, with an arbitrary reference.
 *
 *  The third-octave levels are those of Byrne et al. (1994), men and women together, divided by the width of
 *  their bands and joined linearly in dB over log f.
 *  @return 0 outside 63 Hz to 16 kHz, where the levels end */
double speechDensity(double frequency_hz);

}  // namespace response_quality
