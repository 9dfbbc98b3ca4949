#pragma once

#include <functional>
#include <vector>

#include "audio_spec.h"

namespace test {

/** Format, rate and layout of interleaved float samples. */
sonivex_tool::AudioSpec floatSpec(int channels, int rate_hz = 48000);

/** A frame of float samples: `value(frame, channel)`. */
sonivex_tool::FramePtr floatFrame(int channels, int frames, const std::function<float(int, int)>& value,
                                  int rate_hz = 48000);

/** A mono frame that counts from `first`, with `first` as its pts. */
sonivex_tool::FramePtr countingFrame(int first, int frames);

/** The interleaved samples of a frame of floats. */
std::vector<float> floatsOf(const AVFrame& frame);

}  // namespace test
