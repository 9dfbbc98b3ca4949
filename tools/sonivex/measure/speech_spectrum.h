#pragma once

namespace sonivex_tool {

/** Returns the power density of speech at a frequency, with an arbitrary reference.
 *
 *  This is the long-term average speech spectrum of Byrne et al. (1994), men and women together: the levels
 *  of its third octaves, divided by the width of their bands and joined linearly in dB over log f.
 *  @return 0 outside 63 Hz to 16 kHz, where the levels end */
double speechDensity(double frequency_hz);

}  // namespace sonivex_tool
