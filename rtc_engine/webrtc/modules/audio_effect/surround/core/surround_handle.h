/* The whole state of one surround effect. */
#pragma once

#include <cstdint>

#include "au2_limiter.h"
#include "convolve_reverb.h"
#include "sample_ring.h"

namespace sonivex {

inline constexpr int kSurroundBlockFrames = 240;
inline constexpr int kSurroundMaxChannels = 8;

inline constexpr int kSurroundType3D = 1;
inline constexpr int kSurroundTypeMegaBass = 13;

/** How the effect names itself in log lines. */
inline constexpr const char* kSurroundLogSource = "surround";
/** What it logs of a null handle. */
inline constexpr const char* kSurroundLogNullHandle = "[audio]::kv surround handle is NULL.\n";

}  // namespace sonivex

/** All zero is an empty one. */
struct SurroundHandle {
    std::int32_t channels;
    std::int32_t sampleRate;  // not used: the responses are the same at every rate
    std::int32_t type;
    std::int32_t mode;
    std::int32_t limiter;           // 1: limit the output; else clip it
    ConvolveReverb* reverb;         // owned
    Au2LimiterState* limiterState;  // owned
    float inBlock[sonivex::kSurroundMaxChannels * sonivex::kSurroundBlockFrames];
    float outBlock[2 * sonivex::kSurroundBlockFrames];
    sonivex::SampleRing inRing;
    sonivex::SampleRing outRing;
};
