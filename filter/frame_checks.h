#pragma once

#include "vorlin/frame.h"

struct AVFrame;

namespace Vorlin {

/** Whether an AVFrame holds the audio that its description promises: same format, channel count and rate, at
 * least one frame of samples, a layout of as many channels, and every plane present and long enough in its
 * buffer. A plane that is not reference-counted is taken to hold the frame's samples, unless the line size
 * says that it is shorter. What is true here can be read from first to last sample. Pure; any thread. */
bool frameMatchesDescription(const IQFFrame::audioInfo& info, const AVFrame* frame);

/** Whether `bytes` fit into the first plane of `frame`, and nobody else would see them written. */
bool canWriteFirstPlane(const AVFrame* frame, std::size_t bytes);

}  // namespace Vorlin
