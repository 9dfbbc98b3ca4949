// The mixer's limiter; a mixer has one per channel.
//
//   out = peak limiter (common/peak_limiter.h); the mixer sets threshold and detection
//
// Use: call limiter_reset, set threshold and perSampleDetect, then call limiter_proc for every block.
#pragma once

#include <cstdint>

#include "peak_limiter.h"

/** The record of one limiter. */
struct PeakLimiterState {
    float unityGain;                              // target gain while not limiting
    float gain;                                   // applied gain
    float smoothedGain;                           // smoothed target gain
    float delay[sonivex::kLimiterDelayEntries];   // look-ahead delay line, circular under indexMask
    float maxTree[sonivex::kLimiterTreeEntries];  // sliding maximum of the levels
    std::int32_t writeIndex;                      // index of the current sample in the window
    std::int32_t limiting;                        // 1 while engaged
    std::int32_t treeLevels;                      // levels of the tree below its root
    std::int32_t leafCount;                       // window length
    std::int32_t indexMask;                       // leafCount - 1
    float threshold;                              // ceiling, int16 units
    std::int32_t perSampleDetect;                 // not 0: detect per sample, output late by leafCount - 1
};

/** Resets to unity gain, a window of 64 samples and not limiting. Leaves threshold and perSampleDetect
 *  unchanged.
 *  [any] real-time safe */
void limiter_reset(PeakLimiterState* state);

/** Limits `count` samples in int16 units.
 *  @param out may be `in`.
 *  @return 1 if a level was above the threshold, 0 if none was or count is below 1.
 *  [any] real-time safe */
int limiter_proc(PeakLimiterState* state, const float* in, int count, float* out);
