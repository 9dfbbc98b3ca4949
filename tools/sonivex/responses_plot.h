#pragma once

#include <string>

#include "responses_tables.h"

namespace sonivex_tool {

/** Width and height of the picture in pixels. */
constexpr int kPlotWidth = 1200;
constexpr int kPlotHeight = 1350;

/** Draw what both ears hear of one source, over each other: the first 30 ms of the impulse responses, their
 * magnitudes, and the decay of their energy.
 *  @param source its number, from 1
 *  @param path of the PNG file to write, under a temporary name until it is whole
 *  @throw Failure (OutputNotWritable, NoSpace), std::bad_alloc */
void plotResponses(const ResponseSet& set, int source, const std::string& path);

}  // namespace sonivex_tool
