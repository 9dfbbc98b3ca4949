#pragma once

#include <vector>

namespace sonivex_tool {

/** Picks from `supported` the sample rate to which audio of `rate_hz` is converted.
 *
 *  1. The rate itself, if it is supported.
 *  2. Else the rate in the simplest ratio to it, of those that keep all of its bandwidth or at least 44100 Hz
 *     and whose ratio has no term above 64: 22050 -> 44100 (2:1), 32000 -> 48000 (3:2), 88200 -> 44100 (1:2),
 *     192000 -> 48000. A resampler is exact for these.
 *  3. Else the next higher rate, or the highest.
 *  @param supported rates in Hz, at least one */
int chooseRate_hz(int rate_hz, const std::vector<int>& supported);

}  // namespace sonivex_tool
