#pragma once

#include <functional>
#include <vector>

#include "audio_spec.h"

namespace test {

/** Returns the AudioSpec of interleaved float samples in the default layout of their channel count. */
sonivex_tool::AudioSpec floatSpec(int channels, int rate_hz = 48000);

/** Makes a frame of interleaved float samples, each being `value(frame, channel)`. */
sonivex_tool::FramePtr floatFrame(int channels, int frames, const std::function<float(int, int)>& value,
                                  int rate_hz = 48000);

/** Makes a mono frame whose samples count up from `first`, with `first` as its pts. */
sonivex_tool::FramePtr countingFrame(int first, int frames);

/** Returns the samples of a frame of interleaved floats. */
std::vector<float> floatsOf(const AVFrame& frame);

}  // namespace test
