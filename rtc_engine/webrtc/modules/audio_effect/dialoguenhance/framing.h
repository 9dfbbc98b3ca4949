// Between interleaved blocks and overlapping frames, one hop at a time:
//
//   frame  = the last N samples of a channel * window
//   sum   += frame * window                         emit: the hop of sum that no later frame reaches
//
// Samples and sums lie in rings of four hops, see HopRing. The squares of a sine window, a quarter of its
// length apart, sum to 2. Real-time safe but for the window's making. Arrays must not overlap.
#pragma once

namespace sonivex {

inline constexpr int kHopsPerFrame = 4;

/** Where the hops of a frame lie in a ring of N samples, so that a new one takes the oldest one's place and
 *  nothing is moved. */
struct HopRing {
    int oldest = 0;  // 0..3

    /** Place of the frame's hop `index`, 0 the oldest. */
    int placeOf(int index) const { return (oldest + index) % kHopsPerFrame; }
    /** The oldest hop becomes the newest. */
    void advance() { oldest = placeOf(1); }
};

/** window[i] = sin(pi * i / (points - 1)), zero at both ends; points is at least 2. */
void makeSineWindow(int points, float* window);

/** left[i] = in[2 * i], right[i] = in[2 * i + 1]. */
void splitStereo(const float* in, int frames, float* left, float* right);

/** out[i] = in[i] * window[i]. */
void applyWindow(const float* in, const float* window, int count, float* out);

/** sum[i] = 0 + frame[i] * window[i], which is never -0. */
void startOverlap(const float* frame, const float* window, int count, float* sum);

/** sum[i] += frame[i] * window[i]. */
void overlapAdd(const float* frame, const float* window, int count, float* sum);

/** out[2 * i] = left[i] / 1.5, out[2 * i + 1] = right[i] / 1.5. Frames that sum to 2 leave at 4/3: the
 * divisor is part of the effect's level. */
void emitStereo(const float* left, const float* right, int frames, float* out);

}  // namespace sonivex
