// The whole state of one surround effect. surround.cpp makes and frees it, surround_pipelines.cpp renders
// with it.
#pragma once

#include <cstdint>

#include "au2_limiter.h"
#include "convolve_reverb.h"
#include "effect_timing.h"
#include "sample_ring.h"

namespace sonivex {

/** Frames of a block. */
inline constexpr int kSurroundBlockFrames = kSurroundTimingBlock_frames;
/** Maximum number of samples in an input frame. */
inline constexpr int kSurroundMaxChannels = 8;
/** Maximum number of blocks rendered together: more than two are hardly faster. */
inline constexpr int kSurroundMaxBlocks = 2;
/** Maximum number of frames rendered together. */
inline constexpr int kSurroundMaxFrames = kSurroundMaxBlocks * kSurroundBlockFrames;

/** `type` of aem_CreateSurround for 3DSurround. */
inline constexpr int k3dSurroundType = 1;
/** `type` of aem_CreateSurround for MegaBass. */
inline constexpr int kMegaBassType = 13;

/** Name of the effect in log lines. */
inline constexpr const char* kSurroundLogSource = "surround";

}  // namespace sonivex

/** One surround effect. An all-zero record is empty. */
struct SurroundHandle {
    // As given at creation. Only limiter is read again; the layout stands for the rest.
    std::int32_t channels;
    std::int32_t sampleRate;  // the responses are the same at every rate
    std::int32_t type;
    std::int32_t mode;
    std::int32_t limiter;           // 1: limit the output; every other value: clip it
    const sonivex::Layout* layout;  // chosen by type and channels; null only in a broken record
    ConvolveReverb* reverb;         // owned
    Au2LimiterState* limiterState;  // owned
    float inBlock[sonivex::kSurroundMaxChannels * sonivex::kSurroundMaxFrames];
    float outBlock[2 * sonivex::kSurroundMaxFrames];
    sonivex::SampleRing* inRing;   // in the reverb's arena
    sonivex::SampleRing* outRing;  // in the reverb's arena
};
