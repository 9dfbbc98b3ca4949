#pragma once

#include "vorlin/frame.h"

struct AVFrame;

namespace Vorlin {

/** Checks that an AVFrame holds the audio that its description promises: the same sample format, channel
 *  count and sample rate, at least one frame of samples, a layout of as many channels, and every plane
 *  present and long enough in its buffer. A plane that is not reference-counted is assumed to hold the
 *  samples, unless the line size says that it is shorter.
 *  @return true if every sample that `info` describes can be read. [any, concurrent] real-time safe */
bool frameMatchesDescription(const IQFFrame::audioInfo& info, const AVFrame* frame);

/** @return true if `bytes` fit into the first plane of `frame` and nobody else refers to its buffer.
 *  [any, concurrent] real-time safe */
bool canWriteFirstPlane(const AVFrame* frame, std::size_t bytes);

}  // namespace Vorlin
