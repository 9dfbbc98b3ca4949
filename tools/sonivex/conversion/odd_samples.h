#pragma once

#include <cstdint>

#include "av_objects.h"

namespace sonivex_tool {

/** Replaces NaN and infinite samples of a frame by 0. A frame that shares its samples is copied first.
 *  @return how many there were, each channel counted; 0 for integer formats
 *  @throw std::bad_alloc */
uint64_t silenceNonFinite(FramePtr& frame);

}  // namespace sonivex_tool
