#pragma once

#include <cstdint>
#include <optional>

namespace sonivex_tool {

// How late an effect's output is.
//
// An effect queues the samples of a call, works them off in whole blocks, and answers a call only when all of
// it is ready, with silence otherwise:
//
//   queued += call;  while (queued >= block) { queued -= block; ready += block; }
//   if (ready >= call) ready -= call; else the call's answer is silence
//
// Each silent answer adds one call to the delay. For some call sizes (300 frames in blocks of 512) a further
// silent answer comes in the middle of the sound, because the first ones did not build up enough of a lead.
// Such a size tears a hole into the output and has no delay that a player could take away.

/** The frames by which the output is late for calls of `call_frames`, when every silent answer comes before
 * the first one that is not; nothing when a call size makes silence later on. Both counts must be positive.
 */
std::optional<int64_t> constantDelayFrames(int block_frames, int call_frames);

}  // namespace sonivex_tool
