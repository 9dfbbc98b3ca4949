#pragma once

#include <string>

#include "responses_tables.h"

namespace sonivex_tool {

/** Width and height of the picture in pixels. */
constexpr int kPlotWidth = 1200;
constexpr int kPlotHeight = 1350;

/** Draws the responses of one source at both ears, overlaid, in three panels: the first 30 ms of the impulse
 *  responses, their magnitude responses, and their energy decays.
 *  @param source number of the source in the set, from 1
 *  @param path of the PNG file; it is written under a temporary name and renamed when it is complete
 *  @throw Failure (OutputNotWritable, NoSpace), std::bad_alloc */
void plotResponses(const ResponseSet& set, int source, const std::string& path);

}  // namespace sonivex_tool
