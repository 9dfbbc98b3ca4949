#pragma once

#include <cstdint>
#include <vector>

namespace sonivex_tool {

/** Noise that babbles like people talking, another one in each channel: the spectrum of speech, four
 * syllables a second, at kBabbleLevel_dbfs. Every channel always sounds, and their sum leaves a limiter idle.
 *  @param channels from 1.
 *  @param frames   samples per channel, from 1.
 *  @return [frames][channels], the same samples in every run. */
std::vector<int16_t> makeBabble(int channels, int frames, int rate_hz);

constexpr double kBabbleLevel_dbfs = -30.0;  // RMS of each channel; 0 is that of a full-scale square

}  // namespace sonivex_tool
