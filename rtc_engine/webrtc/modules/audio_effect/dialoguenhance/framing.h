/* Between interleaved blocks and overlapping frames, one hop at a time:
 *
 *   in    = the last N samples of a channel         frame = in * window
 *   out  += frame * window                          emit: the first hop of out, which no later frame reaches
 *
 * The squares of a sine window, a quarter of its length apart, sum to 2. Real-time safe but for the window's
 * making. Arrays must not overlap. */
#pragma once

namespace sonivex {

/** window[i] = sin(pi * i / (points - 1)), zero at both ends; points is at least 2. */
void makeSineWindow(int points, float* window);

/** left[i] = in[2 * i], right[i] = in[2 * i + 1]. */
void splitStereo(const float* in, int frames, float* left, float* right);

/** Drop the oldest `hop` of `points` samples and append `samples`, `hop` of them. */
void appendHop(const float* samples, int hop, float* buffer, int points);

/** The same with zeros. */
void appendSilence(int hop, float* buffer, int points);

/** out[i] = in[i] * window[i]. */
void applyWindow(const float* in, const float* window, int points, float* out);

/** out[i] += frame[i] * window[i]. */
void overlapAdd(const float* frame, const float* window, int points, float* out);

/** out[2 * i] = left[i] / 1.5, out[2 * i + 1] = right[i] / 1.5. Frames that sum to 2 leave at 4/3: the
 * divisor is part of the effect's level. */
void emitStereo(const float* left, const float* right, int frames, float* out);

}  // namespace sonivex
