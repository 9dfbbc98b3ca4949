#pragma once

#include <string>

#include "picture.h"
#include "responses_tables.h"

namespace sonivex_tool {

/** Width and height of the picture in pixels. */
constexpr int kPlotWidth = 1400;
constexpr int kPlotHeight = 1280;

/** Returns the picture's title: loudspeaker, set and source. */
std::string plotTitle(const ResponseSet& set, int source);

/** Draws the responses of one source at both ears, overlaid, in six panels: the first 30 ms of the impulse
 *  responses, with the interaural delay and level difference marked; their envelopes, magnitudes and energy
 *  decays; and by octave, levels and correlation. All pictures have the same axes but for the length in time.
 *  @param source number of the source in the set, from 1
 *  @return the bytes of the picture's file
 *  @throw std::bad_alloc */
std::string plotResponses(const ResponseSet& set, int source, sonivex_plotting::PictureFormat format);

}  // namespace sonivex_tool
