#pragma once

#include "audio_spec.h"

namespace sonivex_tool {

/** Copies the channels of a frame to the same positions of a frame of `spec`. Positions that only `spec` has
 *  are silent; channels beyond its last position are left out.
 *  @param frame interleaved 16-bit samples, as `spec` must describe too
 *  @throw std::bad_alloc */
FramePtr withChannelsOf(const AVFrame& frame, const AudioSpec& spec);

}  // namespace sonivex_tool
