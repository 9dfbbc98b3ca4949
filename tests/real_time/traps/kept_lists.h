// The lists of the calls that stay on the way of a frame. docs/real-time.md lists them with the reasons.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "real_time/traps/kept_calls.h"

namespace test {

/** Lists what the filter needs for a frame that an effect processes. */
inline constexpr Kept kEachFrame[] = {
    Kept::kFrameAlloc,  Kept::kFrameFree,   Kept::kFrameProperties, Kept::kSideData,   Kept::kDictionary,
    Kept::kFrameBuffer, Kept::kBufferAlloc, Kept::kBufferUnref,     Kept::kGraphInput, Kept::kGraphOutput,
    Kept::kNewArray,    Kept::kDeleteArray, Kept::kMixer,
};

/** Lists what it needs in addition for the first frame of a stream. */
inline constexpr Kept kFirstFrame[] = {
    Kept::kGraphAlloc,     Kept::kGraphFilter,      Kept::kGraphFilterInit, Kept::kGraphNewFilter,
    Kept::kGraphOption,    Kept::kGraphLink,        Kept::kGraphConfig,     Kept::kCreateSurround,
    Kept::kCreateDialogue, Kept::kCreateNormalizer,
};

/** Lists what the filter needs for a frame that it gives up. */
inline constexpr Kept kLostFrame[] = {Kept::kFrameFree, Kept::kDelete};

/** Lists the worker's calls between two frames. */
inline constexpr Kept kBetweenFrames[] = {Kept::kMutex, Kept::kSleep};

/** Lists what Player::push needs to cut the stream into calls and to put their samples into frames. */
inline constexpr Kept kEachPush[] = {
    Kept::kNew,        Kept::kDelete,      Kept::kFrameAlloc,      Kept::kFrameClone, Kept::kFrameFree,
    Kept::kFrameUnref, Kept::kFrameBuffer, Kept::kFrameProperties, Kept::kFifoWrite,
};

/** Lists what Player::push needs in addition for the first frame of a stream. */
inline constexpr Kept kFirstPush[] = {Kept::kFifoAlloc};

/** Lists what Player::push needs in addition while it watches a worker. */
inline constexpr Kept kWatch[] = {Kept::kMutex, Kept::kClock, Kept::kSleep};

/** Lists the filter's calls for a frame that it dumps. */
inline constexpr Kept kDump[] = {Kept::kDump};

/** Lists the calls of either for a message that the log's threshold lets through. */
inline constexpr Kept kLog[] = {Kept::kLog};

/** Joins two lists. */
std::vector<Kept> joined(std::span<const Kept> first, std::span<const Kept> second);

/** Expects that `pass` falls into a trap whichever call of `list` is taken off the list of `others` and
 *  `list`. */
void expectEachIsTrapped(std::size_t (*pass)(), std::span<const Kept> list, std::span<const Kept> others);

}  // namespace test
