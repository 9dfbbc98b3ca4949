// The whole state of one surround effect.
#pragma once

#include <cstdint>

#include "au2_limiter.h"
#include "convolve_reverb.h"
#include "sample_ring.h"

namespace sonivex {

inline constexpr int kSurroundBlockFrames = 240;
inline constexpr int kSurroundMaxChannels = 8;
/** Blocks that are rendered together: more than two are hardly quicker. */
inline constexpr int kSurroundMostBlocks = 2;
inline constexpr int kSurroundMostFrames = kSurroundMostBlocks * kSurroundBlockFrames;

inline constexpr int kSurroundType3D = 1;
inline constexpr int kSurroundTypeMegaBass = 13;

/** How the effect names itself in log lines. */
inline constexpr const char* kSurroundLogSource = "surround";

}  // namespace sonivex

/** All zero is an empty one. */
struct SurroundHandle {
    // As given at creation. Only limiter is read again: the layout says the rest.
    std::int32_t channels;
    std::int32_t sampleRate;  // the responses are the same at every rate
    std::int32_t type;
    std::int32_t mode;
    std::int32_t limiter;           // 1: limit the output; else clip it
    const sonivex::Layout* layout;  // chosen by type and channels; null only in a broken record
    ConvolveReverb* reverb;         // owned
    Au2LimiterState* limiterState;  // owned
    float inBlock[sonivex::kSurroundMaxChannels * sonivex::kSurroundMostFrames];
    float outBlock[2 * sonivex::kSurroundMostFrames];
    sonivex::SampleRing* inRing;  // both in the reverb's arena
    sonivex::SampleRing* outRing;
};
