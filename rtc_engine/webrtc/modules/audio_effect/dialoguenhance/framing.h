// Converts between interleaved blocks and overlapping frames, one hop at a time:
//
//   frame  = the last N samples of a channel * window
//   sum   += frame * window                         emit: the hop of sum that no later frame reaches
//
// Samples and sums lie in rings of four hops, see HopRing. Squared sine windows a quarter of their length
// apart sum to 2. Arrays must not overlap.
#pragma once

namespace sonivex {

inline constexpr int kHopsPerFrame = 4;

/** Positions of a frame's hops in a ring of N samples. A new hop replaces the oldest, so no sample moves. */
struct HopRing {
    int oldest = 0;  // 0..3

    /** @return the position in the ring, in hops, of the frame's hop `index`; index 0 is the oldest.
     *  [any] real-time safe */
    int placeOf(int index) const { return (oldest + index) % kHopsPerFrame; }
    /** Makes the oldest hop the newest.
     *  [any] real-time safe */
    void advance() { oldest = placeOf(1); }
};

/** window[i] = sin(pi * i / (points - 1)), exactly 0 at both ends; points must be at least 2.
 *  [any, concurrent] not real-time safe (computes a sine per point) */
void makeSineWindow(int points, float* window);

/** left[i] = in[2 * i], right[i] = in[2 * i + 1].
 *  [any, concurrent] real-time safe */
void splitStereo(const float* in, int frames, float* left, float* right);

/** out[i] = in[i] * window[i].
 *  [any, concurrent] real-time safe */
void applyWindow(const float* in, const float* window, int count, float* out);

/** sum[i] = 0 + frame[i] * window[i]. Adding 0 turns -0 into +0.
 *  [any, concurrent] real-time safe */
void startOverlap(const float* frame, const float* window, int count, float* sum);

/** sum[i] += frame[i] * window[i].
 *  [any, concurrent] real-time safe */
void overlapAdd(const float* frame, const float* window, int count, float* sum);

/** out[2 * i] = left[i] / 1.5, out[2 * i + 1] = right[i] / 1.5. The squared windows sum to 2, so the
 *  effect's level rises by a factor of 4/3.
 *  [any, concurrent] real-time safe */
void emitStereo(const float* left, const float* right, int frames, float* out);

}  // namespace sonivex
