#pragma once

#include <cstdint>
#include <optional>

namespace sonivex_tool {

// The delay of an effect's output caused by its block queue.
//
// An effect queues the samples of a call and processes them in whole blocks. It answers a call with silence
// unless it has enough processed samples for the whole call:
//
//   queued += call;  while (queued >= block) { queued -= block; ready += block; }
//   if (ready >= call) ready -= call; else the call's answer is silence
//
// Each silent answer adds one call to the delay. For some call sizes (300 frames in blocks of 512) another
// silent answer follows in the middle of the sound, because the first ones did not build up enough of a lead.
// Such a size leaves gaps in the output and has no constant delay that a player could compensate.

/** Returns the delay of the output in frames for calls of `call_frames`, both counts positive.
 *  @return nothing if a silent answer follows one that is not silent */
std::optional<int64_t> constantDelayFrames(int block_frames, int call_frames);

}  // namespace sonivex_tool
