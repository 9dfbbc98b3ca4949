// Output limiter at the end of every effect: limits peaks to 0.99 of full scale.
//
//   out = peak limiter (common/peak_limiter.h) with the ceiling 32440.32, one gain for all channels
//
// Use: au2_limiter_create, au2_limiter_reset once, au2_limiter_proc for every block, au2_limiter_free.
// Threads: one thread at a time uses a state.
#pragma once

#include <cstdint>

#include "peak_limiter.h"

/** The state of one limiter. */
struct Au2LimiterState {
    float idleGain;                                  // target gain while not limiting
    float gain;                                      // gain of the current sample
    float smoothedTarget;                            // smoothed target gain
    float delayLine[sonivex::kLimiterDelayEntries];  // ring of past input, indexed under indexMask
    float peakTree[sonivex::kLimiterTreeEntries];    // sliding maximum of the levels
    std::int32_t writeIndex;                         // index of the current sample in the window
    std::int32_t limiting;                           // 1 while engaged
    std::int32_t treeDepth;                          // levels of the tree below its root
    std::int32_t treeSize;                           // window length, leaves of the tree
    std::int32_t indexMask;                          // treeSize - 1
    float threshold;                                 // ceiling, int16 units
    std::int32_t lookahead;                          // not 0: levels per sample, output delayed by the window
};

/** Allocates a state without initialising it; reset it before its first use.
 *  @param state receives the state, which the caller frees with au2_limiter_free, or null when memory runs
 *               out.
 *  @return 0, even when memory runs out.
 *  [any] not real-time safe: allocates */
int au2_limiter_create(Au2LimiterState** state);

/** Resets a state: unity gain, window of 64 samples, ceiling 32440.32, no look-ahead.
 *  @param state not null.
 *  [any] real-time safe */
void au2_limiter_reset(Au2LimiterState* state);

/** Limits `n` samples in int16 units.
 *  @param in, out [n] samples each, of all channels together; must not overlap.
 *  @return 1 if a level was above the ceiling; 0 if none was, or if n is below 1 and nothing was done; -1 for
 *          a null state.
 *  [any] real-time safe */
int au2_limiter_proc(Au2LimiterState* state, const float* in, int n, float* out);

/** Frees a state. @return 0, or -1 for null. [any] not real-time safe: frees memory */
int au2_limiter_free(Au2LimiterState* state);
