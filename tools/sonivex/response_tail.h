#pragma once

#include <cstdint>

#include "effect.h"

namespace sonivex_tool {

/** For how many frames an effect still sounds when its input has ended: the length of surround's responses, 0
 * for an effect without any.
 *  @param channels of the input, a count that the effect takes. */
int64_t responseTailFrames(const Effect& effect, const FilterOptions& options, int channels);

}  // namespace sonivex_tool
