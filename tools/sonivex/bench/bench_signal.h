#pragma once

#include <cstdint>
#include <vector>

namespace sonivex_tool {

/** Makes noise that resembles people talking, independent in each channel. It has the spectrum of speech,
 *  four syllables per second, and a level of kBabbleLevel_dbfs. Every channel carries sound throughout, and
 *  the sum of all channels stays low enough to leave a limiter idle.
 *  @param channels at least 1
 *  @param frames samples per channel, at least 1
 *  @return interleaved samples, [frames][channels]; identical in every run */
std::vector<int16_t> makeBabble(int channels, int frames, int rate_hz);

constexpr double kBabbleLevel_dbfs = -30.0;  // RMS of each channel; 0 is that of a full-scale square

}  // namespace sonivex_tool
