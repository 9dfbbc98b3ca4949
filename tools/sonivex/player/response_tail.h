#pragma once

#include <cstdint>

#include "effect.h"

namespace sonivex_tool {

/** Returns for how many frames an effect still sounds after its input has ended: the length of surround's
 *  impulse responses, and 0 for the other effects.
 *  @param channels channel count of the input, one that the effect processes */
int64_t responseTailFrames(const Effect& effect, const FilterOptions& options, int channels);

}  // namespace sonivex_tool
