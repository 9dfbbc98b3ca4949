// Output limiter at the end of every effect: keeps peaks under 0.99 of full scale.
//
//   out = peak limiter (common/peak_limiter.h) with the ceiling 32440.32, one gain for all channels
//
// Use: au2_limiter_create, au2_limiter_reset once, au2_limiter_proc for every block, au2_limiter_free.
// One state is used by one thread at a time.
#pragma once

#include <cstdint>

#include "peak_limiter.h"

struct Au2LimiterState {
    float idleGain;                                  // target gain while not limiting
    float gain;                                      // applied to the current sample
    float smoothedTarget;                            // smoothed target gain
    float delayLine[sonivex::kLimiterDelayEntries];  // past input, round under indexMask
    float peakTree[sonivex::kLimiterTreeEntries];    // sliding maximum of the levels
    std::int32_t writeIndex;                         // place of the current sample in the window
    std::int32_t limiting;                           // 1 while engaged
    std::int32_t treeDepth;                          // levels of the tree below its root
    std::int32_t treeSize;                           // window length, leaves of the tree
    std::int32_t indexMask;                          // treeSize - 1
    float threshold;                                 // ceiling, int16 units
    std::int32_t lookahead;                          // not 0: detect per sample, output delayed by the window
};

/** Allocate one state, not initialised: reset it before its first use.
 *  @param state receives the state, which the caller frees with au2_limiter_free, or null when memory runs
 *               out.
 *  @return 0, also then. */
int au2_limiter_create(Au2LimiterState** state);

/** Back to the start: unity gain, window of 64 samples, ceiling 32440.32, no look-ahead. `state` must not be
 *  null. */
void au2_limiter_reset(Au2LimiterState* state);

/** Limit `n` samples in int16 units.
 *  @param in, out n samples each; must not overlap.
 *  @return 1 if a sample was above the ceiling, 0 if none or n is below 1 (nothing done), -1 for a null
 *          state.
 *  Real-time safe. */
int au2_limiter_proc(Au2LimiterState* state, const float* in, int n, float* out);

/** Free a state. @return 0, or -1 for null. */
int au2_limiter_free(Au2LimiterState* state);
